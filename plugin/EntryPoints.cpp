#include "plugin/EntryPoints.h"

#include "annotations2d/Symbol2D.h"
#include "annotations3d/SymbolAnnotation.h"
#include "annotations3d/SymbolAnnotationFlattened.h"
#include "plugin/ComponentSlot.h"
#include "xml/SymbolTemplateLoader.h"

#include <dp/LUTracer.h>

namespace
{

constexpr dp::TraceChannel kChannel{"lusymbols", "root"};

bool CreateAnnotation(const std::string& type, du::SmartPtr<du::RefCounted>& slot)
{
    if (type == "symbol3d") {
        return lusymbols::StoreComponent(slot, new luannotations::SymbolAnnotation);
    }
    if (type == "symbol2d") {
        return lusymbols::StoreComponent(slot, new luannotations::Symbol2D);
    }
    return type == "symbol3dflattened" && lusymbols::StoreComponent(slot, new luannotations::SymbolAnnotationFlattened);
}

} // namespace

extern "C" {

void LUDllInit() noexcept {}

void LUDllTerminate() noexcept __attribute__((alias("LUDllInit")));

bool LUDllCreateComponent(const std::string& action, const std::string& category, const std::string& type,
                          du::SmartPtr<du::RefCounted>& slot)
{
    if (action == "create" && category == "annotation") {
        return CreateAnnotation(type, slot);
    }
    if (action == "load" && category == "template" && type == "symbol") {
        dp::LUTracer(kChannel).Trace(dp::LUTracer::INFORMATION, "Create new template loader\n");
        return lusymbols::StoreComponent(slot, new lusymbols::SymbolTemplateLoader);
    }
    return false;
}
}
