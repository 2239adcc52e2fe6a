#include <du/Export.h>

extern "C" LUHOST_API void LUDllInit() {}

extern "C" LUHOST_API void LUDllTerminate() {}
