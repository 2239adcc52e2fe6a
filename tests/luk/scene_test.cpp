#include "support/SessionTest.h"

#include <dp/WriteLockGuard.h>
#include <luannotations/Annotation.h>
#include <luk/AnnoSet.h>
#include <luk/Kernel.h>
#include <luk/Observer.h>
#include <luk/Scene.h>
#include <luk/View.h>
#include <luk/World.h>

#include <functional>
#include <vector>

namespace
{

class Note : public luannotations::Annotation
{
public:
    explicit Note(bool* isGone = nullptr) : luannotations::Annotation(0x100000, 0), m_isGone(isGone) {}
    ~Note() override
    {
        if (m_isGone) {
            *m_isGone = true;
        }
    }

    bool DetachScene() override
    {
        const du::SmartPtr<Note> keptAlive(this);
        const dp::WriteLockGuard lock(GetLock());
        ++detached;
        if (onDetach) {
            onDetach();
        }
        return luannotations::Annotation::DetachScene();
    }

    int detached = 0;
    std::function<void()> onDetach;

private:
    bool* m_isGone;
};

class Frame : public luk::Markup
{
};

class Listener : public luk::Observer
{
public:
    void OnObservableEvent(luk::Observable&, int kind) override { kinds.push_back(kind); }
    std::vector<int> kinds;
};

/// Everything with and without locks.
class SceneTest : public test::SessionTest, public testing::WithParamInterface<bool>
{
protected:
    SceneTest()
    {
        luk::ObjectWithRWLock::SetLocksEnabled(GetParam());
        m_scene = du::MakeCounted<luk::Scene>();
    }
    ~SceneTest() override { luk::ObjectWithRWLock::SetLocksEnabled(true); }
    void TearDown() override { m_scene = nullptr; }

    static du::SmartPtr<Note> Put(const du::SmartPtr<luk::Scene>& scene, bool inSet, bool registered, bool attached)
    {
        const auto note = du::MakeCounted<Note>();
        EXPECT_EQ(inSet && scene->GetAnnoSet()->AddAnnotation(note), inSet);
        EXPECT_EQ(registered && scene->RegisterAnnotation(note), registered);
        EXPECT_EQ(attached && note->AttachScene(scene), attached);
        return note;
    }

    du::SmartPtr<luk::Scene> m_scene;
};

INSTANTIATE_TEST_SUITE_P(Locks, SceneTest, testing::Bool());

TEST_P(SceneTest, ARegistrationMovesWithTheAnnotationAndEndsWithItsDetach)
{
    const auto other = du::MakeCounted<luk::Scene>();
    const auto note = Put(m_scene, false, true, true);
    EXPECT_TRUE(m_scene->RegisterAnnotation(note));
    EXPECT_EQ(m_scene->GetRegisteredAnnotations().size(), 1u);
    EXPECT_TRUE(other->RegisterAnnotation(note));
    EXPECT_TRUE(m_scene->GetRegisteredAnnotations().empty());
    EXPECT_FALSE(m_scene->UnregisterAnnotation(*note));
    note->DetachScene();
    EXPECT_TRUE(other->GetRegisteredAnnotations().empty());
    EXPECT_EQ(note->GetReferenceCount(), 1u);
    EXPECT_FALSE(m_scene->RegisterAnnotation(nullptr));
}

TEST_P(SceneTest, WhatOnlyTheSceneHoldsEndsAfterItsDetach)
{
    bool isGone = false;
    auto note = du::MakeCounted<Note>(&isGone);
    note->onDetach = [raw = note.get(), &isGone] {
        raw->luk::Annotation::DetachScene();
        EXPECT_FALSE(isGone);
    };
    m_scene->RegisterAnnotation(note);
    Note* const raw = note.get();
    note = nullptr;
    raw->DetachScene();
    EXPECT_TRUE(isGone);
}

TEST_P(SceneTest, ClosingDetachesEveryoneOnceWhateverTheyDo)
{
    std::vector<du::SmartPtr<Note>> notes;
    for (const unsigned bits : {7u, 1u, 2u, 4u, 3u, 6u, 7u, 2u, 2u}) {
        notes.push_back(Put(m_scene, bits & 1u, bits & 2u, bits & 4u));
    }
    notes[0]->onDetach = [&] {
        m_scene->Close();
        EXPECT_FALSE(m_scene->RegisterAnnotation(notes[8]));
    };
    notes[5]->onDetach = [&] { EXPECT_TRUE(m_scene->UnregisterAnnotation(*notes[5])); };
    notes[6]->onDetach = [&] { EXPECT_TRUE(notes[7]->DetachScene()); };
    notes[4]->onDetach = [&, set = m_scene->GetAnnoSet()] { EXPECT_FALSE(set->RemoveAnnotationFromSet(notes[4])); };
    m_scene->SetModified(false);
    m_scene->Close();

    EXPECT_TRUE(m_scene->IsClosed());
    EXPECT_FALSE(m_scene->IsModified());
    for (std::size_t i = 0; i < notes.size(); ++i) {
        // The one that was attached and no more is not known to the scene.
        EXPECT_EQ(notes[i]->detached, i == 3 ? 0 : 1) << i;
        EXPECT_EQ(notes[i]->GetAnnoSet(), nullptr);
        notes[i]->onDetach = {};
        EXPECT_EQ(notes[i]->GetReferenceCount(), 1u) << i;
    }
    notes[3]->DetachScene();
    EXPECT_EQ(m_scene->GetReferenceCount(), 1u);
    EXPECT_FALSE(notes[0]->AttachScene(m_scene));
    EXPECT_FALSE(m_scene->AddMarkup(du::MakeCounted<Frame>()));
}

TEST_P(SceneTest, ScenesThatNobodyHoldsAnyMoreEndWithTheSession)
{
    for (int scenes = 0; scenes < 3; ++scenes) {
        const auto scene = du::MakeCounted<luk::Scene>();
        Put(scene, true, true, true);
        scene->AddView(du::MakeCounted<luk::View>());
        scene->AddMarkup(du::MakeCounted<Frame>());
    }
    const auto closed = du::MakeCounted<luk::Scene>();
    closed->Close();
    luk::World::GetWorld()->CloseScenes();
    EXPECT_TRUE(m_scene->IsClosed());
    // What is made after that is closed by the session itself.
    Put(du::MakeCounted<luk::Scene>(), true, true, true);
}

TEST_P(SceneTest, ASceneThatGoesUnclosedLeavesNoWayBack)
{
    const auto note = Put(m_scene, true, true, false);
    m_scene = nullptr;
    EXPECT_EQ(note->GetAnnoSet(), nullptr);
    EXPECT_TRUE(note->DetachScene());
    luk::World::GetWorld()->CloseScenes();
}

TEST_P(SceneTest, MarkupsMakeViewsDirtyAndCountAsChangesWhenTheyAreNew)
{
    const auto frame = du::MakeCounted<Frame>();
    const auto saved = du::MakeCounted<Frame>();
    const auto view = du::MakeCounted<luk::View>();
    m_scene->AddView(view);
    const struct {
        std::function<bool()> act;
        bool result, dirty, modified;
    } steps[] = {{[&] { return m_scene->AddMarkup(nullptr); }, false, false, false},
                 {[&] { return m_scene->AddMarkup(frame); }, true, true, true},
                 {[&] { return m_scene->AddMarkup(frame); }, true, false, false},
                 {[&] { return m_scene->AddAnnotationMarkup(saved); }, true, true, false},
                 {[&] { return m_scene->AddAnnotationMarkup(saved); }, true, false, false},
                 {[&] { return m_scene->RemoveMarkup(frame); }, true, true, true},
                 {[&] { return m_scene->RemoveMarkup(frame); }, false, false, false},
                 {[&] { return m_scene->AddMarkup(frame); }, true, true, true}};
    for (const auto& step : steps) {
        view->SetDirty(false);
        m_scene->SetModified(false);
        EXPECT_EQ(step.act(), step.result) << &step - steps;
        EXPECT_EQ(view->IsDirty(), step.dirty) << &step - steps;
        EXPECT_EQ(m_scene->IsModified(), step.modified) << &step - steps;
    }
    EXPECT_EQ(m_scene->GetMarkups(), (std::vector<du::SmartPtr<luk::Markup>>{saved, frame}));
}

TEST_P(SceneTest, AMemberLeavesItsSetOnceAndMayTakeTheSetAlong)
{
    const auto note = Put(m_scene, true, true, true);
    const auto other = du::MakeCounted<luk::AnnoSet>();
    EXPECT_FALSE(other->RemoveAnnotationFromSet(note));
    EXPECT_TRUE(other->AddAnnotation(note));
    EXPECT_EQ(m_scene->GetAnnoSet()->GetCount(), 0u);
    EXPECT_TRUE(m_scene->GetAnnoSet()->AddAnnotation(note));
    EXPECT_FALSE(other->Contains(note.get()));
    EXPECT_EQ(other->GetChangeCount(), 2u);

    m_scene = nullptr;
    note->onDetach = [&] { EXPECT_EQ(note->GetAnnoSet(), nullptr); };
    EXPECT_TRUE(note->GetAnnoSet()->RemoveAnnotationFromSet(note));
    EXPECT_EQ(note->detached, 1);
    EXPECT_EQ(note->GetReferenceCount(), 1u);
}

TEST_P(SceneTest, ObserversHearOfModifiedMembersFromThePump)
{
    const auto note = Put(m_scene, true, false, false);
    const auto listener = du::MakeCounted<Listener>();
    const du::SmartPtr<luk::AnnoSet> set = m_scene->GetAnnoSet();
    set->RegisterObserver(listener);
    set->AnnotationModified(du::MakeCounted<Note>(), true);
    set->AnnotationModified(nullptr, true);
    set->AnnotationModified(note, false);
    EXPECT_EQ(luk::Kernel::GetKernel()->GetPendingEventCount(), 0u);
    set->AnnotationModified(note, true);
    EXPECT_TRUE(listener->kinds.empty());
    luk::Kernel::GetKernel()->ProcessEvents();
    EXPECT_EQ(listener->kinds, std::vector<int>{luk::Observable::EVENT_ANNOTATION_MODIFIED});
    EXPECT_EQ(set->GetChangeCount(), 3u);
}

} // namespace
