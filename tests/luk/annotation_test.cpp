#include <dg/Location.h>
#include <dp/ReadWriteLock.h>
#include <luannotations/Annotation.h>
#include <luannotations/ConstStrings.h>
#include <luk/AnnoSet.h>
#include <luk/AnnotationContentVisitor.h>
#include <luk/Kernel.h>
#include <luk/Observer.h>
#include <luk/Scene.h>
#include <luk/View.h>

#include <gtest/gtest.h>

namespace
{

class Note : public luannotations::Annotation
{
public:
    Note() : luannotations::Annotation(0x100000, 0) { SetClass(luannotations::ConstStrings::luSymbol2D); }

    du::SmartPtr<luk::Annotation> Clone() override { return du::MakeCounted<Note>(*this); }
    void HideAnnotation() override { hooks += IsVisible() ? "H" : "h"; }
    void ShowAnnotation() override { hooks += IsVisible() ? "S" : "s"; }

    std::string hooks;
};

class Listener : public luk::Observer
{
public:
    void OnObservableEvent(luk::Observable&, int kind) override { kinds.push_back(kind); }
    std::vector<int> kinds;
};

class AnnotationTest : public testing::Test
{
protected:
    void TearDown() override
    {
        luk::Kernel::SetKernel(nullptr);
        luk::ObjectWithRWLock::SetLocksEnabled(true);
    }

    du::SmartPtr<Note> m_note = du::MakeCounted<Note>();
};

TEST_F(AnnotationTest, ACopyHasALockOfItsOwnAndIsInNoScene)
{
    const auto scene = du::MakeCounted<luk::Scene>();
    m_note->AttachScene(scene);
    scene->RegisterAnnotation(m_note);
    scene->GetAnnoSet()->AddAnnotation(m_note);
    m_note->SetObjectName(du::Symbol("arrow"));
    m_note->Hide(false, nullptr, 0);
    ASSERT_TRUE(m_note->GetLock()->LockWrite());
    const auto copy = m_note->Clone();
    ASSERT_NE(copy->GetLock(), nullptr);
    EXPECT_EQ(copy->GetLock()->GetDepthOnThisThread().writes, 0u);
    m_note->GetLock()->UnlockWrite();

    EXPECT_EQ(copy->GetClass(), luannotations::ConstStrings::luSymbol2D);
    EXPECT_EQ(copy->GetObjectName(), du::Symbol("arrow"));
    EXPECT_FALSE(copy->IsVisible());
    EXPECT_EQ(copy->GetScene(), nullptr);
    EXPECT_EQ(copy->GetAnnoSet(), nullptr);
    EXPECT_EQ(copy->GetReferenceCount(), 1u);
    copy->DetachScene();
    EXPECT_EQ(scene->GetRegisteredAnnotations().size(), 1u);
    scene->Close();
}

TEST_F(AnnotationTest, ACopyKeepsWhatWasReadAndNotUnderstood)
{
    luk::SerializedContentElement content;
    content.AddProperty(du::Symbol("later"), 7);
    luk::Annotation::SerializedContentVisitor reader(*m_note);
    content.Visit(reader, true);
    const auto copy = m_note->Clone();
    content.Visit(reader, true);
    luk::SerializedContentElement written;
    copy->Visit(written);
    ASSERT_EQ(written.GetProperties().size(), 4u);
    EXPECT_EQ(written.GetProperties().back().key, du::Symbol("later"));
}

TEST_F(AnnotationTest, WorksWithoutALock)
{
    luk::ObjectWithRWLock::SetLocksEnabled(false);
    const auto lockless = du::MakeCounted<Note>();
    EXPECT_EQ(lockless->GetLock(), nullptr);
    EXPECT_TRUE(lockless->AttachScene(du::MakeCounted<luk::Scene>()));
    EXPECT_TRUE(lockless->DetachScene());
    EXPECT_EQ(lockless->GetScene(), nullptr);
    EXPECT_EQ(lockless->Clone()->GetLock(), nullptr);
}

TEST_F(AnnotationTest, HoldsItsSceneUntilItIsDetached)
{
    const auto scene = du::MakeCounted<luk::Scene>();
    for (const auto& attached : {scene, scene, du::SmartPtr<luk::Scene>()}) {
        EXPECT_TRUE(m_note->AttachScene(attached));
    }
    EXPECT_EQ(scene->GetReferenceCount(), 2u);
    m_note->DetachScene();
    EXPECT_EQ(scene->GetReferenceCount(), 1u);
}

TEST_F(AnnotationTest, ShowAndHideCallTheHooksAndPostRealChangesOnly)
{
    const auto kernel = du::MakeCounted<luk::Kernel>();
    luk::Kernel::SetKernel(kernel);
    const auto listener = du::MakeCounted<Listener>();
    m_note->RegisterObserver(listener);
    m_note->Hide(true, nullptr, 0);
    m_note->Hide(true, nullptr, 0);
    m_note->Show(false, nullptr);
    m_note->Show(true, nullptr);
    EXPECT_EQ(m_note->hooks, "hhSS");
    EXPECT_TRUE(listener->kinds.empty());

    m_note = nullptr;
    EXPECT_EQ(kernel->ProcessEvents(), 1u);
    EXPECT_EQ(listener->kinds, std::vector<int>{luk::Observable::EVENT_VISIBILITY_CHANGED});
    EXPECT_EQ(listener->GetReferenceCount(), 1u);
}

TEST_F(AnnotationTest, AnEventPostedUnderConstructionIsNoEnd)
{
    luk::Kernel::SetKernel(du::MakeCounted<luk::Kernel>());
    auto* const unheld = new Note;
    unheld->PostObservableEvent(luk::Observable::EVENT_MEASUREMENT_DISPLAYED);
    EXPECT_EQ(luk::Kernel::GetKernel()->GetPendingEventCount(), 0u);
    const du::SmartPtr<Note> handle(unheld);
    EXPECT_TRUE(handle->IsVisible());
}

} // namespace
