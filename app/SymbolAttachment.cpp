#include "SymbolAttachment.h"

#include "annotations3d/SymbolAnnotation.h"
#include "Finding.h"
#include "PartState.h"
#include "Printable.h"
#include "Progress.h"

#include <luannotations/ConstStrings.h>
#include <luhost/Document.h>
#include <luk/illustration/Illustration3dScene.h>
#include <luk/illustration/SbomInstance.h>
#include <luk/illustration/SbomTree.h>
#include <luk/Instance.h>
#include <luk/SerializedContentElement.h>
#include <luk/ShapeScene.h>

#include <algorithm>
#include <functional>
#include <string>
#include <unordered_set>
#include <utility>

namespace lusym
{

namespace
{

using luannotations::ConnectedPartInfo;
using luannotations::SymbolAnnotation;

/// The words of an attachment in saved content.
struct SavedWords {
    du::Symbol part{"attachedToPart"};
    du::Symbol id{"attachedToPartId"};
    du::Symbol assembly{"attachedToAssemblyPartId"};
    du::Symbol lastPosition{"attachedToPartLastPos"};
    du::Symbol offset{"attachedToPartOffset"};
    du::Symbol isAnnotationSymbol{"isAnnotationSymbol"};
    du::Symbol node{"ID"};
};

/// A property of that name and type; `value` stays as it is when there is none.
template <class Value>
void Take(const luk::SerializedContentElement& element, const du::Symbol& name, Value& value)
{
    for (const luk::SerializedContentElement::Property& property : element.GetProperties()) {
        const Value* const held = std::get_if<Value>(&property.value);
        if (held && property.key == name) {
            value = *held;
        }
    }
}

std::vector<SymbolAttachment> SavedAttachmentsOf(const luk::SerializedContentElement& content, const SavedWords& words)
{
    std::vector<SymbolAttachment> attachments;
    bool counts = false;
    Take(content, words.isAnnotationSymbol, counts);
    for (std::size_t index = 0; counts && index < content.GetChildCount(); ++index) {
        const luk::SerializedContentElement& child = content.GetChild(index);
        if (child.GetName() != words.part) {
            continue;
        }
        SymbolAttachment& attachment = attachments.emplace_back();
        du::Symbol path;
        du::Symbol assembly;
        Take(child, words.id, path);
        Take(child, words.assembly, assembly);
        Take(child, words.lastPosition, attachment.lastPosition);
        Take(child, words.offset, attachment.offset);
        attachment.path = path.GetText();
        attachment.assembly = assembly.GetText();
    }
    return attachments;
}

void KeepLost(const luhost::Document& document, const std::string& id, std::vector<SymbolAttachment> attachments,
              LostAttachments& lost)
{
    std::erase_if(attachments, [&](const SymbolAttachment& attachment) {
        return FindAttachedPart(document, attachment.path) != nullptr;
    });
    if (!attachments.empty()) {
        lost.emplace(id, std::move(attachments));
    }
}

using LookAtSaved = std::function<void(const std::string& id, const luk::SerializedContentElement& content)>;

void ForEachUnmadeSymbol(const luhost::Document& document, const LookAtSaved& look)
{
    document.ForEachUnmade(
        [&](const du::Symbol& idPath, const luk::SerializedContentElement& content, const std::string&) {
            if (content.GetName() == luannotations::ConstStrings::luSymbol3D) {
                look(idPath.GetText(), content);
            }
        });
}

} // namespace

PartLookup::Part FindAttachedPart(const luhost::Document& document, const std::string& path)
{
    const luk::ShapeScene& scene = *document.GetShapeScene();
    const du::Symbol idPath(path);
    const auto* const withService = dynamic_cast<const luk::illustration::Illustration3dScene*>(&scene);
    const auto node = withService ? withService->GetSbomTree()->FindInstance(idPath) : nullptr;
    return scene.GetShapeInstance(node ? node->GetEbomInstance() : scene.GetTree()->FindInstance(idPath));
}

std::vector<SymbolAttachment> AttachmentsOf(const luhost::Document& document, SymbolAnnotation& symbol)
{
    std::vector<ConnectedPartInfo> parts;
    symbol.GetConnectedPartInfo(parts);
    std::vector<SymbolAttachment> attachments;
    for (const ConnectedPartInfo& info : parts) {
        const PartLookup::Part part = FindAttachedPart(document, info.partId.GetText());
        attachments.push_back(
            {info.partId.GetText(), info.assemblyPartId.GetText(), part ? NameOf(*part) : std::string(),
             part ? part->GetInstance()->GetIdPath().GetText() : std::string(), info.lastPos, info.offset});
    }
    return attachments;
}

LostAttachments FindLostAttachments(const luhost::Document& document)
{
    LostAttachments lost;
    const SavedWords words;
    // The nodes of symbols, which others may be attached to, are not there yet.
    std::unordered_set<std::string> nodes;
    ForEachUnmadeSymbol(document, [&](const std::string&, const luk::SerializedContentElement& content) {
        du::Symbol node;
        Take(content, words.node, node);
        nodes.insert("/" + node.GetText());
    });
    ForEachUnmadeSymbol(document, [&](const std::string& id, const luk::SerializedContentElement& content) {
        std::vector<SymbolAttachment> attachments = SavedAttachmentsOf(content, words);
        std::erase_if(attachments, [&](const SymbolAttachment& each) { return nodes.count(each.path) != 0; });
        KeepLost(document, id, std::move(attachments), lost);
    });
    return lost;
}

LostAttachments FindLostAttachmentsOfLiving(const luhost::Document& document)
{
    LostAttachments lost;
    for (const du::SmartPtr<luk::Annotation>& annotation : document.GetAnnotations()) {
        if (auto* const symbol = dynamic_cast<SymbolAnnotation*>(annotation.get())) {
            KeepLost(document, annotation->GetIDPath().GetText(), AttachmentsOf(document, *symbol), lost);
        }
    }
    return lost;
}

void TellLost(const LostAttachments& lost, const std::string& document, Progress& progress)
{
    if (!lost.empty()) {
        progress.Tell(Printable(document) + ": warning: " +
                      CountOf(lost.size(), "symbol is attached to a part", "symbols are attached to parts") +
                      " that the product does not have. \"lusym document check\" says which, and \"lusym document "
                      "update --reattach\" mends it; another verb that writes the document lets go of them.\n");
    }
}

std::string AttachSymbol(const luhost::Document& document, SymbolAnnotation& symbol,
                         const std::vector<PartLookup::Part>& parts)
{
    std::vector<PartLookup::Part> added;
    for (const PartLookup::Part& part : parts) {
        const std::string path = AttachmentPathOf(*part);
        if (FindAttachedPart(document, path) != part) {
            return "the part " + Quote(path) +
                   " cannot be told from the node of the service tree that has the same path";
        }
        if (!symbol.isConnectedPart(part)) {
            added.push_back(part);
        }
    }
    if (added.empty()) {
        return {};
    }
    // Only such a symbol keeps its parts when it is saved and read again.
    symbol.SetAnnotationSymbol(true);
    symbol.AddSelectedParts(added);
    const auto refused =
        std::ranges::find_if(added, [&symbol](const PartLookup::Part& part) { return !symbol.isConnectedPart(part); });
    return refused == added.end() ? std::string()
                                  : "the part " + Quote(AttachmentPathOf(**refused)) + " takes no symbol";
}

void Settle(const luhost::Document& document, SymbolAnnotation& symbol)
{
    std::vector<ConnectedPartInfo> parts;
    symbol.GetConnectedPartInfo(parts);
    for (const ConnectedPartInfo& info : parts) {
        if (const PartLookup::Part part = FindAttachedPart(document, info.partId.GetText())) {
            symbol.UpdateSymbolLocationByOffset(part, dg::Location());
        }
    }
    symbol.GetConnectedPartInfo(parts);
}

} // namespace lusym
