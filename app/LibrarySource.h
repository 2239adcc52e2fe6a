#pragma once

#include "ExitCode.h"
#include "LibraryExamination.h"
#include "TemporaryFolder.h"

#include <luhost/SessionConfig.h>

#include <memory>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace luhost
{
class PluginLibrary;
class Session;
} // namespace luhost

namespace lusym
{

class Progress;

/// What every verb that reads libraries may be told about their place.
struct LibraryOptions {
    std::string root;
    std::string origin;
    std::string messages;
    std::string language;
};

/// Where a library lies and what follows from that.
struct LibraryPlace {
    using Origin = ExaminationOptions::Origin;

    std::string name; ///< as the user wrote it
    std::string path; ///< absolute
    std::string root; ///< relative URLs start here
    Origin origin = Origin::ORIGIN_USER;
    std::string messageFile; ///< empty when there is none
};

LibraryPlace FindLibraryPlace(const std::string& name, const LibraryOptions& options);

/// A library that was read, or the reason why it was not.
struct LibraryReading {
    LibraryPlace place;
    bool isReadable = false;
    Examination examination;
};

/// Reads libraries through the plug-in, in a session of the host that is set up for each of them in turn.
///
/// Ownership: entries have to go before this object, since the session tells what is left at its end.
///
/// Errors: IsUsable says whether host and plug-in are there; the reason goes to stderr. An unreadable library is a
/// finding of its examination.
class LibrarySource
{
public:
    /// @param config what the session needs beyond libraries; its temporary folder and its language are set here
    LibrarySource(const LibraryOptions& options, Progress& progress, luhost::SessionConfig config = {});
    ~LibrarySource();
    LibrarySource(const LibrarySource&) = delete;
    LibrarySource& operator=(const LibrarySource&) = delete;

    bool IsUsable() const { return m_fault == ExitCode::Done; }
    /// How the program has to end when the source is not usable.
    ExitCode GetFault() const { return m_fault; }

    /// Reads one library and makes its root and its messages those of the session.
    LibraryReading Read(const std::string& name, bool exportAsStandard = false);
    LibraryReading Read(const LibraryPlace& place, bool exportAsStandard = false);
    /// The same for a document that is no file.
    LibraryReading ReadText(std::string text, const LibraryPlace& place, bool exportAsStandard = false);

    /// Null when the plug-in makes none.
    du::SmartPtr<du::RefCounted> CreateComponent(const std::string& action, const std::string& category,
                                                 const std::string& type) const;

    const LibraryOptions& GetOptions() const { return m_options; }
    /// That of the session; absolute.
    const std::string& GetTemporaryFolder() const { return m_temporary.GetPath(); }
    luhost::Session& GetSession() { return *m_session; }
    /// The language in which the texts of the last library were read; empty for the default one.
    const std::string& GetLanguage() const { return m_language; }

private:
    void LoadPlugin();
    void UseMessages(const std::string& file);
    void ChooseLanguage();
    void UseRoot(const std::string& root, lusymbols::SymbolTemplateLoader& loader);
    du::SmartPtr<lusymbols::SymbolTemplateLoader> MakeLoader() const;

    const LibraryOptions m_options;
    Progress& m_progress;
    TemporaryFolder m_temporary;
    std::unique_ptr<luhost::Session> m_session;
    std::unique_ptr<luhost::PluginLibrary> m_plugin;
    std::string m_messageFile;
    std::shared_ptr<const du::MessageTable> m_messages;
    std::string m_language;
    ExitCode m_fault = ExitCode::Done;
};

/// @return Done when every library was read; else whether some were, all are no libraries, or one could not be opened
ExitCode JudgeReadings(const std::vector<LibraryReading>& readings);

/// The options --root, --origin, --messages and --lang.
/// @param withShared whether a library may be read as the shared one, of which nothing can be written
void AddLibraryOptions(CLI::App& verb, LibraryOptions& options, bool withShared);

/// Tells on stderr what the loader skips or reads otherwise than it is written.
void TellEffects(const LibraryReading& reading, Progress& progress);

} // namespace lusym
