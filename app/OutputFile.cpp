#include "OutputFile.h"

#include "FileText.h"
#include "Printable.h"
#include "TemporaryFolder.h"

namespace lusym
{

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
    m_error = IsStandardOutput(m_name) ? reason : Printable(m_name) + ": cannot be written: " + Printable(reason);
    return false;
}

} // namespace lusym
