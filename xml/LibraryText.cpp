#include "xml/LibraryText.h"

#include "xml/LibraryPath.h"

#include <du/FileSystem.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace lusymbols
{

namespace
{

/// Makes line feeds alone of those behind a carriage return.
void DropReturns(std::string& text, std::size_t start)
{
    constexpr std::string_view kReturnAndFeed = "\r\n";
    std::size_t found = text.find(kReturnAndFeed, start);
    std::size_t end = std::min(found, text.size());
    while (found != std::string::npos) {
        const std::size_t next = text.find(kReturnAndFeed, found + 1);
        const std::size_t count = std::min(next, text.size()) - (found + 1);
        std::copy_n(text.begin() + static_cast<std::ptrdiff_t>(found + 1), count,
                    text.begin() + static_cast<std::ptrdiff_t>(end));
        end += count;
        found = next;
    }
    text.resize(end);
}

} // namespace

LibraryText::LibraryText(const std::string& path)
{
    if (!du::FileSystem::FileReadable(path)) {
        return;
    }
    m_file.open(MakeLibraryPath(path), std::ios::binary | std::ios::ate);
    m_size = static_cast<std::size_t>(std::max<std::streamoff>(m_file.tellg(), 0));
    m_file.seekg(0);
}

bool LibraryText::ReadBlock(std::string& text)
{
    if (!m_file.is_open() || !m_file) {
        return false;
    }
    const std::size_t start = text.size();
    m_hasNul = !AppendBytes(text);
    if (m_hasNul) {
        text.resize(start);
        m_file.close();
        return false;
    }
    EndLines(text, start);
    return true;
}

/// Behind a carriage return where one is pending.
/// @return false when a NUL byte is among them
bool LibraryText::AppendBytes(std::string& text)
{
    text.append(m_hasPendingReturn ? 1 : 0, '\r');
    const std::size_t start = text.size();
    text.resize(start + kBlockSize);
    m_file.read(text.data() + start, kBlockSize);
    text.resize(start + static_cast<std::size_t>(m_file.gcount()));
    return text.find('\0', start) == std::string::npos;
}

/// Of what was appended to the text from a start on.
void LibraryText::EndLines(std::string& text, std::size_t start)
{
    if (text.size() > start) {
        m_isLineOpen = text.back() != '\n';
        m_hasPendingReturn = text.back() == '\r';
        text.resize(text.size() - (m_hasPendingReturn ? 1 : 0));
        DropReturns(text, start);
    }
    if (!m_file && m_isLineOpen) {
        text.push_back('\n');
    }
}

std::string LibraryText::ReadRest()
{
    std::string text;
    // A claim is believed as far as eight times the bytes that came.
    constexpr std::size_t kFirstReserve = std::size_t{256} * 1024 * 1024;
    text.reserve(std::min(m_size, kFirstReserve) + kBlockRoom);
    while (ReadBlock(text)) {
        if (text.capacity() - text.size() < kBlockRoom) {
            text.reserve(std::min(m_size, text.size() * 8) + kBlockRoom);
        }
    }
    return m_hasNul ? std::string() : std::move(text);
}

} // namespace lusymbols
