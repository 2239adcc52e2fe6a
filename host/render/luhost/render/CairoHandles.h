#pragma once

#include <cairo.h>
#include <memory>

namespace luhost::render
{

struct CairoDeleter {
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
};
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoDeleter>;
using CairoContext = std::unique_ptr<cairo_t, CairoDeleter>;

/// Takes what cairo writes, at the end of the std::string that is the closure.
cairo_status_t AppendToText(void* closure, const unsigned char* bytes, unsigned int count) noexcept;

/// Columns or rows that a surface of pixels has at most.
inline constexpr int kMaximumSide = 32767;

} // namespace luhost::render
