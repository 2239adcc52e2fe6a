#include "luk_illustration/Entry.h"

#include <gtest/gtest.h>

namespace
{

using namespace test;

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
        merge.PutCategory(MakeCategory("A", "1"));
        merge.PutCategory(MakeCategory("A", "2"));
        for (const auto& [id, name] : {std::pair("a", "1"), {"b", "1"}, {"a", "2"}}) {
            EXPECT_EQ(merge.PutObject(MakeEntry(id, name)), Placement::Added);
        }
        EXPECT_EQ(merge.PutObject(nullptr), Placement::Refused);
        EXPECT_EQ(Names(), "");
        merge.Commit();
    }
    EXPECT_EQ(Names(), "a1 b1 a2 A1 A2 ");
    {
        Collection::Merge merge(*m_collection);
        EXPECT_EQ(merge.PutObject(MakeEntry("a", "1")), Placement::Unchanged);
        EXPECT_EQ(merge.PutObject(MakeEntry("a", "3")), Placement::Changed);
        EXPECT_EQ(merge.PutObject(MakeEntry("a", "4")), Placement::Added);
        EXPECT_EQ(merge.PutObject(MakeEntry("a", "5")), Placement::Added);
        EXPECT_EQ(merge.PutCategory(MakeCategory("A", "3")), Placement::Changed);
        merge.Commit();
    }
    EXPECT_EQ(Names(), "a1 b1 a3 a4 a5 A3 A2 ");
}

TEST_F(MergeTest, TellsOnceAndOnlyOfWhatChanged)
{
    // One letter for the name of each entry, and what is told.
    const std::pair<const char*, const char*> reloads[] = {
        {"abc", "several "}, {"abc", ""}, {"axc", "id1 "}, {"yxz", "several "}};
    for (const auto& [names, told] : reloads) {
        m_listener->log.clear();
        {
            Collection::Merge merge(*m_collection);
            for (std::size_t i = 0; i < 3; ++i) {
                merge.PutObject(MakeEntry("id" + std::to_string(i), {names[i]}));
            }
            merge.Commit();
        }
        EXPECT_EQ(m_listener->log, told) << names;
    }
}

} // namespace
