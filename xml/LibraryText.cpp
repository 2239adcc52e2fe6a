#include "xml/LibraryText.h"

#include "xml/LibraryPath.h"

#include <du/FileSystem.h>

#include <algorithm>

namespace lusymbols
{

LibraryText::LibraryText(const std::string& path)
{
    if (!du::FileSystem::FileReadable(path)) {
        return;
    }
    m_file.open(MakeLibraryPath(path), std::ios::binary | std::ios::ate);
    m_size = static_cast<std::size_t>(std::max<std::streamoff>(m_file.tellg(), 0));
    m_file.seekg(0);
    m_block = std::make_unique_for_overwrite<char[]>(kBlockSize);
}

bool LibraryText::ReadBlock(std::string& text)
{
    if (!m_file.is_open() || !m_file) {
        return false;
    }
    m_file.read(m_block.get(), kBlockSize);
    const std::string_view block(m_block.get(), static_cast<std::size_t>(m_file.gcount()));
    m_hasNul = block.find('\0') != std::string_view::npos;
    if (m_hasNul) {
        m_file.close();
        return false;
    }
    AppendLines(block, text);
    if (!m_file) {
        End(text);
    }
    return true;
}

std::string LibraryText::ReadRest()
{
    std::string text;
    // A claim is believed as far as eight times the bytes that came.
    constexpr std::size_t kFirstReserve = std::size_t{256} * 1024 * 1024;
    text.reserve(std::min(m_size + 1, kFirstReserve));
    while (ReadBlock(text)) {
        if (text.capacity() - text.size() < kBlockSize + 2) {
            text.reserve(std::min(m_size + 1, text.size() * 8));
        }
    }
    return m_hasNul ? std::string() : std::move(text);
}

void LibraryText::AppendLines(std::string_view block, std::string& text)
{
    if (block.empty()) {
        return;
    }
    if (m_hasPendingReturn) {
        text.append(block.front() == '\n' ? "" : "\r");
    }
    m_hasPendingReturn = block.back() == '\r';
    m_isLineOpen = block.back() != '\n';
    if (m_hasPendingReturn) {
        block.remove_suffix(1);
    }
    for (std::size_t found = 0; (found = block.find('\r', found)) != std::string_view::npos;) {
        if (block.substr(found + 1).starts_with('\n')) {
            text.append(block.substr(0, found));
            block.remove_prefix(found + 1);
            found = 0;
        } else {
            ++found;
        }
    }
    text.append(block);
}

void LibraryText::End(std::string& text)
{
    if (m_isLineOpen) {
        text.push_back('\n');
    }
}

} // namespace lusymbols
