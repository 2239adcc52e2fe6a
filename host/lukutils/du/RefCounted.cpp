#include <du/RefCounted.h>

namespace du
{

std::atomic<std::size_t> RefCounted::s_liveObjects{0};

RefCounted::~RefCounted()
{
    s_liveObjects.fetch_sub(1, std::memory_order_relaxed);
    if (ReferenceLedger::IsOn()) {
        ReferenceLedger::NoteDestroyed(this);
    }
}

void RefCounted::ZeroReferenceCountHook() { delete this; }

} // namespace du
