#pragma once

#include "Interrupt.h"

#include <memory>
#include <string>

namespace lusym
{

/// A fresh folder that nobody else can enter, deleted with all that it holds, by a signal too.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Absolute; empty when none could be made.
    const std::string& GetPath() const { return m_path; }
    const std::string& GetError() const { return m_error; }
    /// The place for a file; the folder begins without one.
    const std::string& GetFilePath() const { return m_filePath; }

private:
    std::string m_path;
    std::string m_filePath;
    std::string m_error;
    std::unique_ptr<InterruptCleanup> m_cleanup;
};

} // namespace lusym
