#pragma once

#include <du/RefCounted.h>
#include <luk/Object.h>

namespace luk
{

/// Window onto a scene.
class LUHOST_API View : public Object, public virtual du::RefCounted
{
public:
    ~View() override;
};

} // namespace luk
