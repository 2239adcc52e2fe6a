#include "Check.h"
#include "SavedContent.h"
#include "Stage.h"
#include "Trial.h"

#include <dg/DMat33.h>
#include <dg/DMat44.h>
#include <dg/Pipeline.h>
#include <dp/ReadLockGuard.h>
#include <dp/WriteLockGuard.h>
#include <luk/Annotation.h>
#include <luk/InstanceCheck.h>
#include <luk/Scene.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace lusym::check
{

namespace
{

struct Operation {
    const char* name;
    std::function<void(luk::Annotation&)> run;
};

/// Whether an operation waits while another thread holds the annotation's lock, which it does until somebody waits for it, or
/// until the operation is done, or for a long while.
bool Waits(luk::Annotation& annotation, bool heldForWriting, const Operation& operation)
{
    constexpr std::chrono::seconds kLongest{20};
    dp::ReadWriteLock* const lock = annotation.GetLock();
    std::atomic<bool> isHeld{false};
    std::atomic<bool> isDone{false};
    bool hasWaited = false;
    const auto hold = [&] {
        isHeld = true;
        const auto end = std::chrono::steady_clock::now() + kLongest;
        while (!isDone && !hasWaited && std::chrono::steady_clock::now() < end) {
            hasWaited = lock->CountWaiting() > 0;
            std::this_thread::yield();
        }
    };
    std::thread holder([&] {
        if (heldForWriting) {
            const dp::WriteLockGuard guard(lock);
            hold();
        } else {
            const dp::ReadLockGuard guard(lock);
            hold();
        }
    });
    while (!isHeld) {
        std::this_thread::yield();
    }
    operation.run(annotation);
    isDone = true;
    holder.join();
    return hasWaited;
}

std::string OfType(const std::string& type, const Operation& operation)
{
    return std::string(operation.name) + " of an annotation of the type \"" + type + "\" ";
}

std::vector<Operation> ReadingOperations(const std::string& type)
{
    std::vector<Operation> operations = {
        {"Visit",
         [](luk::Annotation& annotation) {
             Element parent;
             annotation.Visit(parent);
         }},
        {"Clone", [](luk::Annotation& annotation) { annotation.Clone(); }},
        {"IsVisible", [](luk::Annotation& annotation) { annotation.IsVisible(); }},
    };
    if (type != "symbol3dflattened") {
        operations.push_back({"Flatten", [](luk::Annotation& annotation) {
                                  Element parent;
                                  annotation.Flatten(parent, {}, {}, dg::Pipeline());
                              }});
    }
    if (type != "symbol2d") {
        operations.push_back(
            {"GetObjectDescription", [](luk::Annotation& annotation) { annotation.GetObjectDescription(); }});
    }
    return operations;
}

std::vector<Operation> WritingOperations(const du::SmartPtr<luk::Scene>& scene, const Element& content)
{
    return {
        {"DetachScene", [](luk::Annotation& annotation) { annotation.DetachScene(); }},
        {"InitializeFromSerializedContent",
         [&content](luk::Annotation& annotation) { annotation.InitializeFromSerializedContent(&content); }},
        {"AttachScene", [scene](luk::Annotation& annotation) { annotation.AttachScene(scene); }},
        {"AttachScene, repeated,", [scene](luk::Annotation& annotation) { annotation.AttachScene(scene); }},
    };
}

void CheckReadLock(Trial& trial)
{
    Stage stage(trial);
    for (const char* const type : kAnnotationTypes) {
        const AnnotationPtr annotation = stage.Place(type);
        if (!annotation) {
            return;
        }
        for (const Operation& operation : ReadingOperations(type)) {
            trial.Expect(Waits(*annotation, true, operation),
                         OfType(type, operation) + "goes on while another thread writes");
            trial.Expect(!Waits(*annotation, false, operation),
                         OfType(type, operation) + "waits although the other thread only reads");
        }
    }
}

void CheckWriteLock(Trial& trial)
{
    Stage stage(trial);
    for (const char* const type : kAnnotationTypes) {
        const AnnotationPtr annotation = stage.Place(type);
        const Element content = SampleContent(type);
        if (!annotation) {
            return;
        }
        for (const Operation& operation : WritingOperations(stage.PlaceOf(type), content)) {
            trial.Expect(Waits(*annotation, false, operation),
                         OfType(type, operation) + "changes it while another thread reads");
            Stage::Pump();
        }
    }
}

void CheckNoLockHeld(Trial& trial)
{
    Stage stage(trial);
    const auto count = [] { return dp::ReadWriteLock::CountHeldByThisThread(); };
    for (const char* const type : kAnnotationTypes) {
        const AnnotationPtr annotation = stage.Read(type, SampleContent(type));
        if (!annotation) {
            return;
        }
        const Element content = SampleContent(type);
        std::vector<Operation> operations = WritingOperations(stage.PlaceOf(type), content);
        for (const Operation& operation : ReadingOperations(type)) {
            operations.push_back(operation);
        }
        for (const Operation& operation : operations) {
            operation.run(*annotation);
            trial.Expect(count() == 0, OfType(type, operation) + "leaves a lock behind");
        }
        Stage::Pump();
        trial.Expect(count() == 0, "the end of a load leaves a lock behind");

        std::size_t held = 0;
        const auto waiting = du::MakeCounted<Waiting>();
        waiting->SetDeed([&] { held = count(); });
        annotation->DetachScene();
        annotation->SetEvent(waiting);
        annotation->AttachScene(stage.PlaceOf(type));
        Stage::Pump();
        trial.Expect(held == 0, "the one who waits for a load is told under a lock");
    }
}

void CheckWithoutLocks(Trial& trial)
{
    Stage stage(trial);
    for (const char* const type : kAnnotationTypes) {
        const AnnotationPtr locked = stage.Place(type);
        const Element saved = Stage::Save(locked);
        Stage::Remove(locked);

        luk::ObjectWithRWLock::SetLocksEnabled(false);
        const AnnotationPtr annotation = stage.Place(type);
        luk::ObjectWithRWLock::SetLocksEnabled(true);
        const Element content = SampleContent(type);
        if (!annotation) {
            return;
        }
        const Element again = Stage::Save(annotation);
        trial.Expect(saved == again, std::string("without a lock an annotation of the type \"") + type +
                                         "\" saves something else: " + FirstDifference(saved, again));
        for (const Operation& operation : ReadingOperations(type)) {
            operation.run(*annotation);
        }
        for (const Operation& operation : WritingOperations(stage.PlaceOf(type), content)) {
            operation.run(*annotation);
            Stage::Pump();
        }
        Stage::Remove(annotation);
    }
}

constexpr Check kLockChecks[] = {
    {"read-lock", "locks",
     "Saving, flattening, copying and asking whether a symbol is seen take its lock for reading: they wait while "
     "another "
     "thread writes, and go on beside one that reads.",
     CheckReadLock},
    {"write-lock", "locks",
     "Attaching, detaching and reading saved content take the symbol's lock for writing: they wait while another "
     "thread reads.",
     CheckWriteLock},
    {"no-lock-held", "locks",
     "No operation leaves a lock behind, and whoever waits for a load is told without one, so that he may do anything "
     "to the "
     "symbol.",
     CheckNoLockHeld},
    {"without-locks", "locks", "A symbol that has no lock works as one that has one.", CheckWithoutLocks},
};

} // namespace

std::span<const Check> LockChecks() { return kLockChecks; }

} // namespace lusym::check
