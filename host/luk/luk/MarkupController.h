#pragma once

#include <du/RefCounted.h>

namespace luk
{

/// Somebody who stands behind markups and is told what the user does with them.
///
/// Ownership: counted, as a virtual base, so that a class with several counted bases has one count. A markup does not
/// own its controller.
class LUHOST_API MarkupController : public virtual du::RefCounted
{
public:
    ~MarkupController() override;

protected:
    MarkupController() noexcept = default;
    MarkupController(const MarkupController&) noexcept = default;
    MarkupController& operator=(const MarkupController&) noexcept = default;
};

} // namespace luk
