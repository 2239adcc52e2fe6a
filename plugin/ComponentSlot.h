#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>

namespace lusymbols
{

/// Puts a fresh component into the caller's slot and answers true, which is what a known request always gives.
///
/// The object that the slot held before is released; the very same object changes nothing. Null is stored like any other
/// object: a host whose allocators answer null instead of throwing gets an empty slot.
inline bool StoreComponent(du::SmartPtr<du::RefCounted>& slot, du::RefCounted* component)
{
    slot = component;
    return true;
}

} // namespace lusymbols
