#include "support/PluginEntry.h"

#include <du/RefCounted.h>
#include <du/SmartPtr.h>

#include <cstdlib>
#include <string>
#include <windows.h>

// A plug-in that, when it is asked for a component, never answers or breaks down, as LUSYM_FAULT says.

TEST_PLUGIN_ENTRY void LUDllInit() {}

TEST_PLUGIN_ENTRY void LUDllTerminate() {}

TEST_PLUGIN_ENTRY bool LUDllCreateComponent(const std::string&, const std::string&, const std::string&,
                                            du::SmartPtr<du::RefCounted>&)
{
    const char* const fault = std::getenv("LUSYM_FAULT");
    if (fault && std::string(fault) == "crash") {
        ::RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    }
    ::Sleep(INFINITE);
    return false;
}
