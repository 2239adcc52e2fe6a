// lusym-import: reads one model in a process of its own and writes the product in it to standard output. It is started by
// lusym, with bounds of memory and time that it gives to itself before it looks at the file.
#include "../luhost/io/ProductStream.h"
#include "Confinement.h"
#include "ModelFiles.h"
#include "ModelFormat.h"
#include "SceneConversion.h"

#include <assimp/BaseImporter.h>
#include <assimp/config.h>
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{

using luhost::ProductModel;
using luhost::io::Confinement;
using luhost::io::ModelFiles;
using luhost::io::ModelFormat;
using luhost::io::ProductStream;
using luhost::io::SceneConversion;

struct Order {
    std::string path;
    double millimetresPerUnit = 0.0;
    std::uint64_t seconds = 0;
    std::uint64_t memoryBytes = 0;
    std::uint64_t maximumFileBytes = 0;
    std::uint64_t maximumTriangles = 0;
    std::uint64_t maximumUses = 0;
};

template <class Number>
bool Parse(std::string_view text, Number& number)
{
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
    return status == std::errc() && end == text.data() + text.size();
}

bool ParseOrder(int argc, char** argv, Order& order)
{
    constexpr int kArguments = 8;
    if (argc != kArguments) {
        return false;
    }
    order.path = argv[1];
    return Parse(argv[2], order.millimetresPerUnit) && Parse(argv[3], order.seconds) &&
           Parse(argv[4], order.memoryBytes) && Parse(argv[5], order.maximumFileBytes) &&
           Parse(argv[6], order.maximumTriangles) && Parse(argv[7], order.maximumUses);
}

/// Leaves only the importers of one format, so that no other one is ever tried. Those taken out are left to the end of the
/// process.
void KeepImporters(Assimp::Importer& importer, const std::string& extension)
{
    for (std::size_t i = importer.GetImporterCount(); i-- > 0;) {
        Assimp::BaseImporter* const one = importer.GetImporter(i);
        std::set<std::string> extensions;
        one->GetExtensionList(extensions);
        if (extensions.count(extension.substr(1)) == 0) {
            importer.UnregisterLoader(one);
        }
    }
}

/// The words of an importer as the end of a sentence.
std::string ReasonOf(std::string reason, const std::string& extension)
{
    if (reason.empty() || reason.starts_with("No suitable reader")) {
        return "it is no " + extension.substr(1) + " file";
    }
    while (reason.ends_with('.') || reason.ends_with('\n')) {
        reason.pop_back();
    }
    return reason;
}

std::string Import(const Order& order)
{
    ModelFormat format;
    auto files = std::make_unique<ModelFiles>(order.path, order.maximumFileBytes);
    Confinement{order.seconds, order.memoryBytes, files->GetFolder()}.Enter();
    if (!ModelFormat::Find(files->GetExtension(), order.path, format)) {
        return ProductStream::FromProblem("its name ends in none of .gltf, .glb, .obj, .stl, .ply, .3mf and .dae");
    }
    if (const std::string trap = ModelFormat::FindTrap(files->GetExtension(), order.path); !trap.empty()) {
        return ProductStream::FromProblem(trap);
    }
    const ModelFiles& view = *files;
    Assimp::Importer importer;
    KeepImporters(importer, view.GetExtension());
    importer.SetIOHandler(files.release());
    importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
    const aiScene* const scene = importer.ReadFile(view.GetModelName(), aiProcess_Triangulate);
    if (!scene) {
        return ProductStream::FromProblem(
            view.GetProblem().empty() ? ReasonOf(importer.GetErrorString(), view.GetExtension()) : view.GetProblem());
    }
    SceneConversion::Settings settings;
    const bool isUnitGiven = order.millimetresPerUnit > 0.0;
    settings.millimetresPerUnit = isUnitGiven ? order.millimetresPerUnit : format.millimetresPerUnit;
    settings.isUnitOverridden = isUnitGiven && format.isRootScaleUnit;
    settings.areColorsLinear = format.areColorsLinear;
    settings.names = std::move(format.names);
    settings.name = std::filesystem::path(order.path).stem().string();
    settings.maximumTriangles = order.maximumTriangles;
    settings.maximumUses = order.maximumUses;
    ProductModel model;
    std::string problem;
    return SceneConversion::Run(*scene, settings, model, problem) ? ProductStream::FromModel(model)
                                                                  : ProductStream::FromProblem(problem);
}

bool WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    Order order;
    if (!ParseOrder(argc, argv, order)) {
        std::fputs("lusym-import reads models for lusym, which starts it.\n", stderr);
        return 2;
    }
    // Whatever a library prints must not get into the answer.
    const int output = dup(STDOUT_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    std::string answer;
    try {
        answer = Import(order);
    } catch (const std::exception& error) {
        answer = ProductStream::FromProblem(error.what());
    }
    // Ends without destructors: those of a deep scene would overflow the stack.
    _exit(WriteAll(output, answer) ? 0 : 1);
}
