#include <luhost/ProductModel.h>
#include <luk/ComponentNode.h>
#include <luk/Instance.h>
#include <luk/Shape.h>
#include <luk/Structure.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace luhost
{

namespace
{

using Component = ProductModel::Component;
using Use = ProductModel::Use;

bool Fail(std::string& problem, std::string reason)
{
    problem = std::move(reason);
    return false;
}

/// As much of a text as a message can show.
std::string Quoted(const std::string& text)
{
    constexpr std::size_t kMaxBytes = 80;
    return std::string("\"").append(text, 0, kMaxBytes).append(text.size() > kMaxBytes ? "...\"" : "\"");
}

bool IsSymbol(std::string_view id) { return id.starts_with(luk::Instance::s_content_symbolPrefix.GetText()); }

/// What a component brings along wherever it is used.
struct Extent {
    std::size_t instances = 0; ///< below it
    std::size_t pathBytes = 0; ///< of the id paths of those, from here
    std::size_t depth = 0;
};

std::size_t AddUpTo(std::size_t a, std::size_t b) noexcept
{
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max() / 2;
    return std::min(a, kMost) + std::min(b, kMost);
}

std::size_t TimesUpTo(std::size_t a, std::size_t b) noexcept
{
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max() / 2;
    return b != 0 && a > kMost / b ? kMost : a * b;
}

class ModelCheck
{
public:
    ModelCheck(const ProductModel& model, std::string& problem)
        : m_components(model.components), m_extents(model.components.size()), m_isUsed(model.components.size()),
          m_problem(problem)
    {
    }

    bool Run()
    {
        if (m_components.empty()) {
            return Fail(m_problem, "there is no component");
        }
        if (m_components.back().mesh) {
            return Fail(m_problem, "the root has a mesh of its own");
        }
        for (std::size_t i = 0; i < m_components.size(); ++i) {
            if (!CheckComponent(i)) {
                m_problem = "component " + std::to_string(i) + " " + Quoted(m_components[i].name) + ": " + m_problem;
                return false;
            }
        }
        const auto unused = std::find(m_isUsed.begin(), m_isUsed.end() - 1, false);
        if (unused != m_isUsed.end() - 1) {
            return Fail(m_problem,
                        "component " + std::to_string(unused - m_isUsed.begin()) + " is used by no other one");
        }
        return CheckExtent(m_extents.back());
    }

private:
    bool CheckComponent(std::size_t index)
    {
        const Component& component = m_components[index];
        if (component.mesh && m_meshes.insert(component.mesh.get()).second &&
            !CheckProductMesh(*component.mesh, m_problem)) {
            return false;
        }
        std::unordered_set<std::string_view> ids;
        return std::all_of(component.uses.begin(), component.uses.end(),
                           [&](const Use& use) { return CheckUse(use, index, ids); });
    }

    bool CheckUse(const Use& use, std::size_t user, std::unordered_set<std::string_view>& ids)
    {
        if (use.id.empty() || use.id.find('/') != std::string::npos || IsSymbol(use.id)) {
            return Fail(m_problem, Quoted(use.id) + " is no id of a part");
        }
        if (!ids.insert(use.id).second) {
            return Fail(m_problem, "a second part has the id " + Quoted(use.id));
        }
        if (use.component >= user) {
            return Fail(m_problem, "the part " + Quoted(use.id) + " uses component " + std::to_string(use.component) +
                                       ", which does not stand before this one");
        }
        if (!CheckProductLocation(use.location, m_problem)) {
            m_problem = "the placement of " + Quoted(use.id) + " is not sound: " + m_problem;
            return false;
        }
        m_isUsed[use.component] = true;
        Extent& extent = m_extents[user];
        const Extent& used = m_extents[use.component];
        const std::size_t occurrences = AddUpTo(1, used.instances);
        extent.instances = AddUpTo(extent.instances, occurrences);
        extent.pathBytes =
            AddUpTo(extent.pathBytes, AddUpTo(TimesUpTo(occurrences, use.id.size() + 1), used.pathBytes));
        extent.depth = std::max(extent.depth, used.depth + 1);
        return true;
    }

    bool CheckExtent(const Extent& whole)
    {
        if (whole.instances > ProductModel::kMaxInstances) {
            return Fail(m_problem, "there are more than " + std::to_string(ProductModel::kMaxInstances) + " parts");
        }
        if (whole.depth > ProductModel::kMaxDepth) {
            return Fail(m_problem,
                        "parts are nested more than " + std::to_string(ProductModel::kMaxDepth) + " levels deep");
        }
        return whole.pathBytes <= ProductModel::kMaxPathBytes ||
               Fail(m_problem, "the ids of the parts are too long for their number");
    }

    const std::vector<Component>& m_components;
    std::vector<Extent> m_extents;
    std::vector<bool> m_isUsed;
    std::unordered_set<const luk::Mesh*> m_meshes;
    std::string& m_problem;
};

bool IsCoordinate(double value) noexcept { return std::abs(value) <= ProductModel::kMaxCoordinate; }

using NodePtr = du::SmartPtr<luk::ComponentNode>;

/// Components and what they use, all but the uses of the root.
std::vector<NodePtr> MakeNodes(const ProductModel& model)
{
    std::vector<NodePtr> nodes;
    nodes.reserve(model.components.size());
    std::unordered_map<const luk::Mesh*, du::SmartPtr<luk::ShapeSource>> sources;
    for (const Component& component : model.components) {
        const auto& node = nodes.emplace_back(du::MakeCounted<luk::ComponentNode>(du::Symbol(component.name)));
        if (component.mesh) {
            du::SmartPtr<luk::ShapeSource>& source = sources[component.mesh.get()];
            if (!source) {
                source = luk::ShapeSource::CreateFromMesh(component.mesh);
            }
            node->SetShapeSource(source);
        }
        if (nodes.size() == model.components.size()) {
            break;
        }
        for (const Use& use : component.uses) {
            du::SmartPtr<luk::ComponentInstance> added;
            if (node->AddChild(nodes[use.component], du::Symbol(use.id), added)) {
                added->SetLocation(use.location);
            }
        }
    }
    return nodes;
}

void PlaceBelow(luk::ComponentNode& root, const ProductModel& model, const std::vector<NodePtr>& nodes)
{
    for (const Use& use : model.components.back().uses) {
        du::SmartPtr<luk::ComponentInstance> added;
        if (root.AddChild(nodes[use.component], du::Symbol(use.id), added)) {
            added->SetLocation(use.location);
        }
    }
}

du::SmartPtr<luk::Mesh> MeshOf(const luk::ComponentNode& node)
{
    const du::SmartPtr<luk::Shape> shape = luk::Shape::Get(node.GetShapeSource());
    return shape ? shape->GetMesh() : nullptr;
}

/// Numbers the components below a root, each after all that it uses.
class ModelWriter
{
public:
    ModelWriter(std::vector<NodePtr>* nodes, const IsOddSymbol& isOddSymbol)
        : m_nodes(nodes), m_isOddSymbol(isOddSymbol)
    {
    }

    ProductModel Write(const NodePtr& root)
    {
        Begin(root);
        if (m_isOddSymbol) {
            std::erase_if(m_due.back().uses, [this](const auto& use) { return m_isOddSymbol(*use); });
        }
        while (!m_due.empty()) {
            Step& step = m_due.back();
            if (step.next == step.uses.size()) {
                Finish();
            } else if (const NodePtr& used = step.uses[step.next++]->GetNode(); m_numbers.count(used.get()) == 0) {
                Begin(used);
            }
        }
        return std::move(m_model);
    }

private:
    struct Step {
        NodePtr node;
        std::vector<du::SmartPtr<luk::ComponentInstance>> uses;
        std::size_t next = 0;
    };

    void Begin(const NodePtr& node)
    {
        Step& step = m_due.emplace_back();
        step.node = node;
        step.uses = node->GetChildren();
        std::erase_if(step.uses, [](const auto& use) { return IsSymbol(use->GetId().GetText()); });
    }

    void Finish()
    {
        const Step step = std::move(m_due.back());
        m_due.pop_back();
        m_numbers.emplace(step.node.get(), m_model.components.size());
        if (m_nodes) {
            m_nodes->push_back(step.node);
        }
        Component& component = m_model.components.emplace_back();
        component.name = step.node->GetName().GetText();
        component.mesh = MeshOf(*step.node);
        component.uses.reserve(step.uses.size());
        for (const auto& use : step.uses) {
            component.uses.push_back(
                {use->GetId().GetText(), m_numbers.find(use->GetNode().get())->second, use->GetLocation()});
        }
    }

    ProductModel m_model;
    std::unordered_map<const luk::ComponentNode*, std::size_t> m_numbers;
    std::vector<Step> m_due;
    std::vector<NodePtr>* m_nodes;
    const IsOddSymbol& m_isOddSymbol;
};

} // namespace

bool CheckProductModel(const ProductModel& model, std::string& problem)
{
    problem.clear();
    return ModelCheck(model, problem).Run();
}

bool CheckProductLocation(const dg::Location& location, std::string& problem)
{
    constexpr float kMaxEntry = 1.0e6F;
    constexpr double kFlat = 1.0e-9;
    const dg::DPoint3D& position = location.GetPosition();
    if (!IsCoordinate(position.x) || !IsCoordinate(position.y) || !IsCoordinate(position.z)) {
        return Fail(problem, "its position is no place within a thousand kilometres");
    }
    const auto& entries = location.GetMat().GetEntries();
    if (!std::all_of(entries.begin(), entries.end(), [](float entry) { return std::abs(entry) <= kMaxEntry; })) {
        return Fail(problem, "its matrix has an entry that is no number, or beyond a million");
    }
    const dg::DVec3 scale = location.GetMat().GetScale();
    // Written so that the product of lengths that are all 0 is flat too.
    const double lengths = scale.x * scale.y * scale.z;
    const bool isSolid =
        std::min({scale.x, scale.y, scale.z}) > kFlat && std::abs(location.GetMat().GetDeterminant()) > kFlat * lengths;
    return isSolid || Fail(problem, "its matrix flattens whatever it places");
}

bool CheckProductMesh(const luk::Mesh& mesh, std::string& problem)
{
    const auto& positions = mesh.GetPositions();
    const auto& indices = mesh.GetIndices();
    const auto isPlace = [](const dg::FVec3& p) { return IsCoordinate(p.x) && IsCoordinate(p.y) && IsCoordinate(p.z); };
    if (const auto bad = std::find_if_not(positions.begin(), positions.end(), isPlace); bad != positions.end()) {
        return Fail(problem, "vertex " + std::to_string(bad - positions.begin()) +
                                 " of its mesh is no place within a thousand kilometres");
    }
    const auto isVertex = [&](std::uint32_t index) { return index < positions.size(); };
    if (indices.size() % 3 != 0 || !std::all_of(indices.begin(), indices.end(), isVertex)) {
        return Fail(problem, "a triangle of its mesh has no such corners");
    }
    const auto isSound = [&](const luk::Mesh::Part& part) {
        const dg::Color& color = part.color;
        const auto isShare = [](float share) { return share >= 0.0F && share <= 1.0F; };
        return part.firstTriangle <= mesh.GetTriangleCount() &&
               part.triangleCount <= mesh.GetTriangleCount() - part.firstTriangle && isShare(color.red) &&
               isShare(color.green) && isShare(color.blue) && isShare(color.alpha);
    };
    return std::all_of(mesh.GetParts().begin(), mesh.GetParts().end(), isSound) ||
           Fail(problem, "a run of triangles of its mesh leads beyond them, or has no color");
}

du::SmartPtr<luk::Structure> MakeStructure(const ProductModel& model)
{
    std::string problem;
    if (!CheckProductModel(model, problem)) {
        return {};
    }
    auto structure = du::MakeCounted<luk::Structure>();
    const std::vector<NodePtr> nodes = MakeNodes(model);
    PlaceBelow(*nodes.back(), model, nodes);
    structure->SetRoot(nodes.back());
    return structure;
}

bool ReplaceProduct(luk::Structure& structure, const ProductModel& model, std::string& problem,
                    std::vector<NodePtr>* nodes, const IsOddSymbol& isOddSymbol)
{
    if (!CheckProductModel(model, problem)) {
        return false;
    }
    const NodePtr root = structure.GetRoot();
    if (!root) {
        return Fail(problem, "the structure has no root");
    }
    std::vector<du::Symbol> replaced;
    std::unordered_set<std::string_view> symbols;
    for (const auto& use : root->GetChildren()) {
        if (IsSymbol(use->GetId().GetText()) || (isOddSymbol && isOddSymbol(*use))) {
            symbols.insert(use->GetId().GetText());
        } else {
            replaced.push_back(use->GetId());
        }
    }
    for (const Use& use : model.components.back().uses) {
        if (symbols.count(use.id) != 0) {
            return Fail(problem, "a symbol has the id " + Quoted(use.id));
        }
    }
    for (const du::Symbol& id : replaced) {
        root->RemoveChild(id);
    }
    root->SetName(du::Symbol(model.components.back().name));
    std::vector<NodePtr> made = MakeNodes(model);
    made.back() = root;
    PlaceBelow(*root, model, made);
    if (nodes) {
        *nodes = std::move(made);
    }
    return true;
}

ProductModel ModelOf(const luk::Structure& structure, std::vector<NodePtr>* nodes, const IsOddSymbol& isOddSymbol)
{
    return structure.GetRoot() ? ModelWriter(nodes, isOddSymbol).Write(structure.GetRoot()) : ProductModel();
}

} // namespace luhost
