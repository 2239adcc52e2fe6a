#include "plugin/EntryPoints.h"

#include "annotations2d/Symbol2D.h"
#include "plugin/ComponentSlot.h"
#include "xml/SymbolTemplateLoader.h"

#include <dp/LUTracer.h>

namespace
{

constexpr dp::TraceChannel kChannel{"lusymbols", "root"};

} // namespace

extern "C" {

void LUDllInit() {}

void LUDllTerminate() __attribute__((alias("LUDllInit")));

bool LUDllCreateComponent(const std::string& action, const std::string& category, const std::string& type,
                          du::SmartPtr<du::RefCounted>& slot)
{
    if (action == "create" && category == "annotation") {
        return type == "symbol2d" && lusymbols::StoreComponent(slot, new luannotations::Symbol2D);
    }
    if (action == "load" && category == "template" && type == "symbol") {
        dp::LUTracer(kChannel).Trace(dp::LUTracer::TraceType(0), "Create new template loader\n");
        return lusymbols::StoreComponent(slot, new lusymbols::SymbolTemplateLoader);
    }
    return false;
}
}
