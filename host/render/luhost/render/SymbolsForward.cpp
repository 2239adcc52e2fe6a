#include <luhost/render/SymbolsForward.h>
#include <luhost/render/ViewCameras.h>

#include <algorithm>
#include <limits>

namespace luhost::render
{

namespace
{

/// How far before the eye a box reaches.
struct Depths {
    double nearest = std::numeric_limits<double>::max();
    double farthest = std::numeric_limits<double>::lowest();

    void Enclose(const dg::DBox& box, const dg::DPoint3D& eye, const dg::DVec3& away)
    {
        for (const dg::DPoint3D& corner : CornersOf(box)) {
            const double depth = (corner - eye).Dot(away);
            nearest = std::min(nearest, depth);
            farthest = std::max(farthest, depth);
        }
    }
};

dg::DMat44 Scaled(double factor, const dg::DVec3& shift)
{
    dg::DMat44 matrix;
    for (int axis = 0; axis < 3; ++axis) {
        matrix.Set(axis, axis, factor);
        matrix.Set(axis, 3, shift.Get(axis));
    }
    return matrix;
}

} // namespace

void BringSymbolsForward(SceneGeometry& geometry, const dg::Camera3D& camera)
{
    const dg::DPoint3D eye = camera.GetLocation().GetPosition();
    const dg::DVec3 towardsViewer = camera.GetU().Cross(camera.GetV());
    Depths product;
    Depths symbols;
    for (const SceneShape& shape : geometry.shapes) {
        (shape.kind == SceneShape::Kind::Symbol ? symbols : product).Enclose(shape.box, eye, -towardsViewer);
    }
    if (!(product.nearest <= product.farthest && symbols.nearest <= symbols.farthest)) {
        return;
    }
    dg::DMat44 move;
    if (camera.IsOrthographic()) {
        constexpr double kGap = 1.01;
        move = Scaled(1.0, towardsViewer * (kGap * std::max(symbols.farthest - product.nearest, 0.0)));
    } else {
        // From within a product nothing of it is nearer than this.
        constexpr double kNearest = 1.0e-3;
        const double nearest = std::max({product.nearest, kNearest * product.farthest, 0.0});
        const double factor =
            symbols.farthest > 0.0 && nearest > 0.0 ? std::min(0.9 * nearest / symbols.farthest, 1.0) : 1.0;
        move = Scaled(factor, (eye - dg::DPoint3D::ORIGIN) * (1.0 - factor));
    }
    geometry.box = {};
    for (SceneShape& shape : geometry.shapes) {
        if (shape.kind == SceneShape::Kind::Symbol) {
            shape.transform = move * shape.transform;
            const std::vector<dg::DPoint3D> corners = CornersOf(shape.box);
            shape.box = {};
            for (const dg::DPoint3D& corner : corners) {
                shape.box.Enclose(move.TransformPoint(corner));
            }
        }
        geometry.box.Enclose(shape.box);
    }
    geometry.frame = UnitFrame::Around(geometry.box);
}

} // namespace luhost::render
