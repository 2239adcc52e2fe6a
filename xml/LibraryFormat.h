#pragma once

#include "catalog/LibraryLayout.h"

#include <cstddef>
#include <string_view>

/// The words of the symbol library document, once for the loader, the writer and everybody who checks a document.
///
/// The format itself is told in docs/library-document.md. Names are case-sensitive and compared whole.
namespace lusymbols::format
{

inline constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
/// A loader source that begins so is the document itself, not the path of one.
inline constexpr std::string_view kInlineDocumentStart = "<?xml ";

inline constexpr std::string_view kRoot = "drellin-library";
/// The five sections, each exactly once, in the writer's order.
inline constexpr std::string_view kUnits = "units";
inline constexpr std::string_view kInformation = "information";
inline constexpr std::string_view kCategories = "categories";
inline constexpr std::string_view kShapes = "shapes";
inline constexpr std::string_view kSymbols = "symbols";
inline constexpr std::size_t kSectionCount = 5;

/// Entries.
inline constexpr std::string_view kCategory = "category";
inline constexpr std::string_view kShape = "shape";
inline constexpr std::string_view kSymbol = "symbol";
inline constexpr std::string_view kId = "id";
inline constexpr std::string_view kCategoryId = "categoryId";
inline constexpr std::string_view kBillboard = "billboard";

/// Texts. Where an element carries the attribute, its text is looked up in the message table.
inline constexpr std::string_view kLocId = "locid";
inline constexpr std::string_view kName = "name";
inline constexpr std::string_view kTitle = "title";
inline constexpr std::string_view kDescription = "description";
inline constexpr std::string_view kShowTooltipTitle = "showTooltipTitle";
inline constexpr std::string_view kShowTooltipDescription = "showTooltipDescription";
inline constexpr std::string_view kTooltip = "tooltip";

/// Files.
inline constexpr std::string_view kGalleryThumbnail = "gallery_thumbnail";
inline constexpr std::string_view kGraphic = "graphic";
inline constexpr std::string_view kImage = "image";
inline constexpr std::string_view kUrl = "url";

/// Placement of a picture.
inline constexpr std::string_view kScale = "scale";
inline constexpr std::string_view kFlip = "flip";
inline constexpr std::string_view kHorizontal = "horizontal";
inline constexpr std::string_view kVertical = "vertical";
inline constexpr std::string_view kRotate = "rotate";
inline constexpr std::string_view kRight = "right";
inline constexpr std::string_view kLeft = "left";

/// Placement of a shape.
inline constexpr std::string_view kOrientation = "orientation";
inline constexpr std::string_view kShapeCsys = "shape_csys";
/// The matrix row by row.
inline constexpr std::string_view kCsysMatrix[3][3] = {{"a", "b", "c"}, {"d", "e", "f"}, {"g", "h", "i"}};
inline constexpr std::string_view kCsysPosition[3] = {"pos_x", "pos_y", "pos_z"};
inline constexpr std::string_view kAxisName = "axis_name";
inline constexpr std::string_view kDistanceFromCsys = "distance_from_csys";
inline constexpr std::string_view kAxisId = "axis_id";
inline constexpr std::string_view kOrientationName = "orientation_name";
inline constexpr std::string_view kAnnotationToSymbol = "annotation_to_symbol";
inline constexpr std::string_view kUseCurrentOrientation = "use_current_orientation";
inline constexpr std::string_view kEditCsysMethod = "edit_csys_method";
inline constexpr std::string_view kCamera = "camera";
inline constexpr std::string_view kOrtho = "ortho";
inline constexpr std::string_view kValue = "value";
inline constexpr std::string_view kLocation = "location";

/// Tags.
inline constexpr std::string_view kTags = "tags";
inline constexpr std::string_view kTag = "tag";
inline constexpr std::string_view kType = "type";
inline constexpr std::string_view kQuantity = "quantity";
inline constexpr std::string_view kUnit = "unit";

/// The message table in which keys are looked up.
inline constexpr std::string_view kMessageTable = "lubase:lumodulesStrings";

} // namespace lusymbols::format
