#include "Reattachment.h"

#include "annotations3d/SymbolAnnotation.h"
#include "Printable.h"
#include "SymbolState.h"

#include <luhost/Document.h>
#include <luk/ShapeInstance.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <span>
#include <utility>

namespace lusym
{

namespace
{

using luannotations::SymbolAnnotation;

/// @param heirs of one symbol, some of which may be no parts
void Reattach(const luhost::Document& document, SymbolAnnotation& symbol, std::span<const Heir> heirs)
{
    std::vector<luannotations::ConnectedPartInfo> before;
    symbol.GetConnectedPartInfo(before);
    std::vector<PartLookup::Part> parts;
    for (const Heir& heir : heirs) {
        if (heir.part && before.empty() && parts.empty()) {
            symbol.SetAnnotationSymbol(true);
            symbol.AddSelectedPart(du::Symbol(AttachmentPathOf(*heir.part)), heir.lastPosition, heir.offset,
                                   du::Symbol());
            symbol.UpdateSymbolLocationByOffset(heir.part, dg::Location());
        }
        if (heir.part) {
            parts.push_back(heir.part);
        }
    }
    if (!parts.empty()) {
        AttachSymbol(document, symbol, parts);
        Settle(document, symbol);
    }
}

} // namespace

std::vector<Heir> FindHeirs(const luhost::Document& document, const LostAttachments& lost)
{
    std::vector<Heir> heirs;
    PartLookup lookup(document);
    for (const du::SmartPtr<luk::Annotation>& annotation : document.GetAnnotations()) {
        const std::string& id = annotation->GetIDPath().GetText();
        const auto found = lost.find(id);
        if (found == lost.end()) {
            continue;
        }
        for (const SymbolAttachment& attachment : found->second) {
            PartLookup::Part heir = lookup.FindHeir(attachment.path, attachment.lastPosition);
            // A node of the service tree that stands for nothing may have the path of the part.
            if (heir && FindAttachedPart(document, AttachmentPathOf(*heir)) != heir) {
                heir = nullptr;
            }
            heirs.push_back({id, attachment.path, std::move(heir), attachment.offset, attachment.lastPosition});
        }
    }
    return heirs;
}

std::vector<Reattachment> ReattachSymbols(const luhost::Document& document, const LostAttachments& lost)
{
    std::vector<Reattachment> reattachments;
    const std::vector<Heir> heirs = FindHeirs(document, lost);
    for (auto first = heirs.begin(); first != heirs.end();) {
        const auto last =
            std::find_if(first, heirs.end(), [&](const Heir& each) { return each.symbol != first->symbol; });
        const du::SmartPtr<luk::Annotation> annotation = document.FindAnnotation(first->symbol);
        SymbolAnnotation* const symbol = annotation ? AsShape(*annotation) : nullptr;
        if (symbol) {
            Reattach(document, *symbol, {first, last});
        }
        const auto instance = symbol ? symbol->GetShapeInstance() : nullptr;
        for (; first != last; ++first) {
            Reattachment& reattachment = reattachments.emplace_back();
            reattachment.symbol = first->symbol;
            reattachment.path = first->path;
            reattachment.heir = symbol && first->part ? AttachmentPathOf(*first->part) : std::string();
            reattachment.position = instance ? instance->GetLocation().GetPosition() : reattachment.position;
        }
    }
    return reattachments;
}

std::string ReattachmentsAsText(const std::vector<Reattachment>& reattachments, const std::string& document)
{
    std::string text;
    for (const Reattachment& each : reattachments) {
        const std::string line = Printable(document) + ":" + Printable(each.symbol) + ": part " + Quote(each.path);
        text += line + (each.heir.empty() ? " is not there, and no part is called alike; the symbol stays at "
                                          : " becomes " + Quote(each.heir) + "; the symbol stands at ");
        text += PointText(each.position, true) + "\n";
    }
    return text;
}

nlohmann::ordered_json ReattachmentsAsJson(const std::vector<Reattachment>& reattachments)
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const auto& [symbol, path, heir, position] : reattachments) {
        list.push_back({{"id", symbol},
                        {"path", path},
                        {"heir", heir.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(heir)},
                        {"at", {position.x, position.y, position.z}}});
    }
    return list;
}

} // namespace lusym
