#pragma once

#include "xml/LibraryText.h"

#include <dg/XmlElem.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lusymbols
{

using XmlRoot = std::unique_ptr<dg::XmlElem, dg::XmlFreer>;

/// A library document cut into runs of whole entries and the rest, so that neither its text nor a tree of it has to be in
/// memory as a whole.
///
/// Use: internal to the loader. Take all pieces, on as many threads as are there, and parse each. What is left is the
/// rest, in which a marker element stands in place of each piece. When every piece has a tree and HasAllMarkers() agrees
/// to that of the rest, then the document is well-formed, and its tree is that of the rest with the entries of each
/// piece in place of its marker. In every other case nothing is known but that it cannot be cut: parse it whole.
///
/// Rationale: the tree of a document takes several times its size, and comes from memory once when it is made and again
/// when it is read; that of a piece stays in the cache. Cutting wants no knowledge of what stands before, where a start
/// tag might be within a comment: a marker there would be no element, and a piece that does not consist of whole entries
/// has no tree of its own.
///
/// Threads and locks: Take on any thread, several at once; all else when that has ended.
///
/// Errors: nothing but std::bad_alloc.
///
/// Cost: linear.
class LibraryPieces
{
public:
    struct Piece {
        std::size_t number = 0;   ///< from 0, in the order of the document
        std::string_view section; ///< name of the section in which the entries have to lie
        std::string text;

        /// A document whose only section has the entries; null when they are no whole ones. Uses the text up.
        XmlRoot Parse();
    };

    explicit LibraryPieces(LibraryText&& file);

    /// Reads on to the next piece.
    /// @return false when there is none
    bool Take(Piece& piece);

    std::size_t CountPieces() const noexcept { return m_sections.size(); }

    /// The document with a marker in place of each piece; empty when it is none, since it holds a NUL byte.
    std::string TakeRest();

    static bool IsMarker(const dg::XmlElem& element) noexcept;

    /// Whether the sections below this root, which is that of the rest, have all markers, each in its section.
    bool HasAllMarkers(const dg::XmlElem& root) const noexcept;

private:
    void BeginText(std::string_view begin);
    void AppendRest(std::string_view text);

    std::mutex m_lock;
    LibraryText m_file;
    /// What was read and not taken, behind what a piece begins with, so that it becomes one without a copy. But at the
    /// beginning of the file it is an entry of the section that it begins with.
    std::string m_text;
    std::string_view m_section;
    std::vector<std::string_view> m_sections; ///< of the pieces
    std::string m_rest;
    bool m_isAmbiguous = false;
};

} // namespace lusymbols
