#include "DocumentFile.h"

#include <dg/XmlElem.h>
#include <luhost/ServiceModel.h>
#include <luk/Instance.h>
#include <luk/SerializedContentXml.h>

#include <algorithm>
#include <memory>
#include <set>
#include <unordered_map>
#include <utility>

namespace luhost
{

namespace
{

using luk::SerializedContentXml;
using luk::illustration::SbomInstance;
using luk::illustration::SbomTree;
using Node = ServiceModel::Node;

constexpr std::string_view kService = "service";
constexpr std::string_view kNode = "node";
constexpr std::string_view kId = "id";
constexpr std::string_view kIdBase64 = "idBase64";
constexpr std::string_view kName = "name";
constexpr std::string_view kNameBase64 = "nameBase64";
constexpr std::string_view kPart = "part";
constexpr std::string_view kPartBase64 = "partBase64";

bool Fail(std::string& problem, std::string reason)
{
    problem = std::move(reason);
    return false;
}

bool ReadNode(const dg::XmlElem& xml, Node& node, std::string& problem)
{
    if (xml.GetName() != kNode) {
        return Fail(problem, "the service tree has an element that is no \"node\"");
    }
    if (!SerializedContentXml::ReadAttribute(xml, kId, node.id) || node.id.empty() ||
        node.id.find('/') != std::string::npos) {
        return Fail(problem, "a node of the service tree has no id, or one with a '/'");
    }
    SerializedContentXml::ReadAttribute(xml, kName, node.name);
    SerializedContentXml::ReadAttribute(xml, kPart, node.part);
    node.foreign = UnknownAttributesOf(xml, {kId, kIdBase64, kName, kNameBase64, kPart, kPartBase64});
    return true;
}

} // namespace

bool ServiceModel::Read(const dg::XmlElem& service, ServiceModel& model, std::string& problem)
{
    model.nodes.clear();
    if (service.GetName() != kService) {
        return Fail(problem, "the top-level element is not \"service\"");
    }
    model.foreign = UnknownAttributesOf(service, {});
    struct Step {
        dg::XmlElem next;
        std::size_t parent;
        std::size_t pathBytes;
        std::set<std::string> ids;
    };
    std::vector<Step> due{{service.FirstChild(), kNoParent, 0, {}}};
    std::size_t allPathBytes = 0;
    while (!due.empty()) {
        Step& step = due.back();
        const dg::XmlElem xml = step.next;
        if (!xml) {
            due.pop_back();
            continue;
        }
        step.next = xml.NextSibling();
        Node& node = model.nodes.emplace_back();
        node.parent = step.parent;
        if (!ReadNode(xml, node, problem)) {
            return false;
        }
        if (!step.ids.insert(node.id).second) {
            return Fail(problem, "two nodes in one place of the service tree have the id \"" + node.id + "\"");
        }
        const std::size_t pathBytes = step.pathBytes + 1 + node.id.size();
        allPathBytes += pathBytes;
        if (due.size() > kMaxDepth || model.nodes.size() > kMaxNodes || allPathBytes > kMaxPathBytes) {
            return Fail(problem, "the service tree is too deep or too large");
        }
        due.push_back({xml.FirstChild(), model.nodes.size() - 1, pathBytes, {}});
    }
    return true;
}

bool ServiceModel::Parse(const std::string& xml, ServiceModel& model, std::string& problem)
{
    dg::XmlParseError error;
    const std::unique_ptr<dg::XmlElem, dg::XmlFreer> root(dg::ParseXml(xml, false, &error));
    if (!root) {
        return Fail(problem, "line " + std::to_string(error.line) + ": " + error.reason);
    }
    return Read(*root, model, problem);
}

bool ServiceModel::Append(std::string& out, int depth, std::string& problem) const
{
    const auto indent = [&](std::size_t level) { out.append(2 * (static_cast<std::size_t>(depth) + level), ' '); };
    indent(0);
    out.append("<service").append(foreign).append(">\n");
    std::vector<std::size_t> open;
    const auto closeUpTo = [&](std::size_t parent) {
        while (!open.empty() && open.back() != parent) {
            indent(open.size());
            out.append("</node>\n");
            open.pop_back();
        }
    };
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const Node& node = nodes[i];
        closeUpTo(node.parent);
        if (open.size() >= kMaxDepth) {
            return Fail(problem, "the service tree is nested too deep to be read again");
        }
        if (open.empty() && node.parent != kNoParent) {
            return Fail(problem, "a node of the service tree does not follow its parent");
        }
        indent(open.size() + 1);
        out.append("<node");
        SerializedContentXml::AppendAttribute(out, kId, node.id);
        SerializedContentXml::AppendAttribute(out, kName, node.name);
        if (!node.part.empty()) {
            SerializedContentXml::AppendAttribute(out, kPart, node.part);
        }
        out.append(node.foreign);
        const bool hasChildren = i + 1 < nodes.size() && nodes[i + 1].parent == i;
        out.append(hasChildren ? ">\n" : "/>\n");
        if (hasChildren) {
            open.push_back(i);
        }
    }
    closeUpTo(kNoParent);
    indent(0);
    out.append("</service>\n");
    return true;
}

std::vector<std::string> ServiceModel::GetPaths() const
{
    std::vector<std::string> paths(nodes.size());
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const Node& node = nodes[i];
        paths[i] = (node.parent < i ? paths[node.parent] : std::string()).append("/").append(node.id);
    }
    return paths;
}

ServiceModel ServiceModel::Of(const SbomTree& tree)
{
    struct Step {
        du::SmartPtr<SbomInstance> instance;
        std::size_t parent;
    };
    ServiceModel model;
    model.nodes.reserve(tree.GetInstanceCount());
    std::vector<Step> due;
    const auto add = [&due](const SbomInstance& instance, std::size_t parent) {
        const auto children = instance.GetChildren();
        std::for_each(children.rbegin(), children.rend(), [&](const auto& child) { due.push_back({child, parent}); });
    };
    add(*tree.GetRoot(), kNoParent);
    while (!due.empty()) {
        const Step step = std::move(due.back());
        due.pop_back();
        const auto part = step.instance->GetEbomInstance();
        model.nodes.push_back({step.instance->GetId().GetText(),
                               step.instance->GetName(),
                               part ? part->GetIdPath().GetText() : std::string(),
                               step.parent,
                               {}});
        add(*step.instance, model.nodes.size() - 1);
    }
    return model;
}

std::vector<ServiceModel::Absent> ServiceModel::Fill(SbomTree& tree, const luk::Tree& product) const
{
    std::vector<Absent> absent;
    std::vector<du::SmartPtr<SbomInstance>> made(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const Node& node = nodes[i];
        const du::SmartPtr<SbomInstance> parent = node.parent < i ? made[node.parent] : nullptr;
        const du::Symbol id(node.id);
        const auto part = node.part.empty() ? nullptr : product.FindInstance(du::Symbol::Find(node.part));
        made[i] = tree.AddInstance(parent, id, node.name, part);
        const bool isResolved = made[i] && (node.part.empty() || part);
        if (!made[i]) {
            made[i] = tree.AddInstance(parent, id, node.name, nullptr);
        }
        if (!isResolved && made[i]) {
            absent.push_back({i, made[i]->GetIdPath().GetText()});
        }
    }
    return absent;
}

} // namespace luhost
