#include "OutputFile.h"

#include "FileText.h"
#include "Printable.h"
#include "TemporaryFolder.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <system_error>

namespace lusym
{

namespace
{

namespace fs = std::filesystem;

/// A pipe, a terminal or another device, also behind a link such as /dev/stdout.
bool IsStream(const std::string& name)
{
    std::error_code error;
    const fs::file_status status = fs::status(name, error);
    return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

} // namespace

OutputFile::OutputFile(const std::string& name) : m_name(name)
{
    std::string target = name;
    if (IsStandardOutput(name)) {
        m_folder = std::make_unique<TemporaryFolder>();
        if (m_folder->GetPath().empty()) {
            Fail(m_folder->GetError());
            return;
        }
        target = m_folder->GetFilePath();
    } else if (IsStream(name)) {
        Fail("it is no file that could be replaced; write to standard output with -o -");
        return;
    }
    const InterruptHold hold;
    m_file = std::make_unique<luhost::AtomicFile>(target);
    if (m_file->HasFailed()) {
        Fail(m_file->GetError());
        return;
    }
    m_cleanup = std::make_unique<InterruptCleanup>(m_file->GetTemporaryPath());
}

OutputFile::~OutputFile()
{
    const InterruptHold hold;
    m_file.reset();
}

bool OutputFile::IsFile(const std::string& name, const std::string& path)
{
    std::error_code error;
    return !IsStandardOutput(name) && fs::equivalent(name, path, error);
}

const std::string& OutputFile::GetPathToFill() const
{
    static const std::string none;
    return m_error.empty() ? m_file->GetTemporaryPath() : none;
}

bool OutputFile::Write(std::string_view text)
{
    return m_error.empty() && (m_file->Write(text) || Fail(m_file->GetError()));
}

bool OutputFile::Commit()
{
    if (!m_error.empty()) {
        return false;
    }
    if (!m_file->Commit()) {
        return Fail(m_file->GetError());
    }
    if (!m_folder) {
        return true;
    }
    std::string text;
    std::string error;
    const bool isRead = ReadFileText(m_folder->GetFilePath(), text, error);
    // Whoever reads our output may close it, which ends the program: nothing may be left then.
    m_file.reset();
    m_folder.reset();
    return (isRead && WriteStandardOutput(text, error)) || Fail(error);
}

bool OutputFile::Fail(const std::string& reason)
{
    m_error =
        (IsStandardOutput(m_name) ? std::string() : Printable(m_name) + ": cannot be written: ") + Printable(reason);
    return false;
}

void AddOutputOption(CLI::App& verb, std::string& output, const std::string& typeName)
{
    const auto refuseEmpty = [](const std::string& name) {
        if (name.empty()) {
            throw CLI::ArgumentMismatch("-o needs the name of a file");
        }
        return std::string();
    };
    verb.add_option("-o,--output", output, "The file to write; - for standard output")
        ->required()
        ->check(refuseEmpty)
        ->type_name(typeName);
}

} // namespace lusym
