#include <dg/Camera3D.h>
#include <dg/Quaternion.h>

#include <gtest/gtest.h>

#include <array>

namespace
{

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

dg::Camera3D MakeCamera(bool orthographic, double value, const dg::Location& location = dg::Location::IDENTITY)
{
    dg::Camera3D camera;
    if (orthographic) {
        camera.SetOrthographic(value);
    } else {
        camera.SetPerspective(value);
    }
    camera.SetLocation(location);
    camera.SetViewport(800, 600);
    return camera;
}

/// The eye at (5, 6, 7), turned, with a scale that must not matter.
dg::Location Somewhere()
{
    dg::Location location;
    location.Set({5.0, 6.0, 7.0}, {0.8F, 0.3F, -0.4F, 0.2F}, 12.0);
    return location;
}

std::vector<dg::Camera3D> UsableCameras()
{
    return {MakeCamera(true, 100.0), MakeCamera(true, 0.02, Somewhere()), MakeCamera(false, 45.0),
            MakeCamera(false, 120.0, Somewhere())};
}

/// A point in front of the camera, given along its own axes.
dg::DPoint3D InFrontOf(const dg::Camera3D& camera, double right, double up, double ahead)
{
    const dg::DVec3 u = camera.GetU();
    const dg::DVec3 v = camera.GetV();
    return camera.GetLocation().GetPosition() + u * right + v * up - u.Cross(v) * ahead;
}

TEST(Camera, ScreenAxesPointRightAndDownAndSpanTheWidthOfTheViewport)
{
    for (const dg::Camera3D& camera : UsableCameras()) {
        const auto project = [&camera](double right, double up) {
            dg::DPoint2D screen;
            EXPECT_TRUE(camera.ProjectPoint(InFrontOf(camera, right, up, 10.0), screen));
            return screen;
        };
        EXPECT_NEAR(project(0.0, 0.0).x, 400.0, 1e-6);
        EXPECT_NEAR(project(0.0, 0.0).y, 300.0, 1e-6);
        const double step = project(1.0, 0.0).x - 400.0;
        EXPECT_GT(step, 0.0);
        EXPECT_NEAR(300.0 - project(0.0, 1.0).y, step, 1e-6 * step) << "pixels are square";
    }
    dg::DPoint2D screen;
    ASSERT_TRUE(MakeCamera(true, 100.0).ProjectPoint({50.0, 0.0, -3.0}, screen));
    EXPECT_NEAR(screen.x, 800.0, 1e-9);
    ASSERT_TRUE(MakeCamera(false, 90.0).ProjectPoint({-7.0, 0.0, -7.0}, screen));
    EXPECT_NEAR(screen.x, 0.0, 1e-9);
}

TEST(Camera, RayThroughAProjectedPointMeetsItAgain)
{
    for (const dg::Camera3D& camera : UsableCameras()) {
        const dg::DVec3 normal = camera.GetU().Cross(camera.GetV());
        for (const auto& [right, up, ahead] : {std::array{-3.0, -0.2, 0.5}, {0.0, 2.0, 40.0}, {0.7, 2.0, 0.5}}) {
            const dg::DPoint3D point = InFrontOf(camera, right, up, ahead);
            dg::DPoint2D screen;
            dg::DPoint3D origin;
            dg::DPoint3D hit;
            dg::DVec3 direction;
            ASSERT_TRUE(camera.ProjectPoint(point, screen));
            ASSERT_TRUE(camera.ScreenXYToNormalizedRay(screen.x, screen.y, origin, direction));
            EXPECT_NEAR(direction.Length(), 1.0, 1e-12);
            ASSERT_TRUE(camera.IntersectRayWithPlane(origin, direction, point, normal * 5.0, hit));
            EXPECT_TRUE(dg::ApproximateEquality(hit, point, 1e-9));
        }
    }
}

TEST(Camera, OnlyAnOrthographicViewSeesBehindTheEye)
{
    for (const bool orthographic : {true, false}) {
        const dg::Camera3D camera = MakeCamera(orthographic, 60.0);
        const dg::DPoint3D behind(1.0, 1.0, 5.0);
        dg::DPoint2D screen{-1.0, -1.0};
        dg::DPoint3D hit;
        EXPECT_EQ(camera.ProjectPoint(behind, screen), orthographic);
        EXPECT_EQ(screen.x != -1.0, orthographic);
        EXPECT_EQ(camera.ProjectPoint(dg::DPoint3D::ORIGIN, screen), orthographic) << "the eye itself";
        EXPECT_EQ(camera.IntersectRayWithPlane({}, {0.0, 0.0, -1.0}, behind, {0.0, 0.0, 1.0}, hit), orthographic);
    }
}

TEST(Camera, RayMissesAPlaneThatItCannotMeet)
{
    const dg::DVec3 ahead(0.0, 0.0, -1.0);
    const dg::DPoint3D far(0.0, 0.0, -10.0);
    const std::tuple<const char*, dg::DVec3, dg::DPoint3D, dg::DVec3> cases[] = {
        // direction; point and normal of the plane
        {"parallel to the plane", ahead, {1.0, 0.0, 0.0}, {1.0, 0.0, 0.0}},
        {"inside the plane", ahead, {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}},
        {"nearly parallel", ahead, far, {1.0, 0.0, 1e-13}},
        {"no normal", ahead, far, {0.0, 0.0, 0.0}},
        {"infinite normal", ahead, far, {kInfinity, 0.0, 0.0}},
        {"bad normal", ahead, far, dg::DVec3::BAD},
        {"bad point", ahead, dg::DPoint3D::BAD, {0.0, 0.0, 1.0}},
        {"bad ray", dg::DVec3::BAD, far, {0.0, 0.0, 1.0}},
        {"infinitely far", ahead, {0.0, 0.0, -kInfinity}, {0.0, 0.0, 1.0}},
    };
    for (const auto& [what, direction, planePoint, planeNormal] : cases) {
        for (const bool orthographic : {true, false}) {
            const dg::Camera3D camera = MakeCamera(orthographic, 60.0);
            dg::DPoint3D hit(1.0, 2.0, 3.0);
            EXPECT_FALSE(camera.IntersectRayWithPlane({}, direction, planePoint, planeNormal, hit)) << what;
            EXPECT_EQ(hit, dg::DPoint3D(1.0, 2.0, 3.0)) << what;
        }
    }
}

TEST(Camera, DegenerateCamerasAndPointsProjectNothing)
{
    const dg::FMat33 sameAxes(1.0F, 1.0F, 0.0F, 0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F);
    std::vector<dg::Camera3D> cameras = {
        MakeCamera(true, 10.0, dg::Location::ZERO),
        MakeCamera(true, 10.0, dg::Location()),
        MakeCamera(false, 45.0, {sameAxes, dg::DPoint3D::ORIGIN}),
        MakeCamera(false, 45.0, {dg::FMat33::Scaling(kNan, 1.0, 1.0), dg::DPoint3D::ORIGIN}),
        MakeCamera(false, 45.0, {dg::FMat33::IDENTITY, {kInfinity, 0.0, 0.0}}),
    };
    for (const double width : {0.0, -5.0, kNan, kInfinity}) {
        cameras.push_back(MakeCamera(true, width));
    }
    for (const double angle : {0.0, 180.0, 540.0, kNan}) {
        cameras.push_back(MakeCamera(false, angle));
    }
    for (const auto& [width, height] : {std::pair(0, 600), std::pair(800, 0), std::pair(-1, -1)}) {
        cameras.push_back(MakeCamera(true, 10.0));
        cameras.back().SetViewport(width, height);
    }
    dg::DPoint2D screen;
    dg::DPoint3D origin;
    dg::DVec3 direction;
    for (std::size_t i = 0; i < cameras.size(); ++i) {
        EXPECT_FALSE(cameras[i].ProjectPoint({1.0, 1.0, -10.0}, screen)) << i;
        EXPECT_FALSE(cameras[i].ScreenXYToNormalizedRay(10.0, 10.0, origin, direction)) << i;
    }
    for (const dg::Camera3D& camera : UsableCameras()) {
        EXPECT_FALSE(camera.ProjectPoint(dg::DPoint3D::BAD, screen));
        EXPECT_FALSE(camera.ScreenXYToNormalizedRay(kNan, 0.0, origin, direction));
        EXPECT_FALSE(camera.ScreenXYToNormalizedRay(0.0, kInfinity, origin, direction));
    }
}

} // namespace
