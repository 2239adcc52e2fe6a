#pragma once

#include <luhost/render/Strokes.h>

#include <functional>
#include <vector>

namespace luhost::render
{

/// Joins strokes of one kind that end where another begins and goes straight on: edges that lie behind one another in a
/// view, or next to one another in different planes, are one line to whoever looks at it.
///
/// Cost: n log n.
void JoinStrokes(std::vector<Stroke>& strokes);

/// Where the surfaces of two parts lie upon one another, now the one and now the other has the line between them. A short
/// piece between two of another part goes to that part.
///
/// Cost: n log n.
/// @param strokes by shape
/// @param isPart whether a shape takes part in it
void TakeSlivers(std::vector<std::vector<Stroke>>& strokes, const std::function<bool(std::size_t)>& isPart);

} // namespace luhost::render
