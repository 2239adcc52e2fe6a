#include "SymbolState.h"

#include "annotations2d/Symbol2D.h"
#include "annotations3d/SymbolAnnotation.h"
#include "annotations3d/SymbolAnnotationFlattened.h"
#include "Printable.h"
#include "TextTable.h"
#include "TextValues.h"

#include <du/FileSystem.h>
#include <lug/Appearance.h>
#include <luhost/Document.h>
#include <luk/Shape.h>
#include <luk/ShapeInstance.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace lusym
{

namespace
{

using luannotations::Symbol2D;
using luannotations::SymbolAnnotation;
using luannotations::SymbolAnnotationFlattened;
using luk::illustration::SequencerTag;
using nlohmann::ordered_json;

/// "TORQUE 25 Nm, Tighten"
std::string TagText(const SequencerTag& tag)
{
    std::string text = SequencerTag::GetSymbolForType(tag.GetType()).GetText();
    for (const std::string* const part : {&tag.GetQuantityString(), &tag.GetUnits()}) {
        if (!part->empty()) {
            text.append(text.empty() ? "" : " ").append(*part);
        }
    }
    if (!tag.GetDescription().empty()) {
        text.append(text.empty() ? "" : ", ").append(tag.GetDescription());
    }
    return text;
}

std::string ProblemOf(const Symbol2D& symbol)
{
    const du::SmartPtr<luk::Image> image = symbol.GetImage();
    if (image && image->GetImageData()) {
        return {};
    }
    if (symbol.GetImageFileName().GetText().empty()) {
        return "it names none";
    }
    if (!image || image->GetURL().GetText().empty()) {
        return std::string(kFileNotHeld);
    }
    return image->GetProblem().empty() ? "it cannot be read" : image->GetProblem();
}

void TakeTags(SymbolState& state, const std::vector<du::SmartPtr<SequencerTag>>& tags)
{
    for (const auto& tag : tags) {
        if (tag) {
            state.tags.push_back(TagText(*tag));
        }
    }
}

void FillFrom(SymbolState& state, const Symbol2D& symbol)
{
    state.title = symbol.GetTitle();
    state.description = symbol.GetDescription();
    state.showsTitle = symbol.ShowTooltipTitle();
    state.showsDescription = symbol.ShowTooltipDescription();
    state.entry = symbol.GetTemplateHolder().HasRelation() ? symbol.GetTemplateHolder().GetRelatedId() : std::string();
    state.entryName = symbol.GetImageName().GetText();
    state.file = symbol.GetImageFileName().GetText();
    state.fileProblem = ProblemOf(symbol);
    state.center = symbol.GetMarkupLocation(0).GetPosition();
    const dg::FVec3 halfSize = symbol.GetMarkupSize(0);
    state.width = 2.0 * static_cast<double>(halfSize.x);
    state.height = 2.0 * static_cast<double>(halfSize.y);
    const int quarterTurns =
        static_cast<int>((std::int64_t{symbol.GetRotateRight()} + symbol.GetRotateLeft()) / 90 % 4);
    state.rotate = (quarterTurns + 4) % 4 * 90;
    state.flipHorizontally = symbol.GetFlipHorizontally();
    state.flipVertically = symbol.GetReverse();
    state.isFixed = !symbol.IsBillboard3D();
    state.isScreenSpace = symbol.IsScreenSpace();
    state.frame = symbol.GetLineColor();
    state.fill = symbol.GetFillColor();
    Symbol2D::SequencerTags tags;
    symbol.GetSequencerTags(tags);
    TakeTags(state, tags);
}

bool IsFileThere(const std::string& pathOrUrl)
{
    constexpr std::string_view kScheme = "file:///";
    return du::FileSystem::FileExists(pathOrUrl.starts_with(kScheme) ? pathOrUrl.substr(kScheme.size()) : pathOrUrl);
}

std::string ProblemOf(SymbolAnnotation& symbol)
{
    const du::SmartPtr<luk::ShapeInstance> instance = symbol.GetShapeInstance();
    if (instance && !instance->IsOfSymbol()) {
        return std::string(kIdOfPart);
    }
    const du::SmartPtr<luk::Shape> shape = instance ? instance->GetShape() : nullptr;
    if (shape && shape->IsLoaded()) {
        return {};
    }
    if (symbol.GetFileName().IsEmpty()) {
        return "it names none";
    }
    if (!shape || !IsFileThere(shape->GetPath())) {
        return std::string(kFileNotHeld);
    }
    return shape->GetProblem().empty() ? "it cannot be read" : shape->GetProblem();
}

void FillFrom(SymbolState& state, const luhost::Document& document, SymbolAnnotation& symbol)
{
    state.title = symbol.GetTitle();
    state.description = symbol.GetDescription();
    state.showsTitle = symbol.ShowTooltipTitle();
    state.showsDescription = symbol.ShowTooltipDescription();
    state.entry = symbol.GetTemplateHolder().HasRelation() ? symbol.GetTemplateHolder().GetRelatedId() : std::string();
    state.entryName = symbol.GetName().GetText();
    state.file = symbol.GetFileName().GetText();
    state.fileProblem = ProblemOf(symbol);
    state.isVisible = symbol.IsVisible();
    if (const du::SmartPtr<luk::ShapeInstance> instance = symbol.GetShapeInstance()) {
        instance->GetLocation().Get(state.center, state.orientation, state.scale);
        const auto& appearance = instance->GetAppearanceOverride();
        if (appearance && appearance->GetMaterial()) {
            state.color = appearance->GetMaterial()->GetDiffuse();
        }
    }
    SymbolAnnotation::SequencerTags tags;
    symbol.GetSequencerTags(tags);
    TakeTags(state, tags);
    state.attachments = AttachmentsOf(document, symbol);
}

void FillFrom(SymbolState& state, const SymbolAnnotationFlattened& symbol)
{
    state.title = symbol.GetTitle();
    state.description = symbol.GetDescription();
    state.showsTitle = symbol.ShowTooltipTitle();
    state.showsDescription = symbol.ShowTooltipDescription();
    state.entryName = symbol.GetName().GetText();
    state.file = symbol.GetFileName().GetText();
    const dg::FMat33 xform = symbol.GetXform();
    state.center = {static_cast<double>(xform.Get(0, 2)), static_cast<double>(xform.Get(1, 2)), 0.0};
    state.width = static_cast<double>(xform.Get(0, 0));
    state.height = static_cast<double>(xform.Get(1, 1));
}

std::string YesOrNo(bool value) { return value ? "yes" : "no"; }

std::string SizeText(const SymbolState& state) { return NumberText(state.width) + " x " + NumberText(state.height); }

std::string JoinedTags(const SymbolState& state)
{
    std::string text;
    for (const std::string& tag : state.tags) {
        text.append(text.empty() ? "" : "; ").append(tag);
    }
    return text;
}

ordered_json PictureAsJson(const SymbolState& state)
{
    ordered_json json = {{"size", {state.width, state.height}},
                         {"rotate", state.rotate},
                         {"flipHorizontally", state.flipHorizontally},
                         {"flipVertically", state.flipVertically},
                         {"fixed", state.isFixed},
                         {"screenSpace", state.isScreenSpace},
                         {"frame", ColorText(state.frame)},
                         {"fill", ColorText(state.fill)},
                         {"picture", state.file}};
    if (!state.fileProblem.empty()) {
        json["pictureProblem"] = state.fileProblem;
    }
    return json;
}

ordered_json AttachmentsAsJson(const std::vector<SymbolAttachment>& attachments)
{
    ordered_json list = ordered_json::array();
    for (const SymbolAttachment& attachment : attachments) {
        const auto& [path, assembly, partName, partPath, last, offset] = attachment;
        list.push_back({{"path", path},
                        {"part", partPath.empty() ? ordered_json() : ordered_json(partPath)},
                        {"name", partName},
                        {"assembly", assembly.empty() ? ordered_json() : ordered_json(assembly)},
                        {"offset", {offset.x, offset.y, offset.z}},
                        {"lastPosition", {last.x, last.y, last.z}}});
    }
    return list;
}

ordered_json ShapeAsJson(const SymbolState& state)
{
    const auto& [w, x, y, z] = state.orientation;
    ordered_json json = {{"scale", state.scale},
                         {"orientation", {w, x, y, z}},
                         {"color", state.color ? ordered_json(ColorText(*state.color)) : ordered_json()},
                         {"visible", state.isVisible},
                         {"attachments", AttachmentsAsJson(state.attachments)},
                         {"lostAttachments", AttachmentsAsJson(state.lostAttachments)},
                         {"shape", state.file}};
    if (!state.fileProblem.empty()) {
        json["shapeProblem"] = state.fileProblem;
    }
    return json;
}

/// To a tenth of a thousandth, below which nobody places anything.
dg::DPoint3D Rounded(const dg::DVec3& offset)
{
    const auto round = [](double number) { return std::round(number * 1e4) / 1e4 + 0.0; };
    return {round(offset.x), round(offset.y), round(offset.z)};
}

/// "/cover by 0,0,12"
std::string AttachmentsText(const SymbolState& state)
{
    std::string text;
    for (const SymbolAttachment& attachment : state.attachments) {
        text.append(text.empty() ? "" : "; ").append(Printable(attachment.path));
        text.append(" by ").append(PointText(Rounded(attachment.offset), true));
    }
    for (const SymbolAttachment& attachment : state.lostAttachments) {
        text.append(text.empty() ? "" : "; ").append(Printable(attachment.path)).append(" (!)");
    }
    return text;
}

} // namespace

SymbolAnnotation* AsShape(luk::Annotation& annotation) { return dynamic_cast<SymbolAnnotation*>(&annotation); }

Symbol2D* AsPicture(luk::Annotation& annotation) { return dynamic_cast<Symbol2D*>(&annotation); }

SymbolState StateOf(const luhost::Document& document, luk::Annotation& annotation)
{
    SymbolState state;
    state.id = annotation.GetIDPath().GetText();
    state.page = document.GetPageOf(annotation) + 1;
    state.kind = annotation.GetClass().GetText();
    if (const Symbol2D* const symbol = AsPicture(annotation)) {
        state.isPicture = true;
        FillFrom(state, *symbol);
    } else if (SymbolAnnotation* const shape = AsShape(annotation)) {
        state.isShape = true;
        FillFrom(state, document, *shape);
    } else if (const auto* const flattened = dynamic_cast<const SymbolAnnotationFlattened*>(&annotation)) {
        state.isFlattened = true;
        FillFrom(state, *flattened);
    }
    return state;
}

std::vector<SymbolState> StatesOf(const luhost::Document& document, const LostAttachments& lost)
{
    std::vector<SymbolState> states;
    for (const du::SmartPtr<luk::Annotation>& annotation : document.GetAnnotations()) {
        SymbolState& state = states.emplace_back(StateOf(document, *annotation));
        if (const auto found = lost.find(state.id); found != lost.end()) {
            state.lostAttachments = found->second;
        }
    }
    return states;
}

std::vector<StateChange> CompareStates(const SymbolState& before, const SymbolState& after)
{
    std::vector<StateChange> changes;
    const auto compare = [&](const char* what, const std::string& old, const std::string& now) {
        if (old != now) {
            changes.push_back({what, old, now});
        }
    };
    compare("name", before.entryName, after.entryName);
    compare("title", before.title, after.title);
    compare("title in the tooltip", YesOrNo(before.showsTitle), YesOrNo(after.showsTitle));
    compare("description", before.description, after.description);
    compare("description in the tooltip", YesOrNo(before.showsDescription), YesOrNo(after.showsDescription));
    compare("tags", JoinedTags(before), JoinedTags(after));
    compare(before.isShape ? "shape" : "picture", before.file, after.file);
    compare("size", SizeText(before), SizeText(after));
    return changes;
}

std::string ChangeText(const StateChange& change)
{
    return change.what + ": " + Quote(change.before) + " becomes " + Quote(change.after);
}

std::string PageText(int page) { return page == 0 ? "view" : "page " + std::to_string(page); }

std::string PointText(const dg::DPoint3D& point, bool hasZ)
{
    const std::string text = NumberText(point.x) + "," + NumberText(point.y);
    return hasZ ? text + "," + NumberText(point.z) : text;
}

ordered_json StateAsJson(const SymbolState& state)
{
    ordered_json json = {{"id", state.id}, {"kind", state.kind}};
    json["page"] = state.page == 0 ? ordered_json() : ordered_json(state.page);
    if (!state.isPicture && !state.isShape && !state.isFlattened) {
        return json;
    }
    json["entry"] = state.entry.empty() ? ordered_json() : ordered_json(state.entry);
    json["name"] = state.entryName;
    json["title"] = state.title;
    json["showTitle"] = state.showsTitle;
    json["description"] = state.description;
    json["showDescription"] = state.showsDescription;
    json["at"] = {state.center.x, state.center.y, state.center.z};
    json.update(state.isShape       ? ShapeAsJson(state)
                : state.isFlattened ? ordered_json({{"size", {state.width, state.height}}, {"shape", state.file}})
                                    : PictureAsJson(state));
    json["tags"] = state.tags;
    return json;
}

std::string StatesAsTable(const std::vector<SymbolState>& states, bool withPage)
{
    std::vector<std::vector<std::string>> rows = {{"ID", "PAGE", "AT", "SIZE", "ENTRY", "FILE", "TITLE"}};
    const bool withParts = std::ranges::any_of(
        states, [](const SymbolState& state) { return !state.attachments.empty() || !state.lostAttachments.empty(); });
    if (withParts) {
        rows[0].emplace_back("ATTACHED TO");
    }
    for (const SymbolState& state : states) {
        const std::string entry = state.entry.empty() ? "-" : Printable(state.entry);
        std::vector<std::string>& row = rows.emplace_back();
        row = {Printable(state.id),
               state.page == 0 ? "view" : std::to_string(state.page),
               "-",
               "-",
               entry,
               Printable(state.file) + (state.fileProblem.empty() ? "" : " (!)"),
               Printable(state.title)};
        if (state.isPicture || state.isShape || state.isFlattened) {
            row[2] = PointText(state.center, state.page == 0);
            row[3] = state.isShape ? "x " + NumberText(state.scale) : SizeText(state);
        }
        if (withParts) {
            row.push_back(AttachmentsText(state) + (state.isVisible ? "" : " (hidden)"));
        }
        if (!withPage) {
            row.erase(row.begin() + 1);
        }
    }
    if (!withPage) {
        rows[0].erase(rows[0].begin() + 1);
    }
    return TableText(rows);
}

} // namespace lusym
