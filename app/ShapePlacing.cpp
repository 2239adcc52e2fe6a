#include "ShapePlacing.h"

#include "annotations3d/SymbolAnnotation.h"
#include "catalog/PartslibraryOlItem.h"
#include "DocumentSource.h"
#include "Printable.h"
#include "SymbolAttachment.h"

#include <dg/DMat44.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/ShapeScene.h>
#include <luk/ShapeView.h>

namespace lusym
{

namespace
{

using luannotations::SymbolAnnotation;
using luannotations::SymbolInfo;
using luk::illustration::SymbolTemplateCollection;
using lusymbols::PartslibraryOlItem;

/// What only pictures have.
const char* FaultOf(const PlacementOrder& order)
{
    const bool hasSize = order.width > 0.0 || order.height > 0.0;
    return order.page != 0                                       ? "page: is for pictures"
           : hasSize                                             ? "size: is for pictures; say scale"
           : order.rotate != 0                                   ? "rotate: names no axis; write z,90"
           : order.flipHorizontally || order.flipVertically      ? "flip: is for pictures"
           : order.isFixed || order.isScreenSpace                ? "fixed and screen-space: are for pictures"
           : order.frame.alpha > 0.0F || order.fill.alpha > 0.0F ? "frame and fill: are for pictures; say color"
                                                                 : nullptr;
}

/// A symbol with texts of its own is bound to no entry, whose texts would replace them.
void TakeTexts(SymbolInfo& record, const PlacementOrder& order, const PartslibraryOlItem& shape)
{
    record.title = order.title.value_or(shape.GetTitle());
    record.description = order.description.value_or(shape.GetDescription());
    record.showTooltipTitle = order.title ? !record.title.empty() : shape.ShowTooltipTitle();
    record.showTooltipDescription = order.description ? !record.description.empty() : shape.ShowTooltipDescription();
    if (record.title == shape.GetTitle() && record.description == shape.GetDescription()) {
        const auto indices = SymbolTemplateCollection::GetCollection()->AssociativeObjectIdToIndices(shape.GetId());
        record.templateIndex = indices.empty() ? SymbolInfo::kNoTemplate : *indices.begin();
    }
}

SymbolInfo RecordOf(const PlacementOrder& order, const PartslibraryOlItem& shape, const dg::Location& place)
{
    SymbolInfo record;
    record.name = du::Symbol(shape.GetName());
    record.fileName = du::Symbol(FileNameOf(shape));
    place.Get(record.locPosition, record.locOrientation, record.locScale);
    // As it is saved, so that what is seen now is seen again.
    record.locScale = static_cast<double>(static_cast<float>(record.locScale));
    record.symbolInitLocation = place;
    record.hasSymbolInitLocation = true;
    record.isAnnotationSymbol = shape.IsAnnotationSymbol() || !order.attach.empty();
    record.hasAppearanceOverride = order.color.has_value();
    record.diffuse = order.color.value_or(record.diffuse);
    record.ambient = record.diffuse;
    shape.GetSequencerTags(record.sequencerTags);
    TakeTexts(record, order, shape);
    return record;
}

} // namespace

ShapePlacing::ShapePlacing(DocumentSource& source) : m_source(source), m_lookup(source.GetDocument()) {}

ShapePlacing::~ShapePlacing() = default;

std::string ShapePlacing::FindParts(const PlacementOrder& order, std::vector<PartLookup::Part>& parts)
{
    for (const std::string& word : order.attach) {
        const PartLookup::Found found = m_lookup.Find(word);
        if (!found.part) {
            return found.fault;
        }
        parts.push_back(found.part);
    }
    return {};
}

/// Puts the coordinate system of the entry where the user wants the symbol: turned by the user, or else, if the entry says
/// so, by the view.
dg::Location ShapePlacing::PlaceOf(const PlacementOrder& order, const PartslibraryOlItem& shape,
                                   const std::vector<PartLookup::Part>& parts, SymbolAnnotation& symbol) const
{
    const luhost::Document& document = m_source.GetDocument();
    const dg::DPoint3D at = order.at ? *order.at : MiddleOf(document, *parts.front());
    dg::Location place(order.turn ? MatrixOf(*order.turn) : dg::FMat33::IDENTITY, at);
    const auto view = du::DynamicCast<luk::ShapeView>(document.GetScene()->GetView(0));
    if (!order.turn && shape.IsUseCurrentOrientation() && view) {
        bool isOrthographic = false;
        double value = 0.0;
        dg::Location preview;
        if (shape.GetCameraData(isOrthographic, value, preview)) {
            symbol.SetCameraPreviewLocation(preview);
        }
        symbol.SetSymbolOrientationByPreviewCamera(place, *view);
    }
    const double scale = order.scale.value_or(1.0) * (shape.GetOlScale() > 0.0 ? shape.GetOlScale() : 1.0);
    place.SetMat(place.GetMat() * dg::FMat33::Scaling(scale, scale, scale));
    dg::DMat44 csys = shape.GetOlCsys().GetXform();
    const bool isGiven = shape.GetOlCsys().HasPosition() && csys.Invert();
    return isGiven ? place * dg::Location::FromXform(csys) : place;
}

std::string ShapePlacing::Make(const PlacementOrder& order, const EntryPreparing::Entry& entry, std::string& id)
{
    if (const char* const fault = FaultOf(order)) {
        return std::string(fault) + ", and the entry " + Quote(order.entry) + " is a shape";
    }
    std::vector<PartLookup::Part> parts;
    if (std::string fault = FindParts(order, parts); !fault.empty()) {
        return fault;
    }
    const auto shape = du::DynamicCast<PartslibraryOlItem>(entry.item);
    const auto component = m_source.GetLibrarySource().CreateComponent("create", "annotation", "symbol3d");
    const du::SmartPtr<SymbolAnnotation> symbol = du::DynamicCast<SymbolAnnotation>(component);
    if (!symbol) {
        return "the plug-in makes no 3D symbols. Name another one with LUSYMBOLS_PLUGIN";
    }
    symbol->SetSymbolInfo(RecordOf(order, *shape, PlaceOf(order, *shape, parts, *symbol)));
    luhost::Document& document = m_source.GetDocument();
    const InterruptHold hold;
    if (!document.AddAnnotation(symbol, document.GetScene())) {
        return "the document takes no more symbols";
    }
    if (std::string fault = AttachSymbol(document, *symbol, parts); !fault.empty()) {
        document.RemoveAnnotation(symbol);
        return fault;
    }
    if (!parts.empty()) {
        m_attached.push_back(symbol);
    }
    id = symbol->GetIDPath().GetText();
    return {};
}

void ShapePlacing::Finish()
{
    for (const auto& symbol : m_attached) {
        Settle(m_source.GetDocument(), *symbol);
    }
}

} // namespace lusym
