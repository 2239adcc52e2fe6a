#include "LibrarySource.h"

#include "FileText.h"
#include "Printable.h"
#include "ProgramPaths.h"
#include "Progress.h"
#include "xml/LibraryFormat.h"

#include <dp/LuInfo.h>
#include <du/FileSystem.h>
#include <du/MessageCatalog.h>
#include <du/MessageTable.h>
#include <luhost/MessageFile.h>
#include <luhost/PluginLibrary.h>
#include <luhost/Session.h>
#include <luk/Preferences.h>
#include <luk/World.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

namespace lusym
{

namespace
{

namespace fs = std::filesystem;
namespace format = lusymbols::format;

using Origin = LibraryPlace::Origin;

constexpr std::string_view kMessageFileName = "messages.xml";

fs::path AbsolutePath(const fs::path& path)
{
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    return (error ? path : absolute).lexically_normal();
}

/// The folder that holds the library folder in which the file lies; else the file's own.
fs::path DefaultRoot(const fs::path& file)
{
    for (fs::path folder = file.parent_path(); folder.has_relative_path(); folder = folder.parent_path()) {
        if (folder.filename() == format::kLibraryFolder) {
            return folder.parent_path();
        }
    }
    return file.parent_path();
}

Origin DefaultOrigin(const fs::path& file)
{
    const fs::path folder = file.parent_path();
    const bool isStandard =
        folder.filename() == format::kStandardFolder && folder.parent_path().filename() == format::kLibraryFolder;
    return isStandard ? Origin::ORIGIN_OOTB : Origin::ORIGIN_USER;
}

Origin OriginOf(const std::string& name, const fs::path& file)
{
    if (name.empty()) {
        return DefaultOrigin(file);
    }
    return name == "delivered" ? Origin::ORIGIN_OOTB : name == "shared" ? Origin::ORIGIN_SHARED : Origin::ORIGIN_USER;
}

std::string DefaultMessageFile(const fs::path& root)
{
    for (const fs::path& folder : {root, root.parent_path()}) {
        std::string file = folder / kMessageFileName;
        if (du::FileSystem::FileReadable(file)) {
            return file;
        }
    }
    return std::string();
}

/// What the environment says, from "de_AT.UTF-8" to the names by which a table may know it: de_AT, de-AT, de.
std::vector<std::string> LanguagesOfUser()
{
    std::string language;
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* const value = std::getenv(name);
        if (value && *value != '\0') {
            language = value;
            break;
        }
    }
    language = language.substr(0, language.find_first_of(".@"));
    if (language.empty() || language == "C" || language == "POSIX") {
        return {};
    }
    std::string dashed = language;
    std::ranges::replace(dashed, '_', '-');
    return {language, dashed, language.substr(0, language.find('_'))};
}

} // namespace

LibraryPlace FindLibraryPlace(const std::string& name, const LibraryOptions& options)
{
    const fs::path path = AbsolutePath(name);
    const fs::path root = options.root.empty() ? DefaultRoot(path) : AbsolutePath(options.root);
    LibraryPlace place;
    place.name = name;
    place.path = path;
    place.root = root;
    place.origin = OriginOf(options.origin, path);
    place.messageFile = options.messages.empty() ? DefaultMessageFile(root) : options.messages;
    return place;
}

LibrarySource::LibrarySource(const LibraryOptions& options, Progress& progress, luhost::SessionConfig config)
    : m_options(options), m_progress(progress)
{
    config.temporaryDirectory = m_temporary.GetPath();
    config.language = options.language;
    {
        // Threads that begin in here never get a signal, so that holding it back on this one holds it back.
        const InterruptHold hold;
        m_session = std::make_unique<luhost::Session>(config);
    }
    for (const std::string& problem : m_session->GetProblems()) {
        m_progress.Tell("lusym: " + Printable(problem) + "\n");
    }
    LoadPlugin();
    if (IsUsable() && !options.messages.empty()) {
        UseMessages(options.messages);
        m_fault = m_messages ? ExitCode::Done : ExitCode::InputUnreadable;
    }
}

LibrarySource::~LibrarySource()
{
    if (m_messages) {
        du::MessageCatalog::Remove(m_messages);
    }
}

void LibrarySource::LoadPlugin()
{
    std::string error;
    const std::string plugin = FindPlugin();
    m_plugin = luhost::PluginLibrary::Load(plugin, error);
    if (m_plugin && MakeLoader()) {
        return;
    }
    m_progress.Tell("lusym: the plug-in " + Printable(plugin) +
                    (m_plugin ? " makes no loader of symbol libraries" : " cannot be loaded: " + Printable(error)) +
                    ". Name another one with LUSYMBOLS_PLUGIN.\n");
    m_fault = ExitCode::Failed;
}

LibraryReading LibrarySource::Read(const std::string& name, bool exportAsStandard)
{
    return Read(FindLibraryPlace(name, m_options), exportAsStandard);
}

LibraryReading LibrarySource::Read(const LibraryPlace& place, bool exportAsStandard)
{
    m_progress.Step("reading " + place.name);
    std::string text;
    std::string error;
    if (!ReadFileText(place.path, text, error)) {
        LibraryReading reading{place, false, {}};
        reading.examination.findings.push_back(
            {FindingCode::Unreadable, 0, 0, "the library " + error, "Name the XML file of a library."});
        return reading;
    }
    return ReadText(std::move(text), place, exportAsStandard);
}

LibraryReading LibrarySource::ReadText(std::string text, const LibraryPlace& place, bool exportAsStandard)
{
    LibraryReading reading{place, false, {}};
    ExaminationOptions options;
    options.loader = MakeLoader();
    reading.isReadable = bool(options.loader);
    if (!reading.isReadable) {
        reading.examination.findings.push_back({FindingCode::Unreadable, 0, 0,
                                                "the library finds no loader in the plug-in",
                                                "Name another plug-in with LUSYMBOLS_PLUGIN."});
        return reading;
    }
    UseRoot(place.root, *options.loader);
    UseMessages(place.messageFile);
    options.origin = place.origin;
    options.exportAsStandard = exportAsStandard;
    options.messages = m_messages;
    options.isFileReadable = &du::FileSystem::FileReadable;
    reading.examination = ExamineLibrary(std::move(text), options);
    return reading;
}

void LibrarySource::UseRoot(const std::string& root, lusymbols::SymbolTemplateLoader& loader)
{
    du::SmartPtr<luk::Preferences> preferences;
    if (const du::SmartPtr<luk::World> world = luk::World::GetWorld()) {
        world->GetIllustrationPreferences(preferences);
    }
    if (preferences) {
        preferences->SetBaseURL(du::Symbol(root));
    }
    dp::LuInfo::SetLuviewSharedCachePrefsDir(du::Symbol(root));
    loader.SetPreferences(preferences);
}

void LibrarySource::UseMessages(const std::string& file)
{
    if (file == m_messageFile) {
        return;
    }
    m_messageFile = file;
    if (m_messages) {
        du::MessageCatalog::Remove(m_messages);
        m_messages = nullptr;
    }
    if (file.empty()) {
        return;
    }
    luhost::MessageFile::Result result = luhost::MessageFile::Read(file);
    if (!result) {
        const std::string line = result.line == 0 ? std::string() : ":" + std::to_string(result.line);
        const bool isAskedFor = file == m_options.messages;
        m_progress.Tell(
            Printable(file) + line + (isAskedFor ? ": error" : ": warning") +
            ": the messages cannot be read: " + Printable(result.reason) +
            (isAskedFor ? ". Name another file with --messages.\n" : ". Texts that are named by key show the key.\n"));
        return;
    }
    m_messages = std::move(result.table);
    du::MessageCatalog::Install(m_messages);
    ChooseLanguage();
}

void LibrarySource::ChooseLanguage()
{
    const std::vector<std::string>& known = m_messages->GetLanguages();
    m_language = m_messages->GetDefaultLanguage();
    if (!m_options.language.empty()) {
        m_language = m_options.language;
        if (std::ranges::find(known, m_language) == known.end()) {
            m_progress.Tell("lusym: warning: the messages have no language " + Quote(m_language) + ". They have " +
                            Printable(CLI::detail::join(known, ", ")) + ".\n");
        }
    } else {
        for (const std::string& language : LanguagesOfUser()) {
            if (std::ranges::find(known, language) != known.end()) {
                m_language = language;
                break;
            }
        }
    }
    du::MessageCatalog::SetLanguage(m_language);
}

du::SmartPtr<lusymbols::SymbolTemplateLoader> LibrarySource::MakeLoader() const
{
    return du::DynamicCast<lusymbols::SymbolTemplateLoader>(CreateComponent("load", "template", "symbol"));
}

du::SmartPtr<du::RefCounted> LibrarySource::CreateComponent(const std::string& action, const std::string& category,
                                                            const std::string& type) const
{
    du::SmartPtr<du::RefCounted> component;
    const bool isKnown = m_plugin->CreateComponent(action, category, type, component);
    return isKnown ? component : nullptr;
}

void AddLibraryOptions(CLI::App& verb, LibraryOptions& options, bool withShared)
{
    verb.add_option("--root", options.root,
                    "Base folder of relative urls (default: the folder that holds the SymbolsLibrary folder in which "
                    "LIB.xml lies, else LIB.xml's own folder)")
        ->type_name("DIR");
    std::vector<std::string> origins = {"user", "delivered"};
    if (withShared) {
        origins.emplace_back("shared");
    }
    verb.add_option("--origin", options.origin,
                    "Whose library it is (default: delivered in SymbolsLibrary/standard/, else user)")
        ->check(CLI::IsMember(origins))
        ->type_name("WHOSE");
    verb.add_option("--messages", options.messages,
                    "Texts that are named by key (default: messages.xml in the root or beside it)")
        ->type_name("FILE");
    verb.add_option("--lang", options.language, "Language of those texts (default: the user's)")->type_name("CODE");
}

void TellEffects(const LibraryReading& reading, Progress& progress)
{
    for (const Finding& finding : reading.examination.findings) {
        if (KindOf(finding.code).effect != Effect::None) {
            progress.Tell(FormatFinding(reading.place.name, finding));
        }
    }
}

ExitCode JudgeReadings(const std::vector<LibraryReading>& readings)
{
    const auto isRead = [](const LibraryReading& reading) { return reading.examination.isRead; };
    if (std::ranges::all_of(readings, isRead)) {
        return ExitCode::Done;
    }
    if (std::ranges::any_of(readings, isRead)) {
        return ExitCode::PartOfBatchFailed;
    }
    return std::ranges::all_of(readings, &LibraryReading::isReadable) ? ExitCode::Findings : ExitCode::InputUnreadable;
}

} // namespace lusym
