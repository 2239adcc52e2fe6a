#pragma once

#include "PartLookup.h"

#include <dg/DPoint3D.h>
#include <dg/DVec3.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace luannotations
{
class SymbolAnnotation;
}

namespace lusym
{

class Progress;

/// One part that a symbol is attached to.
struct SymbolAttachment {
    std::string path;
    std::string assembly; ///< empty when it is not known
    std::string partName; ///< of the component
    std::string partPath; ///< in the product; empty when the part is not there
    dg::DPoint3D lastPosition;
    dg::DVec3 offset;
};

/// Those of a live symbol.
std::vector<SymbolAttachment> AttachmentsOf(const luhost::Document& document, luannotations::SymbolAnnotation& symbol);

/// Parts that a document says its symbols are attached to and that its product does not have, by the id of the symbol.
/// Symbols let go of them as soon as they are attached to the scene, so that this is asked before.
using LostAttachments = std::unordered_map<std::string, std::vector<SymbolAttachment>>;
LostAttachments FindLostAttachments(const luhost::Document& document);
/// The same for symbols that live, after a new product has come.
LostAttachments FindLostAttachmentsOfLiving(const luhost::Document& document);

/// Says on stderr that there are some; nothing when there are none.
void TellLost(const LostAttachments& lost, const std::string& document, Progress& progress);

/// The part that a symbol means by a path, which is asked for in the service tree first. Null when it is not there.
PartLookup::Part FindAttachedPart(const luhost::Document& document, const std::string& path);

/// Attaches a symbol to parts, where all of them stand. @return why it cannot be; empty when the symbol is on these parts
std::string AttachSymbol(const luhost::Document& document, luannotations::SymbolAnnotation& symbol,
                         const std::vector<PartLookup::Part>& parts);

/// Puts a symbol where its offsets from its parts put it when the document is opened again, which rounds, so that what is
/// saved is what is then seen.
void Settle(const luhost::Document& document, luannotations::SymbolAnnotation& symbol);

} // namespace lusym
