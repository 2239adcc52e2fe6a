#include <luk/ShapeView.h>

namespace luk
{

ShapeView::~ShapeView() = default;

void ShapeView::SetCamera(const dg::Camera3D& camera)
{
    m_camera = camera;
    SetDirty(true);
}

} // namespace luk
