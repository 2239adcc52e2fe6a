#pragma once

namespace lucontext
{

/// Resolution of a 2D drawing.
struct Context2D {
    int horizontalPixelsPerUnit = 1;
    int verticalPixelsPerUnit = 1;
};

} // namespace lucontext
