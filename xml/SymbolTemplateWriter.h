#pragma once

#include "plugin/Export.h"

#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/illustration/AssociativeObjectSaver.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace luk::illustration
{
class CategoryInfo;
class CollectionItem;
class SequencerTag;
class SymbolTemplate;
} // namespace luk::illustration

namespace lusymbols
{

class PartslibraryCategoryItem;
class PartslibraryImageItem;
class PartslibraryItem;
class PartslibraryOlItem;

/// Saves a catalog as a symbol library document (docs/library-document.md).
///
/// Use: SetCollectionInformation, then ToXml. Shared entries are never written: they belong to another library's file.
/// Absolute URLs become library-relative again, by the folder of the entry's origin and the file's name.
///
/// Ownership: counted. The entries handed to ToXml are kept until the writer goes.
///
/// Threads and locks: one thread at a time; no lock.
///
/// Errors: none are reported. A file that cannot be opened is not written. The text is complete before the file is
/// truncated; a caller that must know whether all of it arrived writes beside the target and looks at the end of it.
///
/// Cost: linear; one pass over the entries for each section.
class LUSYMBOLS_API SymbolTemplateWriter : public luk::illustration::AssociativeObjectSaver
{
public:
    /// @param exportAsStandard writes texts instead of message keys, and names the files of all entries that have absolute
    ///        URLs in the folder of the delivered library
    explicit SymbolTemplateWriter(bool exportAsStandard);
    SymbolTemplateWriter(const SymbolTemplateWriter& other);
    SymbolTemplateWriter& operator=(const SymbolTemplateWriter& other);
    ~SymbolTemplateWriter() override;

    /// Takes units and information from a SymbolCollectionInformation; any other object changes nothing.
    void SetCollectionInformation(const du::SmartPtr<luk::illustration::CollectionInformation>& information) override;

    /// Writes the file. Null handles and templates of other kinds are skipped.
    void ToXml(const du::Symbol& filePath, std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>>&& templates,
               const std::vector<du::SmartPtr<luk::illustration::CategoryInfo>>& categories);

private:
    void WritePartslibraryListToXML(const std::string& path, bool flag);

    std::string WritePartslibraryUnits() const;
    std::string WritePartslibraryInformation() const;
    std::string WritePartslibraryCategories(bool flag) const;
    /// What one part of the template list adds to the section: the first part opens it, the last one closes it.
    std::string WritePartslibraryOls(bool flag, std::size_t begin, std::size_t end) const;
    std::string WritePartslibraryImages(bool flag, std::size_t begin, std::size_t end) const;

    bool m_exportAsStandard;
    std::string m_units;
    std::string m_information;
    std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>> m_templates;
    std::vector<du::SmartPtr<luk::illustration::CategoryInfo>> m_categories;
};

} // namespace lusymbols
