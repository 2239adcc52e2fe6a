#include "DemoRoad.h"

#include "catalog/PartslibraryItem.h"
#include "CommandLine.h"
#include "FileText.h"
#include "LibrarySource.h"
#include "LibraryWriting.h"
#include "Printable.h"
#include "Progress.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace lusym
{

namespace
{

namespace fs = std::filesystem;

/// As a shell reads it, and a terminal may show it.
std::string ShellWord(const std::string& word)
{
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./,:=@%+-";
    if (!word.empty() && word.find_first_not_of(kPlain) == word.npos) {
        return word;
    }
    std::string quoted = "'";
    for (const char letter : word) {
        quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    }
    return Printable(quoted + "'");
}

} // namespace

bool DemoRoad::ChangeEntry(const std::string& id, const std::string& title, const std::string& file,
                           const std::string& newFile)
{
    std::error_code error;
    fs::copy_file(newFile, PathOf(file), fs::copy_options::overwrite_existing, error);
    if (error) {
        return Fail(PathOf(file) + ": cannot be replaced: " + error.message());
    }
    LibrarySource source({}, m_progress);
    if (!source.IsUsable()) {
        return false;
    }
    const std::string library = PathOf(kUserLibrary);
    const LibraryReading reading = source.Read(library);
    LibraryContent content = ContentOf(reading.examination);
    const auto entry = std::ranges::find(content.templates, id, [](const auto& item) { return item->GetId(); });
    const auto item = entry == content.templates.end() ? nullptr : du::DynamicCast<lusymbols::PartslibraryItem>(*entry);
    if (!item) {
        return Fail(library + ": has no entry " + id);
    }
    item->SetTitle(title);
    return PutLibrary(std::move(content), false, library, m_progress) == ExitCode::Done;
}

bool DemoRoad::RunInLanguage(Arguments arguments)
{
    if (!m_start.language.empty()) {
        arguments.insert(arguments.end(), {"--lang", m_start.language});
    }
    return Run(arguments);
}

bool DemoRoad::Run(const Arguments& arguments)
{
    std::string line = "$ lusym";
    for (const std::string& argument : arguments) {
        line += " " + ShellWord(argument);
    }
    return PutResult(line + "\n", m_progress) == ExitCode::Done && RunVerb(arguments, m_progress) == ExitCode::Done;
}

bool DemoRoad::Say(const std::string& words) { return PutResult("\n" + words + "\n", m_progress) == ExitCode::Done; }

bool DemoRoad::Fail(const std::string& reason)
{
    m_progress.Tell("lusym: " + Printable(reason) + ".\n");
    return false;
}

} // namespace lusym
