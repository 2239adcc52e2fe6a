#include "Baselines.h"

#include "Pictures.h"
#include "support/TemporaryFolder.h"

#include <luhost/render/DrawingOutput.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <vector>

namespace test
{

namespace
{

void Keep(const std::string& name, const std::string& bytes)
{
    std::ofstream(std::string(RENDER_RESULTS "/") + name, std::ios::binary) << bytes;
    ADD_FAILURE() << "see " RENDER_RESULTS "/" << name;
}

/// Red where two pictures differ.
std::vector<std::uint32_t> DifferenceOf(const Pixels& got, const Pixels& expected)
{
    std::vector<std::uint32_t> difference(got.words.size(), 0xFF);
    for (std::size_t i = 0; i < got.words.size(); ++i) {
        for (const unsigned shift : {0U, 8U, 16U, 24U}) {
            const auto level = [shift](std::uint32_t word) { return static_cast<int>((word >> shift) & 0xFF); };
            difference[i] |= std::abs(level(got.words[i]) - level(expected.words[i])) > 1 ? 0xFF0000FF : 0;
        }
    }
    return difference;
}

} // namespace

void ExpectBaseline(const luhost::render::Drawing& drawing, const std::string& name)
{
    std::string svg;
    std::string png;
    std::string error;
    ASSERT_TRUE(WriteSvg(drawing, svg, error) && WritePng(drawing, 0, 0, png, error)) << error;
    const std::string baselines = RENDER_BASELINES "/";
    if (svg != TemporaryFolder::ReadFile(baselines + name + ".svg")) {
        Keep(name + ".svg", svg);
    }
    ExpectPngBaseline(png, name);
}

void ExpectPngBaseline(const std::string& png, const std::string& name)
{
    const Pixels expected = DecodePng(TemporaryFolder::ReadFile(RENDER_BASELINES "/" + name + ".png"));
    const Pixels got = DecodePng(png);
    if (got.width != expected.width || got.height != expected.height) {
        Keep(name + ".png", png);
        return;
    }
    const std::vector<std::uint32_t> difference = DifferenceOf(got, expected);
    if (std::count(difference.begin(), difference.end(), 0xFFU) != std::ssize(difference)) {
        Keep(name + ".png", png);
        luhost::render::Drawing red;
        red.width = got.width;
        red.height = got.height;
        red.pictures = {PutInto(0, 0, red.width, red.height, MakePicture(got.width, got.height, difference))};
        std::string error;
        std::string redPng;
        ASSERT_TRUE(WritePng(red, got.width, got.height, redPng, error)) << error;
        Keep(name + "-difference.png", redPng);
    }
}

} // namespace test
