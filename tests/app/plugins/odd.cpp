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

extern "C" LUHOST_API void LUDllInit() {}

extern "C" LUHOST_API void LUDllTerminate() {}

/// Makes no loader, in the way that the test asks for.
extern "C" LUHOST_API bool LUDllCreateComponent(const std::string&, const std::string&, const std::string&,
                                                du::SmartPtr<du::RefCounted>& slot)
{
    const char* const variable = std::getenv("ODD_PLUGIN");
    const std::string answer = variable ? variable : "";
    if (answer == "another class") {
        slot = du::MakeCounted<Component>();
    }
    return answer != "unknown";
}
