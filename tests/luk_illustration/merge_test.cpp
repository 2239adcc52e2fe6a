#include "luk_illustration/Entry.h"

#include <gtest/gtest.h>

#include <chrono>

namespace test
{

namespace
{

using Placement = Collection::Placement;

class MergeTest : public testing::Test
{
protected:
    MergeTest() { m_collection->RegisterObserver(m_listener); }

    std::string Names() const
    {
        std::string names;
        for (const auto& object : m_collection->GetAssociativeObjects()) {
            names += object->GetId() + object->GetName() + " ";
        }
        std::vector<du::SmartPtr<CategoryInfo>> categories;
        m_collection->GetCategories(categories);
        for (const auto& category : categories) {
            names += category->GetId() + category->GetName() + " ";
        }
        return names;
    }

    du::SmartPtr<Collection> m_collection = du::MakeCounted<Collection>();
    du::SmartPtr<CollectionListener> m_listener = du::MakeCounted<CollectionListener>();
};

TEST_F(MergeTest, TheNthOfAnIdReplacesTheNth)
{
    {
        Collection::Merge merge(*m_collection);
        EXPECT_EQ(merge.PutCategory(MakeCategory("A", "1")), Placement::Added);
        EXPECT_EQ(merge.PutCategory(MakeCategory("A", "2")), Placement::Added);
        EXPECT_EQ(merge.PutObject(MakeEntry("a", "1")), Placement::Added);
        EXPECT_EQ(merge.PutObject(MakeEntry("b", "1")), Placement::Added);
        EXPECT_EQ(merge.PutObject(MakeEntry("a", "2")), Placement::Added);
        EXPECT_EQ(merge.PutObject(nullptr), Placement::Refused);
    }
    EXPECT_EQ(Names(), "a1 b1 a2 A1 A2 ");
    {
        Collection::Merge merge(*m_collection);
        EXPECT_EQ(merge.PutObject(MakeEntry("a", "1")), Placement::Unchanged);
        EXPECT_EQ(merge.PutObject(MakeEntry("a", "3")), Placement::Changed);
        EXPECT_EQ(merge.PutObject(MakeEntry("a", "4")), Placement::Added);
        EXPECT_EQ(merge.PutObject(MakeEntry("a", "5")), Placement::Added);
        EXPECT_EQ(merge.PutCategory(MakeCategory("A", "3")), Placement::Changed);
    }
    EXPECT_EQ(Names(), "a1 b1 a3 a4 a5 A3 A2 ");
}

TEST_F(MergeTest, TellsOnceAndOnlyOfWhatChanged)
{
    const auto reload = [this](const std::vector<std::string>& names) {
        Collection::Merge merge(*m_collection);
        for (std::size_t i = 0; i < names.size(); ++i) {
            merge.PutObject(MakeEntry("id" + std::to_string(i), names[i]));
        }
    };
    const struct {
        std::vector<std::string> names;
        const char* told;
    } cases[] = {
        {{"a", "b", "c"}, "several "}, {{"a", "b", "c"}, ""}, {{"a", "x", "c"}, "id1 "}, {{"y", "x", "z"}, "several "}};
    for (const auto& [names, told] : cases) {
        m_listener->log.clear();
        reload(names);
        EXPECT_EQ(m_listener->log, told) << names[1];
    }
}

/// A reload of a library whose entries all have one id must not look through all of them for each.
TEST_F(MergeTest, ReloadsRepeatedIdsInLinearTime)
{
    const auto secondsFor = [](int count) {
        const auto collection = du::MakeCounted<Collection>();
        const auto start = std::chrono::steady_clock::now();
        for (int load = 0; load < 2; ++load) {
            Collection::Merge merge(*collection);
            for (int i = 0; i < count; ++i) {
                merge.PutObject(MakeEntry("same", std::to_string(i)));
            }
        }
        EXPECT_EQ(collection->GetAssociativeObjectCount(), static_cast<std::size_t>(count));
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const double small = secondsFor(3000);
    EXPECT_LT(secondsFor(30000), 40 * small + 0.05);
}

} // namespace

} // namespace test
