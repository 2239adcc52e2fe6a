#pragma once

#include <luhost/render/Drawing.h>

#include <memory>
#include <string>

namespace luhost::render
{

class PictureStore;

/// Each makes a whole file in memory. The same drawing gives the same bytes, on any machine for SVG and PDF.
///
/// Errors: false with the reason: a sheet that is empty, larger than `kMaximumPixels`, or longer than 32,767 pixels at 96 an
/// inch; no memory for it. Corners that are no numbers or make no box draw nothing, a box that is concave or crosses
/// itself is drawn without its picture.
///
/// Lines are cut off near the sheet; those with points that are no numbers or a million sheets away, and those whose width
/// is not positive, draw nothing.
///
/// Cost: linear in the lines, in the pictures, and in the pixels that are seen of those in perspective.
///
/// SVG: `<path>` elements with `class`, `data-part` and `<title>` for lines; `<image>` elements with their pictures embedded once each (`<symbol>` and `<use>` where one is used several
/// times), `<title>` and `<desc>` for tooltips, `data-annotation` with the id. Vector pictures stay vectors in SVG and PDF.
bool WriteSvg(const Drawing& drawing, std::string& svg, std::string& error);
bool WritePdf(const Drawing& drawing, std::string& pdf, std::string& error);

/// @param pixelWidth,pixelHeight size of the picture; the drawing is fitted into it and centred. 0: from the other, or from
/// the drawing, at 96 pixels an inch where it is in millimetres
bool WritePng(const Drawing& drawing, int pixelWidth, int pixelHeight, std::string& png, std::string& error);
/// The same without a file around it.
bool DrawPixels(const Drawing& drawing, int pixelWidth, int pixelHeight, Raster& pixels, std::string& error);

/// Writes drawings that show the same pictures, or one in several sizes: each picture is read and converted once.
///
/// Ownership: refers to the drawings' pictures, which outlive it.
///
/// Threads: one at a time.
class PngSeries
{
public:
    PngSeries();
    ~PngSeries();
    PngSeries(const PngSeries&) = delete;
    PngSeries& operator=(const PngSeries&) = delete;

    /// As WritePng.
    bool Write(const Drawing& drawing, int pixelWidth, int pixelHeight, std::string& png, std::string& error);

    /// Why something of a vector drawing is missing; empty as long as nothing is.
    std::string FindProblem() const;

private:
    std::unique_ptr<PictureStore> m_store;
};

inline constexpr double kMaximumPixels = 268435456.0; ///< 16,384 x 16,384

} // namespace luhost::render
