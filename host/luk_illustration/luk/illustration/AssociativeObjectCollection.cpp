#include <luk/illustration/AssociativeObject.h>
#include <luk/illustration/AssociativeObjectCollection.h>
#include <luk/illustration/AssociativeObjectObserver.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/CollectionInformation.h>
#include <luk/illustration/ObjectObservers.h>
#include <luk/illustration/PositionIndex.h>
#include <luk/illustration/SymbolTemplate.h>

#include <algorithm>
#include <new>
#include <unordered_map>
#include <utility>

namespace luk::illustration
{

namespace
{

/// Set in the place of a category, so that an item's place tells which of the two lists it is in.
constexpr std::uint32_t kCategoryBit = 0x80000000U;

template <class Item>
class IdKeys final : public PositionIndex::KeySource
{
public:
    explicit IdKeys(const std::vector<du::SmartPtr<Item>>& items) : m_items(items) {}
    std::string_view KeyAt(std::uint32_t position) const override { return m_items[position]->GetId(); }

private:
    const std::vector<du::SmartPtr<Item>>& m_items;
};

template <class Item>
class NameKeys final : public PositionIndex::KeySource
{
public:
    explicit NameKeys(const std::vector<du::SmartPtr<Item>>& items) : m_items(items) {}
    std::string_view KeyAt(std::uint32_t position) const override { return m_items[position]->GetName(); }

private:
    const std::vector<du::SmartPtr<Item>>& m_items;
};

/// Grows to twice the room at least, so that many small requests cost no more than one large one.
template <class T>
void ReserveMore(std::vector<T>& items, std::size_t more)
{
    const std::size_t needed = items.size() + more;
    if (needed > items.capacity()) {
        items.reserve(std::max(needed, 2 * items.capacity()));
    }
}

/// Objects in order. The object at an index is null once it has been removed.
struct ObjectList {
    using Item = AssociativeObject;

    std::vector<du::SmartPtr<Item>> items;
    std::size_t count = 0;
    PositionIndex byId;

    void Index(std::uint32_t position) { byId.Insert(IdKeys(items), items[position]->GetId(), position); }
    /// Before the item that is at the position is replaced by one of the same id.
    void WillReplace(std::uint32_t, const Item&) {}
    void Unindex(std::uint32_t position) { byId.Erase(IdKeys(items), items[position]->GetId(), position); }
    void Reserve(std::size_t more)
    {
        ReserveMore(items, more);
        byId.Reserve(items.size() + more);
    }
    void Clear()
    {
        byId.Clear();
        count = 0;
    }
    static constexpr std::uint32_t kPlaceBit = 0;
};

/// Categories in order, as the objects are.
struct CategoryList {
    using Item = CategoryInfo;

    std::vector<du::SmartPtr<Item>> items;
    std::size_t count = 0;
    PositionIndex byId;
    PositionIndex byName;

    void Index(std::uint32_t position)
    {
        byId.Insert(IdKeys(items), items[position]->GetId(), position);
        try {
            byName.Insert(NameKeys(items), items[position]->GetName(), position);
        } catch (const std::bad_alloc&) {
            byId.Erase(IdKeys(items), items[position]->GetId(), position);
            throw;
        }
    }
    /// Before the item that is at the position is replaced by one of the same id.
    void WillReplace(std::uint32_t position, const Item& item)
    {
        if (items[position]->GetName() != item.GetName()) {
            byName.Insert(NameKeys(items), item.GetName(), position);
            byName.Erase(NameKeys(items), items[position]->GetName(), position);
        }
    }
    void Unindex(std::uint32_t position)
    {
        byId.Erase(IdKeys(items), items[position]->GetId(), position);
        byName.Erase(NameKeys(items), items[position]->GetName(), position);
    }
    void Reserve(std::size_t more)
    {
        ReserveMore(items, more);
        byId.Reserve(items.size() + more);
        byName.Reserve(items.size() + more);
    }
    void Clear()
    {
        byId.Clear();
        byName.Clear();
        count = 0;
    }
    static constexpr std::uint32_t kPlaceBit = kCategoryBit;
};

/// Appends an item, whole or not at all. @return false when it is refused
template <class List>
bool Append(List& list, const du::SmartPtr<typename List::Item>& item)
{
    if (!item || list.items.size() >= PositionIndex::kMaxPositions) {
        return false;
    }
    list.items.push_back(item);
    try {
        list.Index(static_cast<std::uint32_t>(list.items.size() - 1));
    } catch (const std::bad_alloc&) {
        list.items.pop_back();
        throw;
    }
    ++list.count;
    return true;
}

template <class List>
du::SmartPtr<typename List::Item> ItemAt(const List& list, std::uint64_t index)
{
    return index < list.items.size() ? list.items[static_cast<std::size_t>(index)] : nullptr;
}

template <class List>
std::vector<du::SmartPtr<typename List::Item>> PresentItems(const List& list)
{
    std::vector<du::SmartPtr<typename List::Item>> present;
    present.reserve(list.count);
    for (const auto& item : list.items) {
        if (item) {
            present.push_back(item);
        }
    }
    return present;
}

bool SaysTheSame(const AssociativeObject& item, const du::SmartPtr<AssociativeObject>& other)
{
    return item.Compare(other);
}

bool SaysTheSame(const CategoryInfo& item, const du::SmartPtr<CategoryInfo>& other)
{
    return item.GetName() == other->GetName() && item.GetOrigin() == other->GetOrigin();
}

} // namespace

struct AssociativeObjectCollection::Content {
    ObjectList objects;
    CategoryList categories;
    du::SmartPtr<CollectionInformation> information;
    ObjectObservers observers;

    std::size_t openBatches = 0;
    std::size_t changes = 0;
    du::SmartPtr<AssociativeObject> onlyChanged;
    bool loadedFromStandard = false;

    void NoteChange(const du::SmartPtr<AssociativeObject>& object)
    {
        if (changes == 0) {
            onlyChanged = object;
        } else if (onlyChanged != object) {
            onlyChanged = nullptr;
        }
        ++changes;
        if (openBatches == 0) {
            TellChanges();
        }
    }

    /// Those who cannot be told for lack of memory are told with the next change.
    void TellChanges() noexcept
    {
        const bool loaded = std::exchange(loadedFromStandard, false);
        const std::size_t changed = std::exchange(changes, 0);
        const du::SmartPtr<AssociativeObject> object = std::exchange(onlyChanged, nullptr);
        if (!loaded && changed == 0) {
            return;
        }
        try {
            Tell(loaded, changed > 0, object);
        } catch (const std::bad_alloc&) {
            loadedFromStandard = loadedFromStandard || loaded;
            onlyChanged = changes == 0 ? object : nullptr;
            changes += changed;
        }
    }

    void Tell(bool loaded, bool changed, const du::SmartPtr<AssociativeObject>& object) const
    {
        const std::string* const id = object && !loaded ? &object->GetId() : nullptr;
        observers.Notify(id, [&](AssociativeObjectObserver& observer) {
            if (loaded) {
                observer.OnCollectionLoadedFromStandard();
            }
            if (changed) {
                observer.OnAssociativeObjectChanged(object);
            }
        });
    }

    template <class List>
    static bool Add(AssociativeObjectCollection& collection, List& list, const du::SmartPtr<typename List::Item>& item)
    {
        if (!Append(list, item)) {
            return false;
        }
        const auto position = static_cast<std::uint32_t>(list.items.size() - 1);
        try {
            item->AddPlace(collection, position | List::kPlaceBit);
        } catch (const std::bad_alloc&) {
            list.Unindex(position);
            list.items.pop_back();
            --list.count;
            throw;
        }
        return true;
    }

    /// @param old at the position now, with the id of the item
    template <class List>
    static Placement ReplaceAt(AssociativeObjectCollection& collection, List& list, std::uint32_t position,
                               const du::SmartPtr<typename List::Item>& old,
                               const du::SmartPtr<typename List::Item>& item)
    {
        const std::uint32_t place = position | List::kPlaceBit;
        const bool same = SaysTheSame(*old, item);
        item->AddPlace(collection, place);
        try {
            list.WillReplace(position, *item);
        } catch (const std::bad_alloc&) {
            item->RemovePlace(collection, place);
            throw;
        }
        old->RemovePlace(collection, place);
        list.items[position] = item;
        return same ? Placement::Unchanged : Placement::Changed;
    }

    /// Users may hold the entry that goes, and come or leave there later.
    static void HandOverConsumers(AssociativeObject& from, AssociativeObject& to)
    {
        auto* const predecessor = dynamic_cast<SymbolTemplate*>(&from);
        auto* const successor = dynamic_cast<SymbolTemplate*>(&to);
        constexpr std::uint32_t kOwnHandles = 2; // the collection's, and that of who replaces the entry
        if (predecessor && successor &&
            (predecessor->GetConsumerCount() > 0 || predecessor->GetReferenceCount() > kOwnHandles)) {
            successor->ShareConsumersOf(*predecessor);
        }
    }

    /// @param position of an object of the same id
    Placement ReplaceObject(AssociativeObjectCollection& collection, std::uint32_t position,
                            const du::SmartPtr<AssociativeObject>& object)
    {
        const du::SmartPtr<AssociativeObject> old = objects.items[position];
        if (old == object) {
            return Placement::Unchanged;
        }
        HandOverConsumers(*old, *object);
        const Placement placement = ReplaceAt(collection, objects, position, old, object);
        if (placement == Placement::Changed) {
            NoteChange(object);
        }
        return placement;
    }

    /// The same for a category.
    Placement ReplaceCategory(AssociativeObjectCollection& collection, std::uint32_t position,
                              const du::SmartPtr<CategoryInfo>& category)
    {
        const du::SmartPtr<CategoryInfo> old = categories.items[position];
        return old == category ? Placement::Unchanged : ReplaceAt(collection, categories, position, old, category);
    }

    template <class List>
    static bool Remove(AssociativeObjectCollection& collection, List& list,
                       const du::SmartPtr<typename List::Item>& item)
    {
        std::uint32_t place = 0;
        if (!item || !item->FindPlace(collection, place)) {
            return false;
        }
        const std::uint32_t position = place & ~kCategoryBit;
        list.Unindex(position);
        item->RemovePlace(collection, place);
        list.items[position] = nullptr;
        --list.count;
        return true;
    }

    /// The items are released last: their end may come back to the collection.
    template <class List>
    static std::vector<du::SmartPtr<typename List::Item>> TakeAll(AssociativeObjectCollection& collection, List& list)
    {
        for (const du::SmartPtr<typename List::Item>& item : list.items) {
            if (item) {
                item->RemovePlaces(collection);
            }
        }
        list.Clear();
        return std::exchange(list.items, {});
    }
};

AssociativeObjectCollection::AssociativeObjectCollection() : m_content(std::make_unique<Content>()) {}

AssociativeObjectCollection::~AssociativeObjectCollection()
{
    m_content->observers.DetachAll();
    Content::TakeAll(*this, m_content->objects);
    Content::TakeAll(*this, m_content->categories);
}

du::SmartPtr<AssociativeObject> AssociativeObjectCollection::GetAssociativeObjectById(std::string_view id) const
{
    const ObjectList& list = m_content->objects;
    return ItemAt(list, list.byId.FindFirst(IdKeys(list.items), id));
}

std::vector<du::SmartPtr<AssociativeObject>> AssociativeObjectCollection::GetAssociativeObjects() const
{
    return PresentItems(m_content->objects);
}

std::size_t AssociativeObjectCollection::GetAssociativeObjectCount() const noexcept { return m_content->objects.count; }

du::SmartPtr<AssociativeObject> AssociativeObjectCollection::IndexToAssociativeObject(std::uint64_t index) const
{
    return ItemAt(m_content->objects, index);
}

std::set<std::uint64_t> AssociativeObjectCollection::AssociativeObjectIdToIndices(std::string_view id) const
{
    return m_content->objects.byId.FindAll(IdKeys(m_content->objects.items), id);
}

void AssociativeObjectCollection::GetCategories(std::vector<du::SmartPtr<CategoryInfo>>& categories) const
{
    categories = PresentItems(m_content->categories);
}

std::size_t AssociativeObjectCollection::GetCategoryCount() const noexcept { return m_content->categories.count; }

du::SmartPtr<CategoryInfo> AssociativeObjectCollection::FindCategoryById(std::string_view id) const
{
    const CategoryList& list = m_content->categories;
    return ItemAt(list, list.byId.FindFirst(IdKeys(list.items), id));
}

du::SmartPtr<CategoryInfo> AssociativeObjectCollection::FindCategoryByName(std::string_view name) const
{
    const CategoryList& list = m_content->categories;
    return ItemAt(list, list.byName.FindFirst(NameKeys(list.items), name));
}

bool AssociativeObjectCollection::AddAssociativeObject(const du::SmartPtr<AssociativeObject>& object)
{
    const bool added = Content::Add(*this, m_content->objects, object);
    if (added) {
        m_content->NoteChange(object);
    }
    return added;
}

bool AssociativeObjectCollection::AddCategory(const du::SmartPtr<CategoryInfo>& category)
{
    return Content::Add(*this, m_content->categories, category);
}

AssociativeObjectCollection::Placement
AssociativeObjectCollection::ReplaceAssociativeObject(const du::SmartPtr<AssociativeObject>& object)
{
    if (!object) {
        return Placement::Refused;
    }
    const ObjectList& list = m_content->objects;
    const std::uint32_t position = list.byId.FindFirst(IdKeys(list.items), object->GetId());
    if (position != PositionIndex::kNone) {
        return m_content->ReplaceObject(*this, position, object);
    }
    return AddAssociativeObject(object) ? Placement::Added : Placement::Refused;
}

AssociativeObjectCollection::Placement
AssociativeObjectCollection::ReplaceCategory(const du::SmartPtr<CategoryInfo>& category)
{
    if (!category) {
        return Placement::Refused;
    }
    const CategoryList& list = m_content->categories;
    const std::uint32_t position = list.byId.FindFirst(IdKeys(list.items), category->GetId());
    if (position != PositionIndex::kNone) {
        return m_content->ReplaceCategory(*this, position, category);
    }
    return AddCategory(category) ? Placement::Added : Placement::Refused;
}

bool AssociativeObjectCollection::RemoveAssociativeObject(const du::SmartPtr<AssociativeObject>& object)
{
    const du::SmartPtr<AssociativeObject> kept = object;
    const bool removed = Content::Remove(*this, m_content->objects, kept);
    if (removed) {
        m_content->NoteChange(kept);
    }
    return removed;
}

bool AssociativeObjectCollection::RemoveCategory(const du::SmartPtr<CategoryInfo>& category)
{
    const du::SmartPtr<CategoryInfo> kept = category;
    return Content::Remove(*this, m_content->categories, kept);
}

void AssociativeObjectCollection::Clear()
{
    const UpdateBatch batch(*this);
    const auto objects = Content::TakeAll(*this, m_content->objects);
    const auto categories = Content::TakeAll(*this, m_content->categories);
    for (const du::SmartPtr<AssociativeObject>& object : objects) {
        if (object) {
            m_content->NoteChange(object);
        }
    }
}

void AssociativeObjectCollection::Reserve(std::size_t objects, std::size_t categories)
{
    m_content->objects.Reserve(objects);
    m_content->categories.Reserve(categories);
}

const du::SmartPtr<CollectionInformation>& AssociativeObjectCollection::GetInformation() const noexcept
{
    return m_content->information;
}

void AssociativeObjectCollection::SetInformation(const du::SmartPtr<CollectionInformation>& information)
{
    m_content->information = information;
}

bool AssociativeObjectCollection::RegisterObserver(const du::SmartPtr<AssociativeObjectObserver>& observer,
                                                   std::string_view id)
{
    return m_content->observers.Register(observer, id);
}

bool AssociativeObjectCollection::UnregisterObserver(const AssociativeObjectObserver* observer)
{
    return m_content->observers.Unregister(observer);
}

bool AssociativeObjectCollection::UnregisterObserver(const du::SmartPtr<AssociativeObjectObserver>& observer)
{
    return UnregisterObserver(observer.get());
}

std::size_t AssociativeObjectCollection::GetObserverCount() const { return m_content->observers.GetCount(); }

void AssociativeObjectCollection::NotifyChanged(const du::SmartPtr<AssociativeObject>& object)
{
    m_content->NoteChange(object);
}

void AssociativeObjectCollection::DetachAllObservers() { m_content->observers.DetachAll(); }

void AssociativeObjectCollection::PlaceRenaming(std::uint32_t place)
{
    if ((place & kCategoryBit) != 0) {
        m_content->categories.Unindex(place & ~kCategoryBit);
    } else {
        m_content->objects.Unindex(place);
    }
}

void AssociativeObjectCollection::PlaceRenamed(std::uint32_t place)
{
    if ((place & kCategoryBit) != 0) {
        m_content->categories.Index(place & ~kCategoryBit);
    } else {
        m_content->objects.Index(place);
    }
}

AssociativeObjectCollection::UpdateBatch::UpdateBatch(AssociativeObjectCollection& collection)
    : m_collection(&collection)
{
    ++m_collection->m_content->openBatches;
}

AssociativeObjectCollection::UpdateBatch::~UpdateBatch()
{
    if (--m_collection->m_content->openBatches == 0) {
        m_collection->m_content->TellChanges();
    }
}

void AssociativeObjectCollection::UpdateBatch::SetLoadedFromStandard()
{
    m_collection->m_content->loadedFromStandard = true;
}

namespace
{

/// Finds for each item of a new library the one in the collection that it replaces.
class Predecessors
{
public:
    template <class List>
    explicit Predecessors(const List& list) : m_taken(list.items.size(), false)
    {
    }

    template <class List>
    std::uint32_t Take(const List& list, const std::string& id)
    {
        std::uint32_t position = list.byId.FindFirst(IdKeys(list.items), id);
        if (position < m_taken.size() && m_taken[position]) {
            std::uint32_t& next = m_nextOfRepeated.try_emplace(id, position + 1).first->second;
            position = list.byId.FindFrom(IdKeys(list.items), id, next);
            next = position < m_taken.size() ? position + 1 : next;
        }
        if (position >= m_taken.size()) {
            return PositionIndex::kNone;
        }
        m_taken[position] = true;
        return position;
    }

private:
    std::vector<bool> m_taken;
    std::unordered_map<std::string, std::uint32_t> m_nextOfRepeated;
};

/// The items of one kind as they will be after a merge, and what brings them there.
template <class List>
class MergedList
{
public:
    using Item = typename List::Item;
    using ItemPtr = du::SmartPtr<Item>;
    using Placement = AssociativeObjectCollection::Placement;

    struct Step {
        std::uint32_t position;
        ItemPtr item;
        ItemPtr old; ///< null for an item that is added
        Placement placement;
    };

    explicit MergedList(const List& list) : m_list(list), m_predecessors(list) {}

    void Reserve(std::size_t more)
    {
        m_list.Reserve(more);
        m_steps.reserve(m_steps.size() + more);
    }

    Placement Put(const ItemPtr& item)
    {
        if (!item) {
            return Placement::Refused;
        }
        const std::uint32_t position = m_predecessors.Take(m_list, item->GetId());
        return position == PositionIndex::kNone ? PutNew(item) : PutAt(position, item);
    }

    const std::vector<Step>& GetSteps() const { return m_steps; }
    void SwapWith(List& list) noexcept { std::swap(m_list, list); }

private:
    Placement PutNew(const ItemPtr& item)
    {
        const auto position = static_cast<std::uint32_t>(m_list.items.size());
        ReserveMore(m_steps, 1);
        if (!Append(m_list, item)) {
            return Placement::Refused;
        }
        m_steps.push_back({position, item, nullptr, Placement::Added});
        return Placement::Added;
    }

    Placement PutAt(std::uint32_t position, const ItemPtr& item)
    {
        ItemPtr& place = m_list.items[position];
        if (place == item) {
            return Placement::Unchanged;
        }
        ReserveMore(m_steps, 1);
        const Placement placement = SaysTheSame(*place, item) ? Placement::Unchanged : Placement::Changed;
        m_list.WillReplace(position, *item);
        m_steps.push_back({position, item, std::exchange(place, item), placement});
        return placement;
    }

    List m_list;
    Predecessors m_predecessors;
    std::vector<Step> m_steps;
};

} // namespace

struct AssociativeObjectCollection::Merge::State {
    explicit State(AssociativeObjectCollection& mergedInto)
        : collection(mergedInto), batch(mergedInto), objects(mergedInto.m_content->objects),
          categories(mergedInto.m_content->categories)
    {
    }

    /// Tells the items where they will be. The last part of a merge that needs memory.
    template <class List>
    void AddPlaces(const MergedList<List>& list)
    {
        std::size_t done = 0;
        try {
            for (; done < list.GetSteps().size(); ++done) {
                const auto& step = list.GetSteps()[done];
                step.item->AddPlace(collection, step.position | List::kPlaceBit);
            }
        } catch (const std::bad_alloc&) {
            while (done > 0) {
                const auto& step = list.GetSteps()[--done];
                step.item->RemovePlace(collection, step.position | List::kPlaceBit);
            }
            throw;
        }
    }

    template <class List>
    void RemovePlacesOfNew(const MergedList<List>& list) noexcept
    {
        for (const auto& step : list.GetSteps()) {
            step.item->RemovePlace(collection, step.position | List::kPlaceBit);
        }
    }

    template <class List>
    void RemovePlacesOfOld(const MergedList<List>& list) noexcept
    {
        for (const auto& step : list.GetSteps()) {
            if (step.old) {
                step.old->RemovePlace(collection, step.position | List::kPlaceBit);
            }
        }
    }

    AssociativeObjectCollection& collection;
    UpdateBatch batch;
    MergedList<ObjectList> objects;
    MergedList<CategoryList> categories;
};

AssociativeObjectCollection::Merge::Merge(AssociativeObjectCollection& collection)
    : m_state(std::make_unique<State>(collection))
{
}

AssociativeObjectCollection::Merge::~Merge() = default;

void AssociativeObjectCollection::Merge::Reserve(std::size_t objects, std::size_t categories)
{
    m_state->objects.Reserve(objects);
    m_state->categories.Reserve(categories);
}

AssociativeObjectCollection::Placement
AssociativeObjectCollection::Merge::PutObject(const du::SmartPtr<AssociativeObject>& object)
{
    return m_state->objects.Put(object);
}

AssociativeObjectCollection::Placement
AssociativeObjectCollection::Merge::PutCategory(const du::SmartPtr<CategoryInfo>& category)
{
    return m_state->categories.Put(category);
}

void AssociativeObjectCollection::Merge::SetLoadedFromStandard() { m_loadedFromStandard = true; }

void AssociativeObjectCollection::Merge::Commit()
{
    Content& content = *m_state->collection.m_content;
    for (const auto& step : m_state->objects.GetSteps()) {
        if (step.old) {
            Content::HandOverConsumers(*step.old, *step.item);
        }
    }
    m_state->AddPlaces(m_state->objects);
    try {
        m_state->AddPlaces(m_state->categories);
    } catch (const std::bad_alloc&) {
        m_state->RemovePlacesOfNew(m_state->objects);
        throw;
    }
    m_state->RemovePlacesOfOld(m_state->objects);
    m_state->RemovePlacesOfOld(m_state->categories);
    m_state->objects.SwapWith(content.objects);
    m_state->categories.SwapWith(content.categories);
    for (const auto& step : m_state->objects.GetSteps()) {
        if (step.placement != Placement::Unchanged) {
            content.NoteChange(step.item);
        }
    }
    if (m_loadedFromStandard) {
        m_state->batch.SetLoadedFromStandard();
    }
    m_state.reset();
}

} // namespace luk::illustration
