#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/illustration2d/Layer2D.h>
#include <luk/illustration2d/Node2D.h>
#include <luk/Object.h>

#include <memory>
#include <vector>

namespace luk::illustration2d
{

/// One page: its size, its layers from bottom to top, and the tree of what is on it.
///
/// Frames: x to the right, y up, from the lower left corner of the page; a unit is a millimetre.
///
/// Threads: belongs to the host thread.
///
/// Cost: constant for each node that comes or goes.
class LUHOST_API Document2D : public luk::Object, public virtual du::RefCounted
{
public:
    /// @param width,height in millimetres
    Document2D(double width, double height);
    ~Document2D() override;

    double GetWidth() const noexcept { return m_width; }
    double GetHeight() const noexcept { return m_height; }

    /// @return false for null and for a node that is in the tree already
    bool AppendNode(const du::SmartPtr<Node2D>& node);
    bool RemoveNode(const Node2D* node);
    std::vector<du::SmartPtr<Node2D>> GetNodes() const;
    /// Those that are seen, the lowest first: by layer, then minor z-order, then place in the tree. A layer that is not
    /// among the document's lies below all of these.
    std::vector<du::SmartPtr<Node2D>> GetNodesInDrawingOrder() const;

    const std::vector<du::SmartPtr<Layer2D>>& GetLayers() const noexcept { return m_layers; }
    /// Puts a layer on top. Null, and a layer that is there already, are left out.
    void AddLayer(const du::SmartPtr<Layer2D>& layer);
    /// Where new elements go; never null. At first the one layer that a document starts with.
    const du::SmartPtr<Layer2D>& GetCurrentLayer() const noexcept { return m_currentLayer; }
    /// Without effect for a layer that is not among the document's.
    void SetCurrentLayer(const du::SmartPtr<Layer2D>& layer);

private:
    class Tree;

    double m_width;
    double m_height;
    std::unique_ptr<Tree> m_tree;
    std::vector<du::SmartPtr<Layer2D>> m_layers;
    du::SmartPtr<Layer2D> m_currentLayer;
};

} // namespace luk::illustration2d
