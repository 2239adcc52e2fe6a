#include "support/PluginEntry.h"

#include <du/RefCounted.h>
#include <du/SmartPtr.h>

#include <cstdlib>
#include <string>

namespace
{

class Component : public du::RefCounted
{
};

/// Tells the test through the environment, which both share, when it comes and goes.
void Tell(const char* what)
{
#if defined(_WIN32)
    _putenv_s("LUHOST_TEST_PLUGIN", what);
#else
    setenv("LUHOST_TEST_PLUGIN", what, 1);
#endif
}

} // namespace

TEST_PLUGIN_ENTRY void LUDllInit() { Tell("started"); }

TEST_PLUGIN_ENTRY void LUDllTerminate() { Tell("ended"); }

TEST_PLUGIN_ENTRY bool LUDllCreateComponent(const std::string& action, const std::string&, const std::string&,
                                            du::SmartPtr<du::RefCounted>& slot)
{
    if (action != "create") {
        return false;
    }
    slot = du::MakeCounted<Component>();
    return true;
}
