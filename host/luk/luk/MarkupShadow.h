#pragma once

#include <du/RefCounted.h>
#include <luk/Object.h>

namespace luk
{

/// Stand-in for a markup while the user drags or sizes it.
class LUHOST_API MarkupShadow : public Object, public virtual du::RefCounted
{
public:
    ~MarkupShadow() override;
};

} // namespace luk
