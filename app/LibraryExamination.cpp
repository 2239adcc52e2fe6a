#include "LibraryExamination.h"

#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "DocumentBytes.h"
#include "ElementExaminer.h"
#include "LibraryUrl.h"
#include "MessageKeyExaminer.h"
#include "Printable.h"
#include "xml/LibraryFormat.h"

#include <dg/XmlElem.h>
#include <du/FileSpec.h>
#include <du/Localizer.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace lusym
{

namespace
{

namespace format = lusymbols::format;

using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryItem;
using lusymbols::PartslibraryOlItem;
using Origin = ExaminationOptions::Origin;
using XmlOwner = std::unique_ptr<dg::XmlElem, dg::XmlFreer>;

/// One entry of the document beside what the loader made of it.
struct Entry {
    dg::XmlElem element;
    bool isShape = false;
    std::span<const ChildRule> rules;
    ElementExaminer::LastChildren children;
    /// Null when the loader dropped the entry.
    const PartslibraryItem* item = nullptr;

    dg::XmlElem Child(std::string_view name) const
    {
        const auto rule = std::ranges::find(rules, name, &ChildRule::name);
        return children[static_cast<std::size_t>(rule - rules.begin())];
    }
};

class Examiner
{
public:
    explicit Examiner(const ExaminationOptions& options)
        : m_options(options), m_keys(options.messages), m_elements(m_result.findings, m_keys)
    {
        m_result.loader = options.loader ? options.loader : du::MakeCounted<lusymbols::SymbolTemplateLoader>();
    }

    Examination Run(std::string text)
    {
        if (ExamineBytes(text, m_result.findings)) {
            CutCarriageReturns(text);
            ExamineText(text);
        }
        std::ranges::stable_sort(m_result.findings, {}, &Finding::line);
        return std::move(m_result);
    }

private:
    void ExamineText(std::string& text)
    {
        dg::XmlParseError error;
        const XmlOwner root(dg::ParseXml(text, true, &error));
        if (!root) {
            AddParseError(error);
            return;
        }
        ExaminePassedOver(text, m_result.findings);
        text = std::string();
        if (root->GetName() != format::kRoot) {
            m_elements.Add(FindingCode::WrongRoot, *root,
                           "the top-level element is " + Quote(root->GetName()) + " instead of " +
                               Quote(format::kRoot) + ", so that the loader reads nothing",
                           "Is this a symbol library?");
            return;
        }
        m_elements.ExamineAttributes(*root, {});
        m_elements.ExamineStrayText(*root);
        m_result.isRead = ExamineSectionCount(*root);
        m_result.hasContent = true;
        Load(*root);
        ExamineCategories(*root);
        ExamineSections(*root);
        m_keys.Finish(m_result.findings);
    }

    void AddParseError(const dg::XmlParseError& error)
    {
        const bool isTooDeep = error.reason.starts_with("nested deeper");
        std::string text = Printable(error.reason);
        if (error.column != 0) {
            text += " (column " + std::to_string(error.column) + ")";
        }
        m_result.findings.push_back({isTooDeep ? FindingCode::TooDeep : FindingCode::NotWellFormed, error.line,
                                     error.column, std::move(text),
                                     "Nothing of the document is read until this is mended."});
    }

    /// @return whether the loader accepts the number of sections
    bool ExamineSectionCount(const dg::XmlElem& root)
    {
        std::array<std::size_t, format::kSectionCount> counts{};
        std::size_t total = 0;
        std::string faults;
        const auto tell = [&](const std::string& fault) { faults.append(faults.empty() ? "" : ", ").append(fault); };
        constexpr std::size_t kMostTold = 5;
        for (dg::XmlElem child = root.FirstChild(); child; child = child.NextSibling()) {
            const auto known = std::ranges::find(SectionNames(), child.GetName());
            ++total;
            if (known != SectionNames().end()) {
                ++counts[static_cast<std::size_t>(known - SectionNames().begin())];
            } else if (total <= kMostTold + format::kSectionCount) {
                tell(Quote(child.GetName()) + " is none of them");
            }
        }
        const bool isAccepted = total == format::kSectionCount || m_options.origin == Origin::ORIGIN_SHARED;
        for (std::size_t index = 0; index < counts.size(); ++index) {
            const std::string name = Quote(SectionNames()[index]);
            if (counts[index] == 0) {
                tell(name + " is missing");
                AddMissingSection(root, name, isAccepted);
            } else if (counts[index] > 1) {
                tell(name + " stands " + std::to_string(counts[index]) + " times");
            }
        }
        if (!isAccepted) {
            m_elements.Add(FindingCode::WrongSectionCount, root,
                           "the root has " + CountOf(total, "child", "children") +
                               " instead of exactly five, so that the loader reads nothing: " + faults,
                           "Each of the five sections has to stand once, an empty one too.");
        }
        return isAccepted;
    }

    /// A library that is read as shared may do without sections.
    void AddMissingSection(const dg::XmlElem& root, const std::string& name, bool isAccepted)
    {
        if (isAccepted && m_options.origin != Origin::ORIGIN_SHARED) {
            m_elements.Add(FindingCode::MissingSection, root, "the section " + name + " is missing",
                           "Add it, empty if need be.");
        }
    }

    void Load(dg::XmlElem& root)
    {
        lusymbols::SymbolTemplateLoader& loader = *m_result.loader;
        if (m_result.isRead) {
            loader.CreateListFromXml(&root, m_options.origin);
        } else {
            LoadSections(root);
        }
        loader.GetTemplateList(du::Symbol(), m_result.templates);
        loader.GetCategoryList(m_result.categories);
        m_result.kept.resize(m_result.templates.size());
    }

    /// What the loader would read if only the number of sections were right.
    void LoadSections(dg::XmlElem& root)
    {
        lusymbols::SymbolTemplateLoader& loader = *m_result.loader;
        for (dg::XmlElem section = root.FirstChild(); section; section = section.NextSibling()) {
            const std::string_view name = section.GetName();
            if (name == format::kUnits) {
                loader.SetUnits(section.GetText());
            } else if (name == format::kInformation) {
                loader.SetInformation(section.GetText());
            } else if (name == format::kCategories) {
                loader.CreateCategoryListFromXml(&section, m_options.origin);
            } else if (name == format::kShapes) {
                loader.CreateOlListFromXml(&section, m_options.origin);
            } else if (name == format::kSymbols) {
                loader.CreateImageListFromXml(&section, m_options.origin);
            }
        }
    }

    /// Before the entries, since these may come first and name a category that follows.
    void ExamineCategories(const dg::XmlElem& root)
    {
        for (dg::XmlElem section = root.FirstChild(); section; section = section.NextSibling()) {
            if (section.GetName() != format::kCategories) {
                continue;
            }
            for (dg::XmlElem category = section.FirstChild(); category; category = category.NextSibling()) {
                if (category.GetName() == format::kCategory) {
                    ExamineCategory(category);
                } else {
                    m_elements.AddUnknown(category, format::kCategories, std::span(&format::kCategory, 1));
                }
            }
        }
    }

    void ExamineCategory(const dg::XmlElem& category)
    {
        m_elements.ExamineAttributes(category, CategoryAttributes());
        m_elements.ExamineStrayText(category);
        const auto children = m_elements.ExamineChildren(category, CategoryChildren());
        const std::string_view id = category.GetAttribute(format::kId);
        if (id.empty()) {
            m_elements.Add(FindingCode::MissingId, category, "the category has no id, so that no entry can name it",
                           "Give it one.");
        }
        if (!children[0] || (m_elements.TextOf(children[0]).empty() && !children[0].HasAttribute(format::kLocId))) {
            m_elements.Add(FindingCode::MissingName, category,
                           id.empty() ? std::string("the category has no name")
                                      : "the category " + Quote(id) + " has no name",
                           "Give it one.");
        }
        const auto [first, isNew] = m_categories.try_emplace(id, category);
        if (!isNew && !id.empty()) {
            m_elements.Add(FindingCode::RepeatedCategoryId, category,
                           "the id " + Quote(id) + " belongs to the category at line " +
                               std::to_string(first->second.GetLine()) +
                               " already; the gallery shows the entries in both",
                           "Give it another id.");
        }
    }

    void ExamineSections(const dg::XmlElem& root)
    {
        std::array<dg::XmlElem, format::kSectionCount> seen{};
        for (dg::XmlElem section = root.FirstChild(); section; section = section.NextSibling()) {
            const auto known = std::ranges::find(SectionNames(), section.GetName());
            if (known == SectionNames().end()) {
                m_elements.AddUnknown(section, format::kRoot, SectionNames());
                continue;
            }
            m_elements.ExamineAttributes(section, {});
            dg::XmlElem& earlier = seen[static_cast<std::size_t>(known - SectionNames().begin())];
            ExamineSection(section, *known, earlier);
            earlier = section;
        }
    }

    void ExamineSection(const dg::XmlElem& section, std::string_view name, const dg::XmlElem& earlier)
    {
        if (name == format::kShapes) {
            ExamineEntries(section, format::kShape, true);
        } else if (name == format::kSymbols) {
            ExamineEntries(section, format::kSymbol, false);
        } else if (name != format::kCategories) {
            for (dg::XmlElem child = section.FirstChild(); child; child = child.NextSibling()) {
                m_elements.AddUnknown(child, name, {});
            }
            m_elements.ExamineText(section);
            if (earlier) {
                m_elements.Add(FindingCode::RepeatedChild, section,
                               Quote(name) + " stands here again and overwrites the one at line " +
                                   std::to_string(earlier.GetLine()),
                               "Keep one of them.");
            }
            return;
        }
        m_elements.ExamineStrayText(section);
    }

    void ExamineEntries(const dg::XmlElem& section, std::string_view name, bool isShape)
    {
        const std::string_view known[] = {name};
        for (dg::XmlElem element = section.FirstChild(); element; element = element.NextSibling()) {
            if (element.GetName() == name) {
                ExamineEntry(element, isShape);
            } else {
                m_elements.AddUnknown(element, section.GetName(), known);
            }
        }
    }

    void ExamineEntry(const dg::XmlElem& element, bool isShape)
    {
        ++m_result.entryCount;
        m_elements.ExamineAttributes(element, isShape ? ShapeAttributes() : SymbolAttributes());
        m_elements.ExamineStrayText(element);
        Entry entry{element, isShape, isShape ? ShapeChildren() : SymbolChildren(), {}, nullptr};
        entry.children = m_elements.ExamineChildren(element, entry.rules);
        ExamineName(entry);
        ExamineCategoryId(element);
        if (entry.item) {
            ExamineId(entry);
            ExamineTitle(entry);
            ExamineFiles(entry);
        }
    }

    std::string ReadName(const dg::XmlElem& name)
    {
        if (!name) {
            return std::string();
        }
        return name.HasAttribute(format::kLocId) ? m_messages.LocalizeMessage(name.GetAttribute(format::kLocId))
                                                 : name.GetText();
    }

    /// The loader kept the first entry of each name, in this order: so the next one that it kept is this one.
    void ExamineName(Entry& entry)
    {
        const std::string name = ReadName(entry.Child(format::kName));
        if (name.empty()) {
            m_elements.Add(FindingCode::MissingName, entry.element, "the entry has no name", "Give it one.");
        }
        const auto first = m_names.find(name);
        if (first != m_names.end()) {
            AddDropped(entry.element, name, first->second);
        } else if (m_keptCount < m_result.templates.size()) {
            entry.item = dynamic_cast<const PartslibraryItem*>(m_result.templates[m_keptCount].get());
            m_names.emplace(entry.item->GetName(), entry.element);
            KeptEntry& kept = m_result.kept[m_keptCount++];
            kept.line = entry.element.GetLine();
            if (const dg::XmlElem tooltip = entry.Child(format::kTooltip)) {
                kept.tooltip = tooltip.GetText();
            }
        }
    }

    void AddDropped(const dg::XmlElem& element, const std::string& name, const dg::XmlElem& first)
    {
        const std::size_t line = first.GetLine();
        m_result.dropped.push_back({element.GetLine(), std::string(element.GetAttribute(format::kId)), name, line});
        m_elements.Add(FindingCode::NameTaken, element,
                       "the name " + Quote(name) + " is already taken by the entry at line " + std::to_string(line) +
                           "; the loader drops this entry",
                       "Give it another name.");
    }

    void ExamineId(const Entry& entry)
    {
        const std::string_view id = entry.element.GetAttribute(format::kId);
        m_result.kept[m_keptCount - 1].writtenId = id;
        if (id.empty()) {
            m_elements.Add(FindingCode::MissingId, entry.element,
                           "the entry " + Quote(entry.item->GetName()) +
                               " has no id, so that no symbol can refer to it",
                           "Give it one.");
        }
        const auto [first, isNew] = m_ids.try_emplace(id, entry.element);
        if (entry.item->GetId() != id) {
            const std::string owner = isNew ? std::string("a renamed entry before it")
                                            : "the entry at line " + std::to_string(first->second.GetLine());
            m_elements.Add(FindingCode::RepeatedId, entry.element,
                           "the id " + Quote(id) + " belongs to " + owner + " already; the loader calls this entry " +
                               Quote(entry.item->GetId()),
                           "Give it another id.");
        }
    }

    void ExamineCategoryId(const dg::XmlElem& element)
    {
        const std::string_view id = element.GetAttribute(format::kCategoryId);
        if (!m_categories.contains(id)) {
            m_elements.Add(FindingCode::UnknownCategory, element,
                           id.empty() ? std::string("the entry names no category")
                                      : "no category of this document has the id " + Quote(id),
                           "Correct \"categoryId\" or add the category, unless another library has it.");
        }
    }

    void ExamineTitle(const Entry& entry)
    {
        const dg::XmlElem title = entry.Child(format::kTitle);
        if (ReadName(title).empty()) {
            m_elements.Add(FindingCode::TitleFallsBack, title ? title : entry.element,
                           std::string("the title is ") + (title ? "empty" : "missing") + ", so that it becomes " +
                               Quote(entry.item->GetTitle()),
                           "Write one if that is not meant.");
        }
    }

    void ExamineFiles(const Entry& entry)
    {
        const dg::XmlElem thumbnail = entry.Child(format::kGalleryThumbnail);
        const dg::XmlElem file = entry.Child(entry.isShape ? format::kGraphic : format::kImage);
        std::string_view large;
        if (entry.isShape) {
            const auto& shape = static_cast<const PartslibraryOlItem&>(*entry.item);
            ExamineUrl(entry, thumbnail, format::kGalleryThumbnail, shape.GetOlGalleryThumbnailUrl());
            ExamineUrl(entry, file, format::kGraphic, shape.GetOlUrl());
            large = shape.GetOlDlgThumbnailUrl();
        } else {
            const auto& image = static_cast<const PartslibraryImageItem&>(*entry.item);
            ExamineUrl(entry, thumbnail, format::kGalleryThumbnail, image.GetImageGalleryThumbnailUrl());
            ExamineUrl(entry, file, format::kImage, image.GetImageUrl());
            large = image.GetImageDlgThumbnailUrl();
        }
        const std::string_view small = thumbnail ? thumbnail.GetAttribute(format::kUrl) : std::string_view();
        // Without the size in its name the large thumbnail is the small one, which was looked for already.
        if (!small.empty() && small.find(format::kGalleryThumbnailSize) != std::string_view::npos) {
            ExamineFile(thumbnail, "the large thumbnail", std::string(large));
        }
    }

    void ExamineUrl(const Entry& entry, const dg::XmlElem& element, std::string_view name, const std::string& resolved)
    {
        const std::string_view url = element ? element.GetAttribute(format::kUrl) : std::string_view();
        if (url.empty()) {
            m_elements.Add(FindingCode::MissingUrl, element ? element : entry.element,
                           "the entry has no url for " + Quote(name), "Name the file.");
        }
        if (!element) {
            return;
        }
        if (du::FileSpec::IsAbsolute(url)) {
            m_elements.Add(FindingCode::AbsoluteUrl, element,
                           "the url " + Quote(url) + " is absolute, so that the library works at one place only",
                           "Put the file into the library's folder and name it from the root on.");
        }
        const std::string written = WrittenUrl(resolved, entry.isShape, m_options.origin, m_options.exportAsStandard);
        if (written != url) {
            // An empty url resolves to the root itself.
            m_elements.Add(FindingCode::UrlWillChange, element,
                           url.empty() ? "the empty url would be written as the folder " + Quote(written)
                                       : "the url " + Quote(url) + " would be written as " + Quote(written),
                           url.empty() ? "Name the file."
                                       : "Move the file there, or bring it along when the library is written.");
        }
        if (!url.empty()) {
            ExamineFile(element, "the file", resolved);
        }
    }

    void ExamineFile(const dg::XmlElem& element, std::string_view what, const std::string& path)
    {
        // Only local files are opened; what a scheme leads to is not looked for.
        if (!m_options.isFileReadable || path.find("://") != std::string::npos) {
            return;
        }
        const auto [known, isNew] = m_files.try_emplace(path, false);
        if (isNew) {
            known->second = m_options.isFileReadable(path);
        }
        if (!known->second) {
            m_elements.Add(FindingCode::FileMissing, element,
                           std::string(what) + " " + Quote(path) + " is missing or cannot be read",
                           "Put it there, or correct the url.");
        }
    }

    const ExaminationOptions& m_options;
    Examination m_result;
    MessageKeyExaminer m_keys;
    ElementExaminer m_elements;
    const du::Localizer m_messages{format::kMessageTable};
    /// Views into the tree and into the entries that were kept.
    std::unordered_map<std::string_view, dg::XmlElem> m_categories;
    std::unordered_map<std::string_view, dg::XmlElem> m_names;
    std::unordered_map<std::string_view, dg::XmlElem> m_ids;
    std::unordered_map<std::string, bool> m_files;
    std::size_t m_keptCount = 0;
};

} // namespace

Examination ExamineLibrary(std::string text, const ExaminationOptions& options)
{
    return Examiner(options).Run(std::move(text));
}

} // namespace lusym
