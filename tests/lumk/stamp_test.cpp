#include <lumk/Stamp.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace
{

TEST(Stamp, CountsAsChangedWhenAValueIsNewAlone)
{
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    const auto image = du::MakeCounted<luk::ImageData>(std::vector<luk::ImageData::Frame>());
    const auto stamp = du::MakeCounted<lumk::Stamp>(false, 1, true, 1);
    const std::function<void()> changes[] = {
        [&] {
            stamp->SetCenter({1.0, 2.0, 3.0});
        },
        [&] { stamp->SetCenter(dg::DPoint3D::BAD); },
        [&] { stamp->SetBillboard(false); },
        [&] { stamp->SetWidth(kNaN); },
        [&] { stamp->SetWidth(-0.01F); },
        [&] { stamp->SetHeight(kNaN); },
        [&] {
            stamp->SetLineColor({1.0F, 0.0F, 0.0F, 1.0F});
        },
        [&] {
            stamp->SetFillColor({0.0F, 0.0F, 0.0F, 0.5F});
        },
        [&] { stamp->SetTransparency(0.5F); },
        [&] { stamp->SetReverse(true); },
        [&] { stamp->SetFlipHorizontally(true); },
        [&] { stamp->SetImage(image); },
        [&] { stamp->SetLocationMat(dg::FMat33::Scaling(2.0, 2.0, 2.0)); },
        [&] {
            stamp->SetLocationPosition({4.0, 0.0, 0.0});
        },
        [&] { stamp->SetVisibility(false); },
        [&] { stamp->SetPageNum(2); },
    };
    for (const auto& change : changes) {
        const std::uint64_t before = stamp->GetContentVersion();
        change();
        change();
        EXPECT_EQ(stamp->GetContentVersion(), before + 1) << &change - changes;
    }
    EXPECT_NE(stamp->GetHeight(), stamp->GetHeight());
    EXPECT_EQ(*stamp->GetLocation(), dg::Location(dg::FMat33::Scaling(2.0, 2.0, 2.0), {4.0, 0.0, 0.0}));
}

TEST(Stamp, HasALocationOfItsOwnInAShapeSceneAlone)
{
    EXPECT_EQ(*du::MakeCounted<lumk::Stamp>(false, 1, true, 1)->GetLocation(), dg::Location::IDENTITY);
    const auto onPage = du::MakeCounted<lumk::Stamp>(false, 1, false, 1);
    onPage->SetLocationMat(dg::FMat33::Scaling(2.0, 2.0, 2.0));
    onPage->SetLocationPosition({4.0, 0.0, 0.0});
    EXPECT_EQ(onPage->GetLocation(), nullptr);
    EXPECT_EQ(onPage->GetContentVersion(), 0u);
}

TEST(Stamp, AShadowFollowsWhenItIsToldAndStartsAnewWhenItIsCycled)
{
    const auto stamp = du::MakeCounted<lumk::Stamp>(false, 1, true, 1);
    const auto shadow = [&] { return du::DynamicCast<lumk::StampShadow>(stamp->GetShadow()); };
    stamp->UpdateShadow();
    stamp->SetWidth(1.0F);
    const auto first = shadow();
    stamp->SetWidth(2.0F);
    stamp->SetCenter({7.0, 0.0, 0.0});
    EXPECT_EQ(shadow(), first);
    EXPECT_EQ(first->GetWidth(), 1.0F);
    stamp->UpdateShadow();
    EXPECT_EQ(first->GetWidth(), 2.0F);
    EXPECT_EQ(first->GetOldCenter(), dg::DPoint3D::ORIGIN);
    stamp->CycleShadow();
    EXPECT_EQ(shadow()->GetOldCenter(), stamp->GetCenter());
}

} // namespace
