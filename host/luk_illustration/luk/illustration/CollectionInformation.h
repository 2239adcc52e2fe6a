#pragma once

#include <du/RefCounted.h>

namespace luk::illustration
{

/// What a library says about itself as a whole; each kind of library has its own kind of this.
class LUHOST_API CollectionInformation : public du::RefCounted
{
public:
    ~CollectionInformation() override;

protected:
    CollectionInformation() noexcept = default;
    CollectionInformation(const CollectionInformation&) noexcept = default;
    CollectionInformation& operator=(const CollectionInformation&) noexcept = default;
};

} // namespace luk::illustration
