#pragma once

#include <luk/AsyncEvent.h>

namespace luloader
{

/// Event of a shape load that nobody waits for.
class LUHOST_API ShapeLoaderEvent : public luk::AsyncEvent
{
public:
    ShapeLoaderEvent() = default;
    ~ShapeLoaderEvent() override;

    du::Symbol GetObjectClass() const override;
};

} // namespace luloader
