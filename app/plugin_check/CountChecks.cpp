#include "Check.h"
#include "Stage.h"
#include "SystemState.h"
#include "Trial.h"

#include <luk/Annotation.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/SymbolTemplate.h>
#include <luk/MemoryPoolAllocated.h>
#include <luk/Scene.h>
#include <luk/ShapeInstance.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <vector>

namespace lusym::check
{

namespace
{

using luk::illustration::CategoryInfo;
using luk::illustration::SymbolTemplate;

void CheckGetterCounts(Trial& trial)
{
    Stage stage(trial);
    const auto loader = trial.MakeLoader();
    if (!loader) {
        return;
    }
    const auto information = loader->GetCollectionInformation();
    trial.Expect(!information || information->GetReferenceCount() == 1,
                 "the information of a library is held by others than those who asked for it");
    stage.LoadLibrary("A title", "one");
    std::vector<du::SmartPtr<SymbolTemplate>> templates;
    std::vector<du::SmartPtr<CategoryInfo>> categories;
    loader->GetTemplateList(du::Symbol(trial.GetFolder() + "/library.xml"), templates);
    loader->GetCategoryList(categories);
    trial.Expect(templates.size() == 2 && categories.size() == 1, "a loader does not give what it has read");
    std::vector<std::uint32_t> counts;
    counts.reserve(templates.size());
    for (const auto& entry : templates) {
        counts.push_back(entry->GetReferenceCount());
    }
    {
        std::vector<du::SmartPtr<SymbolTemplate>> again;
        std::vector<du::SmartPtr<CategoryInfo>> categoriesAgain;
        loader->GetTemplateList(du::Symbol(trial.GetFolder() + "/library.xml"), again);
        loader->GetCategoryList(categoriesAgain);
        for (std::size_t i = 0; i < templates.size() && i < again.size(); ++i) {
            trial.Expect(templates[i]->GetReferenceCount() == counts[i] + 1,
                         "asking a loader for an entry does not add one reference to it");
        }
    }
    for (std::size_t i = 0; i < templates.size(); ++i) {
        trial.Expect(templates[i]->GetReferenceCount() == counts[i],
                     "an entry keeps a reference for a list that is gone");
    }
    for (const char* const type : kAnnotationTypes) {
        const AnnotationPtr annotation = stage.Place(type);
        const AnnotationPtr copy = annotation ? annotation->Clone() : nullptr;
        if (!trial.Expect(copy != nullptr, "an annotation cannot be copied")) {
            continue;
        }
        trial.Expect(copy->GetReferenceCount() == 1, "a copy of an annotation is held by others than its caller");
        const auto shape = annotation->GetShapeInstance();
        const std::uint32_t count = shape ? shape->GetReferenceCount() : 0;
        const auto again = annotation->GetShapeInstance();
        trial.Expect(!shape || shape->GetReferenceCount() == count + 1,
                     "asking an annotation for its shape does not add one reference to it");
    }
}

void CheckCountsStorm(Trial& trial)
{
    Stage stage(trial);
    for (const char* const type : kAnnotationTypes) {
        const AnnotationPtr annotation = stage.Place(type);
        if (!annotation) {
            continue;
        }
        const std::uint32_t before = annotation->GetReferenceCount();
        OnEightThreads([&](unsigned int) {
            for (int i = 0; i < 2000; ++i) {
                const AnnotationPtr held = annotation;
                const du::SmartPtr<du::RefCounted> asBase = held;
                held->IsVisible();
                held->GetScene();
                if (i % 20 == 0) {
                    held->GetObjectDescription();
                    held->GetIconName();
                }
            }
        });
        trial.Expect(annotation->GetReferenceCount() == before,
                     std::string("after eight threads have read an annotation of the type \"") + type +
                         "\" its count is " + std::to_string(annotation->GetReferenceCount()) + " and was " +
                         std::to_string(before));
    }
}

void CheckOwnerTags(Trial& trial)
{
    if (LUHOST_REFERENCE_LEDGER == 0) {
        return trial.Skip("only a build with the reference ledger knows who holds what");
    }
    Stage stage(trial);
    stage.LoadLibrary("A title", "one");
    for (const char* const type : kAnnotationTypes) {
        const AnnotationPtr annotation = stage.Place(type);
        if (annotation) {
            annotation->Clone();
        }
        Stage::Remove(annotation);
    }
    const std::string holders = stage.EndSession().holders;
    trial.Expect(holders.empty(), "at the end of the session this is left in the books: " + holders);
}

void CheckMemoryReturns(Trial& trial)
{
    constexpr int kRounds = 50;
    constexpr std::size_t kSlackBytes = std::size_t{64} << 10; // what the allocator keeps one way or the other
    for (int i = 0; i < 3; ++i) {
        LiveThrough(trial);
    }
    const std::size_t objects = du::RefCounted::GetLiveObjectCount();
    const auto pool = luk::MemoryPoolAllocated::GetCounters();
    const auto bytes = CountAllocatedBytes();
    for (int i = 0; i < kRounds; ++i) {
        LiveThrough(trial);
    }
    trial.Expect(du::RefCounted::GetLiveObjectCount() == objects,
                 "after " + std::to_string(kRounds) + " rounds there are " +
                     std::to_string(du::RefCounted::GetLiveObjectCount()) + " objects, and were " +
                     std::to_string(objects));
    trial.Expect(luk::MemoryPoolAllocated::GetCounters().liveBlocks == pool.liveBlocks,
                 "the host's pool has more blocks out after " + std::to_string(kRounds) + " rounds");
    if (const auto after = CountAllocatedBytes(); bytes && after) {
        trial.Expect(*after <= *bytes + kSlackBytes, "after " + std::to_string(kRounds) + " rounds " +
                                                         std::to_string(*after - *bytes) + " bytes more are allocated");
    }
}

constexpr Check kCountChecks[] = {
    {"getter-counts", "counts",
     "Whoever is handed an object holds one reference to it, and no more: entries of a library, a copy of an "
     "annotation, its "
     "shape. When the handle goes the reference goes.",
     CheckGetterCounts},
    {"counts-storm", "counts",
     "Eight threads may hold, ask and let go of one annotation at once; its count is then what it was.",
     CheckCountsStorm},
    {"owner-tags", "counts",
     "A reference is given back under the tag under which it was taken, the address of the pointer that holds it, so "
     "that "
     "the host can tell who still holds an object. At the end of a session its books are empty.",
     CheckOwnerTags},
    {"memory-returns", "counts",
     "Symbols of every type that are made, read, placed, copied, saved, changed with their library entry and removed "
     "leave "
     "nothing: after fifty sessions of it there are as many objects, blocks and bytes as before.",
     CheckMemoryReturns},
};

} // namespace

std::span<const Check> CountChecks() { return kCountChecks; }

} // namespace lusym::check
