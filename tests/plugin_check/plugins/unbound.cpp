#include <du/Export.h>
#include <du/RefCounted.h>
#include <du/SmartPtr.h>

#include <string>

/// Of no library.
void FunctionThatNobodyHas();

extern "C" LUHOST_API void LUDllInit() {}

extern "C" LUHOST_API void LUDllTerminate() { FunctionThatNobodyHas(); }

extern "C" LUHOST_API bool LUDllCreateComponent(const std::string&, const std::string&, const std::string&,
                                                du::SmartPtr<du::RefCounted>&)
{
    return false;
}
