#include "SymbolState.h"

#include "annotations2d/Symbol2D.h"
#include "Printable.h"
#include "TextTable.h"
#include "TextValues.h"

#include <luhost/Document.h>

#include <nlohmann/json.hpp>

namespace lusym
{

namespace
{

using luannotations::Symbol2D;
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
        return std::string(kPictureNotHeld);
    }
    return image->GetProblem().empty() ? "it cannot be read" : image->GetProblem();
}

void FillFrom(SymbolState& state, const Symbol2D& symbol)
{
    state.title = symbol.GetTitle();
    state.description = symbol.GetDescription();
    state.showsTitle = symbol.ShowTooltipTitle();
    state.showsDescription = symbol.ShowTooltipDescription();
    state.entry = symbol.GetTemplateHolder().HasRelation() ? symbol.GetTemplateHolder().GetRelatedId() : std::string();
    state.entryName = symbol.GetImageName().GetText();
    state.pictureFile = symbol.GetImageFileName().GetText();
    state.pictureProblem = ProblemOf(symbol);
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
    for (const auto& tag : tags) {
        if (tag) {
            state.tags.push_back(TagText(*tag));
        }
    }
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

} // namespace

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
    }
    return state;
}

std::vector<SymbolState> StatesOf(const luhost::Document& document)
{
    std::vector<SymbolState> states;
    for (const du::SmartPtr<luk::Annotation>& annotation : document.GetAnnotations()) {
        states.push_back(StateOf(document, *annotation));
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
    compare("picture", before.pictureFile, after.pictureFile);
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
    if (!state.isPicture) {
        return json;
    }
    json["entry"] = state.entry.empty() ? ordered_json() : ordered_json(state.entry);
    json["name"] = state.entryName;
    json["title"] = state.title;
    json["showTitle"] = state.showsTitle;
    json["description"] = state.description;
    json["showDescription"] = state.showsDescription;
    json["at"] = {state.center.x, state.center.y, state.center.z};
    json["size"] = {state.width, state.height};
    json["rotate"] = state.rotate;
    json["flipHorizontally"] = state.flipHorizontally;
    json["flipVertically"] = state.flipVertically;
    json["fixed"] = state.isFixed;
    json["screenSpace"] = state.isScreenSpace;
    json["frame"] = ColorText(state.frame);
    json["fill"] = ColorText(state.fill);
    json["picture"] = state.pictureFile;
    if (!state.pictureProblem.empty()) {
        json["pictureProblem"] = state.pictureProblem;
    }
    json["tags"] = state.tags;
    return json;
}

std::string StatesAsTable(const std::vector<SymbolState>& states, bool withPage)
{
    std::vector<std::vector<std::string>> rows = {{"ID", "PAGE", "AT", "SIZE", "ENTRY", "PICTURE", "TITLE"}};
    for (const SymbolState& state : states) {
        const std::string entry = state.entry.empty() ? "-" : Printable(state.entry);
        rows.push_back({Printable(state.id), state.page == 0 ? "view" : std::to_string(state.page), "-", "-", entry,
                        Printable(state.pictureFile) + (state.pictureProblem.empty() ? "" : " (!)"),
                        Printable(state.title)});
        if (state.isPicture) {
            rows.back()[2] = PointText(state.center, state.page == 0);
            rows.back()[3] = SizeText(state);
        }
    }
    for (std::vector<std::string>& row : rows) {
        if (!withPage) {
            row.erase(row.begin() + 1);
        }
    }
    return TableText(rows);
}

} // namespace lusym
