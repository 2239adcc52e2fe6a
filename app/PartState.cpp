#include "PartState.h"

#include "DocumentSource.h"
#include "Finding.h"
#include "PartLookup.h"
#include "Printable.h"
#include "Progress.h"
#include "TextValues.h"

#include <luhost/ServiceModel.h>
#include <luk/ComponentNode.h>
#include <luk/illustration/Illustration3dScene.h>
#include <luk/Instance.h>
#include <luk/Shape.h>
#include <luk/Structure.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace lusym
{

namespace
{

using nlohmann::ordered_json;
using ShapePtr = du::SmartPtr<luk::ShapeInstance>;

/// Null for the node of a symbol, whatever its id.
ShapePtr PartAt(const luk::ShapeScene& scene, const du::SmartPtr<luk::Instance>& instance)
{
    ShapePtr part = scene.GetShapeInstance(instance);
    return part && !part->IsOfSymbol() ? part : nullptr;
}

/// Goes through the parts in the order of the tree.
/// @param visit told the part and its level, from 0
template <class Visit>
void ForEachPart(const luhost::Document& document, const Visit& visit)
{
    struct Step {
        du::SmartPtr<luk::Instance> instance;
        std::size_t level;
    };
    const luk::ShapeScene& scene = *document.GetShapeScene();
    std::vector<Step> due;
    const auto addBelow = [&due](const luk::Instance& instance, std::size_t level) {
        const auto children = instance.GetChildren();
        std::for_each(children.rbegin(), children.rend(), [&](const auto& child) { due.push_back({child, level}); });
    };
    addBelow(*scene.GetTree()->GetRoot(), 0);
    while (!due.empty()) {
        const Step step = std::move(due.back());
        due.pop_back();
        if (const ShapePtr part = PartAt(scene, step.instance)) {
            visit(part, step.level);
            addBelow(*step.instance, step.level + 1);
        }
    }
}

std::string ProductName(const luhost::Document& document)
{
    return document.GetStructure()->GetRoot()->GetName().GetText();
}

ordered_json NumbersOf(const dg::DPoint3D& point) { return {point.x, point.y, point.z}; }

} // namespace

std::vector<ShapePtr> PartsOf(const luhost::Document& document)
{
    std::vector<ShapePtr> parts;
    ForEachPart(document, [&parts](const ShapePtr& part, std::size_t) { parts.push_back(part); });
    return parts;
}

ShapePtr FindPart(const luhost::Document& document, const std::string& path)
{
    const luk::ShapeScene& scene = *document.GetShapeScene();
    const du::Symbol idPath(path.starts_with('/') ? path : "/" + path);
    du::SmartPtr<luk::Instance> instance = scene.GetTree()->FindInstance(idPath);
    if (!instance) {
        const auto* const withService = dynamic_cast<const luk::illustration::Illustration3dScene*>(&scene);
        const auto node = withService ? withService->GetSbomTree()->FindInstance(idPath) : nullptr;
        instance = node ? node->GetEbomInstance() : nullptr;
    }
    return PartAt(scene, instance);
}

std::vector<ShapePtr> FindParts(DocumentSource& source, const std::vector<std::string>& words)
{
    std::vector<ShapePtr> parts;
    PartLookup lookup(source.GetDocument());
    for (const std::string& word : words) {
        PartLookup::Found found = lookup.Find(word);
        if (found.part) {
            parts.push_back(std::move(found.part));
        } else {
            source.GetProgress().Tell(Printable(source.GetName()) + ": error: " + found.fault +
                                      (found.fault.ends_with('?') ? "\n" : ".\n"));
        }
    }
    return parts;
}

std::string NameOf(const luk::ShapeInstance& part)
{
    const auto node = part.GetInstance()->GetNode();
    return node ? node->GetName().GetText() : std::string();
}

std::size_t TrianglesOf(const luk::ShapeInstance& part)
{
    const auto& shape = part.GetShape();
    return shape && shape->GetMesh() ? shape->GetMesh()->GetTriangleCount() : 0;
}

std::size_t TrianglesOf(const luhost::Document& document)
{
    std::size_t triangles = 0;
    ForEachPart(document, [&](const ShapePtr& part, std::size_t) { triangles += TrianglesOf(*part); });
    return triangles;
}

ordered_json PartAsJson(const luk::ShapeInstance& part)
{
    const luk::Instance& instance = *part.GetInstance();
    ordered_json json = {{"part", instance.GetIdPath().GetText()},
                         {"id", instance.GetComponentInstance()->GetId().GetText()},
                         {"name", NameOf(part)},
                         {"triangles", TrianglesOf(part)},
                         {"at", NumbersOf(part.GetLocation().GetPosition())},
                         {"matrix", part.GetLocation().GetMat().GetEntries()},
                         {"moved", part.IsPlaced()},
                         {"hidden", !part.IsShown()},
                         {"visible", part.IsVisible()}};
    if (const auto node = instance.GetSbomInstance()) {
        json["service"] = node->GetIdPath().GetText();
    }
    return json;
}

std::string PartMarks(const luk::ShapeInstance& part)
{
    const std::string hidden = part.IsShown() ? "" : "hidden";
    return hidden + (part.IsPlaced() ? hidden.empty() ? "moved" : ", moved" : "");
}

ordered_json ProductAsJson(const luhost::Document& document)
{
    // Parts below one another: the list at each level stands still while what is below its last element is filled.
    ordered_json product;
    std::vector<ordered_json*> levels;
    std::size_t count = 0;
    ForEachPart(document, [&](const ShapePtr& part, std::size_t level) {
        if (count++ == 0) {
            product = {{"name", ProductName(document)}, {"parts", ordered_json::array()}};
            levels = {&product["parts"]};
        }
        levels.resize(level + 1);
        levels[level]->push_back(PartAsJson(*part));
        ordered_json& added = levels[level]->back();
        if (!part->GetInstance()->GetChildren().empty()) {
            added["parts"] = ordered_json::array();
            levels.push_back(&added["parts"]);
        }
    });
    return product;
}

std::string ProductAsText(const luhost::Document& document)
{
    std::string text;
    std::size_t count = 0;
    ForEachPart(document, [&](const ShapePtr& part, std::size_t level) {
        ++count;
        const luk::Instance& instance = *part->GetInstance();
        const std::string& id = instance.GetComponentInstance()->GetId().GetText();
        const std::string name = NameOf(*part);
        const std::string marks = PartMarks(*part);
        text.append(2 * (level + 1), ' ').append(Printable(id));
        text += name.empty() || name == id ? std::string() : ": " + Printable(name);
        text += marks.empty() ? "\n" : " (" + marks + ")\n";
    });
    if (count == 0) {
        return {};
    }
    return "product " + Quote(ProductName(document)) + ": " + CountOf(count, "part", "parts") + ", " +
           CountOf(TrianglesOf(document), "triangle", "triangles") + "\n" + text;
}

ordered_json ServiceAsJson(const luhost::Document& document)
{
    const luhost::ServiceModel service = document.GetService();
    ordered_json nodes = ordered_json::array();
    std::vector<std::string> paths;
    for (const auto& node : service.nodes) {
        paths.push_back((node.parent < paths.size() ? paths[node.parent] : std::string()) + "/" + node.id);
        nodes.push_back({{"node", paths.back()}, {"name", node.name}});
        if (!node.part.empty()) {
            nodes.back()["part"] = node.part;
        }
    }
    return nodes;
}

std::string ServiceAsText(const luhost::Document& document)
{
    const luhost::ServiceModel service = document.GetService();
    std::string text;
    std::vector<std::size_t> levels;
    for (const auto& node : service.nodes) {
        levels.push_back(node.parent < levels.size() ? levels[node.parent] + 1 : 1);
        text.append(2 * levels.back(), ' ').append(Printable(node.id));
        text += node.name.empty() || node.name == node.id ? std::string() : ": " + Printable(node.name);
        text += node.part.empty() ? "\n" : " = " + Printable(node.part) + "\n";
    }
    return text.empty() ? text : "service tree: " + CountOf(levels.size(), "node", "nodes") + "\n" + text;
}

} // namespace lusym
