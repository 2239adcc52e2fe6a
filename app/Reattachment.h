#pragma once

#include "SymbolAttachment.h"

#include <dg/DPoint3D.h>

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace lusym
{

/// An attachment to a part that is not there, and the part that most likely is what that one was.
struct Heir {
    std::string symbol;    ///< id
    std::string path;      ///< of the part that is not there
    PartLookup::Part part; ///< null when none is called alike
    dg::DVec3 offset;
    dg::DPoint3D lastPosition;
};

/// In the order of the symbols of the document.
std::vector<Heir> FindHeirs(const luhost::Document& document, const LostAttachments& lost);

/// A symbol that was put on the heir of its part.
struct Reattachment {
    std::string symbol;
    std::string path;      ///< of the part that is not there
    std::string heir;      ///< path; empty when there is none
    dg::DPoint3D position; ///< of the symbol, afterwards
};

/// Puts symbols on the heirs of the parts that they have lost. One that is on no other part goes to where it was from its
/// part; others stay where they are.
std::vector<Reattachment> ReattachSymbols(const luhost::Document& document, const LostAttachments& lost);

/// One line for each: `DOC:ID: part "/a" becomes "/b", and the symbol stands at 1,2,3`.
std::string ReattachmentsAsText(const std::vector<Reattachment>& reattachments, const std::string& document);
nlohmann::ordered_json ReattachmentsAsJson(const std::vector<Reattachment>& reattachments);

} // namespace lusym
