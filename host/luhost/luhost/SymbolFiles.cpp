#include "SymbolFiles.h"

#include <du/FileSpec.h>
#include <du/SystemPath.h>
#include <du/Utf8.h>
#include <luk/SerializedContentElement.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <system_error>
#if defined(_WIN32)
#  include <fcntl.h>
#  include <io.h>
#  include <sys/stat.h>
#else
#  include <dirent.h>
#  include <fcntl.h>
#  include <sys/stat.h>
#endif

namespace luhost
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "Symbols/";

bool IsPlainComponent(std::string_view name) noexcept
{
    constexpr std::size_t kMaxBytes = 255;
    return !name.empty() && name.size() <= kMaxBytes && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\\:\0", 4)) == std::string_view::npos;
}

std::string FolderText(const std::string& temporaryFolder)
{
    return temporaryFolder + du::FileSpec::DIR_SEP_CHAR + "Symbols";
}

fs::path FolderIn(const std::string& temporaryFolder) { return du::SystemPath(FolderText(temporaryFolder)); }

fs::path FileIn(const std::string& temporaryFolder, std::string_view name)
{
    return du::SystemPath(FolderText(temporaryFolder).append(1, du::FileSpec::DIR_SEP_CHAR).append(name));
}

#if defined(_WIN32)

using du::WindowsFiles;

/// The system would open a device, another part of the file, or a file of another name.
bool IsNameOfSystem(std::string_view name)
{
    const bool isPlain = std::ranges::none_of(name, [](char c) {
        return static_cast<unsigned char>(c) < ' ' || std::string_view("<>|?*\"").find(c) != std::string_view::npos;
    });
    return isPlain && !name.ends_with('.') && !name.ends_with(' ') && !WindowsFiles::NamesDevice(du::SystemPath(name));
}

bool IsFolder(const fs::path& path)
{
    return WindowsFiles::KindOf(path) == WindowsFiles::Kind::Folder && !WindowsFiles::IsLink(path);
}

bool IsRegularFile(const fs::path& path)
{
    return WindowsFiles::KindOf(path) == WindowsFiles::Kind::File && !WindowsFiles::IsLink(path);
}

void MakeFolder(const fs::path& path) { ::_wmkdir(path.c_str()); }

/// Never a folder.
void Remove(const fs::path& path)
{
    if (!IsFolder(path)) {
        WindowsFiles::DeleteTree(path);
    }
}

std::FILE* CreateExclusively(const fs::path& path)
{
    const int descriptor =
        ::_wopen(path.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    return descriptor < 0 ? nullptr : ::_fdopen(descriptor, "wb");
}

std::vector<std::string> ListFiles(const fs::path& folder)
{
    std::vector<std::string> names;
    for (const WindowsFiles::Entry& entry : WindowsFiles::ListFolder(folder)) {
        if (entry.kind == WindowsFiles::Kind::File) {
            names.push_back(du::WideStrToUtf8(entry.name));
        }
    }
    return names;
}

#else

/// Every name is one of a file.
bool IsNameOfSystem(std::string_view) { return true; }

/// A real one, and no link to one.
bool IsFolder(const fs::path& path)
{
    std::error_code error;
    return fs::is_directory(fs::symlink_status(path, error));
}

bool IsRegularFile(const fs::path& path)
{
    std::error_code error;
    return fs::is_regular_file(fs::symlink_status(path, error));
}

void MakeFolder(const fs::path& path)
{
    std::error_code error;
    fs::create_directory(path, error);
}

void Remove(const fs::path& path)
{
    std::error_code error;
    fs::remove(path, error);
}

std::FILE* CreateExclusively(const fs::path& path) { return std::fopen(path.c_str(), "wbx"); }

/// By the system's own calls: the iterator of the standard library ends the program when it finds no memory.
std::vector<std::string> ListFiles(const fs::path& folder)
{
    struct Closer {
        void operator()(DIR* open) const noexcept { ::closedir(open); }
    };
    std::vector<std::string> names;
    const std::unique_ptr<DIR, Closer> open(::opendir(folder.c_str()));
    while (const dirent* const entry = open ? ::readdir(open.get()) : nullptr) {
        struct stat status {
        };
        const int found = ::fstatat(::dirfd(open.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW);
        if (found == 0 && S_ISREG(status.st_mode)) {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

#endif

bool ReadRegularFile(const fs::path& path, std::string& bytes)
{
    if (!IsRegularFile(path)) {
        return false;
    }
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    file.seekg(0);
    if (!file) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(size));
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file.gcount() == size;
}

} // namespace

std::string_view SymbolFiles::NameOfEntry(std::string_view entryName) noexcept
{
    const bool isBelow = entryName.starts_with(kPrefix);
    const std::string_view name = entryName.substr(isBelow ? kPrefix.size() : 0);
    return isBelow && IsPlainComponent(name) ? name : std::string_view();
}

bool SymbolFiles::Unpack(const std::string& temporaryFolder, std::string_view name, const std::string& bytes)
{
    const fs::path folder = FolderIn(temporaryFolder);
    MakeFolder(folder);
    if (temporaryFolder.empty() || !IsFolder(folder) || !IsPlainComponent(name) || !IsNameOfSystem(name)) {
        return false;
    }
    const fs::path path = FileIn(temporaryFolder, name);
    // A file of a document that was open before may have the same name. Of a link the link itself goes.
    Remove(path);
    std::FILE* const created = CreateExclusively(path);
    if (!created) {
        return false;
    }
    const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), created) == bytes.size();
    if (std::fclose(created) == 0 && isWritten) {
        return true;
    }
    Remove(path);
    return false;
}

SymbolFiles::SymbolFiles(const std::string& temporaryFolder) : m_folder(temporaryFolder)
{
    const fs::path folder = FolderIn(temporaryFolder);
    if (temporaryFolder.empty() || !IsFolder(folder)) {
        return;
    }
    for (std::string& text : ListFiles(folder)) {
        const std::string& name = *m_names.insert(std::move(text)).first;
        if (IsPlainComponent(name)) {
            bool& isMarked = m_files[name];
            // A name that nobody has interned is no value of any content.
            if (const du::Symbol symbol = du::Symbol::Find(name); !symbol.IsNull()) {
                m_bySymbol[symbol] = &isMarked;
            }
        }
    }
}

void SymbolFiles::Use(const luk::SerializedContentElement& content)
{
    if (m_files.empty()) {
        return;
    }
    std::vector<const luk::SerializedContentElement*> pending = {&content};
    while (!pending.empty()) {
        const luk::SerializedContentElement& element = *pending.back();
        pending.pop_back();
        UseOwn(element);
        for (std::size_t i = 0; i < element.GetChildCount(); ++i) {
            pending.push_back(&element.GetChild(i));
        }
    }
}

void SymbolFiles::UseOwn(const luk::SerializedContentElement& element)
{
    UseForeign(element.GetForeign());
    for (const luk::SerializedContentElement::Property& property : element.GetProperties()) {
        if (property.foreign) {
            UseForeign(*property.foreign);
        }
        const auto* const value = std::get_if<du::Symbol>(&property.value);
        const auto file = value ? m_bySymbol.find(*value) : m_bySymbol.end();
        if (file != m_bySymbol.end()) {
            *file->second = true;
        }
    }
}

void SymbolFiles::UseForeign(std::string_view xml)
{
    for (std::size_t start = xml.find('"'); start != std::string_view::npos && !m_files.empty();) {
        const std::size_t end = std::min(xml.find('"', start + 1), xml.size());
        if (const auto file = m_files.find(xml.substr(start + 1, end - start - 1)); file != m_files.end()) {
            file->second = true;
        }
        start = end < xml.size() ? xml.find('"', end + 1) : std::string_view::npos;
    }
}

bool SymbolFiles::Pack(std::vector<PackageEntry>& entries, std::string& error) const
{
    for (const auto& [name, isMarked] : m_files) {
        if (!isMarked) {
            continue;
        }
        PackageEntry& entry = entries.emplace_back();
        entry.name = std::string(kPrefix).append(name);
        if (!ReadRegularFile(FileIn(m_folder, name), entry.bytes)) {
            error = "the picture \"" + std::string(name) + "\" cannot be read";
            return false;
        }
    }
    return true;
}

} // namespace luhost
