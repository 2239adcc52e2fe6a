#pragma once

#include "plugin/Export.h"
#include "xml/TextSet.h"

#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <du/TextHash.h>
#include <luk/illustration/CollectionItem.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace dg
{
class XmlElem;
}

namespace lusymbols
{

class PartslibraryCategoryItem;
class PartslibraryItem;

/// Reads symbol library documents (docs/library-document.md) into catalog entries.
///
/// Use: the component ("load", "template", "symbol"). Each GetTemplateList reads one document and adds to the lists;
/// nothing is cleared in between. Categories of every document are kept; of two entries with one name only the first is.
///
/// Ownership: counted. The entries are shared between the loader and those who asked for the lists.
///
/// Threads and locks: one thread at a time; no lock. The entries of a large document are read on several threads, all of
/// which have ended when the call returns.
///
/// Errors: none are reported, and nothing throws but the allocator. A document that cannot be read leaves everything as
/// it was; an element that is not known is skipped, a number that is none reads as 0. Whoever must know uses
/// `lusym library check`.
///
/// Cost: linear in the document and in the lists. Of a large file neither the text nor the tree is in memory as a whole,
/// but where it cannot be cut between entries.
class LUSYMBOLS_API SymbolTemplateLoader : public lukapp::illustration::SymbolTemplateLoader
{
public:
    using Origin = luk::illustration::CollectionItem::Origin;

    SymbolTemplateLoader();
    SymbolTemplateLoader(const SymbolTemplateLoader& other);
    SymbolTemplateLoader& operator=(const SymbolTemplateLoader& other);
    ~SymbolTemplateLoader() override;

    du::SmartPtr<luk::illustration::CollectionInformation> GetCollectionInformation() override;

    /// Reads the library file and appends every entry known so far to `out`. Whether the file is the user's, the
    /// delivered or the shared library follows from its path; any other file counts as delivered.
    /// @return true
    bool GetTemplateList(const du::Symbol& libraryFile,
                         std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>>& out) override;

    /// Appends every category known so far.
    void GetCategoryList(std::vector<du::SmartPtr<luk::illustration::CategoryInfo>>& out) override;

    /// Reads one document. `source` is a path, or the document itself when it begins with "<?xml ".
    void ParseFromFile(const std::string& source, Origin origin);

    /// Reads a document's root: its name must be right and, but for a shared library, it must have exactly five children.
    void CreateListFromXml(dg::XmlElem* root, Origin origin);
    void CreateCategoryListFromXml(dg::XmlElem* categories, Origin origin);
    void CreateOlListFromXml(dg::XmlElem* shapes, Origin origin);
    void CreateImageListFromXml(dg::XmlElem* symbols, Origin origin);

    /// Entries wait here until GetTemplateList merges them into the template list.
    void AddItem(const du::SmartPtr<PartslibraryItem>& item);
    void AddCategoryItem(const du::SmartPtr<PartslibraryCategoryItem>& category);

    const std::string& GetUnits() const { return m_units; }
    void SetUnits(const std::string& units) { m_units = units; }
    const std::string& GetInformation() const { return m_information; }
    void SetInformation(const std::string& information) { m_information = information; }

private:
    using Entries = std::vector<du::SmartPtr<PartslibraryItem>>;

    /// Reads a file in pieces, large ones on several threads.
    /// @return false, with nothing done, when it has to be parsed whole
    bool ReadInPieces(const std::string& path, Origin origin);
    /// @param pieces entries that were read already and stand where the markers are
    void ReadSections(const dg::XmlElem& root, Origin origin, std::span<Entries> pieces);
    void ReadEntries(const dg::XmlElem& section, std::string_view name, Origin origin, std::span<Entries>& pieces);
    void AddPartslibraryList();
    void AddUniqueNames(std::span<du::SmartPtr<PartslibraryItem>> items, TextSet& names);
    void GiveUniqueId(PartslibraryItem& item, const TextSet::Key& id);

    std::string m_units;
    std::string m_information;
    std::vector<du::SmartPtr<PartslibraryItem>> m_pendingItems;
    std::vector<du::SmartPtr<PartslibraryCategoryItem>> m_categories;
    std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>> m_templates;
    TextSet m_ids;
    /// Where the search for a free suffix goes on, for each id that was met more than once.
    std::unordered_map<std::string, unsigned long, du::TextHash> m_nextSuffixById;
};

} // namespace lusymbols
