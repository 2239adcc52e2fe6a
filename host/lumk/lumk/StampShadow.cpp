#include <lumk/StampShadow.h>

namespace lumk
{

StampShadow::StampShadow(const dg::DPoint3D& center, float width, float height)
    : m_oldCenter(center), m_width(width), m_height(height)
{
}

StampShadow::~StampShadow() = default;

void StampShadow::SetSize(float width, float height) noexcept
{
    m_width = width;
    m_height = height;
}

} // namespace lumk
