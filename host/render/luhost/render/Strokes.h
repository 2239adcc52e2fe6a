#pragma once

#include <luhost/render/LineVisibility.h>

#include <cstddef>
#include <vector>

namespace luhost::render
{

/// A line as it is drawn: one polygon from end to end.
struct Stroke {
    LineKind kind = LineKind::Crease;
    bool isVisible = true;
    bool isClosed = false;
    std::vector<dg::DPoint2D> points; ///< pixels, in whole thousandths
};

/// Joins lines of one kind that meet at a vertex, the straightest first where more than two do, and cuts them where
/// they become hidden or visible. Pieces in one straight line are one; what is too short to be seen is dropped, and gaps
/// that are as short are closed. Where the outline of a smooth surface ends within it, edges run to and fro over one
/// another; such hooks are cut off.
///
/// Cost: linear, but at a vertex at which many lines meet.
std::vector<Stroke> MakeStrokes(const std::vector<FeatureLine>& lines, const LineSpans& spans);

} // namespace luhost::render
