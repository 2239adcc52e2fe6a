#include "Fuzzing.h"

#include <du/RefCounted.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdlib.h>
#include <system_error>

namespace fuzz
{

namespace
{

namespace fs = std::filesystem;

class Folder
{
public:
    Folder()
    {
        const fs::path memory = "/dev/shm";
        std::error_code error;
        const fs::path parent = fs::is_directory(memory, error) ? memory : fs::temp_directory_path();
        m_path = (parent / "lusymbols-fuzz-XXXXXX").string();
        Require(mkdtemp(m_path.data()) != nullptr, "a temporary folder can be made");
    }
    ~Folder()
    {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::string& GetPath() const { return m_path; }

private:
    std::string m_path;
};

} // namespace

void Require(bool holds, std::string_view what)
{
    if (!holds) {
        std::fprintf(stderr, "\nfuzz: this does not hold: %.*s\n", static_cast<int>(what.size()), what.data());
        std::abort();
    }
}

void RequireSame(std::string_view first, std::string_view second, std::string_view what)
{
    if (first != second) {
        for (const std::string_view text : {first, second}) {
            std::fputs("\nfuzz: one of two that are to be the same:\n", stderr);
            std::fwrite(text.data(), 1, text.size(), stderr);
        }
        Require(false, what);
    }
}

Balance::Balance() : m_before(du::RefCounted::GetLiveObjectCount()) {}

Balance::~Balance() { Require(du::RefCounted::GetLiveObjectCount() == m_before, "no counted object is left"); }

const std::string& GetFolder()
{
    static const Folder folder;
    return folder.GetPath();
}

std::string FillFile(const std::string& name, std::string_view bytes)
{
    const std::string path = GetFolder() + "/" + name;
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path;
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace fuzz
