#include <luk/illustration/AssociativeObjectObserver.h>

namespace luk::illustration
{

AssociativeObjectObserver::AssociativeObjectObserver(int interest) : m_interest(interest) {}

AssociativeObjectObserver::~AssociativeObjectObserver() = default;

void AssociativeObjectObserver::OnCollectionLoadedFromStandard() {}

void AssociativeObjectObserver::OnAssociativeObjectChanged(const du::SmartPtr<AssociativeObject>&) {}

} // namespace luk::illustration
