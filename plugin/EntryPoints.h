#pragma once

#include "plugin/Export.h"

#include <du/SmartPtr.h>

#include <string>

/// The three functions that a host looks up by name in the loaded library.
///
/// Threads and locks: they take no lock and touch no shared state; concurrent calls are safe.
///
/// Errors: none is reported but the `false` of an unknown request; running out of memory is left to the allocators.
extern "C" {

/// Does nothing: constants of the plug-in make themselves.
LUSYMBOLS_API void LUDllInit() noexcept;

/// Does nothing, and is the same function as LUDllInit: components live by their handles alone.
LUSYMBOLS_API void LUDllTerminate() noexcept;

/// Makes the component that the three words name and stores it in the slot.
///
///   action     category       type                  component                                   memory
///   "create"   "annotation"   "symbol3d"            luannotations::SymbolAnnotation             the host's pool
///   "create"   "annotation"   "symbol2d"            luannotations::Symbol2D                     the host's pool
///   "create"   "annotation"   "symbol3dflattened"   luannotations::SymbolAnnotationFlattened    the host's pool
///   "load"     "template"     "symbol"              lusymbols::SymbolTemplateLoader             the global allocator
///
/// Words are compared whole and with case.
///
/// @return true for a known request; false, with the slot untouched, for any other
LUSYMBOLS_API bool LUDllCreateComponent(const std::string& action, const std::string& category, const std::string& type,
                                        du::SmartPtr<du::RefCounted>& slot);
}
