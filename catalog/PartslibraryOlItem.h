#pragma once

#include "catalog/PartslibraryItem.h"

#include <dg/Location.h>

#include <cstdint>
#include <memory>
#include <string>

namespace dg
{
class Camera3D;
}

namespace lusymbols
{

/// A 3D entry of the symbol library: a small shape that is placed in the product.
///
/// Ownership, threads and copies: as PartslibraryItem. A move takes over the strings of this class only; the common part
/// is copied, so that a new entry always owns its tags.
///
/// The integer codes (orientation, axis, edit method) are stored and passed on unchecked: only the placement tools give
/// them a meaning. The names of axis and orientation are kept beside the codes and are never derived from them.
class LUSYMBOLS_API PartslibraryOlItem : public PartslibraryItem
{
public:
    explicit PartslibraryOlItem(Origin origin = ORIGIN_USER);
    PartslibraryOlItem(const PartslibraryOlItem& other);
    PartslibraryOlItem(PartslibraryOlItem&& other);
    PartslibraryOlItem& operator=(const PartslibraryOlItem& other);
    PartslibraryOlItem& operator=(PartslibraryOlItem&& other);
    ~PartslibraryOlItem() override;

    bool Compare(const du::SmartPtr<luk::illustration::AssociativeObject>& other) const override;
    void SetTitle(const std::string& title) override;

    /// The name of a 3D entry is its host name.
    const std::string& GetOlName() const { return GetName(); }
    void SetOlName(const std::string& name) { SetName(name); }

    const std::string& GetOlTooltip() const { return m_olTooltip; }
    void SetOlTooltip(const std::string& tooltip) { m_olTooltip = tooltip; }

    const std::string& GetOlGalleryThumbnailUrl() const { return m_olGalleryThumbnailUrl; }
    void SetOlGalleryThumbnailUrl(const std::string& url) { m_olGalleryThumbnailUrl = url; }

    const std::string& GetOlDlgThumbnailUrl() const { return m_olDlgThumbnailUrl; }
    void SetOlDlgThumbnailUrl(const std::string& url) { m_olDlgThumbnailUrl = url; }

    /// The file with the shape's geometry.
    const std::string& GetOlUrl() const { return m_olUrl; }
    void SetOlUrl(const std::string& url) { m_olUrl = url; }

    double GetOlScale() const { return m_olScale; }
    void SetOlScale(double scale) { m_olScale = scale; }

    std::int32_t GetOlOrientation() const { return m_olOrientation; }
    void SetOlOrientation(std::int32_t code) { m_olOrientation = code; }

    /// Coordinate system by which the shape is placed, in the frame of the shape.
    const dg::Location& GetOlCsys() const { return m_olCsys; }
    void SetOlCsys(const dg::Location& csys) { m_olCsys = csys; }

    /// Keeps the camera from which the entry is previewed: its kind, its width or angle, and its location.
    void SetCameraData(const dg::Camera3D& camera);
    /// @param value width of an orthographic camera, horizontal field of view of a perspective one
    void SetCameraData(bool orthographic, double value, const dg::Location& location);
    /// @return false, with the outputs untouched, when no camera is set
    bool GetCameraData(bool& orthographic, double& value, dg::Location& location) const;
    bool IsCameraSet() const { return m_camera != nullptr; }
    void ResetCameraData() { m_camera = nullptr; }

    std::int32_t GetAxisId() const { return m_axisId; }
    void SetAxisId(std::int32_t code) { m_axisId = code; }

    double GetDistanceFromCsys() const { return m_distanceFromCsys; }
    void SetDistanceFromCsys(double distance) { m_distanceFromCsys = distance; }

    std::string GetAxisName() const { return m_axisName; }
    void SetAxisName(const std::string& name) { m_axisName = name; }

    std::string GetOrientationName() const { return m_orientationName; }
    void SetOrientationName(const std::string& name) { m_orientationName = name; }

    bool IsAnnotationSymbol() const { return m_annotationSymbol; }
    void SetAnnotationSymbol(bool isAnnotation) { m_annotationSymbol = isAnnotation; }

    bool IsUseCurrentOrientation() const { return m_useCurrentOrientation; }
    void SetUseCurrentOrientation(bool use) { m_useCurrentOrientation = use; }

    std::int32_t GetEditCsysMethod() const { return m_editCsysMethod; }
    void SetEditCsysMethod(std::int32_t code) { m_editCsysMethod = code; }

    /// Everything of the entry but its thumbnails and its preview camera.
    bool operator==(const PartslibraryOlItem& other) const;

    /// Replaces the first `from` in `url` by `to`; without one the URL stays as it is. Arguments may alias.
    static void ComputeThumbnailUrl(std::string& url, const std::string& from, const std::string& to);

private:
    struct Camera {
        bool isOrthographic;
        double value;
        dg::Location location;
    };

    std::string m_olTooltip;
    std::string m_olGalleryThumbnailUrl;
    std::string m_olDlgThumbnailUrl;
    std::string m_olUrl;
    double m_olScale = 1.0;
    std::int32_t m_olOrientation = 0;
    dg::Location m_olCsys;
    /// Null in the many entries that have none. Shared with copies and never changed.
    std::shared_ptr<const Camera> m_camera;
    std::int32_t m_axisId = 0;
    double m_distanceFromCsys = 0.0;
    std::string m_axisName;
    std::string m_orientationName;
    bool m_annotationSymbol = false;
    bool m_useCurrentOrientation = false;
    std::int32_t m_editCsysMethod = 1;
};

} // namespace lusymbols
