#include "TemporaryFolder.h"

#include "Printable.h"

#include <du/FileSystem.h>
#include <du/Utf8.h>
#include <du/UuidGen.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace lusym
{

namespace
{

#if defined(_WIN32)

/// Below the user's own folder, which lets nobody else in.
std::string PathBelow(const std::filesystem::path& parent)
{
    std::string uuid;
    du::UuidGen::GetUuidString(uuid);
    return du::WideStrToUtf8((parent / ("lusym-" + uuid)).native());
}

int MakeFresh(const std::string& path) { return du::FileSystem::Mkdir(path); }

#else

std::string PathBelow(const std::filesystem::path& parent) { return parent / "lusym-XXXXXX"; }

/// @param[in,out] path the last letters of which become what no other has
int MakeFresh(std::string& path) { return mkdtemp(path.data()) ? 0 : errno; }

#endif

} // namespace

TemporaryFolder::TemporaryFolder()
{
    std::error_code error;
    const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
    std::string path = PathBelow(error ? std::filesystem::path("/tmp") : parent);
    const InterruptHold hold;
    if (const int reason = MakeFresh(path); reason != 0) {
        m_error = "cannot make the temporary folder \"" + Printable(path) + "\": " + std::strerror(reason);
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
