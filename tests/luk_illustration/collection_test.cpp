#include "luk_illustration/Entry.h"

#include <luk/illustration/SymbolTemplateHolder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>

namespace
{

using namespace test;

using Placement = Collection::Placement;

/// The first item of a list that matches, as a walk from the front finds it.
template <class Item, class Match>
du::SmartPtr<Item> First(const std::vector<du::SmartPtr<Item>>& items, const Match& match)
{
    const auto found = std::ranges::find_if(items, [&](const auto& item) { return item && match(*item); });
    return found == items.end() ? nullptr : *found;
}

/// The item takes the place of the first one with its id, or the last place.
template <class Item>
void Put(std::vector<du::SmartPtr<Item>>& items, const du::SmartPtr<Item>& item)
{
    if (const auto old = First(items, [&](const auto& each) { return each.GetId() == item->GetId(); })) {
        *std::ranges::find(items, old) = item;
    } else {
        items.push_back(item);
    }
}

/// A collection and two lists that say what it promises, under random operations.
class RandomCollection
{
public:
    explicit RandomCollection(unsigned seed) : m_random(seed) {}

    void Step()
    {
        const du::SmartPtr<AssociativeObject> entry = MakeEntry(AnyWord(), AnyWord());
        const auto category = MakeCategory(AnyWord(), AnyWord());
        const auto object = AnyOf(m_objects);
        const auto oldCategory = AnyOf(m_categories);
        const auto add = [&] {
            m_objects.push_back(entry);
            EXPECT_TRUE(m_collection->AddAssociativeObject(entry));
        };
        const std::function<void()> operations[] = {
            add,
            add,
            [&] { // the same object may stand at two places, here and in another collection
                if (object) {
                    m_other->AddAssociativeObject(object);
                    m_objects.push_back(object);
                    m_collection->AddAssociativeObject(object);
                }
            },
            [&] {
                const bool isThere = !IndicesOf(entry->GetId()).empty();
                Put(m_objects, entry);
                EXPECT_EQ(m_collection->ReplaceAssociativeObject(entry) == Placement::Added, !isThere);
            },
            [&] {
                if (object) {
                    *std::ranges::find(m_objects, object) = nullptr;
                }
                EXPECT_EQ(m_collection->RemoveAssociativeObject(object), object != nullptr);
            },
            [&] {
                if (object && Pick(2) == 0) {
                    object->SetId(AnyWord());
                } else if (object) {
                    static_cast<SymbolTemplate&>(*object) = static_cast<SymbolTemplate&>(*entry);
                }
            },
            [&] {
                m_categories.push_back(category);
                EXPECT_TRUE(m_collection->AddCategory(category));
            },
            [&] {
                if (oldCategory) {
                    Pick(2) == 0 ? oldCategory->SetId(AnyWord()) : oldCategory->SetName(AnyWord());
                }
            },
            [&] {
                if (oldCategory) {
                    *std::ranges::find(m_categories, oldCategory) = nullptr;
                }
                EXPECT_EQ(m_collection->RemoveCategory(oldCategory), oldCategory != nullptr);
            },
            [&] {
                Put(m_categories, category);
                m_collection->ReplaceCategory(category);
            },
        };
        operations[Pick(std::size(operations))]();
    }

    void Check() const
    {
        for (std::size_t i = 0; i < kWords; ++i) {
            const std::string word = Word(i);
            const auto hasId = [&](const CollectionItem& item) { return item.GetId() == word; };
            const auto hasName = [&](const CollectionItem& item) { return item.GetName() == word; };
            ASSERT_EQ(m_collection->GetAssociativeObjectById(word), First(m_objects, hasId));
            ASSERT_EQ(m_collection->AssociativeObjectIdToIndices(word), IndicesOf(word));
            ASSERT_EQ(m_collection->FindCategoryById(word), First(m_categories, hasId));
            ASSERT_EQ(m_collection->FindCategoryByName(word), First(m_categories, hasName));
        }
        auto objects = m_objects;
        for (std::size_t i = 0; i < objects.size(); ++i) {
            ASSERT_EQ(m_collection->IndexToAssociativeObject(i), objects[i]);
        }
        ASSERT_EQ(m_collection->IndexToAssociativeObject(objects.size()), nullptr);
        std::erase(objects, nullptr);
        ASSERT_EQ(m_collection->GetAssociativeObjects(), objects);
        ASSERT_EQ(m_collection->GetAssociativeObjectCount(), objects.size());
    }

    void Clear()
    {
        m_collection->Clear();
        m_objects.clear();
        m_categories.clear();
    }

private:
    static constexpr std::size_t kWords = 12;

    static std::string Word(std::size_t i) { return std::string(i % 4, 'w') + std::to_string(i / 4); }
    std::size_t Pick(std::size_t count) { return m_random() % count; }
    std::string AnyWord() { return Word(Pick(kWords)); }

    template <class Items>
    typename Items::value_type AnyOf(const Items& items)
    {
        return items.empty() ? nullptr : items[Pick(items.size())];
    }

    std::set<std::uint64_t> IndicesOf(const std::string& id) const
    {
        std::set<std::uint64_t> indices;
        for (std::size_t i = 0; i < m_objects.size(); ++i) {
            if (m_objects[i] && m_objects[i]->GetId() == id) {
                indices.insert(i);
            }
        }
        return indices;
    }

    std::mt19937 m_random;
    std::vector<du::SmartPtr<AssociativeObject>> m_objects;
    std::vector<du::SmartPtr<CategoryInfo>> m_categories;
    du::SmartPtr<Collection> m_collection = du::MakeCounted<Collection>();
    du::SmartPtr<Collection> m_other = du::MakeCounted<Collection>();
};

/// Ten times the items may take little more than ten times the time.
template <class Work>
void ExpectLinearTime(const Work& work)
{
    const auto secondsFor = [&work](int count) {
        const auto start = std::chrono::steady_clock::now();
        work(count);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const double small = secondsFor(3000);
    EXPECT_LT(secondsFor(30000), 40 * small + 0.05);
}

TEST(Collection, AnswersAsAWalkFromTheFrontWould)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        RandomCollection collection(seed);
        for (int step = 0; step < 300; ++step) {
            collection.Step();
            collection.Check();
            ASSERT_FALSE(testing::Test::HasFatalFailure()) << "step " << step;
        }
        collection.Clear();
        collection.Step();
        collection.Check();
    }
}

TEST(Collection, AnItemOutlivesItsCollectionsAndStrangersAreRefused)
{
    const auto entry = MakeEntry("a");
    const auto kept = du::MakeCounted<Collection>();
    for (const auto& collection : {du::MakeCounted<Collection>(), kept}) {
        collection->AddAssociativeObject(entry);
    }
    entry->SetId("b");
    EXPECT_EQ(kept->GetAssociativeObjectById("b"), entry);
    EXPECT_EQ(kept->GetAssociativeObjectById("a"), nullptr);
    EXPECT_FALSE(kept->AddAssociativeObject(nullptr) || kept->AddCategory(nullptr));
    EXPECT_EQ(kept->ReplaceAssociativeObject(nullptr), Placement::Refused);
    EXPECT_FALSE(kept->RemoveAssociativeObject(MakeEntry("b")));
    for (const std::uint64_t index : {1ULL, 1ULL << 32U, 1ULL << 63U, ~0ULL}) {
        EXPECT_EQ(kept->IndexToAssociativeObject(index), nullptr);
    }
}

TEST(Collection, GrowsLinearly)
{
    for (const bool sameId : {false, true}) {
        ExpectLinearTime([sameId](int count) {
            const auto collection = du::MakeCounted<Collection>();
            for (int i = 0; i < count; ++i) {
                collection->AddAssociativeObject(MakeEntry(sameId ? "same" : std::to_string(i)));
                collection->AddCategory(MakeCategory("same", sameId ? "same" : std::to_string(i)));
            }
            for (const auto& object : collection->GetAssociativeObjects()) {
                object->SetId(object->GetId() + "x");
                collection->GetAssociativeObjectById(object->GetId());
            }
        });
    }
    // A library whose entries all have one id is read, and read again, without a look through all of them for each.
    ExpectLinearTime([](int count) {
        const auto collection = du::MakeCounted<Collection>();
        for (int load = 0; load < 2; ++load) {
            Collection::Merge merge(*collection);
            for (int i = 0; i < count; ++i) {
                merge.PutObject(MakeEntry("same", std::to_string(i)));
            }
            merge.Commit();
        }
        EXPECT_EQ(collection->GetAssociativeObjectCount(), static_cast<std::size_t>(count));
    });
}

TEST(Collection, TellsEachChangeOnceAndABatchAltogether)
{
    const auto collection = du::MakeCounted<Collection>();
    const auto listener = du::MakeCounted<CollectionListener>();
    collection->RegisterObserver(listener);
    const auto check = [&](const char* expected) {
        EXPECT_EQ(listener->log, expected);
        listener->log.clear();
    };
    const auto entry = MakeEntry("a");
    collection->AddAssociativeObject(entry);
    check("a ");
    collection->ReplaceAssociativeObject(MakeEntry("a"));
    check("");
    collection->ReplaceAssociativeObject(MakeEntry("a", "new name"));
    check("a ");
    {
        const Collection::UpdateBatch outer(*collection);
        {
            Collection::UpdateBatch inner(*collection);
            collection->AddAssociativeObject(MakeEntry("b"));
            inner.SetLoadedFromStandard();
        }
        check("");
    }
    check("standard b ");
    collection->Clear();
    check("several ");
    collection->Clear();
    check("");
    collection->UnregisterObserver(listener);
    check("detached ");
}

TEST(Collection, TellsThoseWhomAChangeConcerns)
{
    const auto collection = du::MakeCounted<Collection>();
    const auto all = du::MakeCounted<CollectionListener>();
    const auto onlyA = du::MakeCounted<CollectionListener>();
    const auto onlyB = du::MakeCounted<CollectionListener>();
    EXPECT_TRUE(collection->RegisterObserver(all));
    EXPECT_TRUE(collection->RegisterObserver(onlyA, "a"));
    EXPECT_TRUE(collection->RegisterObserver(onlyB, "b"));
    EXPECT_FALSE(collection->RegisterObserver(onlyB, "a")) << "one place is enough";
    EXPECT_FALSE(collection->RegisterObserver(nullptr, "a"));
    collection->AddAssociativeObject(MakeEntry("a"));
    collection->AddAssociativeObject(MakeEntry("other"));
    collection->Clear();
    {
        Collection::UpdateBatch batch(*collection);
        collection->AddAssociativeObject(MakeEntry("b"));
        batch.SetLoadedFromStandard();
    }
    // So that nobody is left who wants to hear of "a" while that is told.
    onlyA->reaction = [&] { collection->UnregisterObserver(onlyA); };
    collection->AddAssociativeObject(MakeEntry("a"));
    collection->AddAssociativeObject(MakeEntry("a"));
    EXPECT_EQ(all->log, "a other several standard b a a ");
    EXPECT_EQ(onlyA->log, "a several standard b a detached ");
    EXPECT_EQ(onlyB->log, "several standard b ");
    EXPECT_EQ(collection->GetObserverCount(), 2U);
}

TEST(Collection, ObserversMayChangeItWhileTheyAreTold)
{
    const auto collection = du::MakeCounted<Collection>();
    const auto listener = du::MakeCounted<CollectionListener>();
    const auto neighbour = du::MakeCounted<CollectionListener>();
    collection->RegisterObserver(listener);
    collection->RegisterObserver(neighbour);
    listener->reaction = [&] {
        if (collection->UnregisterObserver(neighbour)) {
            collection->AddAssociativeObject(MakeEntry("second"));
        }
    };
    collection->AddAssociativeObject(MakeEntry("first"));
    EXPECT_EQ(listener->log, "first second ");
    EXPECT_EQ(neighbour->log, "detached ");
}

TEST(Collection, DetachesObserversWhenItIsReplacedOrEnds)
{
    const auto& handle = Collection::GetCollection();
    const auto listener = du::MakeCounted<CollectionListener>();
    const auto old = du::MakeCounted<Collection>();
    Collection::SetCollection(old);
    old->RegisterObserver(listener);
    Collection::SetCollection(du::MakeCounted<Collection>());
    EXPECT_EQ(listener->log, "detached ");
    EXPECT_FALSE(handle->UnregisterObserver(listener));

    handle->RegisterObserver(listener);
    Collection::SetCollection(nullptr);
    EXPECT_EQ(listener->log, "detached detached ");
    EXPECT_EQ(&handle, &Collection::GetCollection());
}

TEST(SymbolTemplateHolder, FollowsTheIdAndHoldsNothing)
{
    luk::illustration::SymbolTemplateHolder holder;
    auto entry = MakeEntry("a");
    EXPECT_FALSE(holder.UpdateAssociativeObject(entry)) << "without a collection";

    Collection::SetCollection(du::MakeCounted<Collection>());
    EXPECT_FALSE(holder.UpdateAssociativeObject(entry)) << "unknown to the collection";
    Collection::GetCollection()->AddAssociativeObject(entry);
    EXPECT_TRUE(holder.UpdateAssociativeObject(entry));
    EXPECT_FALSE(holder.UpdateAssociativeObject(nullptr));
    EXPECT_EQ(holder.GetRelatedAssociativeObject(), entry);
    EXPECT_EQ(entry->GetReferenceCount(), 2u);

    const luk::illustration::SymbolTemplateHolder copy(holder);
    holder.ReleaseAssociativeObject();
    EXPECT_EQ(holder.GetRelatedAssociativeObject(), nullptr);
    const auto successor = MakeEntry("a", "new");
    Collection::GetCollection()->ReplaceAssociativeObject(successor);
    EXPECT_EQ(copy.GetRelatedAssociativeObject(), successor);
    Collection::SetCollection(nullptr);
    EXPECT_EQ(copy.GetRelatedAssociativeObject(), nullptr);
}

} // namespace
