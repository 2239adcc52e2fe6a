#include <luk/AsyncEvent.h>

namespace luk
{

AsyncEvent::AsyncEvent(int kind, int flags) : m_kind(kind), m_flags(flags) {}

AsyncEvent::~AsyncEvent() = default;

du::Symbol AsyncEvent::GetObjectClass() const { return du::Symbol("luk::AsyncEvent"); }

} // namespace luk
