#include "AttachOrder.h"
#include "DocumentFile.h"
#include "DocumentProduct.h"
#include "ForeignAttributes.h"
#include "PageDrawing.h"
#include "SymbolFiles.h"

#include <du/FoundFiles.h>
#include <du/SymbolMap.h>
#include <luhost/Document.h>
#include <luk/AnnoSet.h>
#include <luk/Annotation.h>
#include <luk/illustration/AssociativeObject.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/illustration2d/Stamp2D.h>
#include <luk/SerializedContentElement.h>
#include <luk/SerializedContentXml.h>
#include <luk/ShapeView.h>
#include <luk/World.h>
#include <lukapp/illustration/DrellinApp.h>
#include <lukapp/illustration/IllMultiRootContainer.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <numeric>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace luhost
{

namespace
{

using luk::SerializedContentElement;
using luk::SerializedContentXml;
using luk::illustration::SymbolTemplateCollection;
using luk::illustration2d::Scene2D;
using AnnotationPtr = du::SmartPtr<luk::Annotation>;

constexpr std::string_view kLibraryEntry = "library.xml";
constexpr std::uint64_t kNoTemplate = std::numeric_limits<std::uint64_t>::max();

const du::Symbol& TemplateIndexKey()
{
    static const du::Symbol s_key("templateIndex");
    return s_key;
}

/// The template index in an annotation's content; null when there is none.
std::uint64_t* FindTemplateIndex(SerializedContentElement& content)
{
    for (SerializedContentElement::Property& property : content.GetProperties()) {
        if (auto* const index = std::get_if<std::uint64_t>(&property.value);
            index && property.key == TemplateIndexKey()) {
            return index;
        }
    }
    return nullptr;
}

std::string TemporaryFolder()
{
    du::Symbol folder;
    const auto app = lukapp::illustration::DrellinApp::GetDrellinApp();
    return app && app->GetTemporaryDirectory(folder) ? folder.GetText() : std::string();
}

/// What an annotation saves, as one element. One that starts no element of its own gets one with its class word.
SerializedContentElement ContentOf(luk::Annotation& annotation)
{
    SerializedContentElement content(annotation.GetClass());
    annotation.Visit(content);
    if (content.GetProperties().empty() && content.GetChildCount() == 1) {
        return std::move(content.GetChild(0));
    }
    return content;
}

/// The types of the properties that an annotation saves of its own, beside those that it has not understood.
std::unordered_map<std::string, std::string> OwnTypesOf(luk::Annotation& annotation)
{
    std::unordered_map<std::string, std::string> types;
    std::unordered_set<std::string> unknown;
    const auto nameOf = [](const SerializedContentElement::Property& property) {
        return std::string(SerializedContentXml::GetTypeName(property.value)) + property.key.GetText();
    };
    if (const SerializedContentElement* const content = annotation.GetUnknownContent()) {
        for (const SerializedContentElement::Property& property : content->GetProperties()) {
            unknown.insert(nameOf(property));
        }
        for (std::size_t i = 0; i < content->GetChildCount(); ++i) {
            unknown.insert(content->GetChild(i).GetName().GetText());
        }
    }
    const SerializedContentElement content = ContentOf(annotation);
    const auto addOf = [&](const SerializedContentElement& element) {
        for (const SerializedContentElement::Property& property : element.GetProperties()) {
            if (!property.IsForeign() && unknown.count(nameOf(property)) == 0) {
                types[property.key.GetText()] = SerializedContentXml::GetTypeName(property.value);
            }
        }
    };
    addOf(content);
    for (std::size_t i = 0; i < content.GetChildCount(); ++i) {
        if (const SerializedContentElement& child = content.GetChild(i);
            unknown.count(child.GetName().GetText()) == 0) {
            addOf(child);
        }
    }
    return types;
}

/// Ids of templates, each once, in order of first use.
class TemplateList
{
public:
    std::uint64_t PositionOf(const std::string& id)
    {
        const auto [place, isNew] = m_positions.try_emplace(id, m_ids.size());
        if (isNew) {
            m_ids.push_back(id);
        }
        return place->second;
    }

    const std::vector<std::string>& GetIds() const noexcept { return m_ids; }

private:
    std::vector<std::string> m_ids;
    std::unordered_map<std::string, std::uint64_t> m_positions;
};

du::SymbolSet IdPathsOf(const std::vector<AnnotationPtr>& annotations)
{
    du::SymbolSet idPaths;
    for (const AnnotationPtr& annotation : annotations) {
        idPaths.insert(annotation->GetIDPath());
    }
    return idPaths;
}

} // namespace

class Document::Content
{
public:
    explicit Content(Setup setup) : m_setup(std::move(setup)) {}
    ~Content() { Close(); }
    Content(const Content&) = delete;
    Content& operator=(const Content&) = delete;

    bool Read(const std::string& path, std::string& error);
    /// Makes the scenes, and the container of the session's world.
    void Open();

    std::size_t AddPage(const PageSize& size);
    void MakeAnnotations();
    bool AddAnnotation(const AnnotationPtr& annotation, const luk::Scene* scene);
    std::size_t RemoveAnnotations(const std::vector<AnnotationPtr>& annotations);

    std::vector<AnnotationPtr> MembersOf(std::size_t part) const;
    AnnotationPtr Find(const du::Symbol& idPath);
    /// Number of parts when it is in none.
    std::size_t PartOf(const luk::Annotation& annotation) const;

    bool SetProduct(const ProductModel& model, std::string& problem);

    std::vector<std::string> GetUsedTemplateIds();
    void FindExpectedTypes();
    bool Save(const std::string& path, std::string& error);

    struct Part {
        du::SmartPtr<luk::Scene> scene;
        du::SmartPtr<Scene2D> page; ///< null for the view
    };

    Setup m_setup;
    DocumentFile m_file;
    DocumentProblems m_problems;
    bool m_hasAllFiles = true; ///< of the package's pictures and shapes, in the temporary folder
    DocumentProduct m_product;
    du::SmartPtr<luk::ShapeScene> m_scene;
    std::vector<Part> m_parts; ///< the view, then the pages
    du::SmartPtr<luk::ShapeView> m_view;
    std::string m_libraryText;
    std::size_t m_unknownAnnotations = 0;

private:
    /// What the file said of an annotation that the annotation itself does not know.
    struct Remembered {
        ForeignAttributes attributes;
        std::string templateId; ///< that the session's library does not have
        bool hasTemplateId = false;
    };

    struct Indexed {
        luk::Annotation* annotation;
        std::size_t part;
    };

    /// Told each annotation's content, with template indices that count the list, or else the XML that stands in a list of
    /// annotations and is none. @return false to stop
    using Look = std::function<bool(SerializedContentElement* content, const std::string& foreign)>;

    void Close();
    void AddPart(const du::SmartPtr<luk::Scene>& scene, const du::SmartPtr<Scene2D>& page);
    void TakeEntries(std::vector<PackageEntry>& entries);
    void AddUnknownEntry(const std::string& name);
    void AddUnknownClass(const DocumentFile::Slot& slot);
    void AddUnknownOf(const luk::Annotation& annotation);

    /// One that has been read and is not attached yet.
    struct Made {
        DocumentFile::Slot* slot;
        AnnotationPtr annotation;
        Remembered remembered;
        std::uint64_t templateIndexInFile;
        bool isRead;
    };

    /// @param templates of the file, see FindTemplates
    void MakeAnnotationsOf(std::size_t part, const std::vector<std::uint64_t>& templates);
    void MakeAnnotation(DocumentFile::Slot& slot, std::vector<Made>& made, const std::vector<std::uint64_t>& templates);
    std::vector<std::uint64_t> FindTemplates() const;
    void AttachMade(std::vector<Made>& made, bool isInOrder, std::size_t part);
    static std::vector<std::size_t> OrderOf(const std::vector<Made>& made, bool isThatOfFile);
    void AttachMade(Made& made, std::size_t part);
    void ResolveTemplate(SerializedContentElement& content, Remembered& remembered,
                         const std::vector<std::uint64_t>& templates) const;
    /// Puts an annotation that has its id path into a scene.
    bool Place(const AnnotationPtr& annotation, std::size_t part);
    void RemoveElements(const du::SymbolSet& idPaths, Scene2D& page) const;

    bool IsTaken(const du::Symbol& idPath);
    AnnotationPtr FindIndexed(const du::Symbol& idPath);
    void Index();
    std::size_t CountChanges() const;

    bool LookAt(std::size_t part, TemplateList& templates, const Look& look);
    bool LookAtSlot(const DocumentFile::Slot& slot, TemplateList& templates, const Look& look) const;
    bool LookAtMember(luk::Annotation& annotation, TemplateList& templates, const Look& look);
    void UseForeignOfFile(SymbolFiles& files) const;
    bool WriteDocument(std::vector<PackageEntry>& entries, SymbolFiles& files, std::string& error);

    du::SmartPtr<lukapp::illustration::IllMultiRootContainer> m_container;
    std::unordered_map<const luk::AnnoSet*, std::size_t> m_partBySet;
    du::SymbolMap<Remembered> m_remembered;
    du::SymbolMap<Indexed> m_index; ///< may be out of date: see FindIndexed
    std::size_t m_indexedChanges = 0;
    bool m_isIndexed = true; ///< false until somebody asks for the annotations that have been made from the file
    std::vector<PackageEntry> m_keptEntries;
};

// Opening and closing

bool Document::Content::Read(const std::string& path, std::string& error)
{
    std::vector<PackageEntry> entries;
    if (!m_setup.packages) {
        error = "there is no format of packages";
        return false;
    }
    if (!m_setup.packages->Read(path, entries, error)) {
        return false;
    }
    const auto document = std::find_if(entries.begin(), entries.end(), [](const PackageEntry& entry) {
        return entry.name == DocumentFile::kEntryName;
    });
    if (document == entries.end()) {
        error = "the package has no \"" + std::string(DocumentFile::kEntryName) + "\"";
        return false;
    }
    std::string xml = std::move(document->bytes);
    entries.erase(document);
    const auto takeProduct = [&](const dg::XmlElem& product) { m_product.Read(product, entries, m_problems); };
    if (!m_file.Read(std::move(xml), takeProduct, m_problems, error)) {
        return false;
    }
    TakeEntries(entries);
    return true;
}

void Document::Content::TakeEntries(std::vector<PackageEntry>& entries)
{
    const std::string temporaryFolder = TemporaryFolder();
    for (PackageEntry& entry : entries) {
        const std::string_view picture = SymbolFiles::NameOfEntry(entry.name);
        if (entry.name == kLibraryEntry) {
            m_libraryText = std::move(entry.bytes);
        } else if (picture.empty()) {
            AddUnknownEntry(entry.name);
            m_keptEntries.push_back(std::move(entry));
        } else if (!SymbolFiles::Unpack(temporaryFolder, picture, entry.bytes)) {
            m_problems.Add("the picture \"" + std::string(picture) + "\" could not be unpacked");
            m_hasAllFiles = false;
            m_keptEntries.push_back(std::move(entry));
        }
    }
}

void Document::Content::AddUnknownEntry(const std::string& name)
{
    if (!DocumentProduct::IsMeshEntry(name)) {
        Unknown unknown;
        unknown.kind = "entry";
        unknown.where = name;
        m_problems.AddUnknown(std::move(unknown));
    }
}

void Document::Content::Open()
{
    m_scene = m_product.GetScene();
    m_view = du::MakeCounted<luk::ShapeView>(m_file.camera);
    m_scene->AddView(m_view);
    AddPart(m_scene, nullptr);
    for (const DocumentFile::Part& page : m_file.pages) {
        const auto document = du::MakeCounted<luk::illustration2d::Document2D>(page.size.width, page.size.height);
        page.drawing->PutOn(document);
        const auto pageScene = du::MakeCounted<Scene2D>(document);
        AddPart(pageScene, pageScene);
    }
    if (const std::string folder = TemporaryFolder(); !folder.empty()) {
        m_product.GetStructure()->SetAnchor(du::MakeCounted<luk::Anchor>(du::Symbol(folder)));
    }
    m_container = du::MakeCounted<lukapp::illustration::IllMultiRootContainer>();
    m_container->SetPrimaryStructure(m_product.GetStructure());
    m_container->GetFileInfo()->SetNextStructureId(m_file.nextStructureId);
    if (const auto world = luk::World::GetWorld()) {
        world->SetContainer(m_container);
        world->SetTree(m_product.GetTree());
    }
    if (const auto app = lukapp::illustration::DrellinApp::GetDrellinApp()) {
        app->SetSbomTree(m_product.GetSbomTree());
    }
}

void Document::Content::Close()
{
    const auto world = luk::World::GetWorld();
    if (world && m_container) {
        world->GetUndoStack().Clear();
    }
    for (const Part& part : m_parts) {
        part.scene->Close();
    }
    if (world && m_container && world->GetContainer() == m_container) {
        world->SetContainer(nullptr);
        world->SetTree(nullptr);
    }
    const auto app = lukapp::illustration::DrellinApp::GetDrellinApp();
    if (app && app->GetSbomTree() == m_product.GetSbomTree()) {
        app->SetSbomTree(nullptr);
    }
}

bool Document::Content::SetProduct(const ProductModel& model, std::string& problem)
{
    const luk::ShapeScene::UpdateBatch batch(*m_scene);
    if (!m_product.SetProduct(model, problem)) {
        return false;
    }
    // Meshes of a product that could not be read.
    std::erase_if(m_keptEntries, [](const PackageEntry& entry) { return DocumentProduct::IsMeshEntry(entry.name); });
    return true;
}

void Document::Content::AddPart(const du::SmartPtr<luk::Scene>& scene, const du::SmartPtr<Scene2D>& page)
{
    m_partBySet.emplace(scene->GetAnnoSet().get(), m_parts.size());
    m_parts.push_back({scene, page});
}

std::size_t Document::Content::AddPage(const PageSize& size)
{
    DocumentFile::Part& page = m_file.pages.emplace_back();
    page.size = size;
    page.drawing = std::make_shared<PageDrawing>();
    const auto document = du::MakeCounted<luk::illustration2d::Document2D>(size.width, size.height);
    page.drawing->PutOn(document);
    const auto scene = du::MakeCounted<Scene2D>(document);
    AddPart(scene, scene);
    return m_parts.size() - 2;
}

// Annotations

void Document::Content::MakeAnnotations()
{
    const du::FoundFiles foundFiles;
    const std::vector<std::uint64_t> templates = FindTemplates();
    m_unknownAnnotations = 0;
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        MakeAnnotationsOf(i, templates);
    }
}

/// Indices in the session's collection, by position in the file; kNoTemplate for those that are not there.
std::vector<std::uint64_t> Document::Content::FindTemplates() const
{
    std::vector<std::uint64_t> found(m_file.templateIds.size(), kNoTemplate);
    const auto& collection = SymbolTemplateCollection::GetCollection();
    for (std::size_t i = 0; i < found.size() && collection; ++i) {
        if (const auto& id = m_file.templateIds[i]) {
            const std::set<std::uint64_t> indices = collection->AssociativeObjectIdToIndices(*id);
            found[i] = indices.empty() ? kNoTemplate : *indices.begin();
        }
    }
    return found;
}

void Document::Content::MakeAnnotationsOf(std::size_t part, const std::vector<std::uint64_t>& templates)
{
    DocumentFile::Part& ofFile = m_file.GetPart(part);
    m_isIndexed = m_isIndexed && ofFile.annotations.empty();
    // A few at a time where that is possible, so that what they are made from can go while it is at hand.
    constexpr std::size_t kFew = 32;
    const bool isInOrder = std::exchange(ofFile.attachOrder, {}).IsThatOfFile();
    std::vector<Made> made;
    for (DocumentFile::Slot& slot : ofFile.annotations) {
        MakeAnnotation(slot, made, templates);
        if (isInOrder && made.size() == kFew) {
            AttachMade(made, isInOrder, part);
        }
    }
    AttachMade(made, isInOrder, part);
}

void Document::Content::AttachMade(std::vector<Made>& made, bool isInOrder, std::size_t part)
{
    const du::SmartPtr<luk::AnnoSet> annoSet = m_parts[part].scene->GetAnnoSet();
    for (const Made& read : made) {
        if (annoSet && read.isRead) {
            annoSet->AddAnnotation(read.annotation); // in the order of the file, whatever the order of attaching
        }
    }
    for (const std::size_t index : OrderOf(made, isInOrder)) {
        AttachMade(made[index], part);
    }
    made.clear();
}

/// In what order they are attached. @param isThatOfFile when it is known to be that of the file
std::vector<std::size_t> Document::Content::OrderOf(const std::vector<Made>& made, bool isThatOfFile)
{
    if (isThatOfFile) {
        std::vector<std::size_t> order(made.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        return order;
    }
    AttachOrder order;
    for (const Made& read : made) {
        order.Add(*read.slot->content);
    }
    return order.Get();
}

void Document::Content::MakeAnnotation(DocumentFile::Slot& slot, std::vector<Made>& made,
                                       const std::vector<std::uint64_t>& templates)
{
    if (!slot.content) {
        return;
    }
    const std::string& classWord = slot.content->GetName().GetText();
    const AnnotationPtr annotation =
        m_setup.createAnnotation ? du::DynamicCast<luk::Annotation>(m_setup.createAnnotation(classWord)) : nullptr;
    if (!annotation) {
        ++m_unknownAnnotations;
        AddUnknownClass(slot);
        return;
    }
    Remembered remembered;
    remembered.attributes = ForeignAttributes(*slot.content);
    const std::uint64_t* const index = FindTemplateIndex(*slot.content);
    const std::uint64_t indexInFile = index ? *index : kNoTemplate;
    ResolveTemplate(*slot.content, remembered, templates);
    const bool isRead = annotation->InitializeFromSerializedContent(slot.content.get());
    annotation->SetIDPath(slot.idPath);
    annotation->SetCreatedFromFile(true);
    remembered.attributes.ForEach([&](const std::string& holder, const std::string& attributes) {
        m_problems.AddUnknown(attributes, {holder}, slot.idPath.GetText());
    });
    AddUnknownOf(*annotation);
    made.push_back({&slot, annotation, std::move(remembered), indexInFile, isRead});
}

void Document::Content::AddUnknownClass(const DocumentFile::Slot& slot)
{
    Unknown unknown;
    unknown.kind = "annotation";
    unknown.name = slot.content->GetName().GetText();
    unknown.where = slot.idPath.GetText();
    m_problems.AddUnknown(std::move(unknown));
}

void Document::Content::AddUnknownOf(const luk::Annotation& annotation)
{
    const SerializedContentElement* const content = annotation.GetUnknownContent();
    if (!content) {
        return;
    }
    const std::string& idPath = annotation.GetIDPath().GetText();
    const auto add = [&](std::string_view kind, const du::Symbol& name) {
        Unknown unknown;
        unknown.kind = kind;
        unknown.name = name.GetText();
        unknown.annotation = idPath;
        m_problems.AddUnknown(std::move(unknown));
    };
    for (const SerializedContentElement::Property& property : content->GetProperties()) {
        if (property.IsForeign()) {
            m_problems.AddUnknown(*property.foreign, {}, idPath);
        } else {
            add(SerializedContentXml::GetTypeName(property.value), property.key);
        }
    }
    for (std::size_t i = 0; i < content->GetChildCount(); ++i) {
        const SerializedContentElement& child = content->GetChild(i);
        if (child.IsForeign()) {
            m_problems.AddUnknown(child.GetForeign(), {}, idPath);
        } else {
            add("element", child.GetName());
        }
    }
}

void Document::Content::FindExpectedTypes()
{
    AnnotationPtr annotation;
    std::unordered_map<std::string, std::string> typesByKey;
    for (Unknown& unknown : m_problems.GetUnknown()) {
        if (unknown.annotation.empty() || !unknown.holder.empty() || unknown.kind == "element" || !unknown.isKept) {
            continue;
        }
        if (!annotation || annotation->GetIDPath().GetText() != unknown.annotation) {
            annotation = FindIndexed(du::Symbol::Find(unknown.annotation));
            typesByKey = annotation ? OwnTypesOf(*annotation) : std::unordered_map<std::string, std::string>();
        }
        if (const auto own = typesByKey.find(unknown.name); own != typesByKey.end()) {
            unknown.expected = own->second;
        }
    }
}

void Document::Content::AttachMade(Made& made, std::size_t part)
{
    DocumentFile::Slot& slot = *made.slot;
    if (!made.isRead || !Place(made.annotation, part)) {
        m_problems.Add("the annotation \"" + slot.idPath.GetText() +
                       "\" was refused by its class and is kept as it is");
        ++m_unknownAnnotations;
        if (std::uint64_t* const index = FindTemplateIndex(*slot.content)) {
            *index = made.templateIndexInFile;
        }
        return;
    }
    slot.content.reset();
    if (!made.remembered.attributes.IsEmpty() || made.remembered.hasTemplateId) {
        m_remembered.insert_or_assign(slot.idPath, std::move(made.remembered));
    }
}

void Document::Content::ResolveTemplate(SerializedContentElement& content, Remembered& remembered,
                                        const std::vector<std::uint64_t>& templates) const
{
    std::uint64_t* const index = FindTemplateIndex(content);
    if (!index) {
        return;
    }
    const std::uint64_t position = std::exchange(*index, kNoTemplate);
    if (position >= m_file.templateIds.size() || !m_file.templateIds[position]) {
        return;
    }
    *index = templates[position];
    if (*index == kNoTemplate) {
        remembered.templateId = *m_file.templateIds[position];
        remembered.hasTemplateId = true;
    }
}

bool Document::Content::Place(const AnnotationPtr& annotation, std::size_t number)
{
    const Part& part = m_parts[number];
    const du::SmartPtr<luk::AnnoSet> annoSet = part.scene->GetAnnoSet();
    if (!annoSet || (annotation->GetAnnoSet() != annoSet.get() && !annoSet->AddAnnotation(annotation))) {
        return false;
    }
    if (!annotation->AttachScene(part.scene)) {
        annoSet->RemoveAnnotationFromSet(annotation);
        return false;
    }
    if (part.page) {
        annotation->CreateAnnotation2D(part.page);
    }
    if (m_isIndexed) {
        m_index.insert_or_assign(annotation->GetIDPath(), Indexed{annotation.get(), number});
    }
    return true;
}

bool Document::Content::AddAnnotation(const AnnotationPtr& annotation, const luk::Scene* scene)
{
    const auto part = scene ? m_partBySet.find(scene->GetAnnoSet().get()) : m_partBySet.end();
    if (!annotation || part == m_partBySet.end() || annotation->GetAnnoSet() == part->first) {
        return false;
    }
    if (annotation->GetAnnoSet() && RemoveAnnotations({annotation}) == 0) {
        annotation->GetAnnoSet()->RemoveAnnotationFromSet(annotation);
    }
    if (IsTaken(annotation->GetIDPath())) {
        annotation->SetIDPath(m_file.MakeIdPath([this](const du::Symbol& idPath) { return IsTaken(idPath); }));
    }
    return Place(annotation, part->second);
}

std::size_t Document::Content::RemoveAnnotations(const std::vector<AnnotationPtr>& annotations)
{
    std::map<std::size_t, std::vector<AnnotationPtr>> byPart;
    for (const AnnotationPtr& annotation : annotations) {
        if (const std::size_t number = annotation ? PartOf(*annotation) : m_parts.size(); number < m_parts.size()) {
            byPart[number].push_back(annotation);
        }
    }
    std::size_t removed = 0;
    for (const auto& [number, members] : byPart) {
        const Part& part = m_parts[number];
        if (part.page) {
            RemoveElements(IdPathsOf(members), *part.page);
        }
        for (const AnnotationPtr& annotation : members) {
            m_index.erase(annotation->GetIDPath());
            removed += part.scene->GetAnnoSet()->RemoveAnnotationFromSet(annotation) ? 1U : 0U;
        }
    }
    return removed;
}

void Document::Content::RemoveElements(const du::SymbolSet& idPaths, Scene2D& page) const
{
    luk::illustration2d::Document2D& document = *page.GetDocument();
    for (const du::SmartPtr<luk::illustration2d::Node2D>& node : document.GetNodes()) {
        if (idPaths.count(node->GetIDPath()) != 0) {
            const auto* const stamp = dynamic_cast<const luk::illustration2d::Stamp2D*>(node.get());
            const bool isDrawn = dynamic_cast<const luk::illustration2d::Lines2D*>(node.get()) != nullptr;
            if (isDrawn || (stamp && stamp->IsDerivedFromSymbol())) {
                document.RemoveNode(node.get());
            }
        }
    }
}

std::vector<AnnotationPtr> Document::Content::MembersOf(std::size_t part) const
{
    const du::SmartPtr<luk::AnnoSet>& annoSet = m_parts[part].scene->GetAnnoSet();
    return annoSet ? annoSet->GetAnnotations() : std::vector<AnnotationPtr>();
}

std::size_t Document::Content::PartOf(const luk::Annotation& annotation) const
{
    const auto part = m_partBySet.find(annotation.GetAnnoSet());
    return part == m_partBySet.end() ? m_parts.size() : part->second;
}

bool Document::Content::IsTaken(const du::Symbol& idPath)
{
    return idPath.IsEmpty() || m_file.HasContentOf(idPath) || FindIndexed(idPath);
}

AnnotationPtr Document::Content::FindIndexed(const du::Symbol& idPath)
{
    if (!m_isIndexed) {
        Index();
    }
    const auto found = m_index.find(idPath);
    if (found == m_index.end()) {
        return nullptr;
    }
    // The annotation may be gone by now: it is not touched before its set has said that it is there.
    const auto [annotation, part] = found->second;
    const du::SmartPtr<luk::AnnoSet>& annoSet = m_parts[part].scene->GetAnnoSet();
    const bool isThere = annoSet && annoSet->Contains(annotation) && annotation->GetIDPath() == idPath;
    return isThere ? AnnotationPtr(annotation) : AnnotationPtr();
}

std::size_t Document::Content::CountChanges() const
{
    std::size_t changes = 0;
    for (const Part& part : m_parts) {
        changes += part.scene->IsClosed() ? 0 : part.scene->GetAnnoSet()->GetChangeCount();
    }
    return changes;
}

AnnotationPtr Document::Content::Find(const du::Symbol& idPath)
{
    AnnotationPtr found = FindIndexed(idPath);
    if (found || idPath.IsNull() || m_indexedChanges == CountChanges()) {
        return found;
    }
    // Undoing puts annotations back without asking the document.
    Index();
    return FindIndexed(idPath);
}

void Document::Content::Index()
{
    m_index.clear();
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        for (const AnnotationPtr& annotation : MembersOf(i)) {
            m_index.emplace(annotation->GetIDPath(), Indexed{annotation.get(), i});
        }
    }
    m_indexedChanges = CountChanges();
    m_isIndexed = true;
}

// Saving

bool Document::Content::LookAt(std::size_t part, TemplateList& templates, const Look& look)
{
    // What is kept follows the annotation of the file that it followed there, or the nearest before that is left.
    const std::vector<AnnotationPtr> members = MembersOf(part);
    const du::SymbolSet idPaths = IdPathsOf(members);
    du::SymbolMap<std::vector<const DocumentFile::Slot*>> keptBehind;
    du::Symbol before;
    for (const DocumentFile::Slot& slot : m_file.GetPart(part).annotations) {
        if (slot.content || !slot.foreign.empty()) {
            keptBehind[before].push_back(&slot);
        } else if (idPaths.count(slot.idPath) != 0) {
            before = slot.idPath;
        }
    }
    const auto lookBehind = [&](const du::Symbol& idPath) {
        const auto kept = keptBehind.extract(idPath);
        return kept.empty() || std::all_of(kept.mapped().begin(), kept.mapped().end(),
                                           [&](const auto* slot) { return LookAtSlot(*slot, templates, look); });
    };
    return lookBehind(du::Symbol()) && std::all_of(members.begin(), members.end(), [&](const AnnotationPtr& member) {
               return LookAtMember(*member, templates, look) && lookBehind(member->GetIDPath());
           });
}

bool Document::Content::LookAtSlot(const DocumentFile::Slot& slot, TemplateList& templates, const Look& look) const
{
    if (!slot.content) {
        return look(nullptr, slot.foreign);
    }
    SerializedContentElement content = *slot.content;
    if (std::uint64_t* const index = FindTemplateIndex(content)) {
        const bool isNamed = *index < m_file.templateIds.size() && m_file.templateIds[*index];
        *index = isNamed ? templates.PositionOf(*m_file.templateIds[*index]) : kNoTemplate;
    }
    return look(&content, {});
}

bool Document::Content::LookAtMember(luk::Annotation& annotation, TemplateList& templates, const Look& look)
{
    if (!annotation.HasContent()) {
        return true;
    }
    SerializedContentElement content = ContentOf(annotation);
    const auto remembered = m_remembered.find(annotation.GetIDPath());
    const bool isRemembered = remembered != m_remembered.end();
    std::uint64_t* const index = FindTemplateIndex(content);
    const auto& collection = SymbolTemplateCollection::GetCollection();
    if (const auto bound = index && collection ? collection->IndexToAssociativeObject(*index) : nullptr) {
        *index = templates.PositionOf(bound->GetId());
        if (isRemembered) {
            remembered->second.hasTemplateId = false;
        }
    } else if (isRemembered && remembered->second.hasTemplateId) {
        const std::uint64_t position = templates.PositionOf(remembered->second.templateId);
        if (index) {
            *index = position;
        } else {
            content.AddProperty(TemplateIndexKey(), position);
        }
    } else if (index) {
        *index = kNoTemplate;
    }
    if (isRemembered) {
        remembered->second.attributes.PutBack(content);
    }
    return look(&content, {});
}

std::vector<std::string> Document::Content::GetUsedTemplateIds()
{
    TemplateList templates;
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        LookAt(i, templates, [](const SerializedContentElement*, const std::string&) { return true; });
    }
    return templates.GetIds();
}

void Document::Content::UseForeignOfFile(SymbolFiles& files) const
{
    const auto use = [&files](const KeptXml& kept) {
        files.UseForeign(kept.GetAttributes());
        kept.ForEachElement([&files](const std::string& xml) { files.UseForeign(xml); });
    };
    for (const KeptXml* const kept : {&m_file.kept, &m_file.keptInCamera, &m_file.keptInPages, &m_file.keptInTemplates,
                                      &m_file.view.kept, &m_file.view.keptInList}) {
        use(*kept);
    }
    for (const DocumentFile::Part& page : m_file.pages) {
        use(page.kept);
        use(page.keptInList);
        page.drawing->ForEachKept(use);
    }
}

bool Document::Content::WriteDocument(std::vector<PackageEntry>& entries, SymbolFiles& files, std::string& error)
{
    std::string product;
    if (!m_product.Write(product, 1, entries, error)) {
        return false;
    }
    if (m_container) {
        m_file.nextStructureId = m_container->GetFileInfo()->PeekNextStructureId();
    }
    TemplateList templates;
    const auto writeAnnotations = [&](std::size_t part, std::string& out, int depth) {
        return LookAt(part, templates, [&](const SerializedContentElement* content, const std::string& foreign) {
            if (!content) {
                files.UseForeign(foreign);
                out.append(2 * static_cast<std::size_t>(depth), ' ').append(foreign).push_back('\n');
                return true;
            }
            files.Use(*content);
            if (!SerializedContentXml::Append(out, *content, depth)) {
                error = "the content of a \"" + content->GetName().GetText() + "\" is nested too deep to be read again";
                return false;
            }
            return true;
        });
    };
    UseForeignOfFile(files);
    const bool isWritten =
        m_file.Write(entries[0].bytes, product, m_view->GetCamera(), writeAnnotations, templates.GetIds());
    m_file.textSize = entries[0].bytes.size();
    return isWritten;
}

bool Document::Content::Save(const std::string& path, std::string& error)
{
    if (!m_setup.packages) {
        error = "there is no format of packages";
        return false;
    }
    std::vector<PackageEntry> entries(1);
    SymbolFiles files(TemporaryFolder());
    entries[0].name = DocumentFile::kEntryName;
    if (!WriteDocument(entries, files, error) || !files.Pack(entries, error)) {
        return false;
    }
    if (!m_libraryText.empty()) {
        entries.push_back({std::string(kLibraryEntry), m_libraryText});
    }
    std::unordered_set<std::string> names;
    for (const PackageEntry& entry : entries) {
        names.insert(entry.name);
    }
    for (const PackageEntry& kept : m_keptEntries) {
        if (names.insert(kept.name).second) {
            entries.push_back(kept);
        }
    }
    return m_setup.packages->Write(path, std::move(entries), error);
}

// The document

Document::Document(Setup setup) : m_content(std::make_unique<Content>(std::move(setup))) {}

Document::~Document() = default;

std::unique_ptr<Document> Document::Create(Setup setup)
{
    std::unique_ptr<Document> document(new Document(std::move(setup)));
    document->m_content->Open();
    return document;
}

std::unique_ptr<Document> Document::Open(const std::string& path, Setup setup, std::string& error)
{
    error.clear();
    std::unique_ptr<Document> document(new Document(std::move(setup)));
    if (!document->m_content->Read(path, error)) {
        return nullptr;
    }
    document->m_content->Open();
    return document;
}

const du::SmartPtr<luk::Scene>& Document::GetScene() const noexcept { return m_content->m_parts[0].scene; }

const du::SmartPtr<luk::ShapeScene>& Document::GetShapeScene() const noexcept { return m_content->m_scene; }

const du::SmartPtr<luk::Structure>& Document::GetStructure() const noexcept
{
    return m_content->m_product.GetStructure();
}

bool Document::SetProduct(const ProductModel& model, std::string& problem)
{
    return m_content->SetProduct(model, problem);
}

ServiceModel Document::GetService() const { return m_content->m_product.GetService(); }

bool Document::SetService(const ServiceModel& model, std::string& problem)
{
    return m_content->m_product.SetService(model, problem);
}

dg::Camera3D Document::GetCamera() const { return m_content->m_view->GetCamera(); }

void Document::SetCamera(const dg::Camera3D& camera) { m_content->m_view->SetCamera(camera); }

std::size_t Document::GetPageCount() const noexcept { return m_content->m_parts.size() - 1; }

const du::SmartPtr<Scene2D>& Document::GetPage(std::size_t index) const
{
    return m_content->m_parts.at(index + 1).page;
}

std::size_t Document::AddPage(const PageSize& size) { return m_content->AddPage(size); }

const std::string& Document::GetLibraryText() const noexcept { return m_content->m_libraryText; }

void Document::SetLibraryText(std::string text) { m_content->m_libraryText = std::move(text); }

std::vector<std::string> Document::GetUsedTemplateIds() const { return m_content->GetUsedTemplateIds(); }

void Document::ForEachUnmade(const LookAtSaved& look) const
{
    const auto& templateIds = m_content->m_file.templateIds;
    for (std::size_t i = 0; i < m_content->m_parts.size(); ++i) {
        for (const DocumentFile::Slot& slot : m_content->m_file.GetPart(i).annotations) {
            if (slot.content) {
                const std::uint64_t* const index = FindTemplateIndex(*slot.content);
                const bool isBound = index && *index < templateIds.size() && templateIds[*index];
                look(slot.idPath, *slot.content, isBound ? *templateIds[*index] : std::string());
            }
        }
    }
}

void Document::AttachAnnotations() { m_content->MakeAnnotations(); }

bool Document::AddAnnotation(const AnnotationPtr& annotation, const du::SmartPtr<luk::Scene>& scene)
{
    return m_content->AddAnnotation(annotation, scene.get());
}

bool Document::RemoveAnnotation(const AnnotationPtr& annotation) { return RemoveAnnotations({annotation}) == 1; }

std::size_t Document::RemoveAnnotations(const std::vector<AnnotationPtr>& annotations)
{
    return m_content->RemoveAnnotations(annotations);
}

std::vector<AnnotationPtr> Document::GetAnnotations() const
{
    std::vector<AnnotationPtr> all;
    for (std::size_t i = 0; i < m_content->m_parts.size(); ++i) {
        for (AnnotationPtr& annotation : m_content->MembersOf(i)) {
            all.push_back(std::move(annotation));
        }
    }
    return all;
}

AnnotationPtr Document::FindAnnotation(const std::string& idPath) const
{
    return m_content->Find(du::Symbol::Find(idPath));
}

int Document::GetPageOf(const luk::Annotation& annotation) const
{
    const std::size_t part = m_content->PartOf(annotation);
    return part < m_content->m_parts.size() ? static_cast<int>(part) - 1 : -1;
}

std::size_t Document::GetUnknownAnnotationCount() const noexcept { return m_content->m_unknownAnnotations; }

const std::vector<std::string>& Document::GetProblems() const noexcept { return m_content->m_problems.Get(); }

bool Document::HasAllFiles() const noexcept { return m_content->m_hasAllFiles; }

const std::vector<Document::Unknown>& Document::GetUnknown() const noexcept
{
    return m_content->m_problems.GetUnknown();
}

void Document::FindExpectedTypes() { m_content->FindExpectedTypes(); }

std::size_t Document::GetUnlistedUnknownCount() const noexcept { return m_content->m_problems.CountUnlisted(); }

bool Document::Save(const std::string& path, std::string& error) const
{
    error.clear();
    return m_content->Save(path, error);
}

} // namespace luhost
