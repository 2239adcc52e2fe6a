#pragma once

#include "ExitCode.h"
#include "ViewDrawing.h"

#include <luk/illustration2d/Lines2D.h>
#include <luk/SerializedContentElement.h>

#include <string>
#include <vector>

namespace lusym
{

class DocumentSource;

/// A sheet, and what of the view comes onto it.
struct FlatSheet {
    double width = 297.0;  ///< in millimetres
    double height = 210.0; ///< the same
    ViewPicture view;      ///< its style is that of lines, whatever it says
};

/// What lies where on a sheet onto which the view of a document is baked, as large as it fits: the lines of its parts and of
/// symbols that are shapes, and its symbols, ready to be made on a page.
class FlattenedView
{
public:
    /// @return false with the reason
    bool Read(DocumentSource& source, const FlatSheet& sheet, std::string& error);

    /// Puts lines and symbols on a page of the one size in the document that is open now. @return how many symbols there are
    std::size_t PutOnPage(DocumentSource& source) const;

    std::size_t CountLines() const;
    /// What is left out, and why.
    const std::vector<std::string>& GetProblems() const { return m_problems; }

private:
    struct Box {
        double left = 0.0;
        double bottom = 0.0;
        double width = 0.0;
        double height = 0.0;
    };
    struct Symbol {
        luk::SerializedContentElement content;
        Box box; ///< of a shape, on the sheet
        du::Symbol idPath;
    };

    bool ReadLines(ViewDrawing& view, const dg::Camera3D& camera, std::string& error);
    void ReadSymbols(const luhost::Document& document, const dg::Camera3D& camera);

    FlatSheet m_sheet;
    std::vector<du::SmartPtr<luk::illustration2d::Lines2D>> m_lines;
    std::vector<Symbol> m_symbols;
    std::vector<std::string> m_problems;
};

} // namespace lusym
