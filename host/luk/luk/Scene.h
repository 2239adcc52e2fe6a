#pragma once

#include <du/RefCounted.h>
#include <luk/Observable.h>

namespace luk
{

/// What a view shows: annotations attach to it.
///
/// Ownership: an attached annotation holds its scene until it is detached.
class LUHOST_API Scene : public Observable, public virtual du::RefCounted
{
public:
    ~Scene() override;
};

} // namespace luk
