#include <du/SmartPtr.h>
#include <luk/BaseAsyncEvent.h>

namespace luk
{

BaseAsyncEvent::~BaseAsyncEvent() = default;

du::Symbol BaseAsyncEvent::GetObjectClass() const { return du::Symbol("luk::BaseAsyncEvent"); }

void BaseAsyncEvent::HandleEvent() { Complete(); }

void BaseAsyncEvent::OnProgress() {}

void BaseAsyncEvent::OnCompleted(int) {}

bool BaseAsyncEvent::Complete(int status)
{
    if (m_complete) {
        return false;
    }
    const du::SmartPtr<BaseAsyncEvent> keptAlive(GetReferenceCount() > 0 ? this : nullptr);
    m_complete = true;
    m_status = status;
    OnCompleted(status);
    return true;
}

} // namespace luk
