#pragma once

#include <du/SmartPtr.h>
#include <luk/illustration2d/Document2D.h>
#include <luk/Scene.h>

namespace luk::illustration2d
{

/// The scene of a page.
///
/// Ownership: holds its document; Close empties neither.
class LUHOST_API Scene2D : public luk::Scene
{
public:
    explicit Scene2D(const du::SmartPtr<Document2D>& document);
    ~Scene2D() override;

    /// Never null.
    const du::SmartPtr<Document2D>& GetDocument() const noexcept { return m_document; }

private:
    du::SmartPtr<Document2D> m_document;
};

} // namespace luk::illustration2d
