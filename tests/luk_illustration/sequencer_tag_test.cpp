#include <luk/illustration/SequencerTagPtrComparator.h>

#include <gtest/gtest.h>

#include <functional>

namespace
{

using luk::illustration::SequencerTag;

TEST(SequencerTag, ComparesTextsAndTypeButNotMessageKeys)
{
    const std::tuple<const char*, std::function<void(SequencerTag&)>, bool> cases[] = {
        {"nothing", [](SequencerTag&) {}, true},
        {"name", [](SequencerTag& tag) { tag.SetName("x"); }, false},
        {"description", [](SequencerTag& tag) { tag.SetDescription("x"); }, false},
        {"units", [](SequencerTag& tag) { tag.SetUnits("x"); }, false},
        {"quantity", [](SequencerTag& tag) { tag.SetQuantityString("x"); }, false},
        {"type", [](SequencerTag& tag) { tag.SetType(du::Symbol("x")); }, false},
        {"description key", [](SequencerTag& tag) { tag.SetLocIdDesc("x"); }, true},
        {"units key", [](SequencerTag& tag) { tag.SetLocIdUnits("x"); }, true},
    };
    const luk::illustration::SequencerTagPtrComparator areEqual;
    const auto tag = du::MakeCounted<SequencerTag>();
    tag->SetUnits("mm");
    for (const auto& [what, change, equal] : cases) {
        const auto copy = du::MakeCounted<SequencerTag>(*tag);
        change(*copy);
        EXPECT_EQ(areEqual(tag, copy), equal) << what;
    }
    EXPECT_TRUE(areEqual(nullptr, nullptr));
    EXPECT_FALSE(areEqual(tag, nullptr));
    EXPECT_FALSE(areEqual(nullptr, tag));
}

TEST(SequencerTag, KeepsUnknownKeywords)
{
    const du::Symbol unknown("what nobody knows");
    EXPECT_EQ(SequencerTag::GetSymbolForType(SequencerTag::GetTypeForSymbol(unknown)), unknown);
    EXPECT_FALSE(SequencerTag::IsKnownType(SequencerTag::GetTypeForSymbol(unknown)));
    EXPECT_TRUE(SequencerTag::IsKnownType(SequencerTag::GetTypeForSymbol(du::Symbol("TORQUE"))));
}

} // namespace
