#include <du/FileSpec.h>
#include <du/FileSystem.h>
#include <du/SystemPath.h>
#include <du/UuidGen.h>
#include <lukapp/illustration/DrellinApp.h>

#include <filesystem>
#include <string>
#include <system_error>

#if !defined(_WIN32)
#  include <sys/stat.h>
#endif

namespace lukapp::illustration
{

namespace
{

/// Makes one folder that did not exist before; on POSIX systems nobody else may enter it, at no moment.
bool MakePrivateFolder(const std::filesystem::path& folder) noexcept
{
#if defined(_WIN32)
    std::error_code error;
    return std::filesystem::create_directory(folder, error) && !error;
#else
    return ::mkdir(folder.c_str(), S_IRWXU) == 0;
#endif
}

/// Null when the system's temporary folder does not let us make one.
du::Symbol MakeFreshFolder()
{
    std::error_code error;
    const std::filesystem::path temporary = std::filesystem::temp_directory_path(error);
    const std::filesystem::path parent = error ? temporary : std::filesystem::absolute(temporary, error);
    if (error) {
        return {};
    }
    std::string uuid;
    du::UuidGen::GetUuidString(uuid);
    const std::filesystem::path folder = parent / ("lusymbols-" + uuid);
    if (!MakePrivateFolder(folder)) {
        return {};
    }
    return du::Symbol(du::TextOfPath(folder));
}

du::Symbol WithoutTrailingSeparator(const du::Symbol& folder)
{
    du::FileSpec spec;
    spec.SetLocation(folder.GetText());
    return du::Symbol(spec.GetFileSpec());
}

} // namespace

DrellinApp::DrellinApp(const du::Symbol& temporaryDirectory)
{
    if (!temporaryDirectory.IsNull()) {
        m_temporaryDirectory = WithoutTrailingSeparator(temporaryDirectory);
        return;
    }
    m_temporaryDirectory = MakeFreshFolder();
    m_ownsDirectory = !m_temporaryDirectory.IsNull();
}

DrellinApp::~DrellinApp()
{
    if (m_ownsDirectory) {
        du::FileSystem::DeletePath(m_temporaryDirectory.GetText());
    }
}

du::SmartPtr<DrellinApp> DrellinApp::GetDrellinApp() { return du::DynamicCast<DrellinApp>(LukApp::Get()); }

bool DrellinApp::GetTemporaryDirectory(du::Symbol& directory) const
{
    if (m_temporaryDirectory.IsEmpty()) {
        return false;
    }
    directory = m_temporaryDirectory;
    return true;
}

} // namespace lukapp::illustration
