#include "xml/SymbolTemplateWriter.h"

#include "catalog/Partslibrary.h"
#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "xml/LibraryFormat.h"
#include "xml/LibraryPath.h"
#include "xml/RunOnThreads.h"

#include <dg/FormatNumber.h>
#include <dg/XmlElem.h>
#include <du/FileSpec.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/SequencerTag.h>
#include <luk/illustration/SymbolCollectionInformation.h>
#include <luk/illustration/SymbolTemplate.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <fstream>
#include <iterator>
#include <memory>

namespace lusymbols
{

namespace
{

using namespace std::string_view_literals;
using luk::illustration::CategoryInfo;
using luk::illustration::CollectionInformation;
using luk::illustration::CollectionItem;
using luk::illustration::SequencerTag;
using luk::illustration::SymbolCollectionInformation;
using luk::illustration::SymbolTemplate;

/// About as many bytes as one entry takes in the document, so that a section grows in one step.
constexpr std::size_t kTypicalEntrySize = 1280;

std::string_view BoolText(bool value) { return value ? "true"sv : "false"sv; }

/// Characters put together by the compiler.
template <std::size_t Size>
struct FixedText {
    constexpr explicit FixedText(std::initializer_list<std::string_view> pieces)
    {
        char* at = characters;
        for (const std::string_view piece : pieces) {
            at = std::copy(piece.begin(), piece.end(), at);
        }
    }
    constexpr operator std::string_view() const { return {characters, Size}; }

    char characters[Size] = {};
};

/// What surrounds a value in the document.
///
/// Rationale: most of a library's text is the same few tags, each of which is appended in one piece instead of four.
template <const std::string_view& Name, unsigned Depth = 0>
struct Markup {
    static constexpr std::string_view kIndent = std::string_view("          ").substr(0, std::size_t{2} * Depth);
    static constexpr FixedText<kIndent.size() + Name.size() + 2> kOpening{kIndent, "<", Name, ">"};
    static constexpr FixedText<Name.size() + 4> kClosing{"</", Name, ">\n"};
    static constexpr FixedText<Name.size() + 3> kAttribute{" ", Name, "=\""};
};

/// Text of a number, as a stream with default formatting writes it.
class NumberText
{
public:
    template <class Number>
    std::string_view Of(Number number)
    {
        m_text.clear();
        dg::AppendNumber(m_text, number);
        return m_text;
    }

private:
    std::string m_text;
};

/// The text of one section: pieces of the document are appended to it, two blanks for each level of depth.
class SectionText
{
public:
    enum Ending { LEAVE_OPEN, CLOSE, END_ELEMENT };

    explicit SectionText(std::size_t entries) { m_text.reserve(entries * kTypicalEntrySize + 256); }

    std::string Take() { return std::move(m_text); }

    void OpenTag(std::string_view name, unsigned depth, bool newline) { Tag(name, depth, false, true, newline); }
    void ClosingTag(std::string_view name, unsigned depth) { Tag(name, depth, false, false, true); }
    /// The beginning of an element whose attributes follow.
    void TagWithAttributes(std::string_view name, unsigned depth) { Tag(name, depth, true, true, false); }

    template <const std::string_view& Name>
    void Attr(std::string_view value, bool endElement = false)
    {
        m_text.append(Markup<Name>::kAttribute);
        FinishAttr(value, endElement);
    }

    template <const std::string_view& Name, class Number>
    void NumberAttr(Number number, bool endElement = false)
    {
        Attr<Name>(m_number.Of(number), endElement);
    }

    template <class Number>
    void NumberAttr(std::string_view name, Number number, bool endElement = false)
    {
        m_text.append(1, ' ').append(name).append("=\""sv);
        FinishAttr(m_number.Of(number), endElement);
    }

    void CloseTag(bool newline) { m_text.append(newline ? ">\n"sv : ">"sv); }

    template <const std::string_view& Name, unsigned Depth>
    void TagAndValue(std::string_view value)
    {
        m_text.append(Markup<Name, Depth>::kOpening);
        Value(value);
        m_text.append(Markup<Name>::kClosing);
    }

    template <const std::string_view& Name, unsigned Depth, class Number>
    void TagAndNumber(Number number)
    {
        TagAndValue<Name, Depth>(m_number.Of(number));
    }

    /// The key of a text where there is one to be written, else the text.
    template <const std::string_view& Name, unsigned Depth>
    void KeyOrText(std::string_view key, std::string_view text)
    {
        if (key.empty()) {
            TagAndValue<Name, Depth>(text);
        } else {
            TagWithAttributes(Name, Depth);
            Attr<format::kLocId>(key, true);
        }
    }

    void Value(std::string_view value) { dg::AppendXmlEncoded(m_text, value); }

    void HostElement(const dg::XmlElem* element, unsigned depth) { dg::WriteXmlCloseTags(element, m_text, depth); }

private:
    void FinishAttr(std::string_view value, bool endElement)
    {
        dg::AppendXmlEncoded(m_text, value);
        // The blank before the line feed is part of the format.
        m_text.append(endElement ? "\"/> \n"sv : "\""sv);
    }

    void Tag(std::string_view name, unsigned depth, bool leaveOpen, bool opening, bool newline)
    {
        m_text.append(2 * std::size_t{depth}, ' ');
        m_text.append(opening || leaveOpen ? "<"sv : "</"sv).append(name);
        if (!leaveOpen) {
            CloseTag(newline);
        }
    }

    std::string m_text;
    NumberText m_number;
};

/// Writes the entries of one document into a section.
class EntryWriter
{
public:
    EntryWriter(SectionText& text, bool exportAsStandard) : m_text(text), m_exportAsStandard(exportAsStandard) {}

    void WriteCategory(const CategoryInfo& category)
    {
        // A category of another class keeps its entries at home, although it has no texts to save.
        const auto* item = dynamic_cast<const PartslibraryCategoryItem*>(&category);
        m_text.TagWithAttributes(format::kCategory, 2);
        m_text.Attr<format::kId>(category.GetId());
        m_text.CloseTag(true);
        m_text.KeyOrText<format::kName, 3>(item ? Key(item->GetLocIdName()) : "", category.GetName());
        m_text.TagAndValue<format::kTooltip, 3>(item ? item->GetCatTooltip() : std::string_view());
        m_text.TagAndValue<format::kDescription, 3>(item ? item->GetCatDescription() : std::string_view());
        m_text.ClosingTag(format::kCategory, 2);
    }

    void WriteShape(const PartslibraryOlItem& item)
    {
        BeginItem(format::kShape, item);
        m_text.CloseTag(true);
        WriteTexts(item, item.GetOlTooltip());
        WriteUrl(format::kGalleryThumbnail, item, item.GetOlGalleryThumbnailUrl(), format::kShapeFolder);
        WriteUrl(format::kGraphic, item, item.GetOlUrl(), format::kShapeFolder);
        m_text.TagAndNumber<format::kScale, 3>(item.GetOlScale());
        m_text.TagAndNumber<format::kOrientation, 3>(item.GetOlOrientation());
        WriteCsys(item.GetOlCsys());
        m_text.TagAndValue<format::kAxisName, 3>(item.GetAxisName());
        m_text.TagAndNumber<format::kDistanceFromCsys, 3>(item.GetDistanceFromCsys());
        m_text.TagAndNumber<format::kAxisId, 3>(item.GetAxisId());
        m_text.TagAndValue<format::kOrientationName, 3>(item.GetOrientationName());
        m_text.TagAndValue<format::kAnnotationToSymbol, 3>(BoolText(item.IsAnnotationSymbol()));
        m_text.TagAndValue<format::kUseCurrentOrientation, 3>(BoolText(item.IsUseCurrentOrientation()));
        m_text.TagAndNumber<format::kEditCsysMethod, 3>(item.GetEditCsysMethod());
        WriteTags(item);
        WriteCamera(item);
        m_text.ClosingTag(format::kShape, 2);
    }

    void WriteSymbol(const PartslibraryImageItem& item, std::string_view tooltip)
    {
        BeginItem(format::kSymbol, item);
        m_text.Attr<format::kBillboard>(BoolText(item.GetIsBillboardImage()));
        m_text.CloseTag(true);
        WriteTexts(item, tooltip);
        WriteUrl(format::kGalleryThumbnail, item, item.GetImageGalleryThumbnailUrl(), format::kImageFolder);
        WriteUrl(format::kImage, item, item.GetImageUrl(), format::kImageFolder);
        m_text.TagAndNumber<format::kScale, 3>(item.GetImageScale());
        m_text.TagWithAttributes(format::kFlip, 3);
        m_text.Attr<format::kHorizontal>(BoolText(item.GetFlipHorizontal()));
        m_text.Attr<format::kVertical>(BoolText(item.GetFlipVertical()), true);
        m_text.TagWithAttributes(format::kRotate, 3);
        m_text.NumberAttr<format::kRight>(item.GetRotateRight());
        m_text.NumberAttr<format::kLeft>(item.GetRotateLeft(), true);
        WriteTags(item);
        m_text.ClosingTag(format::kSymbol, 2);
    }

private:
    std::string_view Key(const std::string& key) const { return m_exportAsStandard ? std::string_view() : key; }

    void BeginItem(std::string_view element, const PartslibraryItem& item)
    {
        m_text.TagWithAttributes(element, 2);
        m_text.Attr<format::kId>(item.GetId());
        m_text.Attr<format::kCategoryId>(item.GetCategoryId());
    }

    void WriteTexts(const PartslibraryItem& item, std::string_view tooltip)
    {
        m_text.KeyOrText<format::kName, 3>(Key(item.GetLocIdName()), item.GetName());
        m_text.KeyOrText<format::kTitle, 3>(Key(item.GetLocIdTitle()), item.GetTitle());
        m_text.TagAndValue<format::kShowTooltipTitle, 3>(BoolText(item.ShowTooltipTitle()));
        m_text.KeyOrText<format::kDescription, 3>(Key(item.GetLocIdDesc()), item.GetDescription());
        m_text.TagAndValue<format::kShowTooltipDescription, 3>(BoolText(item.ShowTooltipDescription()));
        m_text.TagAndValue<format::kTooltip, 3>(tooltip);
    }

    void WriteUrl(std::string_view element, const PartslibraryItem& item, const std::string& url,
                  std::string_view subFolder)
    {
        m_text.TagWithAttributes(element, 3);
        m_text.Attr<format::kUrl>(LibraryUrl(item, url, subFolder), true);
    }

    /// An absolute URL as the library's own folder would name the file; a relative one as it is.
    std::string_view LibraryUrl(const CollectionItem& item, const std::string& url, std::string_view subFolder)
    {
        if (!du::FileSpec::IsAbsolute(url)) {
            return url;
        }
        const bool isStandard = item.IsOOTB() || (m_exportAsStandard && !item.IsShared());
        m_url.assign(format::kLibraryFolder);
        if (isStandard) {
            m_url.append("/"sv).append(format::kStandardFolder);
        }
        m_url += du::FileSpec::DIR_SEP_CHAR;
        m_url.append(subFolder) += du::FileSpec::DIR_SEP_CHAR;
        m_url += du::FileSpec(url).GetFile();
        Partslibrary::replaceAll(m_url, '\\', '/');
        return m_url;
    }

    void WriteCsys(const dg::Location& csys)
    {
        m_text.TagWithAttributes(format::kShapeCsys, 3);
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                m_text.NumberAttr(format::kCsysMatrix[row][column], csys.GetMat().Get(row, column));
            }
        }
        std::array<double, 3> position{};
        csys.GetPosition().Get(position[0], position[1], position[2]);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            m_text.NumberAttr(format::kCsysPosition[axis], position[axis], axis == 2);
        }
    }

    void WriteTags(const PartslibraryItem& item)
    {
        const auto& tags = item.GetSequencerTags();
        if (std::none_of(tags.begin(), tags.end(), [](const auto& tag) { return bool(tag); })) {
            return;
        }
        m_text.OpenTag(format::kTags, 3, true);
        for (const PartslibraryItem::SequencerTagPtr& tag : tags) {
            if (tag) {
                WriteTag(*tag);
            }
        }
        m_text.ClosingTag(format::kTags, 3);
    }

    void WriteTag(const SequencerTag& tag)
    {
        m_text.TagWithAttributes(format::kTag, 4);
        m_text.Attr<format::kType>(SequencerTag::GetSymbolForType(tag.GetType()).GetText());
        m_text.CloseTag(true);
        m_text.KeyOrText<format::kDescription, 5>(Key(tag.GetLocIdDesc()), tag.GetDescription());
        m_text.TagWithAttributes(format::kQuantity, 5);
        const std::string_view unitsKey = Key(tag.GetLocIdUnits());
        if (unitsKey.empty()) {
            m_text.Attr<format::kUnit>(tag.GetUnits());
        } else {
            m_text.Attr<format::kLocId>(unitsKey);
        }
        m_text.CloseTag(false);
        m_text.Value(tag.GetQuantityString());
        m_text.ClosingTag(format::kQuantity, 0);
        m_text.ClosingTag(format::kTag, 4);
    }

    void WriteCamera(const PartslibraryOlItem& item)
    {
        bool orthographic = false;
        double value = 0.0;
        dg::Location location;
        if (!item.GetCameraData(orthographic, value, location)) {
            return;
        }
        const std::unique_ptr<dg::XmlElem, dg::XmlFreer> camera(dg::NewXmlElem(format::kCamera));
        if (camera) {
            camera->SetAttributeAsBool(format::kOrtho, orthographic);
            camera->SetAttributeAsDouble(format::kValue, value);
            camera->SetAttributeAsLocation(format::kLocation, location);
        }
        m_text.HostElement(camera.get(), 3);
    }

    SectionText& m_text;
    const bool m_exportAsStandard;
    std::string m_url;
};

template <const std::string_view& Name>
std::string WriteTextSection(const std::string& value)
{
    SectionText text(1);
    text.TagAndValue<Name, 1>(value);
    return text.Take();
}

} // namespace

SymbolTemplateWriter::SymbolTemplateWriter(bool exportAsStandard) : m_exportAsStandard(exportAsStandard) {}

SymbolTemplateWriter::~SymbolTemplateWriter() = default;
SymbolTemplateWriter::SymbolTemplateWriter(const SymbolTemplateWriter& other) = default;
SymbolTemplateWriter& SymbolTemplateWriter::operator=(const SymbolTemplateWriter& other) = default;

void SymbolTemplateWriter::SetCollectionInformation(const du::SmartPtr<CollectionInformation>& information)
{
    if (const auto symbols = du::DynamicCast<SymbolCollectionInformation>(information)) {
        m_units = symbols->GetUnits();
        m_information = symbols->GetInformation();
    }
}

void SymbolTemplateWriter::ToXml(const du::Symbol& filePath, std::vector<du::SmartPtr<SymbolTemplate>>&& templates,
                                 const std::vector<du::SmartPtr<CategoryInfo>>& categories)
{
    m_templates = std::move(templates);
    m_categories = categories;
    WritePartslibraryListToXML(filePath.GetText(), m_exportAsStandard);
}

void SymbolTemplateWriter::WritePartslibraryListToXML(const std::string& path, bool flag)
{
    SectionText root(0);
    root.OpenTag(format::kRoot, 0, true);
    SectionText rootEnd(0);
    rootEnd.ClosingTag(format::kRoot, 0);
    // The two large sections, in parts that several threads write. A part takes much longer than a thread takes to start.
    constexpr std::size_t kEntriesInPart = 2048;
    const std::size_t count = m_templates.size();
    const std::size_t parts = std::max(count / kEntriesInPart, std::size_t{1});
    std::vector<std::string> shapes(parts);
    std::vector<std::string> images(parts);
    std::atomic<std::size_t> next = 0;
    RunOnThreads(parts, [&] {
        for (std::size_t part = next++; part < parts; part = next++) {
            shapes[part] = WritePartslibraryOls(flag, count * part / parts, count * (part + 1) / parts);
            images[part] = WritePartslibraryImages(flag, count * part / parts, count * (part + 1) / parts);
        }
    });
    // All text exists before the file is touched: running out of memory must not cost the old library.
    std::vector<std::string> texts{std::string(format::kDeclaration), root.Take(), WritePartslibraryUnits(),
                                   WritePartslibraryInformation(), WritePartslibraryCategories(flag)};
    texts.reserve(texts.size() + 2 * parts + 1);
    std::move(shapes.begin(), shapes.end(), std::back_inserter(texts));
    std::move(images.begin(), images.end(), std::back_inserter(texts));
    texts.push_back(rootEnd.Take());
    const auto libraryPath = MakeLibraryPath(path);
    // A stream that is opened without a buffer truncates the file first and then asks for one.
    std::array<char, 8192> buffer;
    std::ofstream file;
    file.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    file.open(libraryPath, std::ios::out | std::ios::trunc);
    for (const std::string& text : texts) {
        file.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
}

std::string SymbolTemplateWriter::WritePartslibraryUnits() const { return WriteTextSection<format::kUnits>(m_units); }

std::string SymbolTemplateWriter::WritePartslibraryInformation() const
{
    return WriteTextSection<format::kInformation>(m_information);
}

std::string SymbolTemplateWriter::WritePartslibraryCategories(bool flag) const
{
    SectionText text(m_categories.size());
    EntryWriter writer(text, flag);
    text.OpenTag(format::kCategories, 1, true);
    for (const du::SmartPtr<CategoryInfo>& category : m_categories) {
        if (category && !category->IsShared()) {
            writer.WriteCategory(*category);
        }
    }
    text.ClosingTag(format::kCategories, 1);
    return text.Take();
}

std::string SymbolTemplateWriter::WritePartslibraryOls(bool flag, std::size_t begin, std::size_t end) const
{
    SectionText text(end - begin);
    EntryWriter writer(text, flag);
    if (begin == 0) {
        text.OpenTag(format::kShapes, 1, true);
    }
    for (std::size_t i = begin; i < end; ++i) {
        const auto* shape = dynamic_cast<const PartslibraryOlItem*>(m_templates[i].get());
        if (shape && !shape->IsShared()) {
            writer.WriteShape(*shape);
        }
    }
    if (end == m_templates.size()) {
        text.ClosingTag(format::kShapes, 1);
    }
    return text.Take();
}

std::string SymbolTemplateWriter::WritePartslibraryImages(bool flag, std::size_t begin, std::size_t end) const
{
    SectionText text(end - begin);
    EntryWriter writer(text, flag);
    if (begin == 0) {
        text.OpenTag(format::kSymbols, 1, true);
    }
    for (std::size_t i = begin; i < end; ++i) {
        const auto* image = dynamic_cast<const PartslibraryImageItem*>(m_templates[i].get());
        if (image && !image->IsShared()) {
            writer.WriteSymbol(*image, image->m_imageTooltip);
        }
    }
    if (end == m_templates.size()) {
        text.ClosingTag(format::kSymbols, 1);
    }
    return text.Take();
}

} // namespace lusymbols
