#include <lumk/Stamp.h>

#include <array>
#include <bit>
#include <cstddef>

namespace lumk
{

namespace
{

/// Bit by bit, so that a size that is no number is not a new one each time.
template <class T>
bool IsSame(const T& a, const T& b)
{
    using Bytes = std::array<std::byte, sizeof(T)>;
    return std::bit_cast<Bytes>(a) == std::bit_cast<Bytes>(b);
}

template <class T>
void Change(luk::Markup& markup, T& member, const T& value)
{
    if (!IsSame(member, value)) {
        member = value;
        markup.NotifyContentChanged();
    }
}

} // namespace

Stamp::Stamp(bool screenSpace, int frameWidth, bool inShapeScene, int layer)
    : m_frameWidth(frameWidth), m_layer(layer), m_screenSpace(screenSpace)
{
    if (inShapeScene) {
        m_location = dg::Location::IDENTITY;
    }
}

Stamp::~Stamp() = default;

void Stamp::SetCenter(const dg::DPoint3D& center) { Change(*this, m_center, center); }

void Stamp::SetBillboard(bool billboard) { Change(*this, m_billboard, billboard); }

void Stamp::SetWidth(float width) { Change(*this, m_width, width); }

void Stamp::SetHeight(float height) { Change(*this, m_height, height); }

void Stamp::SetLineColor(const dg::Color& color) { Change(*this, m_lineColor, color); }

void Stamp::SetFillColor(const dg::Color& color) { Change(*this, m_fillColor, color); }

void Stamp::SetTransparency(float transparency) { Change(*this, m_transparency, transparency); }

void Stamp::SetReverse(bool reverse) { Change(*this, m_reverse, reverse); }

void Stamp::SetFlipHorizontally(bool flip) { Change(*this, m_flipHorizontally, flip); }

void Stamp::SetImage(const du::SmartPtr<luk::ImageData>& image)
{
    if (m_image != image) {
        m_image = image;
        NotifyContentChanged();
    }
}

void Stamp::SetLocationMat(const dg::FMat33& matrix)
{
    if (m_location && !IsSame(m_location->GetMat(), matrix)) {
        m_location->SetMat(matrix);
        NotifyContentChanged();
    }
}

void Stamp::SetLocationPosition(const dg::DPoint3D& position)
{
    if (m_location && !IsSame(m_location->GetPosition(), position)) {
        m_location->SetPosition(position);
        NotifyContentChanged();
    }
}

du::SmartPtr<luk::MarkupShadow> Stamp::GetShadow() const
{
    if (!m_shadow) {
        m_shadow = du::MakeCounted<StampShadow>(m_center, m_width, m_height);
    }
    return m_shadow;
}

void Stamp::UpdateShadow()
{
    if (m_shadow) {
        m_shadow->SetSize(m_width, m_height);
    }
}

void Stamp::CycleShadow() { m_shadow = nullptr; }

} // namespace lumk
