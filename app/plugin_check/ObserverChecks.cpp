#include "Check.h"
#include "SavedContent.h"
#include "Stage.h"
#include "Trial.h"

#include <luk/AnnoSet.h>
#include <luk/Annotation.h>
#include <luk/illustration/AssociativeObjectObserver.h>
#include <luk/ShapeScene.h>

#include <functional>
#include <utility>
#include <vector>

namespace lusym::check
{

namespace
{

/// The types that follow an entry of the library.
constexpr const char* kFollowingTypes[] = {"symbol2d", "symbol3d"};

std::string TitleOf(const AnnotationPtr& annotation)
{
    const Element saved = Stage::Save(annotation);
    const auto* const title = FindProperty(saved, "title");
    const auto* const text = title ? std::get_if<du::Symbol>(&title->value) : nullptr;
    return text ? text->GetText() : std::string();
}

/// Does something when it is told of a change.
class Deed : public luk::illustration::AssociativeObjectObserver
{
public:
    explicit Deed(std::function<void()> deed) : AssociativeObjectObserver(0), m_deed(std::move(deed)) {}
    void OnAssociativeObjectChanged(const du::SmartPtr<luk::illustration::AssociativeObject>&) override
    {
        if (const auto deed = std::exchange(m_deed, {})) {
            deed();
        }
    }

private:
    std::function<void()> m_deed;
};

void CheckFollowsEntry(Trial& trial)
{
    Stage stage(trial);
    stage.LoadLibrary("A title", "one");
    for (const char* const type : kFollowingTypes) {
        const AnnotationPtr annotation = stage.Place(type, BoundContent(type));
        stage.LoadLibrary("Followed title", "two");
        Stage::Pump();
        const Element saved = Stage::Save(annotation);
        const std::string what = std::string("an annotation of the type \"") + type + "\" ";
        trial.Expect(TitleOf(annotation) == "Followed title", what + "does not take over the new title of its entry");
        const auto* const file = FindProperty(saved, std::string(type) == "symbol2d" ? "imageFileName" : "fileName");
        const auto* const name = file ? std::get_if<du::Symbol>(&file->value) : nullptr;
        trial.Expect(name && name->GetText().starts_with("two."),
                     what + "does not take over the new file of its entry");
        stage.LoadLibrary("A title", "one");
    }
}

void CheckObserversOnce(Trial& trial)
{
    Stage stage(trial);
    stage.LoadLibrary("A title", "one");
    for (const char* const type : kFollowingTypes) {
        const Element content = BoundContent(type);
        const std::size_t without = Stage::GetCollection().GetObserverCount();
        const AnnotationPtr annotation = stage.Place(type, content);
        const std::size_t with = Stage::GetCollection().GetObserverCount();
        const std::string what = std::string("an annotation of the type \"") + type + "\" ";
        trial.Expect(with > without, what + "does not observe the entry that it follows");
        for (int i = 0; annotation && i < 3; ++i) {
            annotation->InitializeFromSerializedContent(&content);
            annotation->AttachScene(stage.PlaceOf(type));
            Stage::Pump();
        }
        trial.Expect(Stage::GetCollection().GetObserverCount() == with,
                     what + "observes its entry once more each time that it is read or attached");
    }
}

void CheckObserversRemoved(Trial& trial)
{
    Stage stage(trial);
    stage.LoadLibrary("A title", "one");
    const std::size_t before = Stage::GetCollection().GetObserverCount();
    for (const char* const type : kFollowingTypes) {
        const Element content = BoundContent(type);
        const std::string what = std::string("an annotation of the type \"") + type + "\" ";
        AnnotationPtr annotation = stage.Place(type, content);
        AnnotationPtr copy = annotation ? annotation->Clone() : nullptr;
        AnnotationPtr unplaced = stage.Read(type, content);
        Stage::Remove(annotation);
        annotation = nullptr;
        copy = nullptr;
        unplaced = nullptr;
        Stage::Pump();
        trial.Expect(Stage::GetCollection().GetObserverCount() == before, what + "observes on after it has gone");
    }
}

void CheckRemoveInside(Trial& trial)
{
    Stage stage(trial);
    stage.LoadLibrary("A title", "one");
    for (const char* const type : kFollowingTypes) {
        std::vector<AnnotationPtr> annotations;
        const auto deed = du::MakeCounted<Deed>([&] {
            for (const std::size_t number : {std::size_t{2}, std::size_t{0}}) {
                Stage::Remove(annotations[number]);
                annotations[number] = nullptr;
            }
        });
        Stage::GetCollection().RegisterObserver(deed);
        for (int i = 0; i < 3; ++i) {
            annotations.push_back(stage.Place(type, BoundContent(type)));
        }
        stage.LoadLibrary("Another title", "two");
        Stage::Pump();
        const std::string what =
            std::string("when annotations of the type \"") + type + "\" go while a change is told ";
        trial.Expect(annotations[0] == nullptr, "a change of an entry is not told");
        trial.Expect(TitleOf(annotations[1]) == "Another title", what + "the others miss the change");
        Stage::Remove(annotations[1]);
        Stage::GetCollection().UnregisterObserver(deed);
        stage.LoadLibrary("A title", "one");
    }
}

void CheckSubjectGone(Trial& trial)
{
    std::vector<AnnotationPtr> kept;
    {
        Stage stage(trial);
        stage.LoadLibrary("A title", "one");
        for (const char* const type : kFollowingTypes) {
            kept.push_back(stage.Place(type, BoundContent(type)));
            kept.push_back(stage.Place(type, BoundContent(type)));
            kept.push_back(stage.Read(type, BoundContent(type)));
        }
        Stage::GetCollection().Clear();
        Stage::Pump();
        stage.CloseScenes();
        Stage::Pump();
    }
    for (const AnnotationPtr& annotation : kept) {
        if (annotation) {
            Stage::Save(annotation);
            annotation->Clone();
            annotation->DetachScene();
            annotation->IsVisible();
            annotation->GetBBox();
        }
    }
    Stage next(trial);
    for (std::size_t i = 0; i < kept.size(); i += 2) {
        next.Attach(kept[i], kept[i] ? kept[i]->GetClass().GetText() : std::string());
        Stage::Pump();
        trial.Expect(!Stage::Save(kept[i]).GetName().IsNull(),
                     "an annotation cannot be placed in the next session after it has outlived its own");
    }
}

constexpr Check kObserverChecks[] = {
    {"follows-entry", "observers",
     "A symbol that follows an entry of the library takes over its new title and its new file when the library is "
     "loaded "
     "again.",
     CheckFollowsEntry},
    {"observers-once", "observers",
     "A symbol observes the entry that it follows once, however often it is read and attached.", CheckObserversOnce},
    {"observers-removed", "observers",
     "A symbol that was removed, and one that was never placed, leave no observer behind; nor does a copy.",
     CheckObserversRemoved},
    {"observers-remove-inside", "observers",
     "Symbols may be removed, and go, in the middle of a change that is being told to them. The others still hear of "
     "it.",
     CheckRemoveInside},
    {"subject-gone", "observers",
     "A symbol may outlive the library, its scene and the whole session. It does no harm then, and can be placed in "
     "the next "
     "session.",
     CheckSubjectGone},
};

} // namespace

std::span<const Check> ObserverChecks() { return kObserverChecks; }

} // namespace lusym::check
