#pragma once

#include <luhost/render/Raster.h>

#include <string>

namespace luhost::render
{

/// A whole PNG file of the pixels, without alpha when they are all opaque.
///
/// Drawings have flat areas and fine lines: unfiltered rows are packed at a third of the cost of rows whose filters are tried
/// out, into fewer bytes.
/// @return false when there is no memory for it
bool EncodePng(const Raster& pixels, std::string& png);

} // namespace luhost::render
