#pragma once

#include <luk/illustration/AssociativeObject.h>

#include <cstddef>
#include <memory>

namespace luk::illustration
{

/// Entry of the symbol library, from which symbols are made.
///
/// Ownership: knows the symbols made from it, its consumers, by plain pointers: a symbol registers itself and takes
/// itself out at its end. An entry that takes the place of another in a collection shares that one's consumers, so that
/// a symbol may unregister at either.
///
/// Threads: consumers come and go on the host thread.
///
/// Copies: consumers belong to the object; neither a copy nor an assignment takes them over.
///
/// Cost: constant for each consumer that comes or goes; nothing is kept for an entry that never had one.
class LUHOST_API SymbolTemplate : public AssociativeObject
{
public:
    explicit SymbolTemplate(Origin origin);
    SymbolTemplate(const SymbolTemplate& other);
    SymbolTemplate& operator=(const SymbolTemplate& other);
    ~SymbolTemplate() override;

    AssociativeObjectCollection::Type GetType() const override;
    void GetFigures(std::vector<du::SmartPtr<luk::Annotation>>& figures) const override;

    /// Writes the content of every consumer on the element, in order of registration.
    virtual void SaveConsumers(luk::SerializedContentElement& element) const;

    /// May be called from the consumer's constructor: the pointer is kept and not used.
    /// @return false when it is registered already
    bool RegisterConsumer(luk::Annotation* consumer);
    bool UnregisterConsumer(luk::Annotation* consumer);
    std::size_t GetConsumerCount() const noexcept;

private:
    friend class AssociativeObjectCollection;
    class Consumers;

    void ShareConsumersOf(SymbolTemplate& predecessor);

    std::shared_ptr<Consumers> m_consumers;
};

} // namespace luk::illustration
