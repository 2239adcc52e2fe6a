#include <luk/Observer.h>

namespace luk
{

Observer::~Observer() = default;

void Observer::OnObservableEvent(Observable&, int) {}

} // namespace luk
