#include "DocumentFile.h"

#include "PageDrawing.h"
#include "PlainAnnotations.h"

#include <dg/XmlElem.h>
#include <du/SymbolMap.h>
#include <luk/AnnotationContentVisitor.h>
#include <luk/SerializedContentXml.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <utility>

namespace luhost
{

namespace
{

using luk::SerializedContentElement;
using luk::SerializedContentXml;

constexpr std::string_view kDocument = "document";
constexpr std::string_view kVersion = "version";
constexpr std::string_view kNextId = "nextId";
constexpr std::string_view kNextStructureId = "nextStructureId";
constexpr std::string_view kProduct = "product";
constexpr std::string_view kView = "view";
constexpr std::string_view kCamera = "camera";
constexpr std::string_view kPages = "pages";
constexpr std::string_view kPage = "page";
constexpr std::string_view kDrawing = "drawing";
constexpr std::string_view kAnnotations = "annotations";
constexpr std::string_view kElement = "element";
constexpr std::string_view kTemplates = "templates";
constexpr std::string_view kTemplate = "template";
constexpr std::string_view kId = "id";
constexpr std::string_view kIdBase64 = "idBase64";
constexpr std::string_view kWidth = "width";
constexpr std::string_view kHeight = "height";
constexpr std::string_view kProjection = "projection";
constexpr std::string_view kOrthographic = "orthographic";
constexpr std::string_view kPerspective = "perspective";
constexpr std::string_view kFieldOfView = "fieldOfView";
constexpr std::string_view kLocation = "location";
constexpr std::string_view kPixelWidth = "pixelWidth";
constexpr std::string_view kPixelHeight = "pixelHeight";

constexpr std::uint64_t kThisVersion = 1;
/// A counter beyond this is a fault of the file: nobody has given so many ids.
constexpr std::uint64_t kMaxNextId = std::uint64_t{1} << 62;

template <class Integer>
bool ParseInteger(std::string_view text, Integer& value) noexcept
{
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), value);
    return status == std::errc() && end == text.data() + text.size();
}

dg::XmlElem FirstOf(const dg::XmlElem& parent, std::string_view name) noexcept
{
    dg::XmlElem child = parent.FirstChild();
    while (child && child.GetName() != name) {
        child = child.NextSibling();
    }
    return child;
}

std::size_t CountMarks(const dg::XmlElem& list) noexcept
{
    std::size_t count = 0;
    for (dg::XmlElem child = list.FirstChild(); child; child = child.NextSibling()) {
        count += PlainAnnotations::IsMark(child) ? 1U : 0U;
    }
    return count;
}

/// In the lists of annotations that a Reader reads.
std::size_t CountMarksInLists(const dg::XmlElem& root) noexcept
{
    std::size_t count = CountMarks(FirstOf(FirstOf(root, kView), kAnnotations));
    for (dg::XmlElem page = FirstOf(root, kPages).FirstChild(); page; page = page.NextSibling()) {
        count += page.GetName() == kPage ? CountMarks(FirstOf(page, kAnnotations)) : 0;
    }
    return count;
}

/// Reads "document.xml" into a DocumentFile.
class Reader
{
public:
    using Runs = std::vector<PlainAnnotations::Run>;

    /// @param runs of annotations in the place of the marks that are found
    Reader(DocumentFile& file, const DocumentFile::TakeProduct& takeProduct, Runs& runs,
           DocumentProblems& problems) noexcept
        : m_file(file), m_takeProduct(takeProduct), m_runs(runs), m_problems(problems)
    {
    }

    void Read(const dg::XmlElem& root)
    {
        const KeptXml::Holder holder{kDocument};
        m_file.kept.ReadAttributes(root, {kVersion, kNextId, kNextStructureId}, holder, m_problems);
        ReadVersion(root.GetAttribute(kVersion));
        ReadCounter(root, kNextId, m_file.nextId);
        ReadCounter(root, kNextStructureId, m_file.nextStructureId);
        ReadChildren(root, m_file.kept, holder, {kProduct, kView, kPages, kTemplates},
                     [this](std::size_t which, const dg::XmlElem& child) {
                         which == 0   ? m_takeProduct(child)
                         : which == 1 ? ReadView(child)
                         : which == 2 ? ReadPages(child)
                                      : ReadTemplates(child);
                     });
        m_file.CompleteIdPaths(m_problems);
        for (const auto& [place, slot] : m_wrongValues) {
            m_problems.GetUnknown()[place].annotation = slot->idPath.GetText();
        }
    }

private:
    void ReadCounter(const dg::XmlElem& root, std::string_view name, std::uint64_t& counter)
    {
        if (root.HasAttribute(name) &&
            (!ParseInteger(root.GetAttribute(name), counter) || counter == 0 || counter > kMaxNextId)) {
            m_problems.Add("the counter of ids is wrong and starts again");
            counter = 1;
        }
    }

    void ReadVersion(std::string_view text)
    {
        std::uint64_t version = 0;
        const bool isNumber = !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
        if (!isNumber || (ParseInteger(text, version) && version == 0)) {
            m_problems.Add("the document does not tell the version of its format");
        } else if (text.size() > 19 || version > kThisVersion) {
            m_problems.Add("the document was written by a newer program (version " + std::string(text.substr(0, 20)) +
                           " of the format); what is not known is kept");
            // What is kept of the newer format must still be taken for it.
            m_file.version = text;
        }
    }

    /// Takes the first child of each name, and keeps all else.
    template <class Take>
    void ReadChildren(const dg::XmlElem& element, KeptXml& kept, const KeptXml::Holder& holder,
                      std::initializer_list<std::string_view> names, const Take& take)
    {
        std::size_t place = 0;
        std::vector<bool> seen(names.size());
        for (dg::XmlElem child = element.FirstChild(); child; child = child.NextSibling()) {
            const auto name = std::find(names.begin(), names.end(), child.GetName());
            const auto which = static_cast<std::size_t>(name - names.begin());
            if (name == names.end()) {
                kept.KeepUnknown(place, child, holder, m_problems);
                continue;
            }
            if (seen[which]) {
                m_problems.Add("a second \"" + std::string(*name) + "\" is kept and not read");
                kept.KeepTold(place, child);
                continue;
            }
            seen[which] = true;
            place = which + 1;
            take(which, child);
        }
    }

    void ReadView(const dg::XmlElem& view)
    {
        const KeptXml::Holder holder{kView};
        m_file.view.kept.ReadAttributes(view, {}, holder, m_problems);
        ReadChildren(view, m_file.view.kept, holder, {kCamera, kAnnotations},
                     [this](std::size_t which, const dg::XmlElem& child) {
                         which == 0 ? ReadCamera(child) : ReadAnnotations(child, m_file.view, "the view", 0);
                     });
    }

    void ReadPages(const dg::XmlElem& pages)
    {
        const KeptXml::Holder holder{kPages};
        m_file.keptInPages.ReadAttributes(pages, {}, holder, m_problems);
        for (dg::XmlElem child = pages.FirstChild(); child; child = child.NextSibling()) {
            if (child.GetName() == kPage) {
                m_file.pages.emplace_back().drawing = std::make_shared<PageDrawing>();
                ReadPage(child, m_file.pages.back(), m_file.pages.size());
            } else {
                m_file.keptInPages.KeepUnknown(m_file.pages.size(), child, holder, m_problems);
            }
        }
    }

    void ReadPage(const dg::XmlElem& xml, DocumentFile::Part& page, std::size_t number)
    {
        const std::string where = "page " + std::to_string(number);
        const KeptXml::Holder holder{kPage, kPage, number};
        page.kept.ReadAttributes(xml, {kWidth, kHeight}, holder, m_problems);
        ReadLength(xml, kWidth, page.size.width, where);
        ReadLength(xml, kHeight, page.size.height, where);
        ReadChildren(xml, page.kept, holder, {kDrawing, kAnnotations},
                     [&](std::size_t which, const dg::XmlElem& child) {
                         which == 0 ? page.drawing->Read(child, number, m_pointsLeft, m_problems)
                                    : ReadAnnotations(child, page, kPage, number);
                     });
    }

    /// @param noun and number of what the annotations are on
    void ReadAnnotations(const dg::XmlElem& list, DocumentFile::Part& part, std::string_view noun, std::size_t number)
    {
        const KeptXml::Holder holder{kAnnotations, noun, number};
        part.keptInList.ReadAttributes(list, {}, holder, m_problems);
        part.annotations.reserve(list.CountChildren() + CountInRuns(CountMarks(list)));
        SerializedContentXml::Reader reader(
            [&](const std::string& problem) { AddWrongValue(part.annotations.back(), problem); });
        for (dg::XmlElem child = list.FirstChild(); child; child = child.NextSibling()) {
            if (PlainAnnotations::IsMark(child) && m_nextRun < m_runs.size()) {
                TakeRun(m_runs[m_nextRun++], part);
                continue;
            }
            DocumentFile::Slot& slot = part.annotations.emplace_back();
            if (child.GetName() != kElement) {
                SerializedContentXml::AppendForeign(slot.foreign, child);
                m_problems.AddUnknown(slot.foreign, holder);
                continue;
            }
            slot.SetContent(std::make_unique<SerializedContentElement>(reader.Read(child)));
            part.attachOrder.Add(*slot.content);
        }
    }

    /// @param count of the runs that come next
    std::size_t CountInRuns(std::size_t count) const noexcept
    {
        std::size_t annotations = 0;
        for (std::size_t i = m_nextRun; i < std::min(m_nextRun + count, m_runs.size()); ++i) {
            annotations += m_runs[i].slots.size();
        }
        return annotations;
    }

    static void TakeRun(PlainAnnotations::Run& run, DocumentFile::Part& part)
    {
        part.attachOrder.Append(run.attachOrder);
        std::move(run.slots.begin(), run.slots.end(), std::back_inserter(part.annotations));
    }

    /// An annotation gets its id when all are read; until then it is told from others by a number.
    void AddWrongValue(const DocumentFile::Slot& slot, const std::string& problem)
    {
        if (m_wrongValues.empty() || m_wrongValues.back().second != &slot) {
            ++m_slotsWithWrongValues;
        }
        DocumentProblems::Unknown value;
        value.kind = "value";
        value.name = problem;
        value.annotation = std::to_string(m_slotsWithWrongValues);
        value.isKept = false;
        const std::size_t place = m_problems.AddUnknown(std::move(value));
        if (place != DocumentProblems::kNotListed) {
            m_wrongValues.emplace_back(place, &slot);
        }
    }

    void ReadTemplates(const dg::XmlElem& templates)
    {
        const KeptXml::Holder holder{kTemplates};
        m_file.keptInTemplates.ReadAttributes(templates, {}, holder, m_problems);
        for (dg::XmlElem child = templates.FirstChild(); child; child = child.NextSibling()) {
            if (child.GetName() != kTemplate) {
                m_file.keptInTemplates.KeepUnknown(0, child, holder, m_problems);
                continue;
            }
            std::string id;
            if (!SerializedContentXml::ReadAttribute(child, kId, id)) {
                m_problems.Add("template " + std::to_string(m_file.templateIds.size()) + " has no id");
                m_file.templateIds.emplace_back();
                continue;
            }
            KeptXml kept;
            kept.ReadWhole(child, {kId, kIdBase64}, {kTemplate, kTemplate, 0, id}, m_problems);
            if (!kept.IsEmpty()) {
                m_file.keptInTemplate.emplace(id, std::move(kept));
            }
            m_file.templateIds.emplace_back(std::move(id));
        }
    }

    void ReadCamera(const dg::XmlElem& xml)
    {
        m_file.keptInCamera.ReadWhole(xml, {kProjection, kWidth, kFieldOfView, kLocation, kPixelWidth, kPixelHeight},
                                      {kCamera}, m_problems);
        dg::Camera3D& camera = m_file.camera;
        double width = camera.GetOrthographicWidth();
        double fieldOfView = camera.GetPerspectiveHFOV();
        ReadWith(xml, kWidth, "the camera",
                 [&](std::string_view t) { return SerializedContentXml::ParseReal(t, width); });
        ReadWith(xml, kFieldOfView, "the camera",
                 [&](std::string_view t) { return SerializedContentXml::ParseReal(t, fieldOfView); });
        bool isPerspective = false;
        ReadWith(xml, kProjection, "the camera", [&](std::string_view text) {
            isPerspective = text == kPerspective;
            return isPerspective || text == kOrthographic;
        });
        // Each of the two keeps what the other has set.
        if (isPerspective) {
            camera.SetOrthographic(width);
            camera.SetPerspective(fieldOfView);
        } else {
            camera.SetPerspective(fieldOfView);
            camera.SetOrthographic(width);
        }
        ReadPlaceOf(xml, camera);
    }

    void ReadPlaceOf(const dg::XmlElem& xml, dg::Camera3D& camera)
    {
        SerializedContentElement::Value location = dg::Location();
        ReadWith(xml, kLocation, "the camera", [&](std::string_view text) {
            const bool isRead = SerializedContentXml::ParseValue(text, location);
            if (isRead) {
                camera.SetLocation(std::get<dg::Location>(location));
            }
            return isRead;
        });
        int pixelWidth = camera.GetPixelWidth();
        int pixelHeight = camera.GetPixelHeight();
        ReadWith(xml, kPixelWidth, "the camera", [&](std::string_view t) { return ParseInteger(t, pixelWidth); });
        ReadWith(xml, kPixelHeight, "the camera", [&](std::string_view t) { return ParseInteger(t, pixelHeight); });
        camera.SetViewport(pixelWidth, pixelHeight);
    }

    void ReadLength(const dg::XmlElem& xml, std::string_view name, double& length, const std::string& where)
    {
        ReadWith(xml, name, where, [&length](std::string_view text) {
            double read = 0.0;
            const bool isLength = SerializedContentXml::ParseReal(text, read) && std::isfinite(read) && read > 0.0;
            length = isLength ? read : length;
            return isLength;
        });
    }

    template <class Parse>
    void ReadWith(const dg::XmlElem& xml, std::string_view name, const std::string& where, const Parse& parse)
    {
        if (!xml.HasAttribute(name) || !parse(xml.GetAttribute(name))) {
            m_problems.Add(where + " has no sound \"" + std::string(name) + "\"");
        }
    }

    DocumentFile& m_file;
    const DocumentFile::TakeProduct& m_takeProduct;
    Runs& m_runs;
    std::size_t m_nextRun = 0;
    DocumentProblems& m_problems;
    std::size_t m_pointsLeft = PageDrawing::kMaxPoints;
    std::vector<std::pair<std::size_t, const DocumentFile::Slot*>> m_wrongValues; ///< with places in the problems
    std::size_t m_slotsWithWrongValues = 0;
};

void AppendIndent(std::string& out, int depth) { out.append(2 * static_cast<std::size_t>(depth), ' '); }

void AppendOpen(std::string& out, std::string_view name, const std::string& attributes, int depth)
{
    AppendIndent(out, depth);
    out.append("<").append(name).append(attributes).append(">\n");
}

void AppendClose(std::string& out, std::string_view name, int depth)
{
    AppendIndent(out, depth);
    out.append("</").append(name).append(">\n");
}

std::string Real(std::string_view name, double value)
{
    std::string attribute = " " + std::string(name) + "=\"";
    SerializedContentXml::AppendReal(attribute, value);
    return attribute + '"';
}

std::string Text(std::string_view name, std::string_view value)
{
    std::string attribute;
    SerializedContentXml::AppendAttribute(attribute, name, value);
    return attribute;
}

void AppendCamera(std::string& out, const dg::Camera3D& camera, const KeptXml& kept, int depth)
{
    std::string location;
    SerializedContentXml::AppendValue(location, camera.GetLocation());
    AppendOpen(out, kCamera,
               Text(kProjection, camera.IsOrthographic() ? kOrthographic : kPerspective) +
                   Real(kWidth, camera.GetOrthographicWidth()) + Real(kFieldOfView, camera.GetPerspectiveHFOV()) +
                   Text(kLocation, location) + Text(kPixelWidth, std::to_string(camera.GetPixelWidth())) +
                   Text(kPixelHeight, std::to_string(camera.GetPixelHeight())) + kept.GetAttributes(),
               depth);
    kept.Write(out, 0, depth + 1);
    AppendClose(out, kCamera, depth);
}

du::Symbol IdPathOf(const SerializedContentElement& content)
{
    for (const SerializedContentElement::Property& property : content.GetProperties()) {
        const auto* const value = std::get_if<du::Symbol>(&property.value);
        if (value && property.key == luk::Annotation::SerializedContentVisitor::GetIdPathKey()) {
            return value->IsEmpty() ? du::Symbol() : *value;
        }
    }
    return {};
}

void SetIdPath(SerializedContentElement& content, const du::Symbol& idPath)
{
    const du::Symbol& key = luk::Annotation::SerializedContentVisitor::GetIdPathKey();
    std::vector<SerializedContentElement::Property>& properties = content.GetProperties();
    for (SerializedContentElement::Property& property : properties) {
        if (property.key == key && std::holds_alternative<du::Symbol>(property.value)) {
            property.value = idPath;
            return;
        }
    }
    properties.insert(properties.begin(), {key, idPath});
}

} // namespace

void DocumentProblems::Add(std::string problem)
{
    constexpr std::size_t kMaxProblems = 1000;
    if (m_problems.size() < kMaxProblems) {
        m_problems.push_back(std::move(problem));
    } else if (m_problems.size() == kMaxProblems) {
        m_problems.emplace_back("there are more problems than are listed");
    }
}

std::size_t DocumentProblems::AddUnknown(Unknown unknown)
{
    constexpr std::size_t kMaxUnknown = 1000;
    constexpr std::size_t kMaxNameBytes = 100;
    if (unknown.name.size() > kMaxNameBytes) {
        unknown.name.replace(kMaxNameBytes, std::string::npos, "...");
    }
    std::string key = unknown.kind;
    for (const std::string* const part : {&unknown.name, &unknown.holder, &unknown.annotation}) {
        key.append(1, '\0').append(*part);
    }
    if (const auto found = m_places.find(key); found != m_places.end()) {
        m_unknown[found->second].count += unknown.count;
        return found->second;
    }
    if (m_unknown.size() == kMaxUnknown) {
        m_unlisted += unknown.count;
        return kNotListed;
    }
    m_places.emplace(std::move(key), m_unknown.size());
    m_unknown.push_back(std::move(unknown));
    return m_unknown.size() - 1;
}

void DocumentProblems::AddUnknown(std::string_view xml, const Holder& holder, const std::string& annotation)
{
    if (xml.empty()) {
        return;
    }
    Unknown unknown;
    unknown.holder = holder.element;
    unknown.annotation = annotation;
    unknown.where = holder.noun;
    if (holder.number != 0) {
        unknown.where.append(" ").append(std::to_string(holder.number));
    }
    if (!holder.name.empty()) {
        constexpr std::size_t kMaxNameBytes = 200;
        unknown.where.append(" \"").append(holder.name.substr(0, kMaxNameBytes)).append("\"");
    }
    if (xml.starts_with('<')) {
        unknown.kind = "element";
        unknown.name = xml.substr(1, xml.find_first_of(" />") - 1);
        AddUnknown(std::move(unknown));
        return;
    }
    // As it is kept: a blank, the name, and in quotes a value that has none in it.
    unknown.kind = "attribute";
    for (std::size_t at = 0; at < xml.size();) {
        const std::size_t equals = xml.find('=', at);
        unknown.name = xml.substr(at + 1, equals - at - 1);
        AddUnknown(unknown);
        at = std::min(xml.find('"', std::min(equals, xml.size() - 2) + 2), xml.size() - 1) + 1;
    }
}

void DocumentProblems::Take(DocumentProblems& others)
{
    for (std::string& problem : others.m_problems) {
        Add(std::move(problem));
    }
    for (Unknown& unknown : others.m_unknown) {
        AddUnknown(std::move(unknown));
    }
    m_unlisted += others.m_unlisted;
    others = {};
}

std::string UnknownAttributesOf(const dg::XmlElem& element, std::initializer_list<std::string_view> known)
{
    std::string attributes;
    for (dg::XmlAttribute attribute = element.FirstAttribute(); attribute; attribute = attribute.Next()) {
        if (std::find(known.begin(), known.end(), attribute.GetName()) == known.end()) {
            SerializedContentXml::AppendForeignAttribute(attributes, attribute.GetName(), attribute.GetValue());
        }
    }
    return attributes;
}

void KeptXml::ReadAttributes(const dg::XmlElem& element, std::initializer_list<std::string_view> known,
                             const Holder& holder, DocumentProblems& problems)
{
    m_attributes = UnknownAttributesOf(element, known);
    problems.AddUnknown(m_attributes, holder);
}

void KeptXml::ReadWhole(const dg::XmlElem& element, std::initializer_list<std::string_view> known, const Holder& holder,
                        DocumentProblems& problems)
{
    ReadAttributes(element, known, holder, problems);
    for (dg::XmlElem child = element.FirstChild(); child; child = child.NextSibling()) {
        KeepUnknown(0, child, holder, problems);
    }
}

void KeptXml::KeepUnknown(std::size_t place, const dg::XmlElem& element, const Holder& holder,
                          DocumentProblems& problems)
{
    problems.AddUnknown(KeepTold(place, element), holder);
}

const std::string& KeptXml::KeepTold(std::size_t place, const dg::XmlElem& element)
{
    std::string xml;
    SerializedContentXml::AppendForeign(xml, element);
    return m_elements.emplace(place, std::move(xml))->second;
}

void KeptXml::WriteElement(std::string& out, std::string_view name, const std::string& attributes, int depth) const
{
    AppendIndent(out, depth);
    out.append("<").append(name).append(attributes).append(m_attributes);
    if (m_elements.empty()) {
        out.append("/>\n");
        return;
    }
    out.append(">\n");
    Write(out, 0, depth + 1);
    AppendClose(out, name, depth);
}

void KeptXml::Write(std::string& out, std::size_t place, int depth) const
{
    const auto [first, last] = m_elements.equal_range(place);
    for (auto element = first; element != last; ++element) {
        AppendIndent(out, depth);
        out.append(element->second).push_back('\n');
    }
}

void KeptXml::ForEachElement(const std::function<void(const std::string&)>& look) const
{
    for (const auto& [place, xml] : m_elements) {
        look(xml);
    }
}

void DocumentFile::Slot::SetContent(std::unique_ptr<SerializedContentElement> newContent)
{
    content = std::move(newContent);
    idPath = IdPathOf(*content);
}

bool DocumentFile::Read(std::string xml, const TakeProduct& takeProduct, DocumentProblems& problems, std::string& error)
{
    using Root = std::unique_ptr<dg::XmlElem, dg::XmlFreer>;
    dg::XmlParseError parseError;
    textSize = xml.size();
    PlainAnnotations plain = PlainAnnotations::ReadFrom(xml);
    Root root(plain.GetRuns().empty() ? nullptr : dg::ParseXml(std::move(plain.GetRest()), false, nullptr));
    if (!root || CountMarksInLists(*root) != plain.GetRuns().size()) {
        plain = {};
        root.reset(dg::ParseXml(std::move(xml), false, &parseError));
    }
    if (!root) {
        error = std::string(kEntryName) +
                (parseError.line > 0 ? ", line " + std::to_string(parseError.line) : std::string()) + ": " +
                parseError.reason;
        return false;
    }
    if (root->GetName() != kDocument) {
        error = std::string(kEntryName) + ": the top-level element is not \"document\"";
        return false;
    }
    Reader(*this, takeProduct, plain.GetRuns(), problems).Read(*root);
    return true;
}

bool DocumentFile::Write(std::string& out, const std::string& product, const dg::Camera3D& currentCamera,
                         const WriteAnnotations& writeAnnotations, const std::vector<std::string>& ids) const
{
    const auto writeList = [&](std::size_t number, const Part& part, int depth) {
        AppendOpen(out, kAnnotations, part.keptInList.GetAttributes(), depth);
        const bool isWritten = writeAnnotations(number, out, depth + 1);
        AppendClose(out, kAnnotations, depth);
        return isWritten;
    };
    out.reserve(textSize + textSize / 8);
    out += "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
    AppendOpen(out, kDocument,
               Text(kVersion, version) + Text(kNextId, std::to_string(nextId)) +
                   (nextStructureId > 1 ? Text(kNextStructureId, std::to_string(nextStructureId)) : std::string()) +
                   kept.GetAttributes(),
               0);
    kept.Write(out, 0, 1);
    out.append(product);
    kept.Write(out, 1, 1);

    AppendOpen(out, kView, view.kept.GetAttributes(), 1);
    view.kept.Write(out, 0, 2);
    AppendCamera(out, currentCamera, keptInCamera, 2);
    view.kept.Write(out, 1, 2);
    if (!writeList(0, view, 2)) {
        return false;
    }
    view.kept.Write(out, 2, 2);
    AppendClose(out, kView, 1);
    kept.Write(out, 2, 1);

    AppendOpen(out, kPages, keptInPages.GetAttributes(), 1);
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const Part& page = pages[i];
        keptInPages.Write(out, i, 2);
        AppendOpen(out, kPage,
                   Real(kWidth, page.size.width) + Real(kHeight, page.size.height) + page.kept.GetAttributes(), 2);
        page.kept.Write(out, 0, 3);
        page.drawing->Write(out, 3);
        page.kept.Write(out, 1, 3);
        if (!writeList(i + 1, page, 3)) {
            return false;
        }
        page.kept.Write(out, 2, 3);
        AppendClose(out, kPage, 2);
    }
    keptInPages.Write(out, pages.size(), 2);
    AppendClose(out, kPages, 1);
    kept.Write(out, 3, 1);

    AppendOpen(out, kTemplates, keptInTemplates.GetAttributes(), 1);
    const KeptXml nothing;
    for (const std::string& id : ids) {
        const auto keptOf = keptInTemplate.find(id);
        (keptOf == keptInTemplate.end() ? nothing : keptOf->second).WriteElement(out, kTemplate, Text(kId, id), 2);
    }
    keptInTemplates.Write(out, 0, 2);
    AppendClose(out, kTemplates, 1);
    kept.Write(out, 4, 1);
    AppendClose(out, kDocument, 0);
    return true;
}

void DocumentFile::CompleteIdPaths(DocumentProblems& problems)
{
    // All ids of the file are known before the first new one is given.
    std::vector<Slot*> without;
    for (std::size_t i = 0; i <= pages.size(); ++i) {
        slots.reserve(slots.size() + GetPart(i).annotations.size());
        for (Slot& slot : GetPart(i).annotations) {
            if (slot.content && (slot.idPath.IsNull() || !slots.emplace(slot.idPath, &slot).second)) {
                without.push_back(&slot);
            }
        }
    }
    const auto isTaken = [this](const du::Symbol& idPath) { return slots.count(idPath) != 0; };
    for (Slot* const slot : without) {
        const du::Symbol idPath = MakeIdPath(isTaken);
        if (!slot->idPath.IsNull()) {
            problems.Add("a second annotation with the id \"" + slot->idPath.GetText().substr(0, 60) + "\" becomes \"" +
                         idPath.GetText() + "\"");
        }
        slot->idPath = idPath;
        slots.emplace(idPath, slot);
        SetIdPath(*slot->content, idPath);
    }
}

bool DocumentFile::HasContentOf(const du::Symbol& idPath) const
{
    const auto slot = slots.find(idPath);
    return slot != slots.end() && slot->second->content;
}

} // namespace luhost
