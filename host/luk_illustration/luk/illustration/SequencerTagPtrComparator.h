#pragma once

#include <du/SmartPtr.h>
#include <luk/illustration/SequencerTag.h>

namespace luk::illustration
{

/// Whether two tags say the same. Null is equal to null alone.
struct SequencerTagPtrComparator {
    bool operator()(const du::SmartPtr<SequencerTag>& a, const du::SmartPtr<SequencerTag>& b) const noexcept
    {
        return a == b || (a && b && *a == *b);
    }
};

} // namespace luk::illustration
