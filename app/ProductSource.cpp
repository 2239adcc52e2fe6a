#include "ProductSource.h"

#include "DocumentSource.h"
#include "FileText.h"
#include "PartState.h"
#include "Printable.h"
#include "ProgramPaths.h"
#include "Progress.h"

#include <luhost/io/ProductImport.h>
#include <luhost/ServiceModel.h>
#include <luk/Instance.h>
#include <luk/Shape.h>
#include <luk/ShapeScene.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace lusym
{

namespace
{

constexpr std::array<std::pair<std::string_view, double>, 5> kUnits = {
    {{"mm", 1.0}, {"cm", 10.0}, {"m", 1000.0}, {"in", 25.4}, {"ft", 304.8}}};

/// 0 for no unit.
double MillimetresOf(std::string_view unit)
{
    for (const auto& [name, millimetres] : kUnits) {
        if (unit == name) {
            return millimetres;
        }
    }
    return 0.0;
}

bool ReadModel(const ProductOptions& options, Progress& progress, luhost::ProductModel& model)
{
    progress.Step("reading " + options.model);
    std::string problem;
    const luhost::io::ModelReader reader(FindImporter());
    const bool isRead = reader.ReadProduct(options.model, MillimetresOf(options.unit), model, problem);
    progress.Clear();
    if (!isRead) {
        progress.Tell(Printable(options.model) + ": error: the model cannot be read: " + Printable(problem) +
                      ". Name a sound file in one of the formats " + std::string(kModelFormats) + ".\n");
    }
    return isRead;
}

bool ReadService(const ProductOptions& options, Progress& progress, luhost::ServiceModel& service)
{
    std::string text;
    std::string problem;
    const bool isRead =
        ReadFileText(options.service, text, problem) && luhost::ServiceModel::Parse(text, service, problem);
    if (!isRead) {
        progress.Tell(Printable(options.service) + ": error: the service tree cannot be read: " + Printable(problem) +
                      ". Name an XML file with a \"service\" that holds \"node\"s.\n");
    }
    return isRead;
}

/// Nodes of the service tree for parts that the product does not have.
void TellAbsentParts(const ProductOptions& options, DocumentSource& source)
{
    const luk::Tree& tree = *source.GetDocument().GetShapeScene()->GetTree();
    const std::string& file = options.service.empty() ? source.GetName() : options.service;
    for (const auto& node : source.GetDocument().GetService().nodes) {
        const auto part = tree.FindInstance(du::Symbol(node.part));
        if (!node.part.empty() && (!part || !part->GetSbomInstance())) {
            source.GetProgress().Tell(
                Printable(file) + ": warning: the node " + Quote(node.id) + " stands for the part " + Quote(node.part) +
                (part ? ", which another node stands for already.\n" : ", which the product does not have.\n"));
        }
    }
}

double Dot(const dg::DVec3& a, const dg::DVec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

dg::DVec3 Cross(const dg::DVec3& a, const dg::DVec3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

dg::DVec3 Direction(const dg::DVec3& v) { return v * (1.0 / std::sqrt(Dot(v, v))); }

/// The corners of the boxes around the shapes, where they stand.
template <class Visit>
void ForEachCorner(const luhost::Document& document, const Visit& visit)
{
    for (const auto& part : PartsOf(document)) {
        const auto& shape = part->GetShape();
        if (!shape || !shape->GetMesh()) {
            continue;
        }
        const dg::FBox& box = shape->GetMesh()->GetBox();
        const dg::Location& place = part->GetLocation();
        for (const float x : {box.GetMin().x, box.GetMax().x}) {
            for (const float y : {box.GetMin().y, box.GetMax().y}) {
                for (const float z : {box.GetMin().z, box.GetMax().z}) {
                    visit(place.GetMat() * dg::DVec3(x, y, z) + (place.GetPosition() - dg::DPoint3D::ORIGIN));
                }
            }
        }
    }
}

} // namespace

void AddProductOptions(CLI::App& verb, ProductOptions& options, CLI::Option* model)
{
    verb.add_option(
            "--unit", options.unit,
            "Unit of the lengths in MODEL: mm, cm, m, in or ft (default: what MODEL says; glTF is in metres, OBJ, "
            "STL and PLY do not say and count as mm)")
        ->check([](const std::string& unit) {
            return MillimetresOf(unit) > 0.0 ? std::string() : Quote(unit) + " is no unit. Write mm, cm, m, in or ft";
        })
        ->needs(model)
        ->type_name("UNIT");
    verb.add_option("--service", options.service,
                    "The service tree: the parts grouped as they are serviced, as an XML file with \"node\"s")
        ->needs(model)
        ->type_name("TREE.xml");
}

bool PutProduct(const ProductOptions& options, DocumentSource& source)
{
    luhost::ProductModel model;
    luhost::ServiceModel service;
    if (!ReadModel(options, source.GetProgress(), model) ||
        (!options.service.empty() && !ReadService(options, source.GetProgress(), service))) {
        return false;
    }
    std::string problem;
    if (!source.GetDocument().SetProduct(model, problem) ||
        (!options.service.empty() && !source.GetDocument().SetService(service, problem))) {
        source.GetProgress().Tell(Printable(options.model) + ": error: " + Printable(problem) + ".\n");
        return false;
    }
    source.WaitForLoads();
    TellAbsentParts(options, source);
    return true;
}

void FitCamera(DocumentSource& source)
{
    // The frame of the camera: it looks against its third axis, the second one is up.
    const dg::DVec3 right = Direction({1.4, 0.0, -1.0});
    const dg::DVec3 back = Direction({1.0, 0.8, 1.4});
    const dg::DVec3 up = Cross(back, right);
    constexpr double kMost = std::numeric_limits<double>::max();
    dg::DVec3 low(kMost, kMost, kMost);
    dg::DVec3 high(-kMost, -kMost, -kMost);
    ForEachCorner(source.GetDocument(), [&](const dg::DVec3& corner) {
        const dg::DVec3 seen(Dot(corner, right), Dot(corner, up), Dot(corner, back));
        low = {std::min(low.x, seen.x), std::min(low.y, seen.y), std::min(low.z, seen.z)};
        high = {std::max(high.x, seen.x), std::max(high.y, seen.y), std::max(high.z, seen.z)};
    });
    if (!(low.x <= high.x)) {
        return;
    }
    constexpr double kMargin = 1.1;
    dg::Camera3D camera = source.GetDocument().GetCamera();
    const double aspect = static_cast<double>(camera.GetPixelWidth()) / std::max(camera.GetPixelHeight(), 1);
    const dg::DVec3 size = high - low;
    const dg::DVec3 middle = (low + high) * 0.5;
    const double distance = high.z + std::hypot(size.x, size.y, size.z);
    const dg::DVec3 eye = right * middle.x + up * middle.y + back * distance;
    camera.SetOrthographic(kMargin * std::max({size.x, size.y * aspect, 1.0}));
    const auto f = [](double value) { return static_cast<float>(value); };
    camera.SetLocation(
        dg::Location({f(right.x), f(up.x), f(back.x), f(right.y), f(up.y), f(back.y), f(right.z), f(up.z), f(back.z)},
                     {eye.x, eye.y, eye.z}));
    source.GetDocument().SetCamera(camera);
}

} // namespace lusym
