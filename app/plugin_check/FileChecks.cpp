#include "Check.h"
#include "SavedContent.h"
#include "Stage.h"
#include "SystemState.h"
#include "Trial.h"

#include <du/FileSystem.h>
#include <luk/AnnoSet.h>
#include <luk/Annotation.h>
#include <luk/Scene.h>

namespace lusym::check
{

namespace
{

/// The types that load a file, and the key that names it.
constexpr std::pair<const char*, const char*> kLoadingTypes[] = {{"symbol2d", "imageFileName"},
                                                                 {"symbol3d", "fileName"}};

Element ContentWithFile(const std::string& type, const std::string& key, const std::string& file)
{
    Element content = SampleContent(type);
    FindProperty(content, key)->value = du::Symbol(file);
    return content;
}

void CheckOneTerminalEvent(Trial& trial)
{
    Stage stage(trial);
    stage.LoadLibrary("A title", "two");
    for (const auto& [type, key] : kLoadingTypes) {
        const std::string what = std::string("of an annotation of the type \"") + type + "\" ";
        // Its own file, another one that its entry names, and one that is there already.
        for (const Element& content : {SampleContent(type), BoundContent(type), SampleContent(type)}) {
            const AnnotationPtr annotation = stage.Read(type, content);
            const auto waiting = du::MakeCounted<Waiting>();
            if (!annotation) {
                return;
            }
            annotation->SetEvent(waiting);
            stage.Attach(annotation, type);
            trial.Expect(waiting->GetCompletions() == 0, "the load " + what + "ends before the call that began it");
            Stage::Pump();
            trial.Expect(waiting->IsComplete(), "the load " + what + "never ends for the one who waits");
            trial.Expect(!waiting->IsComplete() || waiting->GetLastStatus() == 0,
                         "the load " + what + "ends with a failure although the file is there");
            Stage::Remove(annotation);
        }
    }
}

/// Lets go of a symbol while its file is loading.
void LetGo(Stage& stage, const std::string& type, const Element& content, bool isDetachedBefore)
{
    AnnotationPtr annotation = stage.Read(type, content);
    const auto waiting = du::MakeCounted<Waiting>();
    if (annotation) {
        annotation->SetEvent(waiting);
        stage.Attach(annotation, type);
        if (isDetachedBefore) {
            annotation->DetachScene();
        }
        Stage::Remove(annotation);
        annotation = nullptr;
        Stage::Pump();
    }
}

void CheckReleaseWhileLoading(Trial& trial)
{
    Stage stage(trial);
    stage.LoadLibrary("A title", "two");
    for (const auto& [type, key] : kLoadingTypes) {
        for (const Element& content : {SampleContent(type), BoundContent(type)}) {
            LetGo(stage, type, content, false); // the loader keeps what it has read
            for (const bool isDetachedBefore : {true, false}) {
                const std::size_t objects = du::RefCounted::GetLiveObjectCount();
                LetGo(stage, type, content, isDetachedBefore);
                trial.Expect(du::RefCounted::GetLiveObjectCount() == objects,
                             std::string("something is left of an annotation of the type \"") + type +
                                 "\" that was let go of while its file was loading");
            }
        }
    }
}

void CheckUnreadableFiles(Trial& trial)
{
    Stage stage(trial);
    du::FileSystem::Mkdir(stage.SymbolsPath("folder"));
    stage.Write("Symbols/other", "of no known format");
    stage.Write("Symbols/empty", "");
    stage.Write("outside.pic", "P84");
    MakePipe(stage.SymbolsPath("pipe"));
    const std::string names[] = {"missing",  "folder",    "pipe",
                                 "other",    "empty",     "../outside.pic",
                                 ".",        "..",        "C:\\outside.pic",
                                 "a/b",      "/dev/zero", std::string("one.pic\0x", 9),
                                 "%s%n.pic", "\xFF",      std::string(5000, 'n')};
    for (const auto& [type, key] : kLoadingTypes) {
        for (const std::string& name : names) {
            const AnnotationPtr annotation = stage.Read(type, ContentWithFile(type, key, name));
            const auto waiting = du::MakeCounted<Waiting>();
            if (!annotation) {
                return;
            }
            annotation->SetEvent(waiting);
            stage.Attach(annotation, type);
            Stage::Pump();
            const std::string what =
                std::string("an annotation of the type \"") + type + "\" with the file \"" + name.substr(0, 20) + "\" ";
            trial.Expect(waiting->IsComplete(), what + "lets the one who waits for it wait for ever");
            trial.Expect(!waiting->IsComplete() || waiting->GetLastStatus() != 0,
                         what + "says that the file was loaded");
            const Element saved = Stage::Save(annotation);
            const auto* const kept = FindProperty(saved, key);
            trial.Expect(saved.GetName().IsNull() || (kept && kept->value == Element::Value(du::Symbol(name))),
                         what + "saves another name");
            Stage::Remove(annotation);
        }
    }
}

constexpr Check kFileChecks[] = {
    {"one-terminal-event", "files",
     "Whoever waits for a symbol to be loaded is told once that it is, or that it cannot be: from the host's event "
     "pump, and "
     "never from inside the call that began the load.",
     CheckOneTerminalEvent},
    {"release-while-loading", "files",
     "A symbol may be detached, removed and let go of while its file is still loading. The load then ends without it, "
     "and "
     "nothing of it is left.",
     CheckReleaseWhileLoading},
    {"unreadable-files", "files",
     "A file that is missing, empty, of no known format, a folder or a pipe, and a name that leads out of the folder "
     "of "
     "symbols, are loads that fail: soon, with a status that says so, and with the symbol and the name it saves as "
     "they "
     "were.",
     CheckUnreadableFiles},
};

} // namespace

std::span<const Check> FileChecks() { return kFileChecks; }

} // namespace lusym::check
