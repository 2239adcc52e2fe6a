#include "PicturePlacing.h"

#include "annotations2d/Symbol2D.h"
#include "catalog/PartslibraryImageItem.h"
#include "DocumentSource.h"
#include "Printable.h"

#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/illustration2d/Scene2D.h>

namespace lusym
{

namespace
{

using luannotations::Symbol2D;
using luannotations::Symbol2DInfo;
using luk::illustration::SymbolTemplateCollection;
using lusymbols::PartslibraryImageItem;

constexpr double kMillimetresPerPixel = 25.4 / 96.0;
/// Both half sizes of a symbol that is to take them from its picture.
constexpr float kSizeUnknown = -0.01F;

struct Size {
    double width = 0.0;
    double height = 0.0;
};

/// Of percent; an entry that says nothing is shown as it is.
double ScaleOf(int percent) { return percent > 0 ? percent / 100.0 : 1.0; }

/// A symbol with texts of its own is bound to no entry, whose texts would replace them.
void TakeTexts(Symbol2DInfo& record, const PlacementOrder& order, const PartslibraryImageItem& entry)
{
    const std::string title = order.title.value_or(entry.GetTitle());
    const std::string description = order.description.value_or(entry.GetDescription());
    record.title = du::Symbol(title);
    record.description = du::Symbol(description);
    record.showTooltipTitle = order.title ? !title.empty() : entry.ShowTooltipTitle();
    record.showTooltipDescription = order.description ? !description.empty() : entry.ShowTooltipDescription();
    if (title == entry.GetTitle() && description == entry.GetDescription()) {
        const auto indices = SymbolTemplateCollection::GetCollection()->AssociativeObjectIdToIndices(entry.GetId());
        record.templateId = entry.GetId();
        record.templateIndex = indices.empty() ? Symbol2DInfo::kNoTemplate : *indices.begin();
    }
}

void TakeSize(Symbol2DInfo& record, const PlacementOrder& order, const PartslibraryImageItem& entry,
              const PictureFacts& facts)
{
    const bool isTurned = (record.rotateRight + record.rotateLeft) / 90 % 2 != 0;
    const Size pixels{static_cast<double>(isTurned ? facts.height : facts.width),
                      static_cast<double>(isTurned ? facts.width : facts.height)};
    Size size{order.width, order.height};
    if (size.width == 0.0 && size.height == 0.0) {
        if (order.page == 0 && !order.isScreenSpace) {
            record.width = kSizeUnknown;
            record.height = kSizeUnknown;
            return;
        }
        const double unit = (order.page == 0 ? 1.0 : kMillimetresPerPixel) * ScaleOf(entry.GetImageScale());
        size = {pixels.width * unit, pixels.height * unit};
    } else if (size.height == 0.0) {
        size.height = size.width * pixels.height / pixels.width;
    } else if (size.width == 0.0) {
        size.width = size.height * pixels.width / pixels.height;
    }
    record.width = static_cast<float>(size.width * 0.5);
    record.height = static_cast<float>(size.height * 0.5);
}

Symbol2DInfo RecordOf(const PlacementOrder& order, const PartslibraryImageItem& entry, const PictureFacts& facts)
{
    Symbol2DInfo record;
    record.imageName = du::Symbol(entry.GetName());
    record.imageFileName = du::Symbol(FileNameOf(entry));
    record.center = *order.at;
    record.lineColor = order.frame;
    record.fillColor = order.fill;
    record.transparency = 0.0F;
    record.screenSpace = order.isScreenSpace;
    record.flipHorizontally = order.flipHorizontally != entry.GetFlipHorizontal();
    record.reverse = order.flipVertically != entry.GetFlipVertical();
    record.rotateRight = (entry.GetRotateRight() % 360 + order.rotate) % 360;
    record.rotateLeft = entry.GetRotateLeft() % 360;
    // Only what faces the viewer is drawn on a page and on the screen.
    const bool faces = order.page != 0 || order.isScreenSpace || !order.isFixed.value_or(!entry.GetIsBillboardImage());
    record.isBillboard3D = faces;
    record.pageNum = order.page;
    entry.GetSequencerTags(record.sequencerTags);
    TakeTexts(record, order, entry);
    TakeSize(record, order, entry, facts);
    return record;
}

} // namespace

PicturePlacing::~PicturePlacing() = default;

std::string PicturePlacing::FaultOf(const PlacementOrder& order) const
{
    if (!order.attach.empty() || order.scale || order.turn || order.color) {
        const char* const what = !order.attach.empty() ? "attach"
                                 : order.scale         ? "scale"
                                 : order.color         ? "color"
                                                       : "rotate";
        return std::string(what) + ": is for shapes" + (order.turn ? " when it names an axis" : "") +
               ", and the entry " + Quote(order.entry) + " is a picture";
    }
    if (!order.at) {
        return "at: where to place it is missing";
    }
    const std::size_t pages = m_source.GetDocument().GetPageCount();
    if (static_cast<std::size_t>(order.page) <= pages) {
        return {};
    }
    return pages == 0
               ? "there is no page, only the view. Make the document with --page, or leave the page out"
               : "there is no page " + std::to_string(order.page) + ". The last one is page " + std::to_string(pages);
}

std::string PicturePlacing::Make(const PlacementOrder& order, const EntryPreparing::Entry& entry, std::string& id)
{
    if (std::string fault = FaultOf(order); !fault.empty()) {
        return fault;
    }
    const auto image = du::DynamicCast<PartslibraryImageItem>(entry.item);
    const auto component = m_source.GetLibrarySource().CreateComponent("create", "annotation", "symbol2d");
    const du::SmartPtr<Symbol2D> symbol = du::DynamicCast<Symbol2D>(component);
    if (!symbol) {
        return "the plug-in makes no symbols. Name another one with LUSYMBOLS_PLUGIN";
    }
    symbol->SetSymbolInfo(RecordOf(order, *image, entry.facts));
    luhost::Document& document = m_source.GetDocument();
    const du::SmartPtr<luk::Scene> scene =
        order.page == 0 ? document.GetScene()
                        : du::SmartPtr<luk::Scene>(document.GetPage(static_cast<std::size_t>(order.page) - 1).get());
    const InterruptHold hold;
    if (!document.AddAnnotation(symbol, scene)) {
        return "the document takes no more symbols";
    }
    id = symbol->GetIDPath().GetText();
    if (order.width == 0.0 && order.height == 0.0 && order.page == 0 && !order.isScreenSpace) {
        m_selfSized.emplace_back(symbol, image->GetImageScale());
    }
    return {};
}

/// Symbols over the view have sized themselves by now, as far as the view has pixels.
void PicturePlacing::Finish()
{
    for (const auto& [symbol, scalePercent] : m_selfSized) {
        dg::FVec3 half = symbol->GetMarkupSize(0);
        if (half.x <= 0.0F || half.y <= 0.0F) {
            half.x = static_cast<float>(symbol->GetImageWidth()) * 0.5F;
            half.y = static_cast<float>(symbol->GetImageHeight()) * 0.5F;
        }
        const auto scale = static_cast<float>(ScaleOf(scalePercent));
        symbol->SetMarkupSize(0, {half.x * scale, half.y * scale, 0.0F});
    }
}

} // namespace lusym
