#pragma once

#include "ExitCode.h"

#include <luk/SerializedContentElement.h>

#include <vector>

namespace lusym
{

class DocumentSource;

/// A sheet, in millimetres.
struct FlatSheet {
    double width = 297.0;
    double height = 210.0;
};

/// What lies where on a sheet onto which the view of a document is baked, as large as it fits: its symbols, ready to be
/// made on a page.
class FlattenedView
{
public:
    /// @return false when the camera of the view projects nothing
    bool Read(DocumentSource& source, const FlatSheet& sheet);

    /// Puts the symbols on a page of the one size in the document that is open now. @return how many there are
    std::size_t PutOnPage(DocumentSource& source) const;

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

    FlatSheet m_sheet;
    std::vector<Symbol> m_symbols;
};

} // namespace lusym
