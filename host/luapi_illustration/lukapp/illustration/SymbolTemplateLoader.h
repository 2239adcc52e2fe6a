#pragma once

#include <du/Symbol.h>
#include <luk/illustration/AssociativeObjectLoader.h>

#include <vector>

namespace luk::illustration
{
class CategoryInfo;
class SymbolTemplate;
} // namespace luk::illustration

namespace lukapp::illustration
{

/// Component that reads a symbol library.
class LUHOST_API SymbolTemplateLoader : public luk::illustration::AssociativeObjectLoader
{
public:
    SymbolTemplateLoader();
    SymbolTemplateLoader(const SymbolTemplateLoader&);
    SymbolTemplateLoader& operator=(const SymbolTemplateLoader&);
    ~SymbolTemplateLoader() override;

    /// Reads the library and appends its entries. @return whether the request was understood; an unreadable library
    /// gives no entries
    virtual bool GetTemplateList(const du::Symbol& libraryFile,
                                 std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>>& templates) = 0;

    /// Appends the categories of what was read.
    virtual void GetCategoryList(std::vector<du::SmartPtr<luk::illustration::CategoryInfo>>& categories) = 0;
};

} // namespace lukapp::illustration
