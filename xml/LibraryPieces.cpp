#include "xml/LibraryPieces.h"

#include "xml/LibraryFormat.h"

#include <algorithm>
#include <utility>

namespace lusymbols
{

namespace
{

constexpr std::string_view kMarkerName = "piece";
constexpr std::string_view kMarkerStart = "<piece";
constexpr std::string_view kMarker = "<piece/>";
// As deep as in the document, so that the limit of levels is the same.
constexpr std::string_view kPieceStart = "<piece><piece>";
constexpr std::string_view kPieceEnd = "</piece></piece>";

/// The start tags before which a document is cut. Entries that begin otherwise are well-formed, too, but not cut off.
struct EntryStart {
    std::string_view tag;
    std::string_view section;
};
constexpr EntryStart kEntryStarts[] = {{"<shape ", format::kShapes}, {"<symbol ", format::kSymbols}};
constexpr std::size_t kLongestStart = 8;

struct Cut {
    std::size_t offset = std::string_view::npos;
    std::string_view section;
};

/// The last entry that begins at or behind an offset; npos where none does.
Cut FindLastEntry(std::string_view text, std::size_t first) noexcept
{
    std::size_t end = text.size();
    while (end > first) {
        const std::size_t offset = text.rfind('<', end - 1);
        if (offset == std::string_view::npos || offset < first) {
            break;
        }
        for (const EntryStart& start : kEntryStarts) {
            if (text.substr(offset).starts_with(start.tag)) {
                return {offset, start.section};
            }
        }
        end = offset;
    }
    return {};
}

} // namespace

LibraryPieces::LibraryPieces(LibraryText&& file) : m_file(std::move(file)) { BeginText({}); }

bool LibraryPieces::Take(Piece& piece)
{
    const std::lock_guard lock(m_lock);
    for (;;) {
        const std::size_t sizeBefore = m_text.size();
        if (!m_file.ReadBlock(m_text)) {
            return false;
        }
        const std::size_t afterFirst = kPieceStart.size() + 1;
        const Cut cut = FindLastEntry(m_text, std::max(afterFirst, sizeBefore + 1 - kLongestStart));
        if (cut.offset == std::string_view::npos) {
            continue;
        }
        std::string taken = std::move(m_text);
        BeginText(std::string_view(taken).substr(cut.offset));
        taken.resize(cut.offset);
        const std::string_view section = std::exchange(m_section, cut.section);
        if (cut.section == section) {
            piece = {m_sections.size(), section, std::move(taken.append(kPieceEnd))};
            m_sections.push_back(section);
            m_rest.append(kMarker);
            return true;
        }
        AppendRest(std::string_view(taken).substr(kPieceStart.size()));
    }
}

void LibraryPieces::BeginText(std::string_view begin)
{
    m_text.clear();
    m_text.reserve(kPieceStart.size() + begin.size() + LibraryText::kBlockRoom + kPieceEnd.size());
    m_text.append(kPieceStart).append(begin);
}

std::string LibraryPieces::TakeRest()
{
    AppendRest(std::string_view(m_text).substr(kPieceStart.size()));
    return m_file.HasNul() ? std::string() : std::move(m_rest);
}

void LibraryPieces::AppendRest(std::string_view text)
{
    m_isAmbiguous = m_isAmbiguous || text.find(kMarkerStart) != std::string_view::npos;
    m_rest.append(text);
}

bool LibraryPieces::IsMarker(const dg::XmlElem& element) noexcept { return element.GetName() == kMarkerName; }

bool LibraryPieces::HasAllMarkers(const dg::XmlElem& root) const noexcept
{
    auto next = m_sections.begin();
    for (dg::XmlElem section = root.FirstChild(); section; section = section.NextSibling()) {
        for (dg::XmlElem child = section.FirstChild(); child; child = child.NextSibling()) {
            if (!IsMarker(child)) {
                continue;
            }
            if (next == m_sections.end() || *next != section.GetName()) {
                return false;
            }
            ++next;
        }
    }
    return next == m_sections.end() && !m_isAmbiguous;
}

XmlRoot LibraryPieces::Piece::Parse()
{
    XmlRoot root(dg::ParseXml(std::move(text), false, nullptr));
    // End tags among the entries might have closed the elements around them, and others have opened more.
    return root && root->CountChildren() == 1 ? std::move(root) : nullptr;
}

} // namespace lusymbols
