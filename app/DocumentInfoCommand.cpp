#include "DocumentSource.h"
#include "FileText.h"
#include "Finding.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "PictureProbe.h"
#include "Printable.h"
#include "Progress.h"
#include "SymbolState.h"
#include "TextValues.h"

#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/illustration2d/Scene2D.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <system_error>

namespace lusym
{

namespace
{

using nlohmann::ordered_json;

struct InfoOptions {
    std::string name;
    bool asJson = false;
};

/// The pictures that lie in the document, by name, each with its size in bytes.
std::map<std::string, std::uintmax_t> EmbeddedPictures(const std::string& folder)
{
    std::map<std::string, std::uintmax_t> pictures;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::uintmax_t size = entry.file_size(error);
        pictures[entry.path().filename()] = error ? 0 : size;
    }
    return pictures;
}

ordered_json PicturesAsJson(DocumentSource& source)
{
    const std::string folder = source.GetPictureFolder();
    const std::map<std::string, std::uintmax_t> pictures = EmbeddedPictures(folder);
    std::vector<std::string> paths;
    for (const auto& [name, bytes] : pictures) {
        paths.push_back(folder + "/" + name);
    }
    const auto facts = ProbePictures(paths, source);
    ordered_json list = ordered_json::array();
    for (const auto& [name, bytes] : pictures) {
        const PictureFacts& fact = facts.at(folder + "/" + name);
        ordered_json json = {{"name", name}, {"bytes", bytes}};
        if (fact.problem.empty()) {
            json["width"] = fact.width;
            json["height"] = fact.height;
            json["vector"] = fact.isVector;
        } else {
            json["problem"] = fact.problem;
        }
        list.push_back(std::move(json));
    }
    return list;
}

ordered_json PagesAsJson(const luhost::Document& document, const std::vector<SymbolState>& states)
{
    std::vector<std::size_t> counts(document.GetPageCount() + 1);
    for (const SymbolState& state : states) {
        ++counts[static_cast<std::size_t>(state.page)];
    }
    ordered_json pages = ordered_json::array();
    for (std::size_t page = 0; page < document.GetPageCount(); ++page) {
        const auto& sheet = *document.GetPage(page)->GetDocument();
        pages.push_back({{"page", page + 1},
                         {"width", sheet.GetWidth()},
                         {"height", sheet.GetHeight()},
                         {"symbols", counts[page + 1]}});
    }
    return pages;
}

ordered_json ViewAsJson(const luhost::Document& document, const std::vector<SymbolState>& states)
{
    const dg::Camera3D camera = document.GetCamera();
    ordered_json view = {{"projection", camera.IsOrthographic() ? "orthographic" : "perspective"}};
    if (camera.IsOrthographic()) {
        view["width"] = camera.GetOrthographicWidth();
    } else {
        view["fieldOfView"] = camera.GetPerspectiveHFOV();
    }
    view["pixels"] = {camera.GetPixelWidth(), camera.GetPixelHeight()};
    view["symbols"] = std::ranges::count(states, 0, &SymbolState::page);
    return view;
}

ordered_json InfoAsJson(DocumentSource& source)
{
    const luhost::Document& document = source.GetDocument();
    const std::vector<SymbolState> states = StatesOf(document);
    ordered_json kinds = ordered_json::object();
    for (const SymbolState& state : states) {
        kinds[state.kind] = kinds.value(state.kind, 0) + 1;
    }
    ordered_json entries = ordered_json::array();
    const auto& collection = *luk::illustration::SymbolTemplateCollection::GetCollection();
    for (const auto& object : collection.GetAssociativeObjects()) {
        entries.push_back({{"id", object->GetId()}, {"name", object->GetName()}});
    }
    ordered_json libraries = ordered_json::array();
    for (const LibraryPlace& place : source.GetLibraryPlaces()) {
        libraries.push_back(place.path);
    }
    std::vector<std::string> problems = source.GetEntryProblems();
    problems.insert(problems.end(), document.GetProblems().begin(), document.GetProblems().end());
    return {{"file", source.GetName()},
            {"view", ViewAsJson(document, states)},
            {"pages", PagesAsJson(document, states)},
            {"symbols", std::move(kinds)},
            {"unknown", document.GetUnknownAnnotationCount()},
            {"pictures", PicturesAsJson(source)},
            {"entries", std::move(entries)},
            {"libraries", std::move(libraries)},
            {"problems", problems}};
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
    AppendList(text, info["pictures"], "picture", "pictures", PictureLine);
    AppendList(text, info["entries"], "library entry", "library entries",
               [](const ordered_json& entry) { return TextOf(entry["id"]) + ": " + TextOf(entry["name"]); });
    AppendList(text, info["libraries"], "library", "libraries", TextOf);
    AppendList(text, info["problems"], "problem", "problems", TextOf);
    return text;
}

ExitCode RunInfo(const InfoOptions& options, Progress& progress)
{
    DocumentSource source({}, progress);
    if (!source.IsUsable()) {
        return source.GetFault();
    }
    const ExitCode opened = source.OpenWhole(options.name);
    if (opened != ExitCode::Done) {
        return opened;
    }
    const ordered_json info = InfoAsJson(source);
    return PutResult(options.asJson ? JsonText(info) : InfoAsText(info), progress);
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
