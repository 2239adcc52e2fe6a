#include <du/OrderedSet.h>
#include <luk/MarkupHolder.h>

namespace luk
{

class MarkupHolder::Content : public du::OrderedSet<du::SmartPtr<Markup>>
{
};

MarkupHolder::MarkupHolder() : m_content(std::make_unique<Content>()) {}

MarkupHolder::~MarkupHolder() = default;

bool MarkupHolder::RemoveMarkup(const du::SmartPtr<Markup>& markup)
{
    const du::SmartPtr<Markup> removed = m_content->Take(markup.get());
    if (!removed) {
        return false;
    }
    OnMarkupRemoved();
    return true;
}

bool MarkupHolder::HoldsMarkup(const Markup* markup) const { return m_content->Contains(markup); }

std::size_t MarkupHolder::GetMarkupCount() const noexcept { return m_content->GetCount(); }

std::vector<du::SmartPtr<Markup>> MarkupHolder::GetMarkups() const { return m_content->GetAll(); }

void MarkupHolder::OnMarkupRemoved() {}

bool MarkupHolder::HoldMarkup(const du::SmartPtr<Markup>& markup) { return m_content->Add(markup); }

void MarkupHolder::RemoveAllMarkups() { m_content->TakeAll(); }

} // namespace luk
