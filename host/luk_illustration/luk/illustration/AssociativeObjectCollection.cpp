#include <luk/illustration/AssociativeObject.h>
#include <luk/illustration/AssociativeObjectCollection.h>
#include <luk/illustration/AssociativeObjectObserver.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/CollectionInformation.h>
#include <luk/illustration/ObjectObservers.h>
#include <luk/illustration/PositionIndex.h>
#include <luk/illustration/SymbolTemplate.h>

#include <algorithm>
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
        byName.Insert(NameKeys(items), items[position]->GetName(), position);
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

    void TellChanges()
    {
        const bool loaded = std::exchange(loadedFromStandard, false);
        const bool changed = std::exchange(changes, 0) > 0;
        const du::SmartPtr<AssociativeObject> object = std::exchange(onlyChanged, nullptr);
        if (!loaded && !changed) {
            return;
        }
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
        if (!item || list.items.size() >= PositionIndex::kMaxPositions) {
            return false;
        }
        const auto position = static_cast<std::uint32_t>(list.items.size());
        list.items.push_back(item);
        item->AddPlace(collection, position | List::kPlaceBit);
        list.Index(position);
        ++list.count;
        return true;
    }

    /// @param old at the position now
    template <class List>
    static Placement ReplaceAt(AssociativeObjectCollection& collection, List& list, std::uint32_t position,
                               const du::SmartPtr<typename List::Item>& old,
                               const du::SmartPtr<typename List::Item>& item)
    {
        const bool same = SaysTheSame(*old, item);
        list.Unindex(position);
        old->RemovePlace(collection, position | List::kPlaceBit);
        list.items[position] = item;
        item->AddPlace(collection, position | List::kPlaceBit);
        list.Index(position);
        return same ? Placement::Unchanged : Placement::Changed;
    }

    /// Users may hold the entry that goes, and come or leave there later.
    static void HandOverConsumers(AssociativeObject& from, AssociativeObject& to)
    {
        auto* const predecessor = dynamic_cast<SymbolTemplate*>(&from);
        auto* const successor = dynamic_cast<SymbolTemplate*>(&to);
        constexpr std::uint32_t kOwnHandles = 1;
        if (predecessor && successor &&
            (predecessor->GetConsumerCount() > 0 || predecessor->GetReferenceCount() > kOwnHandles)) {
            successor->ShareConsumersOf(*predecessor);
        }
    }

    /// @param position of the object to replace; kNone to add one
    Placement PutObject(AssociativeObjectCollection& collection, std::uint32_t position,
                        const du::SmartPtr<AssociativeObject>& object)
    {
        if (position == PositionIndex::kNone) {
            return collection.AddAssociativeObject(object) ? Placement::Added : Placement::Refused;
        }
        const du::SmartPtr<AssociativeObject> old = objects.items[position];
        if (old == object) {
            return Placement::Unchanged;
        }
        const Placement placement = ReplaceAt(collection, objects, position, old, object);
        HandOverConsumers(*old, *object);
        if (placement == Placement::Changed) {
            NoteChange(object);
        }
        return placement;
    }

    /// The same for a category.
    Placement PutCategory(AssociativeObjectCollection& collection, std::uint32_t position,
                          const du::SmartPtr<CategoryInfo>& category)
    {
        if (position == PositionIndex::kNone) {
            return collection.AddCategory(category) ? Placement::Added : Placement::Refused;
        }
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
    return m_content->PutObject(*this, list.byId.FindFirst(IdKeys(list.items), object->GetId()), object);
}

AssociativeObjectCollection::Placement
AssociativeObjectCollection::ReplaceCategory(const du::SmartPtr<CategoryInfo>& category)
{
    if (!category) {
        return Placement::Refused;
    }
    const CategoryList& list = m_content->categories;
    return m_content->PutCategory(*this, list.byId.FindFirst(IdKeys(list.items), category->GetId()), category);
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

} // namespace

struct AssociativeObjectCollection::Merge::State {
    explicit State(AssociativeObjectCollection& mergedInto)
        : collection(mergedInto), batch(mergedInto), objects(mergedInto.m_content->objects),
          categories(mergedInto.m_content->categories)
    {
    }

    AssociativeObjectCollection& collection;
    UpdateBatch batch;
    Predecessors objects;
    Predecessors categories;
};

AssociativeObjectCollection::Merge::Merge(AssociativeObjectCollection& collection)
    : m_state(std::make_unique<State>(collection))
{
}

AssociativeObjectCollection::Merge::~Merge() = default;

AssociativeObjectCollection::Placement
AssociativeObjectCollection::Merge::PutObject(const du::SmartPtr<AssociativeObject>& object)
{
    if (!object) {
        return Placement::Refused;
    }
    Content& content = *m_state->collection.m_content;
    return content.PutObject(m_state->collection, m_state->objects.Take(content.objects, object->GetId()), object);
}

AssociativeObjectCollection::Placement
AssociativeObjectCollection::Merge::PutCategory(const du::SmartPtr<CategoryInfo>& category)
{
    if (!category) {
        return Placement::Refused;
    }
    Content& content = *m_state->collection.m_content;
    return content.PutCategory(m_state->collection, m_state->categories.Take(content.categories, category->GetId()),
                               category);
}

void AssociativeObjectCollection::Merge::SetLoadedFromStandard() { m_state->batch.SetLoadedFromStandard(); }

} // namespace luk::illustration
