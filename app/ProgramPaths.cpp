#include "ProgramPaths.h"

#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <system_error>

namespace lusym
{

namespace
{

namespace fs = std::filesystem;

fs::path ProgramFolder()
{
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

} // namespace

std::string FindPlugin()
{
    if (const char* const named = std::getenv("LUSYMBOLS_PLUGIN"); named && *named != '\0') {
        return named;
    }
    const fs::path folder = ProgramFolder();
    const fs::path name = "liblusymbols.so";
    std::error_code error;
    for (const fs::path& candidate : {folder.parent_path() / LUSYM_LIBRARY_FOLDER / name, folder / name}) {
        if (fs::exists(candidate, error)) {
            return candidate;
        }
    }
    return folder.parent_path() / "lib" / name;
}

std::string FindImporter()
{
    if (const char* const named = std::getenv("LUSYM_IMPORT"); named && *named != '\0') {
        return named;
    }
    return ProgramFolder() / "lusym-import";
}

std::string FindPluginChecker() { return ProgramFolder() / "lusym-plugin-check"; }

std::string FindExample(const std::string& name)
{
    return ProgramFolder().parent_path() / "share" / "lusymbols" / "examples" / name;
}

} // namespace lusym
