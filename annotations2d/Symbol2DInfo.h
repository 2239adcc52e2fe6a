#pragma once

#include "plugin/Export.h"

#include <dg/Color.h>
#include <dg/DPoint3D.h>
#include <dg/Location.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/illustration/SequencerTag.h>
#include <luk/Image.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace luannotations
{

/// All that a 2D symbol shows and is saved with, as a plain record.
///
/// Use: fill one to make a symbol, or to change several properties of one at a time: `Symbol2D::SetSymbolInfo`.
///
/// Frames: centre, width and height are in units of the page or of the scene; width and height are half of what is seen.
///
/// Ownership: shares image and tags with its copies.
///
/// Cost: every new record, copies included, reads a preference; pass records by reference and keep none in vectors that
/// grow.
class LUSYMBOLS_API Symbol2DInfo
{
public:
    /// Names no template.
    static constexpr std::uint64_t kNoTemplate = std::numeric_limits<std::uint64_t>::max();

    /// Both colours are the one that the user prefers for shapes; black outside a session.
    Symbol2DInfo();
    Symbol2DInfo(const Symbol2DInfo& other);
    Symbol2DInfo& operator=(const Symbol2DInfo& other);
    ~Symbol2DInfo();

    du::Symbol title;
    du::Symbol description;
    bool showTooltipTitle = false;
    bool showTooltipDescription = false;
    std::string templateId;
    du::Symbol imageName;     ///< of the library entry
    du::Symbol imageFileName; ///< one component, in the folder or package that holds the document's pictures
    du::SmartPtr<luk::Image> image;
    dg::DPoint3D center = dg::DPoint3D::ORIGIN;
    dg::Location location = dg::Location::ZERO; ///< turns a stamp that is no billboard; ZERO for none
    float width = 0.0F;
    float height = 0.0F;
    dg::Color lineColor = dg::Color::BLACK;
    std::int32_t lineWidth = 1;
    std::int32_t lineStipple = 0;
    dg::Color fillColor = dg::Color::BLACK;
    float transparency = 0.5F; ///< 0 opaque to 1 clear
    bool screenSpace = false;
    std::int32_t anchor = 0;
    bool reverse = false; ///< flipped top to bottom
    bool flipHorizontally = false;
    std::int32_t rotateRight = 0; ///< in degrees, multiples of 90
    std::int32_t rotateLeft = 0;  ///< in degrees; also clockwise, added to rotateRight
    bool isBillboard3D = true;
    std::int32_t pageNum = 0;
    std::uint64_t templateIndex = kNoTemplate; ///< in the symbol template collection
    std::vector<du::SmartPtr<luk::illustration::SequencerTag>> sequencerTags;

protected:
    void ApplyPreferenceValues();
};

} // namespace luannotations
