#include "annotations3d/SymbolInfo.h"

namespace luannotations
{

SymbolInfo::SymbolInfo() = default;
SymbolInfo::SymbolInfo(const SymbolInfo&) = default;
SymbolInfo::SymbolInfo(SymbolInfo&&) noexcept = default;
SymbolInfo& SymbolInfo::operator=(const SymbolInfo&) = default;
SymbolInfo& SymbolInfo::operator=(SymbolInfo&&) noexcept = default;
SymbolInfo::~SymbolInfo() = default;

} // namespace luannotations
