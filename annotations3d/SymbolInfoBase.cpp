#include "annotations3d/SymbolInfoBase.h"

#include <utility>

namespace luannotations
{

// A moved-from std::string may hold anything, so that the source is emptied by hand.
SymbolInfoBase::SymbolInfoBase(SymbolInfoBase&& other) noexcept
    : title(std::exchange(other.title, {})), description(std::exchange(other.description, {})),
      showTooltipTitle(other.showTooltipTitle), showTooltipDescription(other.showTooltipDescription),
      fileName(std::move(other.fileName)), name(std::move(other.name)), id(std::move(other.id))
{
}

SymbolInfoBase& SymbolInfoBase::operator=(SymbolInfoBase&& other) noexcept
{
    title = std::exchange(other.title, {});
    description = std::exchange(other.description, {});
    showTooltipTitle = other.showTooltipTitle;
    showTooltipDescription = other.showTooltipDescription;
    fileName = std::move(other.fileName);
    name = std::move(other.name);
    id = std::move(other.id);
    return *this;
}

} // namespace luannotations
