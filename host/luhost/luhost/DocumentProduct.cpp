#include "DocumentProduct.h"

#include <dg/XmlElem.h>
#include <lug/Appearance.h>
#include <luhost/ProductMeshReader.h>
#include <luk/Instance.h>
#include <luk/SerializedContentXml.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <unordered_set>
#include <utility>

namespace luhost
{

namespace
{

using luk::SerializedContentElement;
using luk::SerializedContentXml;
using luk::ShapeInstance;
using NodePtr = du::SmartPtr<luk::ComponentNode>;

constexpr std::string_view kProduct = "product";
constexpr std::string_view kComponents = "components";
constexpr std::string_view kComponent = "component";
constexpr std::string_view kName = "name";
constexpr std::string_view kNameBase64 = "nameBase64";
constexpr std::string_view kMesh = "mesh";
constexpr std::string_view kUse = "use";
constexpr std::string_view kId = "id";
constexpr std::string_view kIdBase64 = "idBase64";
constexpr std::string_view kLocation = "location";
constexpr std::string_view kParts = "parts";
constexpr std::string_view kPart = "part";
constexpr std::string_view kPath = "path";
constexpr std::string_view kPathBase64 = "pathBase64";
constexpr std::string_view kHidden = "hidden";
constexpr std::string_view kFraction = "fraction";
constexpr std::string_view kColor = "color";
constexpr std::string_view kTransparency = "transparency";
constexpr std::string_view kService = "service";

constexpr std::string_view kMeshPrefix = "product/mesh-";
constexpr std::string_view kMeshSuffix = ".ply";

bool Fail(std::string& problem, std::string reason)
{
    problem = std::move(reason);
    return false;
}

std::string MeshEntry(std::size_t number)
{
    return std::string(kMeshPrefix).append(std::to_string(number)).append(kMeshSuffix);
}

void AppendIndent(std::string& out, int depth) { out.append(2 * static_cast<std::size_t>(depth), ' '); }

bool ParseNumber(std::string_view text, std::size_t& number) noexcept
{
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
    return status == std::errc() && end == text.data() + text.size();
}

template <class T>
bool ReadValue(const dg::XmlElem& xml, std::string_view name, T& value)
{
    SerializedContentElement::Value read = value;
    if (!SerializedContentXml::ParseValue(xml.GetAttribute(name), read)) {
        return false;
    }
    value = std::get<T>(read);
    return true;
}

/// All children that are not understood, and the attributes.
KeptXml KeepUnknown(const dg::XmlElem& xml, std::initializer_list<std::string_view> attributes, std::string_view child,
                    const KeptXml::Holder& holder, DocumentProblems& problems)
{
    KeptXml kept;
    kept.ReadAttributes(xml, attributes, holder, problems);
    std::size_t place = 0;
    for (dg::XmlElem below = xml.FirstChild(); below; below = below.NextSibling()) {
        if (below.GetName() == child) {
            ++place;
        } else {
            kept.KeepUnknown(place, below, holder, problems);
        }
    }
    return kept;
}

} // namespace

/// Reads components and their meshes.
class DocumentProduct::ComponentReader
{
public:
    ComponentReader(std::vector<PackageEntry>& entries, std::string& problem) : m_entries(entries), m_problem(problem)
    {
        for (std::size_t i = 0; i < entries.size(); ++i) {
            m_byName.emplace(entries[i].name, i);
        }
    }

    bool Read(const dg::XmlElem& components)
    {
        model.components.reserve(components.CountChildren());
        for (dg::XmlElem xml = components.FirstChild(); xml; xml = xml.NextSibling()) {
            if (xml.GetName() == kComponent && !ReadComponent(xml)) {
                return false;
            }
        }
        return true;
    }

    void RemoveUsedEntries()
    {
        std::size_t index = 0;
        std::erase_if(m_entries, [&](const PackageEntry&) { return m_used.count(index++) != 0; });
    }

    /// Puts what is kept of each component to the components that were made.
    void PassKept(const std::vector<NodePtr>& nodes, std::unordered_map<const luk::ComponentNode*, KeptOf>& kept)
    {
        for (auto& [index, of] : m_kept) {
            of.node = nodes[index];
            kept.emplace(of.node.get(), std::move(of));
        }
    }

    ProductModel model;
    DocumentProblems unknown;

private:
    bool ReadComponent(const dg::XmlElem& xml)
    {
        const std::size_t index = model.components.size();
        ProductModel::Component& component = model.components.emplace_back();
        SerializedContentXml::ReadAttribute(xml, kName, component.name);
        if (xml.HasAttribute(kMesh) && !ReadMesh(xml.GetAttribute(kMesh), component.mesh)) {
            return false;
        }
        KeptXml kept =
            KeepUnknown(xml, {kName, kNameBase64, kMesh}, kUse, {kComponent, kComponent, 0, component.name}, unknown);
        if (!kept.IsEmpty()) {
            m_kept[index].kept = std::move(kept);
        }
        for (dg::XmlElem child = xml.FirstChild(); child; child = child.NextSibling()) {
            if (child.GetName() == kUse && !ReadUse(child, component, index)) {
                return false;
            }
        }
        return true;
    }

    bool ReadUse(const dg::XmlElem& xml, ProductModel::Component& component, std::size_t index)
    {
        ProductModel::Use& use = component.uses.emplace_back();
        if (!SerializedContentXml::ReadAttribute(xml, kId, use.id) ||
            !ParseNumber(xml.GetAttribute(kComponent), use.component)) {
            return Fail(m_problem, "a use in component " + std::to_string(index) + " has no id, or no component");
        }
        if (xml.HasAttribute(kLocation) && !ReadValue(xml, kLocation, use.location)) {
            return Fail(m_problem, "the location of a use in component " + std::to_string(index) + " is none");
        }
        KeptXml kept;
        kept.ReadWhole(xml, {kId, kIdBase64, kComponent, kLocation}, {kUse, kUse, 0, use.id}, unknown);
        if (!kept.IsEmpty()) {
            m_kept[index].uses.emplace(use.id, std::move(kept));
        }
        return true;
    }

    bool ReadMesh(std::string_view text, du::SmartPtr<luk::Mesh>& mesh)
    {
        std::size_t number = 0;
        const auto entry = ParseNumber(text, number) ? m_byName.find(MeshEntry(number)) : m_byName.end();
        if (entry == m_byName.end()) {
            return Fail(m_problem, "there is no mesh " + std::string(text.substr(0, 20)) + " in the package");
        }
        du::SmartPtr<luk::Mesh>& read = m_meshes[entry->second];
        if (!read) {
            read = MeshFromPly(m_entries[entry->second].bytes, m_problem);
            m_used.insert(entry->second);
        }
        mesh = read;
        return mesh || Fail(m_problem, m_entries[entry->second].name + ": " + m_problem);
    }

    std::vector<PackageEntry>& m_entries;
    std::string& m_problem;
    std::unordered_map<std::string, std::size_t> m_byName;
    std::unordered_map<std::size_t, du::SmartPtr<luk::Mesh>> m_meshes;
    std::unordered_set<std::size_t> m_used;
    std::unordered_map<std::size_t, KeptOf> m_kept; ///< by component
};

DocumentProduct::DocumentProduct()
    : m_structure(du::MakeCounted<luk::Structure>()), m_sbomTree(du::MakeCounted<luk::illustration::SbomTree>())
{
    m_structure->SetRoot(m_structure->CreateComponentNode(du::Symbol("")));
    MakeScene();
}

DocumentProduct::~DocumentProduct() { CloseScene(); }

void DocumentProduct::MakeScene()
{
    m_tree = du::MakeCounted<luk::Tree>(m_structure);
    m_scene = du::MakeCounted<luk::illustration::Illustration3dScene>(m_tree, m_sbomTree);
}

void DocumentProduct::CloseScene()
{
    if (m_scene) {
        m_scene->Close();
    }
    m_scene = nullptr;
    m_tree = nullptr;
}

bool DocumentProduct::IsMeshEntry(std::string_view name) noexcept
{
    return name.starts_with(kMeshPrefix) && name.ends_with(kMeshSuffix);
}

// Reading

void DocumentProduct::Read(const dg::XmlElem& product, std::vector<PackageEntry>& entries, DocumentProblems& problems)
{
    std::string problem;
    if (!ReadComponents(product, entries, problem, problems)) {
        problems.Add("the product is kept and not read: " + problem);
        SerializedContentXml::AppendForeign(m_refused, product);
        return;
    }
    constexpr std::array<std::string_view, 3> kKnown = {kComponents, kParts, kService};
    std::array<bool, kKnown.size()> seen{};
    std::size_t place = 0;
    const KeptXml::Holder holder{kProduct};
    m_kept.ReadAttributes(product, {}, holder, problems);
    for (dg::XmlElem child = product.FirstChild(); child; child = child.NextSibling()) {
        const auto which =
            static_cast<std::size_t>(std::find(kKnown.begin(), kKnown.end(), child.GetName()) - kKnown.begin());
        if (which == kKnown.size() || std::exchange(seen[which], true)) {
            m_kept.KeepUnknown(place, child, holder, problems);
            continue;
        }
        place = which + 1;
        if (which == 1) {
            ReadParts(child, problems);
        } else if (which == 2) {
            ReadService(child, problems);
        }
    }
}

bool DocumentProduct::ReadComponents(const dg::XmlElem& product, std::vector<PackageEntry>& entries,
                                     std::string& problem, DocumentProblems& problems)
{
    dg::XmlElem components = product.FirstChild();
    while (components && components.GetName() != kComponents) {
        components = components.NextSibling();
    }
    ComponentReader reader(entries, problem);
    std::vector<NodePtr> nodes;
    if (!reader.Read(components)) {
        return false;
    }
    // A scene of a whole product is made in less time than one follows each part that is added.
    CloseScene();
    const bool isReplaced = ReplaceProduct(*m_structure, reader.model, problem, &nodes);
    MakeScene();
    if (!isReplaced) {
        return false;
    }
    reader.PassKept(nodes, m_keptOf);
    reader.RemoveUsedEntries();
    m_keptInComponents = KeepUnknown(components, {}, kComponent, {kComponents}, problems);
    problems.Take(reader.unknown);
    return true;
}

void DocumentProduct::ReadParts(const dg::XmlElem& parts, DocumentProblems& problems)
{
    const KeptXml::Holder holder{kParts};
    m_keptInParts.ReadAttributes(parts, {}, holder, problems);
    for (dg::XmlElem part = parts.FirstChild(); part; part = part.NextSibling()) {
        std::string problem;
        if (part.GetName() != kPart) {
            m_keptInParts.KeepUnknown(0, part, holder, problems);
        } else if (!ReadPart(part, problem, problems)) {
            problems.Add("what a part looks like is kept and not read: " + problem);
            m_keptInParts.KeepTold(0, part);
        }
    }
}

bool DocumentProduct::ReadPart(const dg::XmlElem& xml, std::string& problem, DocumentProblems& problems)
{
    std::string path;
    if (!SerializedContentXml::ReadAttribute(xml, kPath, path)) {
        return Fail(problem, "it names no part");
    }
    const auto part = m_scene->GetShapeInstance(m_tree->FindInstance(du::Symbol::Find(path)));
    if (!part) {
        return Fail(problem, "there is no part \"" + path.substr(0, 200) + "\"");
    }
    dg::Location location = dg::Location::IDENTITY;
    dg::Color color;
    bool isHidden = false;
    double fraction = 1.0;
    double transparency = 0.0;
    const auto isSound = [&](std::string_view name, const auto& read) {
        return !xml.HasAttribute(name) || read() || Fail(problem, "its " + std::string(name) + " is none");
    };
    const auto readReal = [&xml](std::string_view name, double& value) {
        return SerializedContentXml::ParseReal(xml.GetAttribute(name), value);
    };
    if (!isSound(kLocation, [&] { return ReadValue(xml, kLocation, location); }) ||
        !CheckProductLocation(location, problem) || !isSound(kColor, [&] { return ReadValue(xml, kColor, color); }) ||
        !isSound(kHidden, [&] { return ReadValue(xml, kHidden, isHidden); }) ||
        !isSound(kFraction, [&] { return readReal(kFraction, fraction); }) ||
        !isSound(kTransparency, [&] { return readReal(kTransparency, transparency); })) {
        return false;
    }
    if (xml.HasAttribute(kLocation)) {
        part->SetLocation(location, false);
    }
    part->SetVisibility(!isHidden, false);
    part->SetVisibilityFraction(static_cast<float>(fraction), false);
    if (xml.HasAttribute(kColor)) {
        part->SetColor(color);
    }
    if (xml.HasAttribute(kTransparency)) {
        part->OverrideTransparency(static_cast<float>(transparency));
    }
    KeptXml kept;
    kept.ReadWhole(xml, {kPath, kPathBase64, kLocation, kHidden, kFraction, kColor, kTransparency},
                   {kPart, kPart, 0, path}, problems);
    if (!kept.IsEmpty()) {
        m_keptInPart[part->GetInstance()->GetIdPath()] = std::move(kept);
    }
    return true;
}

void DocumentProduct::ReadService(const dg::XmlElem& xml, DocumentProblems& problems)
{
    ServiceModel service;
    std::string problem;
    if (!ServiceModel::Read(xml, service, problem)) {
        problems.Add("the service tree is kept and not read: " + problem);
        m_kept.KeepTold(2, xml);
        return;
    }
    problems.AddUnknown(service.foreign, {kService});
    for (const ServiceModel::Node& node : service.nodes) {
        problems.AddUnknown(node.foreign, {"node", "node", 0, node.id});
    }
    FillService(service);
    for (const auto& [node, part] : m_absentParts) {
        problems.Add("there is no part \"" + part.substr(0, 200) + "\" for the service node \"" + node.substr(0, 200) +
                     "\"");
    }
}

// Writing

class DocumentProduct::Writer
{
public:
    Writer(const DocumentProduct& product, std::string& out, int depth)
        : m_product(product), m_out(out), m_depth(depth),
          m_model(
              ModelOf(*product.m_structure, &m_nodes, [&product](const auto& use) { return product.IsMarked(use); }))
    {
    }

    bool Write(std::vector<PackageEntry>& entries, std::string& error)
    {
        const std::string parts = PartsAsText();
        const ServiceModel service = m_product.GetService();
        const bool isEmpty = m_model.components.size() <= 1 && m_product.m_kept.IsEmpty();
        if (isEmpty && parts.empty() && service.nodes.empty()) {
            return true;
        }
        if (!CheckProductModel(m_model, error)) {
            error = "the product would not be read again: " + error;
            return false;
        }
        Open(kProduct, m_product.m_kept.GetAttributes(), 0);
        m_product.m_kept.Write(m_out, 0, m_depth + 1);
        WriteComponents(entries);
        m_product.m_kept.Write(m_out, 1, m_depth + 1);
        if (!parts.empty()) {
            Open(kParts, m_product.m_keptInParts.GetAttributes(), 1);
            m_out += parts;
            Close(kParts, 1);
        }
        m_product.m_kept.Write(m_out, 2, m_depth + 1);
        if (!service.nodes.empty() && !service.Append(m_out, m_depth + 1, error)) {
            return false;
        }
        m_product.m_kept.Write(m_out, 3, m_depth + 1);
        Close(kProduct, 0);
        return true;
    }

    std::string PartsAsText() const
    {
        std::string text;
        m_product.m_keptInParts.Write(text, 0, m_depth + 2);
        AppendParts(text);
        return text;
    }

private:
    void Open(std::string_view name, const std::string& attributes, int level)
    {
        AppendIndent(m_out, m_depth + level);
        m_out.append("<").append(name).append(attributes).append(">\n");
    }

    void Close(std::string_view name, int level)
    {
        AppendIndent(m_out, m_depth + level);
        m_out.append("</").append(name).append(">\n");
    }

    void WriteComponents(std::vector<PackageEntry>& entries)
    {
        const KeptXml& kept = m_product.m_keptInComponents;
        Open(kComponents, kept.GetAttributes(), 1);
        for (std::size_t i = 0; i < m_model.components.size(); ++i) {
            kept.Write(m_out, i, m_depth + 2);
            WriteComponent(m_model.components[i], m_nodes[i].get(), entries);
        }
        kept.Write(m_out, m_model.components.size(), m_depth + 2);
        Close(kComponents, 1);
    }

    void WriteComponent(const ProductModel::Component& component, const luk::ComponentNode* node,
                        std::vector<PackageEntry>& entries)
    {
        const auto keptOf = m_product.m_keptOf.find(node);
        const KeptXml* const kept = keptOf == m_product.m_keptOf.end() ? nullptr : &keptOf->second.kept;
        std::string attributes;
        SerializedContentXml::AppendAttribute(attributes, kName, component.name);
        if (component.mesh) {
            const std::size_t number = NumberOf(*component.mesh, entries);
            SerializedContentXml::AppendAttribute(attributes, kMesh, std::to_string(number));
        }
        attributes += kept ? kept->GetAttributes() : std::string();
        if (component.uses.empty() && (!kept || !kept->HasElements())) {
            AppendIndent(m_out, m_depth + 2);
            m_out.append("<component").append(attributes).append("/>\n");
            return;
        }
        Open(kComponent, attributes, 2);
        for (std::size_t i = 0; i < component.uses.size(); ++i) {
            if (kept) {
                kept->Write(m_out, i, m_depth + 3);
            }
            const ProductModel::Use& use = component.uses[i];
            const KeptXml* keptOfUse = nullptr;
            if (kept) {
                const auto found = keptOf->second.uses.find(use.id);
                keptOfUse = found == keptOf->second.uses.end() ? nullptr : &found->second;
            }
            WriteUse(use, keptOfUse);
        }
        if (kept) {
            kept->Write(m_out, component.uses.size(), m_depth + 3);
        }
        Close(kComponent, 2);
    }

    void WriteUse(const ProductModel::Use& use, const KeptXml* kept)
    {
        std::string attributes;
        SerializedContentXml::AppendAttribute(attributes, kId, use.id);
        SerializedContentXml::AppendAttribute(attributes, kComponent, std::to_string(use.component));
        if (!(use.location == dg::Location::IDENTITY)) {
            AppendLocation(attributes, use.location);
        }
        attributes += kept ? kept->GetAttributes() : std::string();
        if (!kept || !kept->HasElements()) {
            AppendIndent(m_out, m_depth + 3);
            m_out.append("<use").append(attributes).append("/>\n");
            return;
        }
        Open(kUse, attributes, 3);
        kept->Write(m_out, 0, m_depth + 4);
        Close(kUse, 3);
    }

    /// Meshes are numbered in the order in which they are met, from 1.
    std::size_t NumberOf(const luk::Mesh& mesh, std::vector<PackageEntry>& entries)
    {
        const auto [place, isNew] = m_meshes.try_emplace(&mesh, m_meshes.size() + 1);
        if (isNew) {
            entries.push_back({MeshEntry(place->second), MeshToPly(mesh)});
        }
        return place->second;
    }

    /// In the order of the tree, symbols and what is below them left out.
    void AppendParts(std::string& text) const
    {
        std::vector<du::SmartPtr<luk::Instance>> due;
        const auto addBelow = [&due](const luk::Instance& instance) {
            const auto children = instance.GetChildren();
            due.insert(due.end(), children.rbegin(), children.rend());
        };
        addBelow(*m_product.m_tree->GetRoot());
        while (!due.empty()) {
            const du::SmartPtr<luk::Instance> instance = std::move(due.back());
            due.pop_back();
            const std::string& id = instance->GetComponentInstance()->GetId().GetText();
            const auto part = m_product.m_scene->GetShapeInstance(instance);
            if (id.starts_with(luk::Instance::s_content_symbolPrefix.GetText()) || (part && part->IsOfSymbol())) {
                continue;
            }
            if (part) {
                AppendPart(text, *part);
            }
            addBelow(*instance);
        }
    }

    void AppendPart(std::string& text, const ShapeInstance& part) const
    {
        std::string state;
        if (!part.IsShown()) {
            SerializedContentXml::AppendAttribute(state, kHidden, "true");
        }
        if (part.IsPlaced() && part.GetLocation().HasPosition()) {
            AppendLocation(state, part.GetLocation());
        }
        if (part.GetVisibilityFraction() != 1.0F) {
            AppendValue(state, kFraction, part.GetVisibilityFraction());
        }
        const auto& appearance = part.GetAppearanceOverride();
        if (appearance && appearance->GetMaterial()) {
            AppendValue(state, kColor, appearance->GetMaterial()->GetDiffuse());
        }
        if (part.HasTransparencyOverride()) {
            AppendValue(state, kTransparency, part.GetTransparencyOverride());
        }
        const du::Symbol& path = part.GetInstance()->GetIdPath();
        const auto kept = m_product.m_keptInPart.find(path);
        const bool isKept = kept != m_product.m_keptInPart.end();
        if (!state.empty() || isKept) {
            static const KeptXml s_nothing;
            std::string attributes;
            SerializedContentXml::AppendAttribute(attributes, kPath, path.GetText());
            (isKept ? kept->second : s_nothing).WriteElement(text, kPart, attributes.append(state), m_depth + 2);
        }
    }

    static void AppendValue(std::string& out, std::string_view name, const SerializedContentElement::Value& value)
    {
        std::string text;
        SerializedContentXml::AppendValue(text, value);
        SerializedContentXml::AppendAttribute(out, name, text);
    }

    static void AppendLocation(std::string& out, const dg::Location& location)
    {
        AppendValue(out, kLocation, location);
    }

    const DocumentProduct& m_product;
    std::string& m_out;
    const int m_depth;
    std::vector<NodePtr> m_nodes;
    const ProductModel m_model;
    std::unordered_map<const luk::Mesh*, std::size_t> m_meshes;
};

// Changing

/// Another program may have given a symbol any id, under which it would otherwise be taken for a part.
bool DocumentProduct::IsMarked(const luk::ComponentInstance& use) const
{
    const auto part = m_scene->GetShapeInstance(m_tree->GetRoot()->FindChild(use.GetId()));
    return part && part->IsOfSymbol();
}

void DocumentProduct::FillService(const ServiceModel& service)
{
    for (const auto& top : m_sbomTree->GetRoot()->GetChildren()) {
        m_sbomTree->RemoveInstance(top);
    }
    m_absentParts.clear();
    m_foreignOfNode.clear();
    m_foreignOfService = service.foreign;
    const std::vector<std::string> paths = service.GetPaths();
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (!service.nodes[i].foreign.empty()) {
            m_foreignOfNode[paths[i]] = service.nodes[i].foreign;
        }
    }
    for (const ServiceModel::Absent& absent : service.Fill(*m_sbomTree, *m_tree)) {
        m_absentParts[absent.path] = service.nodes[absent.node].part;
    }
}

bool DocumentProduct::SetProduct(const ProductModel& model, std::string& problem)
{
    std::string ignored;
    const ServiceModel service = GetService();
    const std::string parts = Writer(*this, ignored, 0).PartsAsText();
    const auto isMarked = [this](const luk::ComponentInstance& use) { return IsMarked(use); };
    if (!ReplaceProduct(*m_structure, model, problem, nullptr, isMarked)) {
        return false;
    }
    m_refused.clear();
    m_keptOf.clear();
    m_keptInComponents = {};
    m_keptInParts = {};
    m_keptInPart.clear();
    FillService(service);
    const std::unique_ptr<dg::XmlElem, dg::XmlFreer> states(
        dg::ParseXml(std::string("<parts>").append(parts).append("</parts>"), false, nullptr));
    DocumentProblems told;
    if (states) {
        ReadParts(*states, told);
    }
    return true;
}

bool DocumentProduct::SetService(const ServiceModel& model, std::string& problem)
{
    std::string xml;
    if (!model.Append(xml, 0, problem)) {
        return false;
    }
    FillService(model);
    return true;
}

ServiceModel DocumentProduct::GetService() const
{
    ServiceModel service = ServiceModel::Of(*m_sbomTree);
    service.foreign = m_foreignOfService;
    if (m_absentParts.empty() && m_foreignOfNode.empty()) {
        return service;
    }
    const std::vector<std::string> paths = service.GetPaths();
    for (std::size_t i = 0; i < paths.size(); ++i) {
        ServiceModel::Node& node = service.nodes[i];
        const auto absent = m_absentParts.find(paths[i]);
        if (node.part.empty() && absent != m_absentParts.end()) {
            node.part = absent->second;
        }
        const auto foreign = m_foreignOfNode.find(paths[i]);
        node.foreign = foreign == m_foreignOfNode.end() ? std::string() : foreign->second;
    }
    return service;
}

bool DocumentProduct::Write(std::string& xml, int depth, std::vector<PackageEntry>& entries, std::string& error) const
{
    if (!m_refused.empty()) {
        AppendIndent(xml, depth);
        xml.append(m_refused).append("\n");
        return true;
    }
    return Writer(*this, xml, depth).Write(entries, error);
}

} // namespace luhost
