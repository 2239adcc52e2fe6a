#include <luk/illustration/SymbolCollectionInformation.h>

namespace luk::illustration
{

SymbolCollectionInformation::SymbolCollectionInformation() = default;
SymbolCollectionInformation::SymbolCollectionInformation(const SymbolCollectionInformation&) = default;
SymbolCollectionInformation& SymbolCollectionInformation::operator=(const SymbolCollectionInformation&) = default;
SymbolCollectionInformation::~SymbolCollectionInformation() = default;

} // namespace luk::illustration
