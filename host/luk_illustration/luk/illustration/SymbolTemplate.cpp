#include <du/OrderedSet.h>
#include <luk/Annotation.h>
#include <luk/illustration/SymbolTemplate.h>

namespace luk::illustration
{

/// Annotations in the order in which they came.
class SymbolTemplate::Consumers : public du::OrderedSet<luk::Annotation*>
{
};

SymbolTemplate::SymbolTemplate(Origin origin) : AssociativeObject(origin) {}

SymbolTemplate::SymbolTemplate(const SymbolTemplate& other) : AssociativeObject(other) {}

SymbolTemplate& SymbolTemplate::operator=(const SymbolTemplate& other)
{
    AssociativeObject::operator=(other);
    return *this;
}

SymbolTemplate::~SymbolTemplate() = default;

AssociativeObjectCollection::Type SymbolTemplate::GetType() const
{
    return AssociativeObjectCollection::SYMBOL_TEMPLATE;
}

void SymbolTemplate::GetFigures(std::vector<du::SmartPtr<luk::Annotation>>& figures) const
{
    if (!m_consumers) {
        return;
    }
    m_consumers->ForEach([&figures](luk::Annotation* consumer) {
        // A consumer that nobody holds is under construction, and a handle of it would be its end.
        if (consumer->GetReferenceCount() > 0) {
            figures.emplace_back(consumer);
        }
    });
}

void SymbolTemplate::SaveConsumers(luk::SerializedContentElement& element) const
{
    std::vector<du::SmartPtr<luk::Annotation>> figures;
    GetFigures(figures);
    for (const du::SmartPtr<luk::Annotation>& figure : figures) {
        figure->Visit(element);
    }
}

bool SymbolTemplate::RegisterConsumer(luk::Annotation* consumer)
{
    if (!m_consumers) {
        m_consumers = std::make_shared<Consumers>();
    }
    return m_consumers->Add(consumer);
}

bool SymbolTemplate::UnregisterConsumer(luk::Annotation* consumer)
{
    return m_consumers && m_consumers->Take(consumer);
}

std::size_t SymbolTemplate::GetConsumerCount() const noexcept { return m_consumers ? m_consumers->GetCount() : 0; }

void SymbolTemplate::ShareConsumersOf(SymbolTemplate& predecessor)
{
    if (!predecessor.m_consumers) {
        predecessor.m_consumers = std::make_shared<Consumers>();
    }
    if (m_consumers && m_consumers != predecessor.m_consumers) {
        m_consumers->ForEach([&predecessor](luk::Annotation* consumer) { predecessor.m_consumers->Add(consumer); });
    }
    m_consumers = predecessor.m_consumers;
}

} // namespace luk::illustration
