#pragma once

#include "Interrupt.h"

#include <luhost/AtomicFile.h>

#include <memory>
#include <string>
#include <string_view>

namespace CLI
{
class App;
}

namespace lusym
{

class TemporaryFolder;

/// Where a verb writes its result: a file, which is either the whole new one or the untouched old one, or standard output
/// where the name is "-". Neither a signal nor a failure leaves anything behind.
///
/// Use: Write, or let another writer fill the file that GetPathToFill names; then Commit.
///
/// Errors: the first one stands and is told by GetError.
class OutputFile
{
public:
    explicit OutputFile(const std::string& name);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    static bool IsStandardOutput(const std::string& name) { return name == "-"; }

    /// Whether the name is another one of the file at this path.
    static bool IsFile(const std::string& name, const std::string& path);

    /// Empty after an error.
    const std::string& GetPathToFill() const;

    bool Write(std::string_view text);
    bool Commit();
    /// With the name of the file.
    const std::string& GetError() const { return m_error; }

private:
    bool Fail(const std::string& reason);

    std::string m_name;
    std::string m_error;
    std::unique_ptr<TemporaryFolder> m_folder;
    std::unique_ptr<luhost::AtomicFile> m_file;
    std::unique_ptr<InterruptCleanup> m_cleanup;
};

/// The option --output, which has to be given.
void AddOutputOption(CLI::App& verb, std::string& output, const std::string& typeName);

} // namespace lusym
