#include <luk/Observer.h>

namespace luk
{

Observer::~Observer() = default;

du::Symbol Observer::GetObjectClass() const { return du::Symbol("luk::Observer"); }

void Observer::OnObservableEvent(Observable&, int) {}

} // namespace luk
