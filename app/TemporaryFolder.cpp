#include "TemporaryFolder.h"

#include "Printable.h"

#include <du/FileSystem.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace lusym
{

TemporaryFolder::TemporaryFolder()
{
    std::error_code error;
    const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
    std::string path = (error ? std::filesystem::path("/tmp") : parent) / "lusym-XXXXXX";
    const InterruptHold hold;
    if (!mkdtemp(path.data())) {
        m_error = "cannot make the temporary folder \"" + Printable(path) + "\": " + std::strerror(errno);
        return;
    }
    m_path = path;
    m_filePath = path + "/file";
    m_cleanup = std::make_unique<InterruptCleanup>(m_path);
}

TemporaryFolder::~TemporaryFolder()
{
    if (!m_path.empty()) {
        const InterruptHold hold;
        du::FileSystem::DeletePath(m_path);
    }
}

} // namespace lusym
