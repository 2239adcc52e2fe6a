#pragma once

#include <dg/Camera3D.h>
#include <luk/View.h>

namespace luk
{

/// View of a scene in space, through a camera.
class LUHOST_API ShapeView : public View
{
public:
    ShapeView() = default;
    explicit ShapeView(const dg::Camera3D& camera) : m_camera(camera) {}
    ~ShapeView() override;

    const dg::Camera3D& GetCamera() const noexcept { return m_camera; }
    void SetCamera(const dg::Camera3D& camera);

private:
    dg::Camera3D m_camera;
};

} // namespace luk
