#include <du/OrderedSet.h>
#include <luk/illustration2d/Document2D.h>

#include <algorithm>
#include <cstddef>
#include <unordered_map>

namespace luk::illustration2d
{

namespace
{

/// 0 for a node that is on no layer of the page.
struct Depth {
    std::size_t layer = 0;
    int minorZOrder = 0;
    const du::SmartPtr<Node2D>* node = nullptr;

    bool operator<(const Depth& other) const noexcept
    {
        return layer != other.layer ? layer < other.layer : minorZOrder < other.minorZOrder;
    }
};

} // namespace

class Document2D::Tree : public du::OrderedSet<du::SmartPtr<Node2D>>
{
};

Document2D::Document2D(double width, double height)
    : m_width(width), m_height(height), m_tree(std::make_unique<Tree>()),
      m_currentLayer(du::MakeCounted<Layer2D>("Layer 1"))
{
    m_layers.push_back(m_currentLayer);
}

Document2D::~Document2D() = default;

bool Document2D::AppendNode(const du::SmartPtr<Node2D>& node) { return m_tree->Add(node); }

bool Document2D::RemoveNode(const Node2D* node) { return m_tree->Take(node) != nullptr; }

std::vector<du::SmartPtr<Node2D>> Document2D::GetNodes() const { return m_tree->GetAll(); }

std::vector<du::SmartPtr<Node2D>> Document2D::GetNodesInDrawingOrder() const
{
    std::unordered_map<const Layer2D*, std::size_t> ranks;
    for (const du::SmartPtr<Layer2D>& layer : m_layers) {
        ranks.emplace(layer.get(), ranks.size() + 1);
    }
    const std::vector<du::SmartPtr<Node2D>> nodes = m_tree->GetAll();
    std::vector<Depth> seen;
    seen.reserve(nodes.size());
    for (const du::SmartPtr<Node2D>& node : nodes) {
        const Layer2D* const layer = node->GetLayer().get();
        if (!layer || layer->IsVisible()) {
            const auto rank = ranks.find(layer);
            seen.push_back({rank == ranks.end() ? 0 : rank->second, node->GetMinorZOrder(), &node});
        }
    }
    std::stable_sort(seen.begin(), seen.end());
    std::vector<du::SmartPtr<Node2D>> ordered;
    ordered.reserve(seen.size());
    for (const Depth& depth : seen) {
        ordered.push_back(*depth.node);
    }
    return ordered;
}

void Document2D::AddLayer(const du::SmartPtr<Layer2D>& layer)
{
    if (layer && std::find(m_layers.begin(), m_layers.end(), layer) == m_layers.end()) {
        m_layers.push_back(layer);
    }
}

void Document2D::SetCurrentLayer(const du::SmartPtr<Layer2D>& layer)
{
    if (std::find(m_layers.begin(), m_layers.end(), layer) != m_layers.end()) {
        m_currentLayer = layer;
    }
}

} // namespace luk::illustration2d
