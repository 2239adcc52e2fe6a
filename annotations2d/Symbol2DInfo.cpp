#include "annotations2d/Symbol2DInfo.h"

#include <luk/Preferences.h>
#include <luk/World.h>

namespace luannotations
{

Symbol2DInfo::Symbol2DInfo() { ApplyPreferenceValues(); }

Symbol2DInfo::Symbol2DInfo(const Symbol2DInfo& other) : Symbol2DInfo() { *this = other; }

Symbol2DInfo& Symbol2DInfo::operator=(const Symbol2DInfo& other) = default;

Symbol2DInfo::~Symbol2DInfo() = default;

void Symbol2DInfo::ApplyPreferenceValues()
{
    const du::SmartPtr<luk::World> world = luk::World::GetWorld();
    const du::SmartPtr<luk::Preferences> preferences = world ? world->GetPreferences() : nullptr;
    if (!preferences) {
        return;
    }
    dg::Color color(0.5F, 0.6F, 0.9F, 0.2F);
    preferences->GetIntUIAsColor("Annotations/Shape/shape_color", color);
    lineColor = color;
    fillColor = color;
}

} // namespace luannotations
