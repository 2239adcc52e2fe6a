#include <luk/Markup.h>
#include <luk/MarkupShadow.h>

#include <utility>

namespace luk
{

Markup::~Markup() = default;

void Markup::SetVisibility(bool visible) noexcept
{
    if (std::exchange(m_visible, visible) != visible) {
        NotifyContentChanged();
    }
}

void Markup::SetPageNum(int pageNum) noexcept
{
    if (std::exchange(m_pageNum, pageNum) != pageNum) {
        NotifyContentChanged();
    }
}

void Markup::UpdateShadow() {}

du::SmartPtr<MarkupShadow> Markup::GetShadow() const { return nullptr; }

} // namespace luk
