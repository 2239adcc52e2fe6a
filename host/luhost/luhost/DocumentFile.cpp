#include "DocumentFile.h"

#include "PageDrawing.h"

#include <dg/XmlElem.h>
#include <luk/AnnotationContentVisitor.h>
#include <luk/SerializedContentXml.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <unordered_set>
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

/// Reads "document.xml" into a DocumentFile.
class Reader
{
public:
    Reader(DocumentFile& file, const DocumentFile::TakeProduct& takeProduct, DocumentProblems& problems) noexcept
        : m_file(file), m_takeProduct(takeProduct), m_problems(problems)
    {
    }

    void Read(const dg::XmlElem& root)
    {
        m_file.kept.ReadAttributes(root, {kVersion, kNextId, kNextStructureId});
        ReadVersion(root.GetAttribute(kVersion));
        ReadCounter(root, kNextId, m_file.nextId);
        ReadCounter(root, kNextStructureId, m_file.nextStructureId);
        ReadChildren(root, m_file.kept, {kProduct, kView, kPages, kTemplates},
                     [this](std::size_t which, const dg::XmlElem& child) {
                         which == 0   ? m_takeProduct(child)
                         : which == 1 ? ReadView(child)
                         : which == 2 ? ReadPages(child)
                                      : ReadTemplates(child);
                     });
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
    void ReadChildren(const dg::XmlElem& element, KeptXml& kept, std::initializer_list<std::string_view> names,
                      const Take& take)
    {
        std::size_t place = 0;
        std::vector<bool> seen(names.size());
        for (dg::XmlElem child = element.FirstChild(); child; child = child.NextSibling()) {
            const auto name = std::find(names.begin(), names.end(), child.GetName());
            const auto which = static_cast<std::size_t>(name - names.begin());
            if (name == names.end() || seen[which]) {
                if (name != names.end()) {
                    m_problems.Add("a second \"" + std::string(*name) + "\" is kept and not read");
                }
                kept.Keep(place, child);
                continue;
            }
            seen[which] = true;
            place = which + 1;
            take(which, child);
        }
    }

    void ReadView(const dg::XmlElem& view)
    {
        m_file.view.kept.ReadAttributes(view, {});
        ReadChildren(view, m_file.view.kept, {kCamera, kAnnotations},
                     [this](std::size_t which, const dg::XmlElem& child) {
                         which == 0 ? ReadCamera(child) : ReadAnnotations(child, m_file.view, "the view");
                     });
    }

    void ReadPages(const dg::XmlElem& pages)
    {
        m_file.keptInPages.ReadAttributes(pages, {});
        for (dg::XmlElem child = pages.FirstChild(); child; child = child.NextSibling()) {
            if (child.GetName() == kPage) {
                m_file.pages.emplace_back().drawing = std::make_shared<PageDrawing>();
                ReadPage(child, m_file.pages.back(), "page " + std::to_string(m_file.pages.size()));
            } else {
                m_file.keptInPages.Keep(m_file.pages.size(), child);
            }
        }
    }

    void ReadPage(const dg::XmlElem& xml, DocumentFile::Part& page, const std::string& where)
    {
        page.kept.ReadAttributes(xml, {kWidth, kHeight});
        ReadLength(xml, kWidth, page.size.width, where);
        ReadLength(xml, kHeight, page.size.height, where);
        ReadChildren(xml, page.kept, {kDrawing, kAnnotations}, [&](std::size_t which, const dg::XmlElem& child) {
            which == 0 ? page.drawing->Read(child, where, m_pointsLeft, m_problems)
                       : ReadAnnotations(child, page, where);
        });
    }

    void ReadAnnotations(const dg::XmlElem& list, DocumentFile::Part& part, const std::string& where)
    {
        part.keptInList.ReadAttributes(list, {});
        part.annotations.reserve(list.CountChildren());
        for (dg::XmlElem child = list.FirstChild(); child; child = child.NextSibling()) {
            DocumentFile::Slot& slot = part.annotations.emplace_back();
            if (child.GetName() != kElement) {
                SerializedContentXml::AppendForeign(slot.foreign, child);
                continue;
            }
            const auto tell = [&](const std::string& problem) {
                std::string text = "annotation " + std::to_string(part.annotations.size());
                m_problems.Add(text.append(" of ").append(where).append(": ").append(problem));
            };
            slot.content = std::make_unique<SerializedContentElement>(SerializedContentXml::Read(child, tell));
        }
    }

    void ReadTemplates(const dg::XmlElem& templates)
    {
        m_file.keptInTemplates.ReadAttributes(templates, {});
        for (dg::XmlElem child = templates.FirstChild(); child; child = child.NextSibling()) {
            if (child.GetName() != kTemplate) {
                m_file.keptInTemplates.Keep(0, child);
                continue;
            }
            std::string id;
            if (!SerializedContentXml::ReadAttribute(child, kId, id)) {
                m_problems.Add("template " + std::to_string(m_file.templateIds.size()) + " has no id");
                m_file.templateIds.emplace_back();
                continue;
            }
            KeptXml kept;
            kept.ReadAttributes(child, {kId, kIdBase64});
            if (!kept.GetAttributes().empty()) {
                m_file.templateAttributes.emplace(id, kept.GetAttributes());
            }
            m_file.templateIds.emplace_back(std::move(id));
        }
    }

    void ReadCamera(const dg::XmlElem& xml)
    {
        m_file.keptInCamera.ReadAttributes(xml,
                                           {kProjection, kWidth, kFieldOfView, kLocation, kPixelWidth, kPixelHeight});
        for (dg::XmlElem child = xml.FirstChild(); child; child = child.NextSibling()) {
            m_file.keptInCamera.Keep(0, child);
        }
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
    DocumentProblems& m_problems;
    std::size_t m_pointsLeft = PageDrawing::kMaxPoints;
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

void KeptXml::ReadAttributes(const dg::XmlElem& element, std::initializer_list<std::string_view> known)
{
    for (dg::XmlAttribute attribute = element.FirstAttribute(); attribute; attribute = attribute.Next()) {
        if (std::find(known.begin(), known.end(), attribute.GetName()) == known.end()) {
            SerializedContentXml::AppendForeignAttribute(m_attributes, attribute.GetName(), attribute.GetValue());
        }
    }
}

void KeptXml::Keep(std::size_t place, const dg::XmlElem& element)
{
    std::string xml;
    SerializedContentXml::AppendForeign(xml, element);
    m_elements.emplace(place, std::move(xml));
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

bool DocumentFile::Read(std::string xml, const TakeProduct& takeProduct, DocumentProblems& problems, std::string& error)
{
    dg::XmlParseError parseError;
    const std::unique_ptr<dg::XmlElem, dg::XmlFreer> root(dg::ParseXml(std::move(xml), false, &parseError));
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
    Reader(*this, takeProduct, problems).Read(*root);
    CompleteIdPaths(problems);
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
    for (const std::string& id : ids) {
        const auto attributes = templateAttributes.find(id);
        AppendIndent(out, 2);
        out.append("<").append(kTemplate).append(Text(kId, id));
        out.append(attributes == templateAttributes.end() ? std::string() : attributes->second).append("/>\n");
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
    std::unordered_set<du::Symbol> taken;
    std::vector<Slot*> without;
    for (std::size_t i = 0; i <= pages.size(); ++i) {
        for (Slot& slot : GetPart(i).annotations) {
            if (!slot.content) {
                continue;
            }
            slot.idPath = IdPathOf(*slot.content);
            if (slot.idPath.IsNull() || !taken.insert(slot.idPath).second) {
                without.push_back(&slot);
            }
        }
    }
    const auto isTaken = [&taken](const du::Symbol& idPath) { return taken.count(idPath) != 0; };
    for (Slot* const slot : without) {
        const du::Symbol idPath = MakeIdPath(isTaken);
        if (!slot->idPath.IsNull()) {
            problems.Add("a second annotation with the id \"" + slot->idPath.GetText().substr(0, 60) + "\" becomes \"" +
                         idPath.GetText() + "\"");
        }
        slot->idPath = idPath;
        SetIdPath(*slot->content, idPath);
    }
}

} // namespace luhost
