#pragma once

#include <du/RefCounted.h>
#include <luk/Observable.h>

namespace luk
{

/// One placement of a shape in a scene.
class LUHOST_API ShapeInstance : public Observable, public virtual du::RefCounted
{
public:
    ~ShapeInstance() override;
};

} // namespace luk
