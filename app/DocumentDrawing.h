#pragma once

#include <luhost/render/Drawing.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace luhost
{
class Document;
}

namespace lusym
{

enum class PictureFormat { Svg, Pdf, Png };

/// By the ending of the names of such files, in lower case.
const std::map<std::string, PictureFormat>& PictureFormats();
std::optional<PictureFormat> FindPictureFormat(const std::string& ending);

/// What a picture of a document shows, and how.
struct DrawingOptions {
    int page = 0;        ///< from 1; 0 for the view
    int pixelWidth = 0;  ///< of the view and of PNG; 0 when it follows
    int pixelHeight = 0; ///< the same
    dg::Color background{1.0F, 1.0F, 1.0F, 0.0F};
};

/// A page of an open document.
luhost::render::Drawing DrawPageOf(const luhost::Document& document, int page);

/// What a drawing is called in the file that it becomes: "Gearbox, view iso".
std::string DrawingTitle(const luhost::Document& document, const std::string& what);

/// @param pixelWidth,pixelHeight of PNG; 0 when it follows
bool WriteDrawing(const luhost::render::Drawing& drawing, PictureFormat format, int pixelWidth, int pixelHeight,
                  std::string& bytes, std::string& error);

/// Draws a page or the view of an open document into the bytes of a file.
/// @return false with the reason when it cannot be drawn
bool DrawDocument(const luhost::Document& document, const DrawingOptions& options, PictureFormat format,
                  std::string& bytes, std::string& error);

} // namespace lusym
