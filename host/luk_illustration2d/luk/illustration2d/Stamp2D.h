#pragma once

#include <dg/DBox2D.h>
#include <luk/illustration2d/Node2D.h>
#include <luk/Image.h>

#include <string>

namespace luk::illustration2d
{

/// A picture on a page, over the whole of its extents.
class LUHOST_API Stamp2D : public Node2D
{
public:
    Stamp2D() = default;
    ~Stamp2D() override;

    /// In units of the page.
    const dg::DBox2D& GetExtents() const noexcept { return m_extents; }
    void SetExtents(const dg::DBox2D& extents) noexcept { m_extents = extents; }

    /// May be null, and may hold no picture.
    const du::SmartPtr<luk::Image>& GetImage() const noexcept { return m_image; }
    void SetImage(const du::SmartPtr<luk::Image>& image) { m_image = image; }
    const du::Symbol& GetImageFileName() const noexcept { return m_imageFileName; }
    void SetImageFileName(const du::Symbol& name) { m_imageFileName = name; }

    bool GetFlipVertically() const noexcept { return m_flipVertically; }
    void SetFlipVertically(bool flip) noexcept { m_flipVertically = flip; }
    bool GetFlipHorizontally() const noexcept { return m_flipHorizontally; }
    void SetFlipHorizontally(bool flip) noexcept { m_flipHorizontally = flip; }

    /// Whether a symbol made it, and makes it again when the page is built anew.
    bool IsDerivedFromSymbol() const noexcept { return m_derivedFromSymbol; }
    void SetDerivedFromSymbol(bool derived) noexcept { m_derivedFromSymbol = derived; }

    const std::string& GetTitle() const noexcept { return m_title; }
    void SetTitle(const std::string& title) { m_title = title; }
    bool GetUseTitle() const noexcept { return m_useTitle; }
    void SetUseTitle(bool use) noexcept { m_useTitle = use; }
    const std::string& GetDescription() const noexcept { return m_description; }
    void SetDescription(const std::string& description) { m_description = description; }
    bool GetUseDescription() const noexcept { return m_useDescription; }
    void SetUseDescription(bool use) noexcept { m_useDescription = use; }

private:
    dg::DBox2D m_extents;
    du::SmartPtr<luk::Image> m_image;
    du::Symbol m_imageFileName;
    std::string m_title;
    std::string m_description;
    bool m_flipVertically = false;
    bool m_flipHorizontally = false;
    bool m_derivedFromSymbol = false;
    bool m_useTitle = false;
    bool m_useDescription = false;
};

} // namespace luk::illustration2d
