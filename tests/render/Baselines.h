#pragma once

#include <luhost/render/Drawing.h>

#include <string>

namespace test
{

/// Compares a drawing with what it looked like: the SVG byte by byte, the PNG within one level. What differs is written beside
/// the build's other results, with the difference.
void ExpectBaseline(const luhost::render::Drawing& drawing, const std::string& name);

/// The same for a picture that is a file already.
void ExpectPngBaseline(const std::string& png, const std::string& name);

} // namespace test
