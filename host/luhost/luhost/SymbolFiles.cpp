#include "SymbolFiles.h"

#include <du/FileSystem.h>
#include <luk/SerializedContentElement.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <system_error>

namespace luhost
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "Symbols/";

fs::path ToPath(std::string_view text) { return fs::path(std::u8string(text.begin(), text.end())); }

bool IsPlainComponent(std::string_view name) noexcept
{
    constexpr std::size_t kMaxBytes = 255;
    return !name.empty() && name.size() <= kMaxBytes && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\\:\0", 4)) == std::string_view::npos;
}

fs::path FolderIn(const std::string& temporaryFolder) { return ToPath(temporaryFolder) / "Symbols"; }

/// A real one, and no link to one.
bool IsFolder(const fs::path& path)
{
    std::error_code error;
    return fs::is_directory(fs::symlink_status(path, error));
}

bool ReadRegularFile(const fs::path& path, std::string& bytes)
{
    std::error_code error;
    if (!fs::is_regular_file(fs::symlink_status(path, error))) {
        return false;
    }
    const std::uintmax_t size = fs::file_size(path, error);
    std::ifstream file(path, std::ios::binary);
    if (error || !file) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(size));
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return static_cast<std::uintmax_t>(file.gcount()) == size;
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
    std::error_code error;
    fs::create_directory(folder, error);
    if (temporaryFolder.empty() || !IsFolder(folder) || !IsPlainComponent(name)) {
        return false;
    }
    const fs::path path = folder / ToPath(name);
    // A file of a document that was open before may have the same name. Of a link the link itself goes.
    fs::remove(path, error);
#if defined(_WIN32)
    std::FILE* const created = ::_wfopen(path.c_str(), L"wbx");
#else
    std::FILE* const created = std::fopen(path.c_str(), "wbx");
#endif
    if (!created) {
        return false;
    }
    const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), created) == bytes.size();
    if (std::fclose(created) == 0 && isWritten) {
        return true;
    }
    fs::remove(path, error);
    return false;
}

SymbolFiles::SymbolFiles(const std::string& temporaryFolder) : m_folder(temporaryFolder)
{
    const fs::path folder = FolderIn(temporaryFolder);
    if (temporaryFolder.empty() || !IsFolder(folder)) {
        return;
    }
    std::error_code error;
    for (fs::directory_iterator file(folder, error), end; !error && file != end; file.increment(error)) {
        const std::u8string text = file->path().filename().u8string();
        std::error_code unknown;
        if (!fs::is_regular_file(file->symlink_status(unknown))) {
            continue;
        }
        const std::string& name = *m_names.emplace(text.begin(), text.end()).first;
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
        if (!ReadRegularFile(FolderIn(m_folder) / ToPath(name), entry.bytes)) {
            error = "the picture \"" + std::string(name) + "\" cannot be read";
            return false;
        }
    }
    return true;
}

} // namespace luhost
