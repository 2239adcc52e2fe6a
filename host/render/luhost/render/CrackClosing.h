#pragma once

#include <luhost/render/MeshEdges.h>

namespace luhost::render
{

/// Joins the rims of hairline cracks: faces that were cut into triangles one by one, and written with few digits, do not quite
/// meet, and each crack would be drawn as two borders.
///
/// Vertices of borders become one where they are much nearer to each other than to the vertices beside them. Their triangles
/// stay as many as they are. @return whether there were any, so that the edges have to be found anew.
///
/// Cost: linear in the edges, and n log n in the vertices of borders.
bool CloseCracks(WeldedMesh& mesh, const MeshEdges& edges);

} // namespace luhost::render
