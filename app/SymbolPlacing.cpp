#include "SymbolPlacing.h"

#include "annotations2d/Symbol2D.h"
#include "catalog/Partslibrary.h"
#include "catalog/PartslibraryImageItem.h"
#include "DocumentSource.h"
#include "EntryIndex.h"
#include "FileText.h"
#include "PictureProbe.h"
#include "Printable.h"
#include "SymbolState.h"

#include <du/FileSystem.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/illustration2d/Scene2D.h>

#include <unordered_map>
#include <utility>

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

/// What an order needs, once its entry and its picture have been found.
struct Preparation {
    du::SmartPtr<PartslibraryImageItem> entry;
    std::string picture; ///< in the document's folder of pictures
    std::string error;
};

struct Size {
    double width = 0.0;
    double height = 0.0;
};

class Placer
{
public:
    Placer(DocumentSource& source, const std::vector<LibraryReading>& libraries)
        : m_source(source), m_document(source.GetDocument()), m_index(libraries)
    {
        for (const auto& object : SymbolTemplateCollection::GetCollection()->GetAssociativeObjects()) {
            m_idOfName.try_emplace(object->GetName(), object->GetId());
        }
    }

    std::vector<PlacementResult> Place(const std::vector<PlacementLine>& lines)
    {
        std::vector<PlacementResult> results;
        std::vector<std::string> pictures;
        for (const PlacementLine& line : lines) {
            PlacementResult& result = results.emplace_back();
            result.error = line.error.empty() ? FaultOfPage(line.order.page) : line.error;
            if (result.error.empty()) {
                const Preparation& preparation = Prepare(line.order.entry);
                result.error = preparation.error;
                pictures.push_back(preparation.picture);
            }
        }
        std::erase(pictures, std::string());
        m_facts = ProbePictures(pictures, m_source);
        for (std::size_t index = 0; index < lines.size(); ++index) {
            if (results[index].error.empty()) {
                results[index].error = Make(lines[index].order, results[index]);
            }
        }
        m_source.WaitForLoads();
        ScaleSelfSized();
        return results;
    }

private:
    std::string FaultOfPage(int page) const
    {
        const std::size_t pages = m_document.GetPageCount();
        if (static_cast<std::size_t>(page) <= pages) {
            return {};
        }
        return pages == 0
                   ? "there is no page, only the view. Make the document with --page, or leave the page out"
                   : "there is no page " + std::to_string(page) + ". The last one is page " + std::to_string(pages);
    }

    /// Each entry is prepared once, however many symbols are made of it.
    const Preparation& Prepare(const std::string& entry)
    {
        const auto [place, isNew] = m_prepared.try_emplace(entry);
        if (isNew) {
            place->second.entry = FindOwnEntry(entry);
            const EntryIndex::Entry* const found = m_index.Find(entry);
            place->second.error = found ? Take(*found, place->second) : TakeOwn(entry, place->second);
        }
        return place->second;
    }

    /// An entry that only the document has, whose picture it holds.
    std::string TakeOwn(const std::string& entry, Preparation& preparation)
    {
        if (!preparation.entry) {
            return "no library has the entry " + Quote(entry) +
                   ". List those that there are with \"lusym library list\", or name another library with --library";
        }
        preparation.picture = preparation.entry->GetImageUrl();
        return du::FileSystem::FileReadable(preparation.picture)
                   ? std::string()
                   : "the document does not hold the picture of the entry " + Quote(entry) +
                         ". Name its library with --library";
    }

    std::string Take(const EntryIndex::Entry& found, Preparation& preparation)
    {
        const auto image = du::DynamicCast<PartslibraryImageItem>(found.item);
        const std::string entry = "the entry " + Quote(found.item->GetId()) + " ";
        if (!image) {
            return entry + "is a shape. Name a picture, of the kind \"symbol\"";
        }
        if (const std::string fault = FaultOfPicture(found); !fault.empty()) {
            return entry + fault;
        }
        if (preparation.entry) {
            const std::string differences = DifferencesOf(*preparation.entry, *image);
            if (!differences.empty()) {
                return entry + "has changed since the document took it over (" + differences +
                       "). Run \"lusym document update\" first, so that all its symbols follow";
            }
        }
        const auto [taken, isNew] = m_idOfName.try_emplace(image->GetName(), image->GetId());
        if (taken->second != image->GetId()) {
            return entry + "has the name " + Quote(image->GetName()) + " of the entry " + Quote(taken->second) +
                   ", which the document has already. Rename one of them";
        }
        std::string error = Embed(*image, preparation.picture);
        if (!error.empty()) {
            if (isNew) {
                m_idOfName.erase(taken);
            }
            return entry + error;
        }
        if (!preparation.entry) {
            PutIntoDocument({found});
            m_source.RecordLibrary(found.library->place);
        }
        preparation.entry = image;
        return {};
    }

    std::string Embed(const PartslibraryImageItem& image, std::string& picture)
    {
        const std::string name = PictureNameOf(image);
        const std::string wanted = m_source.GetPictureFolder() + "/" + name;
        if (du::FileSystem::FileExists(wanted) && !HasSameContent(image.GetImageUrl(), wanted)) {
            return "has the picture " + Quote(image.GetImageUrl()) + ", and the document holds another one named " +
                   Quote(name) + ". If the picture is a new version, run \"lusym document update\"; else rename it";
        }
        du::Symbol target;
        const bool isEmbedded = lusymbols::Partslibrary::EmbedSymbol(du::Symbol(image.GetImageUrl()), target, false);
        picture = target.GetText();
        return isEmbedded && HasSameContent(image.GetImageUrl(), picture)
                   ? std::string()
                   : "has the picture " + Quote(image.GetImageUrl()) +
                         ", which cannot be copied to the document's pictures. Give it a plain file name, and see "
                         "that there is room for it";
    }

    std::string Make(const PlacementOrder& order, PlacementResult& result)
    {
        const Preparation& preparation = m_prepared.at(order.entry);
        const PictureFacts& facts = m_facts[preparation.picture];
        if (!facts.problem.empty()) {
            return "the picture " + Quote(PictureNameOf(*preparation.entry)) + " of the entry " + Quote(order.entry) +
                   " cannot be shown: " + Printable(facts.problem) + ". Mend the file";
        }
        const auto component = m_source.GetLibrarySource().CreateComponent("create", "annotation", "symbol2d");
        const du::SmartPtr<Symbol2D> symbol = du::DynamicCast<Symbol2D>(component);
        if (!symbol) {
            return "the plug-in makes no symbols. Name another one with LUSYMBOLS_PLUGIN";
        }
        symbol->SetSymbolInfo(RecordOf(order, *preparation.entry, facts));
        const du::SmartPtr<luk::Scene> scene =
            order.page == 0
                ? m_document.GetScene()
                : du::SmartPtr<luk::Scene>(m_document.GetPage(static_cast<std::size_t>(order.page) - 1).get());
        const InterruptHold hold;
        if (!m_document.AddAnnotation(symbol, scene)) {
            return "the document takes no more symbols";
        }
        result.id = symbol->GetIDPath().GetText();
        if (order.width == 0.0 && order.height == 0.0 && order.page == 0 && !order.isScreenSpace) {
            m_selfSized.emplace_back(symbol, preparation.entry->GetImageScale());
        }
        return {};
    }

    static Symbol2DInfo RecordOf(const PlacementOrder& order, const PartslibraryImageItem& entry,
                                 const PictureFacts& facts)
    {
        Symbol2DInfo record;
        record.imageName = du::Symbol(entry.GetName());
        record.imageFileName = du::Symbol(PictureNameOf(entry));
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
        const bool faces =
            order.page != 0 || order.isScreenSpace || !order.isFixed.value_or(!entry.GetIsBillboardImage());
        record.isBillboard3D = faces;
        record.pageNum = order.page;
        entry.GetSequencerTags(record.sequencerTags);
        TakeTexts(record, order, entry);
        TakeSize(record, order, entry, facts);
        return record;
    }

    /// A symbol with texts of its own is bound to no entry, whose texts would replace them.
    static void TakeTexts(Symbol2DInfo& record, const PlacementOrder& order, const PartslibraryImageItem& entry)
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

    static void TakeSize(Symbol2DInfo& record, const PlacementOrder& order, const PartslibraryImageItem& entry,
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

    /// Of percent; an entry that says nothing is shown as it is.
    static double ScaleOf(int percent) { return percent > 0 ? percent / 100.0 : 1.0; }

    /// Symbols over the view have sized themselves by now, as far as the view has pixels.
    void ScaleSelfSized()
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

    DocumentSource& m_source;
    luhost::Document& m_document;
    const EntryIndex m_index;
    std::unordered_map<std::string, std::string> m_idOfName;
    std::unordered_map<std::string, PictureFacts> m_facts;
    std::unordered_map<std::string, Preparation> m_prepared;
    std::vector<std::pair<du::SmartPtr<Symbol2D>, int>> m_selfSized;
};

} // namespace

std::vector<PlacementResult> PlaceSymbols(DocumentSource& source, const std::vector<PlacementLine>& orders,
                                          const std::vector<LibraryReading>& libraries)
{
    return Placer(source, libraries).Place(orders);
}

} // namespace lusym
