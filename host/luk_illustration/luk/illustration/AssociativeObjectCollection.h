#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace luk::illustration
{

class AssociativeObject;
class AssociativeObjectObserver;
class CategoryInfo;
class CollectionInformation;
class CollectionItem;

/// Objects and their categories, in the order in which they were added.
///
/// Use: an object's index is its place in that order and stays the same for as long as the object, or one that replaced
/// it, is in the collection; the index of a removed object names nothing from then on. Several objects may carry one id;
/// a look-up by id or name then finds the one with the smallest index, as a walk from the front would.
///
/// Ownership: shares its objects. Its observers are held until they unregister; at its end it detaches them.
///
/// Threads and locks: belongs to the host thread, but for observers, which may come and go on any thread. Observers are
/// called with no lock held, over a snapshot: see dom::Observable. Those who cannot be told of a change for lack of memory
/// are told with the next one.
///
/// Errors: null objects are refused, and more than 2^31 - 2 of them.
///
/// Cost: adding, replacing, removing and each look-up are constant, renaming too unless thousands share the name; about
/// 25 bytes for each object besides the object itself.
class LUHOST_API AssociativeObjectCollection : public du::RefCounted
{
public:
    /// What kind of item something is.
    enum Type : std::uint32_t { SYMBOL_TEMPLATE = 0x1, CATEGORY = 0x100 };

    enum class Placement {
        Refused,
        Added,    ///< there was none to replace
        Changed,  ///< replaced one that says something else
        Unchanged ///< replaced one that says the same
    };

    AssociativeObjectCollection(const AssociativeObjectCollection&) = delete;
    AssociativeObjectCollection& operator=(const AssociativeObjectCollection&) = delete;
    ~AssociativeObjectCollection() override;

    du::SmartPtr<AssociativeObject> GetAssociativeObjectById(std::string_view id) const;
    std::vector<du::SmartPtr<AssociativeObject>> GetAssociativeObjects() const;
    std::size_t GetAssociativeObjectCount() const noexcept;

    /// Null when the index is out of range or its object was removed.
    du::SmartPtr<AssociativeObject> IndexToAssociativeObject(std::uint64_t index) const;
    std::set<std::uint64_t> AssociativeObjectIdToIndices(std::string_view id) const;

    /// Replaces the content of the vector.
    void GetCategories(std::vector<du::SmartPtr<CategoryInfo>>& categories) const;
    std::size_t GetCategoryCount() const noexcept;
    du::SmartPtr<CategoryInfo> FindCategoryById(std::string_view id) const;
    du::SmartPtr<CategoryInfo> FindCategoryByName(std::string_view name) const;

    bool AddAssociativeObject(const du::SmartPtr<AssociativeObject>& object);
    bool AddCategory(const du::SmartPtr<CategoryInfo>& category);

    /// Puts the object where the first object of its id is, else adds it. Users of a symbol template that is replaced
    /// become users of the new one.
    Placement ReplaceAssociativeObject(const du::SmartPtr<AssociativeObject>& object);
    Placement ReplaceCategory(const du::SmartPtr<CategoryInfo>& category);

    bool RemoveAssociativeObject(const du::SmartPtr<AssociativeObject>& object);
    bool RemoveCategory(const du::SmartPtr<CategoryInfo>& category);

    /// Removes all objects and categories; indices start at 0 again.
    void Clear();

    /// Makes room, so that many objects can be added without growing again and again.
    void Reserve(std::size_t objects, std::size_t categories);

    /// May be null.
    const du::SmartPtr<CollectionInformation>& GetInformation() const noexcept;
    void SetInformation(const du::SmartPtr<CollectionInformation>& information);

    /// @param id of the one object that the observer wants to hear of; empty for every object. A change of several objects,
    ///           or of the collection, is told to all.
    bool RegisterObserver(const du::SmartPtr<AssociativeObjectObserver>& observer, std::string_view id = {});
    bool UnregisterObserver(const AssociativeObjectObserver* observer);
    bool UnregisterObserver(const du::SmartPtr<AssociativeObjectObserver>& observer);
    std::size_t GetObserverCount() const;

    /// Tells those whom it concerns that an object has changed in place. Adding, replacing and removing tell by themselves.
    void NotifyChanged(const du::SmartPtr<AssociativeObject>& object);

    /// Keeps notifications back while it lives, so that a whole reload is told once: with the object when one has
    /// changed, with a null object when more have. Batches nest.
    ///
    /// *Rationale:* telling each of n observers of each of m objects would cost n times m.
    class LUHOST_API UpdateBatch
    {
    public:
        explicit UpdateBatch(AssociativeObjectCollection& collection);
        ~UpdateBatch();
        UpdateBatch(const UpdateBatch&) = delete;
        UpdateBatch& operator=(const UpdateBatch&) = delete;

        /// Lets observers also know, first, that the collection was loaded from the delivered library.
        void SetLoadedFromStandard();

    private:
        du::SmartPtr<AssociativeObjectCollection> m_collection;
    };

    /// Puts a library, loaded for the first time or again, into the collection: the n-th item of an id replaces the n-th
    /// item that had this id when the merge began, and further ones are added. Is a batch of updates too.
    ///
    /// Nothing of it is seen in the collection before Commit, and nothing happens to it without: a library that memory does
    /// not suffice for is not there by half.
    ///
    /// Cost: besides that of each item a copy of the collection's list.
    class LUHOST_API Merge
    {
    public:
        explicit Merge(AssociativeObjectCollection& collection);
        ~Merge();
        Merge(const Merge&) = delete;
        Merge& operator=(const Merge&) = delete;

        Placement PutObject(const du::SmartPtr<AssociativeObject>& object);
        Placement PutCategory(const du::SmartPtr<CategoryInfo>& category);
        void SetLoadedFromStandard();

        /// Makes room for items that are to be added.
        void Reserve(std::size_t objects, std::size_t categories);

        /// Changes the collection and ends the merge: to be called once, with nothing put afterwards. Either everything
        /// that was put is in the collection then, or std::bad_alloc is thrown and it is as it was.
        void Commit();

    private:
        struct State;
        bool m_loadedFromStandard = false;
        std::unique_ptr<State> m_state;
    };

protected:
    AssociativeObjectCollection();
    void DetachAllObservers();

private:
    friend class CollectionItem;
    struct Content;

    void PlaceRenaming(std::uint32_t place);
    void PlaceRenamed(std::uint32_t place);

    std::unique_ptr<Content> m_content;
};

} // namespace luk::illustration
