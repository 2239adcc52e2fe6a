#include <lukapp/illustration/SymbolTemplateLoader.h>

namespace lukapp::illustration
{

SymbolTemplateLoader::SymbolTemplateLoader() = default;
SymbolTemplateLoader::SymbolTemplateLoader(const SymbolTemplateLoader&) = default;
SymbolTemplateLoader& SymbolTemplateLoader::operator=(const SymbolTemplateLoader&) = default;
SymbolTemplateLoader::~SymbolTemplateLoader() = default;

} // namespace lukapp::illustration
