#pragma once

#include "DocumentFile.h"

#include <du/SmartPtr.h>
#include <luk/illustration2d/Document2D.h>
#include <luk/illustration2d/Lines2D.h>

#include <cstddef>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace luhost
{

/// The lines on a page of a document, below its symbols. In the file they are the element "drawing".
///
///     <drawing>
///       <lines class="visible border" part="/bolt-1" title="Bolt" width="0.35" color="0 0 0 1">
///         <line points="10 20 30.5 40"/>
///         <line closed="true" points="0 0 10 0 10 10"/>
///       </lines>
///     </drawing>
///
/// Errors: lines that are not sound are kept as they are, and told; the others are drawn.
class PageDrawing
{
public:
    /// Points of all drawings of a document. Lines that would be more are kept and not drawn.
    static constexpr std::size_t kMaxPoints = 20'000'000;

    /// @param page number, for problems
    /// @param[in,out] pointsLeft that may still be read
    void Read(const dg::XmlElem& drawing, std::size_t page, std::size_t& pointsLeft, DocumentProblems& problems);

    /// Puts what was read on a page that has nothing yet, which is what is written from then on.
    void PutOn(const du::SmartPtr<luk::illustration2d::Document2D>& page);

    /// Appends the element, and nothing for a page without lines.
    void Write(std::string& out, int depth) const;

    void ForEachKept(const std::function<void(const KeptXml&)>& look) const;

private:
    using Lines = luk::illustration2d::Lines2D;

    bool ReadLines(const dg::XmlElem& xml, std::size_t page, std::size_t& pointsLeft, std::string& problem,
                   DocumentProblems& problems);
    std::vector<const Lines*> GetLines() const;
    void WriteLines(const Lines& lines, std::string& out, int depth) const;

    std::vector<du::SmartPtr<Lines>> m_read;
    std::unordered_map<const Lines*, KeptXml> m_keptOf; ///< of those that were read
    KeptXml m_kept;
    du::SmartPtr<luk::illustration2d::Document2D> m_page;
};

} // namespace luhost
