#pragma once

#include <dg/DPoint3D.h>
#include <luk/MarkupShadow.h>

namespace lumk
{

/// What a stamp will be once the user lets go of it. Width and height are half the size, as the stamp's.
class LUHOST_API StampShadow : public luk::MarkupShadow
{
public:
    StampShadow(const dg::DPoint3D& center, float width, float height);
    ~StampShadow() override;

    float GetWidth() const noexcept { return m_width; }
    float GetHeight() const noexcept { return m_height; }
    void SetSize(float width, float height) noexcept;

    /// Where the stamp was when the user took hold of it.
    const dg::DPoint3D& GetOldCenter() const noexcept { return m_oldCenter; }

private:
    dg::DPoint3D m_oldCenter;
    float m_width;
    float m_height;
};

} // namespace lumk
