#include "Check.h"
#include "SavedContent.h"
#include "Stage.h"
#include "Trial.h"

#include <luk/AnnoSet.h>
#include <luk/Annotation.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/MemoryPoolAllocated.h>
#include <luk/ShapeScene.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <algorithm>
#include <array>
#include <atomic>

namespace lusym::check
{

namespace
{

void CheckCreateOnThreads(Trial& trial)
{
    constexpr int kRounds = 200;
    const Stage stage(trial);
    const std::size_t objects = du::RefCounted::GetLiveObjectCount();
    const std::size_t blocks = luk::MemoryPoolAllocated::GetCounters().liveBlocks;
    std::atomic<int> failures{0};
    OnEightThreads([&](unsigned int number) {
        for (int i = 0; i < kRounds; ++i) {
            const auto& plugin = trial.GetPlugin();
            const char* const type = kAnnotationTypes[(number + static_cast<unsigned int>(i)) % 3];
            const auto annotation = plugin.CreateComponent("create", "annotation", type);
            const auto loader = plugin.CreateComponent("load", "template", "symbol");
            const auto unknown = plugin.CreateComponent("create", "annotation", "symbol");
            const bool isRight = annotation && annotation->GetReferenceCount() == 1 && loader &&
                                 loader->GetReferenceCount() == 1 && !unknown;
            failures += isRight ? 0 : 1;
        }
    });
    trial.Expect(failures == 0, std::to_string(failures) + " of " + std::to_string(8 * kRounds) +
                                    " requests from eight threads at once are not answered as they should be");
    trial.Expect(du::RefCounted::GetLiveObjectCount() == objects &&
                     luk::MemoryPoolAllocated::GetCounters().liveBlocks == blocks,
                 "something is left of components that were made on eight threads at once");
}

/// What is in the scenes and in the product.
std::array<std::size_t, 5> CountAll(const Stage& stage)
{
    const auto& scene = stage.GetScene();
    const auto& page = stage.GetPage();
    return {scene->GetRegisteredAnnotations().size(), page->GetRegisteredAnnotations().size(),
            scene->GetMarkups().size(), page->GetMarkups().size(), scene->GetTree()->GetInstanceCount()};
}

void CheckAttachOrders(Trial& trial)
{
    Stage stage(trial);
    const auto before = CountAll(stage);
    for (const char* const type : kAnnotationTypes) {
        std::array<int, 3> attachOrder{0, 1, 2};
        do {
            std::array<int, 3> detachOrder{0, 1, 2};
            do {
                std::array<AnnotationPtr, 3> annotations;
                Element content = SampleContent(type);
                for (AnnotationPtr& annotation : annotations) {
                    if (auto* const id = FindProperty(content, "ID")) {
                        id->value = du::Symbol(); // each gets its own
                    }
                    annotation = stage.Read(type, content);
                }
                for (const int number : attachOrder) {
                    stage.Attach(annotations[static_cast<std::size_t>(number)], type);
                }
                Stage::Pump();
                for (const int number : detachOrder) {
                    const AnnotationPtr& annotation = annotations[static_cast<std::size_t>(number)];
                    trial.Expect(annotation && annotation->DetachScene() && annotation->GetScene() == nullptr,
                                 std::string("an annotation of the type \"") + type +
                                     "\" is still in its scene after it was detached");
                    Stage::Remove(annotation);
                }
                Stage::Pump();
                trial.Expect(CountAll(stage) == before, std::string("annotations of the type \"") + type +
                                                            "\" leave something in the scene when they are detached");
            } while (std::ranges::next_permutation(detachOrder).found);
        } while (std::ranges::next_permutation(attachOrder).found);
    }
}

void CheckAttachAgain(Trial& trial)
{
    Stage stage(trial);
    const auto before = CountAll(stage);
    for (const char* const type : kAnnotationTypes) {
        const AnnotationPtr annotation = stage.Read(type, SampleContent(type));
        if (!annotation) {
            return;
        }
        const std::string what = std::string("an annotation of the type \"") + type + "\" ";
        annotation->DetachScene();
        annotation->AttachScene(nullptr);
        stage.Attach(annotation, type);
        Stage::Pump();
        const auto once = CountAll(stage);
        const Element saved = Stage::Save(annotation);
        annotation->AttachScene(stage.PlaceOf(type));
        annotation->AttachScene(stage.PlaceOf(type));
        Stage::Pump();
        trial.Expect(CountAll(stage) == once, what + "is there more than once after it was attached again");
        annotation->DetachScene();
        annotation->DetachScene();
        Stage::Pump();
        trial.Expect(CountAll(stage) == before, what + "leaves something in the scene");
        annotation->AttachScene(stage.PlaceOf(type));
        Stage::Pump();
        const Element again = Stage::Save(annotation);
        trial.Expect(again == saved,
                     what + "is not as it was after it was detached and attached: " + FirstDifference(saved, again));
        Stage::Remove(annotation);
        annotation->DetachScene();
        Stage::Pump();
        trial.Expect(CountAll(stage) == before, what + "leaves something in the scene");
    }
}

constexpr Check kSceneChecks[] = {
    {"create-on-threads", "scene",
     "Requests may come from several threads at once. Each is answered as if it were alone.", CheckCreateOnThreads},
    {"attach-orders", "scene",
     "Symbols may be attached and detached in any order. Once all are detached the scenes and the product are as they "
     "were "
     "before.",
     CheckAttachOrders},
    {"attach-again", "scene",
     "Attaching a symbol to the scene that it is in, to none, or detaching one that is in none, changes nothing. One "
     "that is "
     "attached again after it was detached is what it was.",
     CheckAttachAgain},
};

} // namespace

std::span<const Check> SceneChecks() { return kSceneChecks; }

} // namespace lusym::check
