#include <du/RefCounted.h>
#include <du/ReferenceLedger.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>
#include <sstream>
#include <typeinfo>
#include <unordered_map>
#include <utility>

#if defined(__GNUC__)
#  include <cxxabi.h>
#endif

namespace du
{

namespace
{

/// Takes from the C library, so that the book is no part of what a program allocates by its own operator new, nor of the
/// allocations that a test makes fail.
template <class T>
struct BookAllocator {
    using value_type = T;

    BookAllocator() noexcept = default;
    template <class U>
    BookAllocator(const BookAllocator<U>&) noexcept
    {
    }

    T* allocate(std::size_t count)
    {
        void* const memory = std::malloc(count * sizeof(T)); // NOLINT(bugprone-sizeof-expression): T may be a pointer
        if (!memory) {
            throw std::bad_alloc();
        }
        return static_cast<T*>(memory);
    }
    void deallocate(T* memory, std::size_t) noexcept { std::free(memory); }

    template <class U>
    bool operator==(const BookAllocator<U>&) const noexcept
    {
        return true;
    }
};

template <class Key, class Value>
using BookMap =
    std::unordered_map<Key, Value, std::hash<Key>, std::equal_to<Key>, BookAllocator<std::pair<const Key, Value>>>;

struct Account {
    /// Whether the book saw every reference since the object's first. Only then is an unknown tag known to be a wrong one.
    bool complete;
    BookMap<const void*, long> countByOwner;
};

struct Book {
    std::mutex mutex;
    BookMap<const RefCounted*, Account> accounts;
    std::vector<ReferenceLedger::Entry, BookAllocator<ReferenceLedger::Entry>> leftByDestroyed;
    std::size_t lost = 0; ///< notes for which there was no memory
};

/// Objects may be released while the process ends, so the book is never torn down.
Book& GetBook()
{
    static Book* const s_book = new Book;
    return *s_book;
}

std::atomic<bool> s_isOn{false};

std::string ClassNameOf(const RefCounted& object)
{
    const char* const mangled = typeid(object).name();
#if defined(__GNUC__)
    int status = 0;
    if (char* const name = abi::__cxa_demangle(mangled, nullptr, nullptr, &status)) {
        std::string result(name);
        std::free(name);
        return result;
    }
#endif
    return mangled;
}

template <class Entries>
void AppendOpen(Entries& entries, const RefCounted* object, const Account& account, const std::string& objectClass)
{
    for (const auto& [owner, count] : account.countByOwner) {
        if (count != 0) {
            entries.push_back({object, owner, objectClass, count});
        }
    }
}

std::size_t CountLost()
{
    Book& book = GetBook();
    const std::lock_guard lock(book.mutex);
    return book.lost;
}

/// The end of the accounts when there is no memory for a new one.
auto FindOrOpen(Book& book, const RefCounted* object) noexcept
{
    try {
        return book.accounts.try_emplace(object, Account{object->GetReferenceCount() == 0, {}}).first;
    } catch (const std::bad_alloc&) {
        ++book.lost;
        return book.accounts.end();
    }
}

} // namespace

void ReferenceLedger::SwitchOn()
{
    Book& book = GetBook();
    const std::lock_guard lock(book.mutex);
    book.accounts.clear();
    book.leftByDestroyed.clear();
    book.lost = 0;
    s_isOn.store(true, std::memory_order_relaxed);
}

void ReferenceLedger::SwitchOff() { s_isOn.store(false, std::memory_order_relaxed); }

bool ReferenceLedger::IsOn() noexcept { return s_isOn.load(std::memory_order_relaxed); }

std::vector<ReferenceLedger::Entry> ReferenceLedger::GetOpenEntries()
{
    Book& book = GetBook();
    const std::lock_guard lock(book.mutex);
    std::vector<Entry> entries(book.leftByDestroyed.begin(), book.leftByDestroyed.end());
    for (const auto& [object, account] : book.accounts) {
        AppendOpen(entries, object, account, ClassNameOf(*object));
    }
    return entries;
}

std::string ReferenceLedger::Describe()
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    for (const Entry& entry : GetOpenEntries()) {
        text << (entry.objectClass.empty() ? "destroyed object" : entry.objectClass) << " at " << entry.object
             << (entry.count > 0 ? " is held " : " was released by a stranger ")
             << (entry.count > 0 ? entry.count : -entry.count) << " time(s) under " << entry.owner << '\n';
    }
    if (const std::size_t lost = CountLost()) {
        text << lost << " note(s) found no memory\n";
    }
    return text.str();
}

void ReferenceLedger::NoteAdded(const RefCounted* object, const void* owner) noexcept
{
    Book& book = GetBook();
    const std::lock_guard lock(book.mutex);
    const auto account = FindOrOpen(book, object);
    if (account == book.accounts.end()) {
        return;
    }
    auto& [complete, countByOwner] = account->second;
    try {
        const auto position = countByOwner.try_emplace(owner, 0).first;
        if (++position->second == 0) {
            countByOwner.erase(position);
        }
    } catch (const std::bad_alloc&) {
        complete = false;
        ++book.lost;
    }
}

void ReferenceLedger::NoteRemoved(const RefCounted* object, const void* owner) noexcept
{
    Book& book = GetBook();
    const std::lock_guard lock(book.mutex);
    const auto account = book.accounts.find(object);
    if (account == book.accounts.end()) {
        return;
    }
    auto& [complete, countByOwner] = account->second;
    const auto position = countByOwner.find(owner);
    if (position != countByOwner.end()) {
        if (--position->second == 0) {
            countByOwner.erase(position);
        }
    } else if (complete) {
        try {
            countByOwner.emplace(owner, -1);
        } catch (const std::bad_alloc&) {
            ++book.lost;
        }
    }
}

void ReferenceLedger::NoteDestroyed(const RefCounted* object) noexcept
{
    Book& book = GetBook();
    const std::lock_guard lock(book.mutex);
    const auto account = book.accounts.find(object);
    if (account == book.accounts.end()) {
        return;
    }
    try {
        AppendOpen(book.leftByDestroyed, object, account->second, {});
    } catch (const std::bad_alloc&) {
        ++book.lost;
    }
    book.accounts.erase(account);
}

} // namespace du
