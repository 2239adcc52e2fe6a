#pragma once

#include <luk/BaseAsyncEvent.h>

namespace luk
{

/// Event with a kind and flags, which are kept for those who wait for it and have no other effect.
class LUHOST_API AsyncEvent : public BaseAsyncEvent
{
public:
    explicit AsyncEvent(int kind = 0, int flags = 0);
    ~AsyncEvent() override;

    du::Symbol GetObjectClass() const override;

    int GetKind() const noexcept { return m_kind; }
    int GetFlags() const noexcept { return m_flags; }

private:
    int m_kind;
    int m_flags;
};

} // namespace luk
