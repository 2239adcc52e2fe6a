#include "ProgramPaths.h"

#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <system_error>
#if defined(_WIN32)
#  include <du/Utf8.h>

#  include <windows.h>
#endif

namespace lusym
{

namespace
{

namespace fs = std::filesystem;

#if defined(_WIN32)

constexpr const char* kPluginName = "lusymbols.dll";
constexpr const char* kProgramEnd = ".exe";

fs::path ProgramFolder()
{
    std::wstring path(MAX_PATH, L'\0');
    DWORD size = 0;
    while ((size = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()))) == path.size()) {
        path.resize(path.size() * 2);
    }
    path.resize(size);
    return fs::path(path).parent_path();
}

std::string TextOf(const fs::path& path) { return du::WideStrToUtf8(path.native()); }

#else

constexpr const char* kPluginName = "liblusymbols.so";
constexpr const char* kProgramEnd = "";

fs::path ProgramFolder()
{
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

std::string TextOf(const fs::path& path) { return path; }

#endif

std::string ProgramBeside(const std::string& name) { return TextOf(ProgramFolder() / (name + kProgramEnd)); }

} // namespace

std::string FindPlugin()
{
    if (const char* const named = std::getenv("LUSYMBOLS_PLUGIN"); named && *named != '\0') {
        return named;
    }
    const fs::path folder = ProgramFolder();
    const fs::path name = kPluginName;
    std::error_code error;
    for (const fs::path& candidate : {folder.parent_path() / LUSYM_LIBRARY_FOLDER / name, folder / name}) {
        if (fs::exists(candidate, error)) {
            return TextOf(candidate);
        }
    }
    return TextOf(folder.parent_path() / "lib" / name);
}

std::string FindImporter()
{
    if (const char* const named = std::getenv("LUSYM_IMPORT"); named && *named != '\0') {
        return named;
    }
    return ProgramBeside("lusym-import");
}

std::string FindPluginChecker() { return ProgramBeside("lusym-plugin-check"); }

std::string FindExample(const std::string& name)
{
    return TextOf(ProgramFolder().parent_path() / "share" / "lusymbols" / "examples" / name);
}

} // namespace lusym
