#include <luk/ImageData.h>

#include <climits>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace
{

using luk::ImageData;

/// Every pixel differs, in each of its bytes.
ImageData::Frame NumberedFrame(int width, int height)
{
    auto pixels = std::make_shared<ImageData::Pixels>();
    for (int number = 0; number < width * height; ++number) {
        for (const int part : {number, number >> 8, ~number, 3 * number + 1}) {
            pixels->push_back(static_cast<std::uint8_t>(part));
        }
    }
    return {width, height, pixels, 40};
}

std::string PixelAt(const ImageData::Frame& frame, int x, int y)
{
    const auto at = static_cast<std::ptrdiff_t>(4 * (y * frame.width + x));
    return {frame.pixels->begin() + at, frame.pixels->begin() + at + 4};
}

/// What was at the left edge is at the top after a clockwise turn, with the lower end on the left.
bool IsTurnedOnce(const ImageData::Frame& before, const ImageData::Frame& after)
{
    bool same = after.width == before.height && after.height == before.width &&
                after.delayMilliseconds == before.delayMilliseconds;
    for (int y = 0; same && y < before.height; ++y) {
        for (int x = 0; same && x < before.width; ++x) {
            same = PixelAt(after, before.height - 1 - y, x) == PixelAt(before, x, y);
        }
    }
    return same;
}

TEST(ImageData, TurnsEveryFrameClockwiseByAnyNumberOfQuarters)
{
    const auto source = std::make_shared<const std::string>("<svg/>");
    std::vector<ImageData::Frame> frames;
    for (const auto& [width, height] : {std::pair(1, 1), {1, 40}, {3, 2}, {16, 16}, {33, 17}, {40, 65}}) {
        frames.push_back(NumberedFrame(width, height));
    }
    du::SmartPtr<ImageData> byQuarters[4] = {du::MakeCounted<ImageData>(frames, source)};
    for (std::size_t turns = 1; turns < 4; ++turns) {
        byQuarters[turns] = byQuarters[turns - 1]->CreateCWRotated(1);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            EXPECT_TRUE(IsTurnedOnce(byQuarters[turns - 1]->GetFrame(i), byQuarters[turns]->GetFrame(i))) << i;
        }
    }
    for (const auto& [asked, turns] : {std::pair(2, 2), {3, 3}, {4, 0}, {-1, 3}, {-6, 2}, {INT_MIN, 0}, {INT_MAX, 3}}) {
        const auto turned = byQuarters[0]->CreateCWRotated(asked);
        EXPECT_EQ(turned->GetQuarterTurns(), turns) << asked;
        EXPECT_EQ(turned->CreateCWRotated(3)->GetQuarterTurns(), (turns + 3) % 4);
        EXPECT_EQ(turned->GetVectorSource(), source);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            EXPECT_EQ(*turned->GetFrame(i).pixels, *byQuarters[turns]->GetFrame(i).pixels) << asked << ", frame " << i;
            EXPECT_EQ(turned->GetFrame(i).width, byQuarters[turns]->GetFrame(i).width);
        }
    }
    EXPECT_EQ(byQuarters[0]->CreateCWRotated(-4)->GetFrame(0).pixels, frames[0].pixels);
    EXPECT_EQ(byQuarters[0]->GetQuarterTurns(), 0);
}

TEST(ImageData, PicturesTurnedAlikeShareTheirPixels)
{
    const auto picture = du::MakeCounted<ImageData>(std::vector{NumberedFrame(3, 2), NumberedFrame(4, 4)});
    const auto onItsSide = picture->CreateCWRotated(1);
    for (const auto& [again, same] : {std::pair(picture->CreateCWRotated(-3), onItsSide),
                                      {onItsSide->CreateCWRotated(2)->CreateCWRotated(2), onItsSide},
                                      {onItsSide->CreateCWRotated(-1), picture}}) {
        EXPECT_EQ(again->GetFrame(0).pixels, same->GetFrame(0).pixels);
        EXPECT_EQ(again->GetFrame(1).pixels, same->GetFrame(1).pixels);
    }
}

TEST(ImageData, TurnsTheSizeAloneOfAFrameWithoutItsPixels)
{
    const auto few = std::make_shared<const ImageData::Pixels>(4);
    for (const ImageData::Frame& frame : {ImageData::Frame{3, 2, nullptr, 0},
                                          {3, 2, few, 0},
                                          {1, 0, few, 0},
                                          {-1, -1, few, 0},
                                          {INT_MAX, INT_MAX, few, 0}}) {
        const auto image = du::MakeCounted<ImageData>(std::vector{frame});
        for (const int turns : {1, 2, 3}) {
            const auto turned = image->CreateCWRotated(turns);
            EXPECT_EQ(turned->GetFrame(0).pixels, nullptr);
            EXPECT_EQ(turned->GetWidth(), turns == 2 ? frame.width : frame.height);
        }
    }
    EXPECT_EQ(du::MakeCounted<ImageData>(std::vector<ImageData::Frame>())->CreateCWRotated(1)->GetHeight(), 0);
}

} // namespace
