#include <luk/Annotation.h>
#include <luk/illustration/SymbolTemplate.h>

#include <list>
#include <unordered_map>

namespace luk::illustration
{

/// Annotations in the order in which they came.
class SymbolTemplate::Consumers
{
public:
    bool Add(luk::Annotation* consumer)
    {
        std::list<luk::Annotation*> one{consumer}; // first, so that nothing is left when there is no memory
        const bool isNew = m_byAddress.try_emplace(consumer, one.begin()).second;
        if (isNew) {
            m_inOrder.splice(m_inOrder.end(), one);
        }
        return isNew;
    }

    bool Remove(luk::Annotation* consumer)
    {
        const auto entry = m_byAddress.find(consumer);
        if (entry == m_byAddress.end()) {
            return false;
        }
        m_inOrder.erase(entry->second);
        m_byAddress.erase(entry);
        return true;
    }

    const std::list<luk::Annotation*>& InOrder() const noexcept { return m_inOrder; }

private:
    std::list<luk::Annotation*> m_inOrder;
    std::unordered_map<luk::Annotation*, std::list<luk::Annotation*>::iterator> m_byAddress;
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
    for (luk::Annotation* const consumer : m_consumers->InOrder()) {
        // A consumer that nobody holds is under construction, and a handle of it would be its end.
        if (consumer->GetReferenceCount() > 0) {
            figures.emplace_back(consumer);
        }
    }
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
    return consumer && m_consumers->Add(consumer);
}

bool SymbolTemplate::UnregisterConsumer(luk::Annotation* consumer)
{
    return m_consumers && m_consumers->Remove(consumer);
}

std::size_t SymbolTemplate::GetConsumerCount() const noexcept
{
    return m_consumers ? m_consumers->InOrder().size() : 0;
}

void SymbolTemplate::ShareConsumersOf(SymbolTemplate& predecessor)
{
    if (!predecessor.m_consumers) {
        predecessor.m_consumers = std::make_shared<Consumers>();
    }
    if (m_consumers && m_consumers != predecessor.m_consumers) {
        for (luk::Annotation* const consumer : m_consumers->InOrder()) {
            predecessor.m_consumers->Add(consumer);
        }
    }
    m_consumers = predecessor.m_consumers;
}

} // namespace luk::illustration
