#pragma once

#include "SymbolAttachment.h"

#include <dg/Color.h>
#include <dg/DPoint3D.h>
#include <dg/Quaternion.h>
#include <du/SmartPtr.h>

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace luannotations
{
class Symbol2D;
class SymbolAnnotation;
} // namespace luannotations

namespace luhost
{
class Document;
}

namespace luk
{
class Annotation;
}

namespace lusym
{

/// What people want to know of a placed symbol, apart from the symbol itself.
struct SymbolState {
    std::string id;
    int page = 0;     ///< from 1; 0 for the view
    std::string kind; ///< the class word
    bool isPicture = false;
    bool isShape = false;
    bool isFlattened = false; ///< what is left of a shape on a page
    std::string title;
    std::string description;
    bool showsTitle = false;
    bool showsDescription = false;
    std::string entry; ///< id of the entry that it follows; empty when it follows none
    std::string entryName;
    std::string file;
    std::string fileProblem; ///< why there is no picture; empty when there is one
    dg::DPoint3D center;     ///< of a picture; the origin of a shape
    double width = 0.0;      ///< as it is seen
    double height = 0.0;     ///< as it is seen
    int rotate = 0;          ///< clockwise, in degrees, 0 to 270
    bool flipHorizontally = false;
    bool flipVertically = false;
    bool isFixed = false;
    bool isScreenSpace = false;
    dg::Color frame;
    dg::Color fill;
    std::vector<std::string> tags; ///< each as one text

    // Of a shape.
    double scale = 1.0;
    dg::Quaternion<float> orientation;
    std::optional<dg::Color> color; ///< none: its own
    bool isVisible = true;
    std::vector<SymbolAttachment> attachments;
    std::vector<SymbolAttachment> lostAttachments; ///< to parts that are not there
};

/// The problem of a picture or a shape of which the document has no file.
inline constexpr std::string_view kFileNotHeld = "the document does not hold it";
/// That of a symbol for which there is no place in the product.
inline constexpr std::string_view kIdOfPart = "a part of the product has the id of the symbol's node";

/// All symbols of a document, those of the view first, each page's in drawing order.
/// @param lost what they have let go of
std::vector<SymbolState> StatesOf(const luhost::Document& document, const LostAttachments& lost = {});
SymbolState StateOf(const luhost::Document& document, luk::Annotation& annotation);

/// Null for an annotation of another kind.
luannotations::Symbol2D* AsPicture(luk::Annotation& annotation);
luannotations::SymbolAnnotation* AsShape(luk::Annotation& annotation);

/// One property in which two states differ, for people.
struct StateChange {
    std::string what;
    std::string before;
    std::string after;
};

/// What a symbol takes over from its entry: name, title, description, flags, tags, picture or shape, and the size that
/// follows.
std::vector<StateChange> CompareStates(const SymbolState& before, const SymbolState& after);
/// "title: "A" becomes "B""
std::string ChangeText(const StateChange& change);

/// "page 2" or "view"
std::string PageText(int page);
/// "12,30" or "1,2,3"
std::string PointText(const dg::DPoint3D& point, bool hasZ);

nlohmann::ordered_json StateAsJson(const SymbolState& state);

/// A table for people; with the page where it is asked for.
std::string StatesAsTable(const std::vector<SymbolState>& states, bool withPage);

} // namespace lusym
