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

/// A page of an open document.
luhost::render::Drawing DrawPageOf(const luhost::Document& document, int page);

/// What a drawing is called in the file that it becomes: "Gearbox, view iso".
std::string DrawingTitle(const luhost::Document& document, const std::string& what);

/// @param pixelWidth,pixelHeight of PNG; 0 when it follows
bool WriteDrawing(const luhost::render::Drawing& drawing, PictureFormat format, int pixelWidth, int pixelHeight,
                  std::string& bytes, std::string& error);

} // namespace lusym
