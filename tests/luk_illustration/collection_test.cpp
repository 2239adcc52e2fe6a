#include "luk_illustration/Entry.h"

#include <luk/illustration/SymbolTemplateHolder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <random>

namespace test
{

namespace
{

using Placement = Collection::Placement;

/// What a collection promises, by walking from the front.
class NaiveCollection
{
public:
    std::vector<du::SmartPtr<AssociativeObject>> objects;
    std::vector<du::SmartPtr<CategoryInfo>> categories;

    template <class Item, class Match>
    static du::SmartPtr<Item> First(const std::vector<du::SmartPtr<Item>>& items, const Match& match)
    {
        for (const auto& item : items) {
            if (item && match(*item)) {
                return item;
            }
        }
        return nullptr;
    }

    std::set<std::uint64_t> Indices(const std::string& id) const
    {
        std::set<std::uint64_t> indices;
        for (std::size_t i = 0; i < objects.size(); ++i) {
            if (objects[i] && objects[i]->GetId() == id) {
                indices.insert(i);
            }
        }
        return indices;
    }

    template <class Item>
    static void Remove(std::vector<du::SmartPtr<Item>>& items, const du::SmartPtr<Item>& item)
    {
        if (item) {
            *std::find(items.begin(), items.end(), item) = nullptr;
        }
    }

    template <class Item>
    static void Replace(std::vector<du::SmartPtr<Item>>& items, const du::SmartPtr<Item>& item)
    {
        if (const auto old = First(items, [&](const auto& each) { return each.GetId() == item->GetId(); })) {
            *std::find(items.begin(), items.end(), old) = item;
        } else {
            items.push_back(item);
        }
    }
};

class RandomCollection
{
public:
    explicit RandomCollection(unsigned seed) : m_random(seed) {}

    void Step()
    {
        using Operation = void (RandomCollection::*)();
        static constexpr Operation kOperations[] = {
            &RandomCollection::AddObject,       &RandomCollection::AddObject,      &RandomCollection::ReplaceObject,
            &RandomCollection::RemoveObject,    &RandomCollection::RenameObject,   &RandomCollection::AddAgain,
            &RandomCollection::AddCategory,     &RandomCollection::RenameCategory, &RandomCollection::RemoveCategory,
            &RandomCollection::ReplaceCategory,
        };
        (this->*kOperations[Pick(std::size(kOperations))])();
    }

    void Check() const
    {
        for (std::size_t i = 0; i < kWords; ++i) {
            const std::string word = Word(i);
            const auto hasId = [&](const CollectionItem& item) { return item.GetId() == word; };
            const auto hasName = [&](const CollectionItem& item) { return item.GetName() == word; };
            ASSERT_EQ(m_collection->GetAssociativeObjectById(word), NaiveCollection::First(m_naive.objects, hasId));
            ASSERT_EQ(m_collection->AssociativeObjectIdToIndices(word), m_naive.Indices(word));
            ASSERT_EQ(m_collection->FindCategoryById(word), NaiveCollection::First(m_naive.categories, hasId));
            ASSERT_EQ(m_collection->FindCategoryByName(word), NaiveCollection::First(m_naive.categories, hasName));
        }
        auto objects = m_naive.objects;
        for (std::size_t i = 0; i < objects.size(); ++i) {
            ASSERT_EQ(m_collection->IndexToAssociativeObject(i), objects[i]);
        }
        ASSERT_EQ(m_collection->IndexToAssociativeObject(objects.size()), nullptr);
        std::erase_if(objects, [](const auto& object) { return object == nullptr; });
        ASSERT_EQ(m_collection->GetAssociativeObjects(), objects);
        ASSERT_EQ(m_collection->GetAssociativeObjectCount(), objects.size());
    }

    void Clear()
    {
        m_collection->Clear();
        m_naive = {};
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

    void AddObject()
    {
        m_naive.objects.emplace_back(MakeEntry(AnyWord(), AnyWord()));
        EXPECT_TRUE(m_collection->AddAssociativeObject(m_naive.objects.back()));
    }

    /// The same object may stand at two places, here and in another collection.
    void AddAgain()
    {
        if (const auto object = AnyOf(m_naive.objects)) {
            m_other->AddAssociativeObject(object);
            m_naive.objects.push_back(object);
            m_collection->AddAssociativeObject(object);
        }
    }

    void ReplaceObject()
    {
        const du::SmartPtr<AssociativeObject> entry = MakeEntry(AnyWord(), AnyWord());
        const bool isThere = !m_naive.Indices(entry->GetId()).empty();
        NaiveCollection::Replace(m_naive.objects, entry);
        EXPECT_EQ(m_collection->ReplaceAssociativeObject(entry) == Placement::Added, !isThere);
    }

    void RemoveObject()
    {
        const auto object = AnyOf(m_naive.objects);
        NaiveCollection::Remove(m_naive.objects, object);
        EXPECT_EQ(m_collection->RemoveAssociativeObject(object), object != nullptr);
    }

    void RenameObject()
    {
        if (const auto object = AnyOf(m_naive.objects)) {
            if (Pick(2) == 0) {
                object->SetId(AnyWord());
            } else {
                static_cast<SymbolTemplate&>(*object) = *MakeEntry(AnyWord(), AnyWord());
            }
        }
    }

    void AddCategory()
    {
        m_naive.categories.push_back(MakeCategory(AnyWord(), AnyWord()));
        EXPECT_TRUE(m_collection->AddCategory(m_naive.categories.back()));
    }

    void RenameCategory()
    {
        if (const auto category = AnyOf(m_naive.categories)) {
            Pick(2) == 0 ? category->SetId(AnyWord()) : category->SetName(AnyWord());
        }
    }

    void RemoveCategory()
    {
        const auto category = AnyOf(m_naive.categories);
        NaiveCollection::Remove(m_naive.categories, category);
        EXPECT_EQ(m_collection->RemoveCategory(category), category != nullptr);
    }

    void ReplaceCategory()
    {
        const auto category = MakeCategory(AnyWord(), AnyWord());
        NaiveCollection::Replace(m_naive.categories, category);
        m_collection->ReplaceCategory(category);
    }

    std::mt19937 m_random;
    NaiveCollection m_naive;
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

TEST(Collection, AnItemOutlivesItsCollections)
{
    const auto entry = MakeEntry("a");
    const auto kept = du::MakeCounted<Collection>();
    for (const auto& collection : {du::MakeCounted<Collection>(), kept}) {
        collection->AddAssociativeObject(entry);
    }
    entry->SetId("b");
    EXPECT_EQ(kept->GetAssociativeObjectById("b"), entry);
    EXPECT_EQ(kept->GetAssociativeObjectById("a"), nullptr);
}

TEST(Collection, RefusesNullAndOddIndices)
{
    const auto collection = du::MakeCounted<Collection>();
    EXPECT_FALSE(collection->AddAssociativeObject(nullptr));
    EXPECT_FALSE(collection->AddCategory(nullptr));
    EXPECT_EQ(collection->ReplaceAssociativeObject(nullptr), Placement::Refused);
    collection->AddAssociativeObject(MakeEntry("a"));
    EXPECT_FALSE(collection->RemoveAssociativeObject(MakeEntry("a")));
    for (const std::uint64_t index : {1ULL, 1ULL << 32U, 1ULL << 63U, ~0ULL}) {
        EXPECT_EQ(collection->IndexToAssociativeObject(index), nullptr);
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
}

/// A library whose entries all have one id is read, and read again, without a look through all of them for each.
TEST(Collection, MergesRepeatedIdsInLinearTime)
{
    ExpectLinearTime([](int count) {
        const auto collection = du::MakeCounted<Collection>();
        for (int load = 0; load < 2; ++load) {
            Collection::Merge merge(*collection);
            for (int i = 0; i < count; ++i) {
                merge.PutObject(MakeEntry("same", std::to_string(i)));
            }
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

} // namespace test
