#pragma once

#include <luhost/render/FeatureLines.h>

#include <cstddef>
#include <vector>

namespace luhost::render
{

/// A stretch of a line that is visible or hidden as a whole. Fractions of its length on the screen.
struct LineSpan {
    double from = 0.0;
    double to = 1.0;
    bool isVisible = true;
};

/// The spans of many lines: each line's follow one another from 0 to 1, visible and hidden by turns.
struct LineSpans {
    const LineSpan* Begin(std::size_t line) const noexcept { return spans.data() + first[line]; }
    const LineSpan* End(std::size_t line) const noexcept { return spans.data() + first[line + 1]; }

    std::vector<LineSpan> spans;
    std::vector<std::size_t> first; ///< for each line, and the end of the last
};

/// Finds what of lines the opaque shapes hide.
///
/// Rays go from points of a line to the viewer, from a little before it and, where its faces lie on one side, a little beside
/// them, so that it is not hidden by what it belongs to. Where the answer changes from one point to the next, the place is
/// found by halving, and then taken exactly from the edge of what is in front: it does not depend on how rays are computed.
///
/// Cost: a ray for every three pixels of a line and at least one, ten more for each change. What is narrower than three
/// pixels may be missed.
LineSpans FindLineSpans(const PreparedScene& scene, const std::vector<FeatureLine>& lines, const ViewFrame& view);

} // namespace luhost::render
