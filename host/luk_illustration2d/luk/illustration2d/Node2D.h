#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/illustration2d/Layer2D.h>
#include <luk/Object.h>

namespace luk::illustration2d
{

/// Something on a page of a 2D document.
///
/// Threads: belongs to the host thread.
class LUHOST_API Node2D : public luk::Object, public virtual du::RefCounted
{
public:
    ~Node2D() override;

    /// Place in the drawing order among the nodes of one layer: higher is drawn later; equals keep the order of the tree.
    int GetMinorZOrder() const noexcept { return m_minorZOrder; }
    void SetMinorZOrder(int order) noexcept { m_minorZOrder = order; }

    /// Null: on no layer, always visible, below all layers.
    const du::SmartPtr<Layer2D>& GetLayer() const noexcept { return m_layer; }
    void SetLayer(const du::SmartPtr<Layer2D>& layer) { m_layer = layer; }

    const du::Symbol& GetIDPath() const noexcept { return m_idPath; }
    void SetIDPath(const du::Symbol& idPath) { m_idPath = idPath; }

protected:
    Node2D() = default;

private:
    du::SmartPtr<Layer2D> m_layer;
    du::Symbol m_idPath;
    int m_minorZOrder = 0;
};

} // namespace luk::illustration2d
