#include "Reattachment.h"

#include "annotations3d/SymbolAnnotation.h"
#include "Printable.h"
#include "SymbolState.h"

#include <luhost/Document.h>
#include <luk/ShapeInstance.h>

#include <nlohmann/json.hpp>

#include <utility>

namespace lusym
{

namespace
{

using luannotations::SymbolAnnotation;

void Reattach(const luhost::Document& document, SymbolAnnotation& symbol, const Heir& heir)
{
    std::vector<luannotations::ConnectedPartInfo> parts;
    symbol.GetConnectedPartInfo(parts);
    if (parts.empty()) {
        symbol.SetAnnotationSymbol(true);
        symbol.AddSelectedPart(du::Symbol(AttachmentPathOf(*heir.part)), heir.lastPosition, heir.offset, du::Symbol());
        symbol.UpdateSymbolLocationByOffset(heir.part, dg::Location());
    } else {
        AttachSymbol(document, symbol, heir.part);
    }
    Settle(document, symbol);
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
    for (const Heir& heir : FindHeirs(document, lost)) {
        const du::SmartPtr<luk::Annotation> annotation = document.FindAnnotation(heir.symbol);
        SymbolAnnotation* const symbol = annotation ? AsShape(*annotation) : nullptr;
        Reattachment& reattachment = reattachments.emplace_back();
        reattachment.symbol = heir.symbol;
        reattachment.path = heir.path;
        if (symbol && heir.part) {
            Reattach(document, *symbol, heir);
            reattachment.heir = AttachmentPathOf(*heir.part);
        }
        if (const auto instance = symbol ? symbol->GetShapeInstance() : nullptr) {
            reattachment.position = instance->GetLocation().GetPosition();
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
