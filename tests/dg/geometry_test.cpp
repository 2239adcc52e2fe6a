#include <dg/DBox.h>
#include <dg/DBox2D.h>
#include <dg/DMat33.h>
#include <dg/Location.h>
#include <dg/Quaternion.h>
#include <dg/Traits.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>

namespace
{

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kEndless = std::numeric_limits<double>::infinity();

/// Rotations with every branch of the conversion among them: half turns have no real part.
const std::vector<dg::Quaternion<float>>& Rotations()
{
    static const std::vector<dg::Quaternion<float>> rotations = {
        {1.0F, 0.0F, 0.0F, 0.0F},  {0.0F, 1.0F, 0.0F, 0.0F},   {0.0F, 0.0F, 1.0F, 0.0F},   {0.0F, 0.0F, 0.0F, 1.0F},
        {0.5F, 0.5F, 0.5F, 0.5F},  {0.5F, -0.5F, 0.5F, -0.5F}, {0.1F, 0.9F, -0.3F, 0.2F},  {0.1F, 0.2F, 0.9F, -0.3F},
        {0.1F, -0.3F, 0.2F, 0.9F}, {0.01F, 0.6F, 0.6F, 0.5F},  {0.9F, 0.1F, -0.2F, 0.05F},
    };
    return rotations;
}

dg::DMat44 Xform(const dg::Quaternion<float>& rotation, double scale, const dg::DPoint3D& position)
{
    dg::Location location;
    location.Set(position, rotation, scale);
    return location.GetXform();
}

TEST(Points, BadStaysBadAndEqualsNothing)
{
    const dg::DPoint3D bad = dg::DPoint3D::BAD;
    EXPECT_TRUE((bad + dg::DVec3(1.0, 2.0, 3.0)).IsBad());
    EXPECT_FALSE(bad == bad || dg::ApproximateEquality(bad, bad, 1e300));
    EXPECT_FALSE(dg::ApproximateEquality(dg::Location(), dg::Location(), 1.0)) << "a fresh one has no position";
    for (const dg::DVec3& none : {dg::DVec3(), dg::DVec3(kEndless, 1.0, 0.0), dg::DVec3(0.0, 0.0, kNoNumber)}) {
        EXPECT_TRUE(none.Normalized().IsBad());
    }
    for (const double length : {1e-300, 1e300}) {
        EXPECT_EQ(dg::DVec3(0.0, -length, 0.0).Normalized(), dg::DVec3(0.0, -1.0, 0.0));
    }
}

TEST(Matrices, ScaleIsTheLengthOfTheColumnsAndTheInverseDoesNotDependOnUnits)
{
    const dg::DPoint3D point(3.0, -4.0, 5.0);
    for (const dg::Quaternion<float>& rotation : Rotations()) {
        const dg::FMat33 scaled = rotation.ToMat() * dg::FMat33::Scaling(2.0, 3.0, 0.25);
        EXPECT_TRUE(dg::ApproximateEquality(scaled.GetScale(), dg::DVec3(2.0, 3.0, 0.25), dg::Traits::s_EPSILON));
        for (const double scale : {1e-12, 1e-3, 1.0, -2.5, 1e12}) {
            for (const double distance : {0.0, 1e-6, 1e9}) {
                const dg::DMat44 matrix = Xform(rotation, scale, {distance, -distance, 0.5 * distance});
                dg::DMat44 inverse = matrix;
                ASSERT_TRUE(inverse.Invert()) << scale << ' ' << distance;
                const dg::DPoint3D back = matrix.TransformPoint(inverse.TransformPoint(point));
                const double rounding = 1e-14 * (10.0 + distance);
                EXPECT_TRUE(dg::ApproximateEquality(back, point, rounding)) << scale << ' ' << distance;
            }
        }
    }
}

TEST(Matrices, SingularIsReportedAndLeftAlone)
{
    std::vector<std::array<double, 9>> singular = {
        {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0},
        {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0},
        {1.0, 2.0, 3.0, 2.0, 4.0, 6.0, 0.0, 1.0, 5.0},
        {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0},
        {0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9},
        {1e200, 2e200, 3e200, 4e200, 5e200, 6e200, 7e200, 8e200, 9e200},
        {kEndless, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0},
        {1e-310, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}, // its inverse is no number
    };
    for (std::size_t entry = 0; entry < 9; ++entry) {
        singular.push_back(dg::DMat33::IDENTITY.GetEntries());
        singular.back()[entry] = kNoNumber;
    }
    for (std::size_t i = 0; i < singular.size(); ++i) {
        dg::DMat33 matrix(singular[i]);
        EXPECT_FALSE(matrix.Invert()) << i;
        EXPECT_EQ(std::memcmp(&matrix.GetEntries(), &singular[i], sizeof(singular[i])), 0) << i;
    }
}

TEST(Locations, ApproximateEqualityLooksAtEveryNumber)
{
    const double tolerance = 1e-3;
    for (int i = 0; i < 12; ++i) {
        for (const double change : {0.9e-3, -0.9e-3, 1.1e-3, -1.1e-3, kNoNumber, kEndless}) {
            dg::FMat33 matrix;
            std::array<double, 3> position{};
            if (i < 9) {
                matrix.Set(i / 3, i % 3, matrix.Get(i / 3, i % 3) + static_cast<float>(change));
            } else {
                position[static_cast<std::size_t>(i - 9)] = change;
            }
            const dg::Location changed(matrix, {position[0], position[1], position[2]});
            EXPECT_EQ(dg::ApproximateEquality(changed, dg::Location::IDENTITY, tolerance), std::fabs(change) < 1e-3)
                << i << ' ' << change;
        }
    }
}

TEST(Locations, SetAndGetAreInverseAndWithoutARotationTheOrientationIsTheIdentity)
{
    const dg::DPoint3D position(1.5, -2.5, 1e9);
    for (const dg::Quaternion<float>& rotation : Rotations()) {
        for (const double scale : {1.0, 0.001, 250.0, -1.0, -3.0}) {
            dg::Location location;
            location.Set(position, rotation, scale);
            dg::DPoint3D readPosition;
            dg::Quaternion<float> readRotation;
            double readScale = 0.0;
            location.Get(readPosition, readRotation, readScale);
            EXPECT_EQ(readPosition, position);
            EXPECT_NEAR(readScale, scale, std::fabs(scale) * 1e-6);
            EXPECT_TRUE(dg::ApproximateEquality(readRotation.ToMat(), rotation.ToMat(), 1e-6)) << scale;
        }
    }
    using Rotation = dg::Quaternion<float>;
    for (const dg::FMat33& matrix :
         {dg::Location::ZERO.GetMat(), dg::FMat33::Scaling(1.0, 1.0, 0.0), dg::FMat33::Scaling(1.0, kNoNumber, 1.0)}) {
        EXPECT_EQ(Rotation::FromMat(matrix), Rotation::IDENTITY);
    }
    for (const float real : {0.0F, std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_EQ(Rotation(real, 0.0F, 0.0F, 0.0F).ToMat(), dg::FMat33::IDENTITY);
    }
}

TEST(Locations, CompositionIsTheProductOfTheTransforms)
{
    // A quarter turn about z takes x to y: first the inner location, then the outer one.
    const dg::FMat33 quarterTurn(0.0F, -1.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 0.0F, 1.0F);
    const dg::Location turned(quarterTurn, {10.0, 0.0, 0.0});
    const dg::Location moved(dg::FMat33::IDENTITY, {1.0, 0.0, 0.0});
    EXPECT_EQ(turned * moved, dg::Location(quarterTurn, {10.0, 1.0, 0.0}));
    for (const dg::Quaternion<float>& rotation : Rotations()) {
        const dg::Location outer = dg::Location::FromXform(Xform(rotation, 2.0, {1.0, 2.0, 3.0}));
        const dg::Location inner = dg::Location::FromXform(Xform(Rotations().back(), 0.5, {-4.0, 5.0, 6.0}));
        const dg::Location product = dg::Location::FromXform(outer.GetXform() * inner.GetXform());
        EXPECT_TRUE(dg::ApproximateEquality(outer * inner, product, 1e-5));
    }
}

TEST(Boxes, EncloseGrowsFromEmptyAndSkipsBadPoints)
{
    dg::DBox box = dg::DBox::EMPTY;
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_TRUE(box.GetCenter().IsBad());
    box.Enclose(dg::DPoint3D::BAD);
    EXPECT_EQ(box, dg::DBox::EMPTY);
    box.Enclose({1.0, -1.0, 5.0});
    box.Enclose({-3.0, 2.0, 5.0});
    box.Enclose(dg::DBox::EMPTY);
    EXPECT_EQ(box.GetMin(), dg::DPoint3D(-3.0, -1.0, 5.0));
    EXPECT_EQ(box.GetMax(), dg::DPoint3D(1.0, 2.0, 5.0));
    EXPECT_EQ(box.GetCenter(), dg::DPoint3D(-1.0, 0.5, 5.0));
    EXPECT_EQ(dg::DBox2D({-1.0, 8.0}, {3.0, 2.0}), dg::DBox2D({3.0, 8.0}, {-1.0, 2.0})) << "any two corners";
}

} // namespace
