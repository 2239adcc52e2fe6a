#include "Check.h"
#include "Stage.h"
#include "SystemState.h"
#include "Trial.h"

#include <dp/LUTracer.h>
#include <du/Symbol.h>
#include <luk/Annotation.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <optional>
#include <set>
#include <vector>

namespace lusym::check
{

namespace
{

using VoidEntry = void (*)();
using CreateEntry = bool (*)(const std::string&, const std::string&, const std::string&, du::SmartPtr<du::RefCounted>&);

constexpr const char* kEntries[] = {"LUDllInit", "LUDllTerminate", "LUDllCreateComponent"};
constexpr const char* kWhyNotLoaded = "it cannot be loaded: ";

bool LoadOrTell(Trial& trial)
{
    std::string problem;
    const bool isLoaded = trial.Load(problem);
    return trial.Expect(isLoaded, kWhyNotLoaded + problem);
}

bool UnloadOrTell(Trial& trial)
{
    std::string problem;
    const bool isUnloaded = trial.GetPlugin().Unload(problem);
    return trial.Expect(isUnloaded, "it cannot be unloaded: " + problem);
}

/// Loads the plug-in, makes one of everything that it makes, lets go of it, and unloads the plug-in.
/// @param beforeUnloading may be empty
bool LiveOnce(Trial& trial, const std::function<void()>& beforeUnloading = {})
{
    if (!LoadOrTell(trial)) {
        return false;
    }
    for (const char* const type : kAnnotationTypes) {
        trial.MakeAnnotation(type);
    }
    trial.MakeLoader();
    if (beforeUnloading) {
        beforeUnloading();
    }
    return UnloadOrTell(trial);
}

void CheckExports(Trial& trial)
{
    std::string problem;
    const auto library = RawLibrary::Load(trial.GetPluginPath(), RawLibrary::Binding::Lazy, problem);
    if (!trial.Expect(library != nullptr, kWhyNotLoaded + problem)) {
        return;
    }
    for (const char* const name : kEntries) {
        trial.Expect(library->Find(name) != nullptr, std::string("it exports no function ").append(name));
    }
}

void CheckBindNow(Trial& trial)
{
    std::string problem;
    const auto library = RawLibrary::Load(trial.GetPluginPath(), RawLibrary::Binding::Now, problem);
    trial.Expect(library != nullptr, "it cannot be loaded with all its functions bound at once: " + problem);
}

void CheckBindLocal(Trial& trial)
{
    if (!LoadOrTell(trial)) {
        return;
    }
    trial.MakeAnnotation("symbol2d");
    for (const char* const name : kEntries) {
        trial.Expect(RawLibrary::FindGlobal(name) == nullptr,
                     std::string("after loading, every other library sees its function ").append(name));
    }
}

void CheckInitTerminateRepeated(Trial& trial)
{
    std::string problem;
    const auto library = RawLibrary::Load(trial.GetPluginPath(), RawLibrary::Binding::Now, problem);
    void* const functions[] = {library ? library->Find(kEntries[0]) : nullptr,
                               library ? library->Find(kEntries[1]) : nullptr,
                               library ? library->Find(kEntries[2]) : nullptr};
    if (std::ranges::count(functions, nullptr) > 0) {
        return trial.Skip("it could not be loaded with its three functions");
    }
    const auto init = reinterpret_cast<VoidEntry>(functions[0]);
    const auto terminate = reinterpret_cast<VoidEntry>(functions[1]);
    const auto create = reinterpret_cast<CreateEntry>(functions[2]);
    du::SmartPtr<du::RefCounted> kept;
    create("create", "annotation", "symbol2d", kept);
    for (int i = 0; i < 20; ++i) {
        (trial.Random()() % 2 == 0 ? init : terminate)();
        du::SmartPtr<du::RefCounted> slot;
        create("create", "annotation", "symbol3d", slot);
        trial.Expect(slot != nullptr,
                     "after some calls of LUDllInit and LUDllTerminate it makes no annotation any more");
    }
    const auto annotation = du::DynamicCast<luk::Annotation>(kept);
    trial.Expect(annotation && annotation->Clone() != nullptr,
                 "an annotation does not survive calls of LUDllInit and LUDllTerminate");
}

void CheckLoadUnload(Trial& trial)
{
    constexpr int kTimes = 100;
    const std::size_t objects = du::RefCounted::GetLiveObjectCount();
    for (int i = 0; i < kTimes && LiveOnce(trial); ++i) {
        if (!trial.Expect(!RawLibrary::IsLoaded(trial.GetPluginPath()),
                          "it stays in the process after it was unloaded")) {
            return;
        }
    }
    trial.Expect(du::RefCounted::GetLiveObjectCount() == objects, "objects are left after it was unloaded");
}

void CheckNoThreadLeft(Trial& trial)
{
    const auto before = CountThreads();
    std::optional<std::size_t> meanwhile;
    LiveOnce(trial, [&] { meanwhile = CountThreads(); });
    const auto after = CountThreads();
    if (!before || !after) {
        return trial.Skip("this system does not tell the threads of a process");
    }
    const bool isNoneLeft =
        trial.Expect(*after <= *before, "after it was unloaded there are " + std::to_string(*after) +
                                            " threads, and were " + std::to_string(*before));
    if (isNoneLeft && meanwhile > before) {
        trial.Tell({Outcome::Warn, Side::Plugin, "it runs a thread of its own while it is loaded"});
    }
}

std::vector<std::string> NewIn(const std::set<std::string>& now, const std::set<std::string>& before)
{
    std::vector<std::string> files;
    std::ranges::set_difference(now, before, std::back_inserter(files));
    for (std::string& file : files) {
        file.erase(0, file.find(' ') + 1);
    }
    return files;
}

void CheckNoFileLeft(Trial& trial)
{
    const auto before = ListOpenFiles();
    std::optional<std::set<std::string>> meanwhile;
    LiveOnce(trial, [&] { meanwhile = ListOpenFiles(); });
    const auto after = ListOpenFiles();
    if (!before || !after || !meanwhile) {
        return trial.Skip("this system does not tell the open files of a process");
    }
    const std::vector<std::string> left = NewIn(*after, *before);
    for (const std::string& file : left) {
        trial.Expect(false, "a file stays open after it was unloaded: " + file);
    }
    for (const std::string& file : left.empty() ? NewIn(*meanwhile, *before) : std::vector<std::string>()) {
        trial.Tell({Outcome::Warn, Side::Plugin, "it keeps a file open while it is loaded: " + file});
    }
}

void CheckUnloadSafety(Trial& trial)
{
    Stage stage(trial);
    if (!LoadOrTell(trial)) {
        return;
    }
    stage.LoadLibrary("A title", "one");
    for (const char* const type : kAnnotationTypes) {
        Stage::Remove(stage.Place(type, BoundContent(type)));
    }
    Stage::Pump();
    Stage::GetCollection().Clear();
    if (!UnloadOrTell(trial)) {
        return;
    }
    // Whatever of the plug-in the host still knew would be called into the void here.
    dp::LUTracer({"lusym", "root"}).Trace(dp::LUTracer::INFORMATION, "%s is unloaded\n", trial.GetPluginPath().c_str());
    Stage::Pump();
    stage.CloseScenes();
    for (const char* const word : {"title", "width", "symbol2d", "sequencerTag"}) {
        trial.Expect(du::Symbol(word).GetText() == word, "interned words are damaged by its unloading");
    }
}

constexpr Check::Start kBare = Check::Start::Bare;

constexpr Check kLoadingChecks[] = {
    {"exports", "loading",
     "A host looks three functions up by their plain names: LUDllInit, LUDllTerminate and LUDllCreateComponent. The "
     "library shows all three, with C linkage.",
     CheckExports, kBare},
    {"bind-now", "loading",
     "Whatever the library calls is found when it is loaded. A host may bind every function at once, so that a missing "
     "one "
     "is told at the start and not in the middle of somebody's work.",
     CheckBindNow, kBare},
    {"bind-local", "loading",
     "A host may keep the names of the library to itself, so that two plug-ins with the same three functions do not "
     "get in "
     "each other's way. The library works so, and does not put its names before everybody by itself.",
     CheckBindLocal, kBare},
    {"init-terminate-repeated", "loading",
     "LUDllInit and LUDllTerminate may be called any number of times and in any order, also while components live. "
     "Neither "
     "changes how requests are answered or what components do.",
     CheckInitTerminateRepeated, kBare},
    {"load-unload", "loading",
     "Once all that it made is gone the library can be unloaded, really leaves the process, and can be loaded again: a "
     "hundred times in a row, with no object left.",
     CheckLoadUnload, kBare},
    {"no-thread-left", "loading",
     "The library starts no thread that is still there after it was unloaded. A thread of its own while it is loaded "
     "is a warning: a host would have to reckon with calls from there.",
     CheckNoThreadLeft, kBare},
    {"no-file-left", "loading",
     "The library opens no file that is still open after it was unloaded. One that it keeps open while it is loaded is "
     "a warning.",
     CheckNoFileLeft, kBare},
    {"unload-safety", "loading",
     "After the library was unloaded the host goes on: nothing of the plug-in is still registered with it, and words "
     "that "
     "the plug-in interned stay what they are.",
     CheckUnloadSafety, kBare},
};

} // namespace

std::span<const Check> LoadingChecks() { return kLoadingChecks; }

} // namespace lusym::check
