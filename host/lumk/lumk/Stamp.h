#pragma once

#include <dg/Color.h>
#include <dg/DPoint3D.h>
#include <dg/Location.h>
#include <du/SmartPtr.h>
#include <luk/ImageData.h>
#include <luk/Markup.h>
#include <lumk/StampShadow.h>

#include <optional>

namespace lumk
{

/// A picture in a frame.
///
/// What is drawn, from back to front: the box filled with the fill colour, the picture over the whole box, a frame of the
/// line colour around it. The transparency holds for all three. A stamp without a picture is drawn as its box with a
/// cross.
///
/// Frames: the box reaches from centre - (width, height) to centre + (width, height), along the axes of the screen for a
/// billboard and for a stamp in screen space, along the columns of its own location's matrix otherwise. Width and height
/// are thus half the size that is seen, in units of the scene.
///
/// Threads: belongs to the host thread.
class LUHOST_API Stamp : public luk::Markup
{
public:
    /// @param screenSpace the box lies on the screen, in pixels, whatever the camera
    /// @param frameWidth width of the frame in pixels; 0 for none
    /// @param inShapeScene the stamp stands in space and has a location of its own
    /// @param layer stamps of a higher layer are drawn above those of a lower one
    Stamp(bool screenSpace, int frameWidth, bool inShapeScene, int layer);
    ~Stamp() override;

    bool IsScreenSpace() const noexcept { return m_screenSpace; }
    int GetFrameWidth() const noexcept { return m_frameWidth; }
    int GetLayer() const noexcept { return m_layer; }

    const dg::DPoint3D& GetCenter() const noexcept { return m_center; }
    void SetCenter(const dg::DPoint3D& center);
    bool IsBillboard() const noexcept { return m_billboard; }
    void SetBillboard(bool billboard);
    float GetWidth() const noexcept { return m_width; }
    void SetWidth(float width);
    float GetHeight() const noexcept { return m_height; }
    void SetHeight(float height);

    const dg::Color& GetLineColor() const noexcept { return m_lineColor; }
    void SetLineColor(const dg::Color& color);
    const dg::Color& GetFillColor() const noexcept { return m_fillColor; }
    void SetFillColor(const dg::Color& color);
    /// 0 opaque to 1 clear.
    float GetTransparency() const noexcept { return m_transparency; }
    void SetTransparency(float transparency);

    /// Flipped top to bottom.
    bool GetReverse() const noexcept { return m_reverse; }
    void SetReverse(bool reverse);
    bool GetFlipHorizontally() const noexcept { return m_flipHorizontally; }
    void SetFlipHorizontally(bool flip);

    /// May be null.
    const du::SmartPtr<luk::ImageData>& GetImage() const noexcept { return m_image; }
    void SetImage(const du::SmartPtr<luk::ImageData>& image);

    /// The stamp's own location, which turns a stamp that is no billboard; null for one outside a shape scene. Its position
    /// is kept and not drawn: the centre is.
    const dg::Location* GetLocation() const noexcept { return m_location ? &*m_location : nullptr; }
    /// Each without effect when there is no own location.
    void SetLocationMat(const dg::FMat33& matrix);
    void SetLocationPosition(const dg::DPoint3D& position);

    /// Made anew from what the stamp shows, when it is first asked for.
    du::SmartPtr<luk::MarkupShadow> GetShadow() const override;
    void UpdateShadow() override;
    /// Drops the shadow, so that the next one starts from what the stamp shows by then.
    void CycleShadow();

private:
    dg::DPoint3D m_center;
    dg::Color m_lineColor = dg::Color::BLACK;
    dg::Color m_fillColor = dg::Color::BLACK;
    std::optional<dg::Location> m_location;
    du::SmartPtr<luk::ImageData> m_image;
    mutable du::SmartPtr<StampShadow> m_shadow;
    float m_width = 0.0F;
    float m_height = 0.0F;
    float m_transparency = 0.0F;
    int m_frameWidth;
    int m_layer;
    bool m_screenSpace;
    bool m_billboard = true;
    bool m_reverse = false;
    bool m_flipHorizontally = false;
};

} // namespace lumk
