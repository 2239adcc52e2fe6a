#include <du/RefCounted.h>
#include <du/SmartPtr.h>

#include <cstdlib>
#include <string>

namespace
{

class Component : public du::RefCounted
{
};

} // namespace

/// Tells the test through the environment, which both share, when it comes and goes.
extern "C" LUHOST_API void LUDllInit() { setenv("LUHOST_TEST_PLUGIN", "started", 1); }

extern "C" LUHOST_API void LUDllTerminate() { setenv("LUHOST_TEST_PLUGIN", "ended", 1); }

extern "C" LUHOST_API bool LUDllCreateComponent(const std::string& action, const std::string&, const std::string&,
                                                du::SmartPtr<du::RefCounted>& slot)
{
    if (action != "create") {
        return false;
    }
    slot = du::MakeCounted<Component>();
    return true;
}
