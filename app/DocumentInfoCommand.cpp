#include "DocumentPlaces.h"
#include "DocumentSource.h"
#include "DocumentUnknown.h"
#include "FileProbe.h"
#include "FileText.h"
#include "Finding.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "Printable.h"
#include "Progress.h"
#include "SymbolState.h"
#include "TextValues.h"

#include <luk/illustration/SymbolTemplateCollection.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <system_error>
#include <utility>

namespace lusym
{

namespace
{

using nlohmann::ordered_json;

struct InfoOptions {
    std::string name;
    bool asJson = false;
};

/// The pictures and shapes that lie in the document, by name, each with its size in bytes.
std::map<std::string, std::uintmax_t> EmbeddedFiles(const std::string& folder)
{
    std::map<std::string, std::uintmax_t> pictures;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::uintmax_t size = entry.file_size(error);
        pictures[entry.path().filename()] = error ? 0 : size;
    }
    return pictures;
}

ordered_json PictureAsJson(const PictureFacts& picture)
{
    return picture.problem.empty()
               ? ordered_json({{"width", picture.width}, {"height", picture.height}, {"vector", picture.isVector}})
               : ordered_json({{"problem", picture.problem}});
}

/// What lies in the document: `{pictures, shapes}`. A shape is what a symbol shows as one.
std::pair<ordered_json, ordered_json> FilesAsJson(DocumentSource& source, const std::vector<DocumentPlace>& places)
{
    const auto pathOf = [folder = source.GetPictureFolder() + "/"](const std::string& name) { return folder + name; };
    std::set<std::string> shapeNames;
    for (const DocumentPlace& place : places) {
        for (const SymbolState& state : place.symbols) {
            if (state.isShape || state.isFlattened) {
                shapeNames.insert(state.file);
            }
        }
    }
    std::vector<std::string> pictures;
    std::vector<std::string> shapes;
    const std::map<std::string, std::uintmax_t> files = EmbeddedFiles(source.GetPictureFolder());
    for (const auto& [name, bytes] : files) {
        (shapeNames.contains(name) ? shapes : pictures).push_back(pathOf(name));
    }
    const auto facts = ProbePictures(pictures, source);
    const auto problems = ProbeShapes(shapes, source);
    std::pair<ordered_json, ordered_json> lists(ordered_json::array(), ordered_json::array());
    for (const auto& [name, bytes] : files) {
        ordered_json json = {{"name", name}, {"bytes", bytes}};
        const auto problem = problems.find(pathOf(name));
        if (problem == problems.end()) {
            json.update(PictureAsJson(facts.at(pathOf(name))));
            lists.first.push_back(std::move(json));
            continue;
        }
        if (!problem->second.empty()) {
            json["problem"] = problem->second;
        }
        lists.second.push_back(std::move(json));
    }
    return lists;
}

/// How many symbols are on parts, and how many on parts that are not there.
ordered_json AttachmentsAsJson(const std::vector<SymbolState>& symbols)
{
    std::size_t attached = 0;
    std::size_t lost = 0;
    for (const SymbolState& state : symbols) {
        attached += state.attachments.empty() ? 0U : 1U;
        lost += state.lostAttachments.empty() ? 0U : 1U;
    }
    return {{"symbols", attached}, {"lost", lost}};
}

ordered_json PagesAsJson(std::span<const DocumentPlace> pages)
{
    ordered_json list = ordered_json::array();
    for (const DocumentPlace& page : pages) {
        list.push_back(PageAsJson(page));
        list.back()["symbols"] = page.symbols.size();
    }
    return list;
}

ordered_json KindsAsJson(const std::vector<DocumentPlace>& places)
{
    ordered_json kinds = ordered_json::object();
    for (const DocumentPlace& place : places) {
        for (const SymbolState& state : place.symbols) {
            kinds[state.kind] = kinds.value(state.kind, 0) + 1;
        }
    }
    return kinds;
}

ordered_json ViewAsJson(const luhost::Document& document, std::size_t symbols)
{
    const dg::Camera3D camera = document.GetCamera();
    ordered_json view = {{"projection", camera.IsOrthographic() ? "orthographic" : "perspective"}};
    if (camera.IsOrthographic()) {
        view["width"] = camera.GetOrthographicWidth();
    } else {
        view["fieldOfView"] = camera.GetPerspectiveHFOV();
    }
    view["pixels"] = {camera.GetPixelWidth(), camera.GetPixelHeight()};
    view["symbols"] = symbols;
    return view;
}

ordered_json InfoAsJson(DocumentSource& source)
{
    const luhost::Document& document = source.GetDocument();
    const std::vector<DocumentPlace> places = PlacesOf(document, source.GetLostAttachments());
    auto [pictures, shapes] = FilesAsJson(source, places);
    ordered_json entries = ordered_json::array();
    const auto& collection = *luk::illustration::SymbolTemplateCollection::GetCollection();
    for (const auto& object : collection.GetAssociativeObjects()) {
        entries.push_back({{"id", object->GetId()}, {"name", object->GetName()}});
    }
    ordered_json libraries = ordered_json::array();
    for (const LibraryPlace& place : source.GetLibraryPlaces()) {
        libraries.push_back(place.path);
    }
    return {{"file", source.GetName()},
            {"view", ViewAsJson(document, places[0].symbols.size())},
            {"pages", PagesAsJson(std::span(places).subspan(1))},
            {"symbols", KindsAsJson(places)},
            {"unknown", document.GetUnknownAnnotationCount()},
            {"attachments", AttachmentsAsJson(places[0].symbols)},
            {"pictures", std::move(pictures)},
            {"shapes", std::move(shapes)},
            {"entries", std::move(entries)},
            {"libraries", std::move(libraries)},
            {"problems", ProblemsOf(source)}};
}

std::string TextOf(const ordered_json& value)
{
    return value.is_string() ? Printable(value.get<std::string>()) : NumberText(value.get<double>());
}

/// "3 pictures", and a line for each.
template <class LineOf>
void AppendList(std::string& text, const ordered_json& list, const char* one, const char* many, const LineOf& lineOf)
{
    text += CountOf(list.size(), one, many) + "\n";
    for (const ordered_json& item : list) {
        text += "  " + lineOf(item) + "\n";
    }
}

std::string PictureLine(const ordered_json& picture)
{
    const std::string size = picture.contains("problem")
                                 ? "cannot be read: " + TextOf(picture["problem"])
                                 : TextOf(picture["width"]) + " x " + TextOf(picture["height"]) +
                                       (picture["vector"] ? " pixels, vector" : " pixels");
    return TextOf(picture["name"]) + ": " + size + ", " + picture["bytes"].dump() + " bytes";
}

std::string SymbolCount(const ordered_json& value)
{
    return CountOf(value["symbols"].get<std::size_t>(), "symbol", "symbols");
}

std::string InfoAsText(const ordered_json& info)
{
    const ordered_json& view = info["view"];
    std::string text = "view: " + TextOf(view["projection"]) + ", ";
    text += view.contains("width") ? TextOf(view["width"]) + " wide" : TextOf(view["fieldOfView"]) + " degrees";
    text +=
        ", " + TextOf(view["pixels"][0]) + " x " + TextOf(view["pixels"][1]) + " pixels, " + SymbolCount(view) + "\n";
    AppendList(text, info["pages"], "page", "pages", [](const ordered_json& page) {
        return TextOf(page["page"]) + ": " + TextOf(page["width"]) + " x " + TextOf(page["height"]) + " mm, " +
               SymbolCount(page);
    });
    for (const auto& [kind, count] : info["symbols"].items()) {
        text += "symbols of the kind " + Quote(kind) + ": " + count.dump() + "\n";
    }
    if (info["unknown"] != 0) {
        text += "symbols of unknown kinds: " + info["unknown"].dump() + "\n";
    }
    if (const ordered_json& attachments = info["attachments"];
        attachments["symbols"] != 0 || attachments["lost"] != 0) {
        text += "attached to parts: " + SymbolCount(attachments) +
                "; to parts that are not there: " + attachments["lost"].dump() + "\n";
    }
    AppendList(text, info["pictures"], "picture", "pictures", PictureLine);
    if (!info["shapes"].empty()) {
        AppendList(text, info["shapes"], "shape", "shapes", [](const ordered_json& shape) {
            return TextOf(shape["name"]) + ": " +
                   (shape.contains("problem") ? "cannot be read: " + TextOf(shape["problem"]) + ", " : std::string()) +
                   shape["bytes"].dump() + " bytes";
        });
    }
    AppendList(text, info["entries"], "library entry", "library entries",
               [](const ordered_json& entry) { return TextOf(entry["id"]) + ": " + TextOf(entry["name"]); });
    AppendList(text, info["libraries"], "library", "libraries", TextOf);
    AppendList(text, info["problems"], "problem", "problems", TextOf);
    return text;
}

ExitCode RunInfo(const InfoOptions& options, Progress& progress)
{
    return WorkOnDocument({}, options.name, progress, [&](DocumentSource& source) {
        const ordered_json info = InfoAsJson(source);
        return PutResult(options.asJson ? JsonText(info) : InfoAsText(info), progress);
    });
}

} // namespace

void AddDocumentInfo(CLI::App& document, Invocation& invocation)
{
    CLI::App& verb = *document.add_subcommand("info", "Tell what a document holds");
    const auto options = std::make_shared<InfoOptions>();
    AddDocumentArgument(verb, options->name);
    verb.add_flag("--json", options->asJson, "The same as JSON");
    verb.footer("Pages, the view, symbols by kind, pictures with their sizes, library entries, the libraries that the\n"
                "document records, and what could not be read of it.\n\n"
                "Examples:\n"
                "  lusym document info manual.luz\n"
                "  lusym document info manual.luz --json | jq '.pictures | map(.bytes) | add'\n\n"
                "Exit codes: 0 done; 3 DOC is unreadable.\n");
    verb.callback(
        [options, &invocation] { invocation = [options](Progress& progress) { return RunInfo(*options, progress); }; });
}

} // namespace lusym
