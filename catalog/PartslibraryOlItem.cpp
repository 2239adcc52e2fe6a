#include "catalog/PartslibraryOlItem.h"

#include <dg/Camera3D.h>

namespace lusymbols
{

PartslibraryOlItem::PartslibraryOlItem(Origin origin) : PartslibraryItem(origin), m_olCsys(dg::Location::IDENTITY) {}

PartslibraryOlItem::~PartslibraryOlItem() = default;
PartslibraryOlItem::PartslibraryOlItem(const PartslibraryOlItem& other) = default;
PartslibraryOlItem::PartslibraryOlItem(PartslibraryOlItem&& other) = default;
PartslibraryOlItem& PartslibraryOlItem::operator=(const PartslibraryOlItem& other) = default;
PartslibraryOlItem& PartslibraryOlItem::operator=(PartslibraryOlItem&& other) = default;

void PartslibraryOlItem::SetTitle(const std::string& title) { SetTitleOrDefault(title, "Ol "); }

bool PartslibraryOlItem::Compare(const du::SmartPtr<luk::illustration::AssociativeObject>& other) const
{
    const auto ol = du::DynamicCast<PartslibraryOlItem>(other);
    return ol && *this == *ol;
}

bool PartslibraryOlItem::operator==(const PartslibraryOlItem& other) const
{
    return m_olTooltip == other.m_olTooltip && m_olUrl == other.m_olUrl && m_olScale == other.m_olScale &&
           m_olOrientation == other.m_olOrientation && m_olCsys.GetPosition() == other.m_olCsys.GetPosition() &&
           m_olCsys.GetMat() == other.m_olCsys.GetMat() && m_axisId == other.m_axisId &&
           m_distanceFromCsys == other.m_distanceFromCsys && m_axisName == other.m_axisName &&
           m_orientationName == other.m_orientationName && m_annotationSymbol == other.m_annotationSymbol &&
           m_useCurrentOrientation == other.m_useCurrentOrientation && m_editCsysMethod == other.m_editCsysMethod &&
           PartslibraryItem::operator==(other);
}

void PartslibraryOlItem::SetCameraData(const dg::Camera3D& camera)
{
    const bool orthographic = camera.IsOrthographic();
    SetCameraData(orthographic, orthographic ? camera.GetOrthographicWidth() : camera.GetPerspectiveHFOV(),
                  camera.GetLocation());
}

void PartslibraryOlItem::SetCameraData(bool orthographic, double value, const dg::Location& location)
{
    m_camera = std::make_shared<const Camera>(Camera{orthographic, value, location});
}

bool PartslibraryOlItem::GetCameraData(bool& orthographic, double& value, dg::Location& location) const
{
    if (!IsCameraSet()) {
        return false;
    }
    orthographic = m_camera->isOrthographic;
    value = m_camera->value;
    location = m_camera->location;
    return true;
}

void PartslibraryOlItem::ComputeThumbnailUrl(std::string& url, const std::string& from, const std::string& to)
{
    const std::size_t found = url.find(from);
    if (found != std::string::npos) {
        url.replace(found, from.size(), to);
    }
}

} // namespace lusymbols
