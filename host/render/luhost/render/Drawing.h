#pragma once

#include <dg/Color.h>
#include <dg/DPoint2D.h>
#include <dg/DPoint3D.h>
#include <dg/DVec3.h>
#include <du/SmartPtr.h>
#include <luk/ImageData.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace luhost::render
{

struct Raster;

/// What hides parts of a picture: pixels of which the alpha says how much of the picture is left.
struct DrawnMask {
    double left = 0.0; ///< of the pixels, on the drawing
    double top = 0.0;
    double width = 0.0;
    double height = 0.0;
    std::shared_ptr<Raster> pixels; ///< no output changes them
};

/// A plane in space.
struct DrawnPlane {
    dg::DPoint3D point;
    dg::DVec3 normal; ///< of any length
};

/// One picture of a drawing, with its box and its frame.
struct DrawnPicture {
    /// Corners of the box on the drawing: where the upper left, upper right, lower right and lower left corner of the
    /// picture go, flips included. Any four points; a view in perspective gives no parallelogram.
    std::array<dg::DPoint2D, 4> corners;
    du::SmartPtr<luk::ImageData> image; ///< null: the box is drawn with a cross
    dg::Color fillColor{0.0F, 0.0F, 0.0F, 0.0F};
    dg::Color lineColor{0.0F, 0.0F, 0.0F, 0.0F};
    double lineWidth = 0.0;  ///< in units of the drawing; 0 for no frame
    double opacity = 1.0;    ///< 0 to 1, of all of it
    std::string id;          ///< what people address it by; may be empty
    std::string title;       ///< shown as a tooltip where the output knows such; may be empty
    std::string description; ///< below the title; may be empty
    std::string link;        ///< where it leads to, an address of the web; may be empty
    std::optional<DrawnMask> mask;
    std::optional<DrawnPlane> plane; ///< where it stands in space; none for one that lies on the drawing
};

/// Lines of one kind that belong to one thing, drawn alike.
struct DrawnStrokes {
    struct Stroke {
        std::vector<dg::DPoint2D> points;
        bool closed = false;
    };

    std::vector<Stroke> strokes;
    double width = 1.0;         ///< in units of the drawing
    std::vector<double> dashes; ///< on and off by turns, in units of the drawing; empty for whole lines
    dg::Color color = dg::Color::BLACK;
    std::string lineClass;  ///< words that say what lines they are: "visible silhouette"; may be empty
    std::string part;       ///< what people address it by; may be empty
    std::string annotation; ///< the same of the symbol that it is; may be empty
    std::string title;      ///< shown as a tooltip where the output knows such; may be empty
    std::string link;       ///< where it leads to, an address of the web; may be empty
};

/// What is to be put on paper or screen: a sheet and what lies on it: pixels over all of it, then lines, then pictures, each
/// list's first one lowest.
///
/// Frames: x to the right and y down from the upper left corner of the sheet.
struct Drawing {
    enum class Unit { Millimetre, Pixel };

    double width = 0.0;
    double height = 0.0;
    Unit unit = Unit::Pixel;
    double pixelsPerInch = 96.0;                  ///< on paper, of a drawing in pixels
    dg::Color background{1.0F, 1.0F, 1.0F, 0.0F}; ///< alpha 0 for none
    std::string title;                            ///< of the document; may be empty
    std::shared_ptr<Raster> underlay;             ///< stretched over the sheet; null for none. No output changes it
    std::vector<DrawnStrokes> strokes;
    std::vector<DrawnPicture> pictures;
};

} // namespace luhost::render
