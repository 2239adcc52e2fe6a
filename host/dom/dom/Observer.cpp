#include <dom/Observer.h>

namespace dom
{

Observer::~Observer() = default;

bool Observer::RequiresBeginEnd() const { return false; }

void Observer::OnDetached() {}

} // namespace dom
