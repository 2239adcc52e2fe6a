#include <du/RefCounted.h>
#include <du/ReferenceLedger.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <sstream>
#include <typeinfo>
#include <unordered_map>

#if defined(__GNUC__)
#  include <cxxabi.h>
#endif

namespace du
{

namespace
{

struct Account {
    /// Whether the book saw the object's first reference. Only then is an unknown tag known to be a wrong one.
    bool complete;
    std::unordered_map<const void*, long> countByOwner;
};

struct Book {
    std::mutex mutex;
    std::unordered_map<const RefCounted*, Account> accounts;
    std::vector<ReferenceLedger::Entry> leftByDestroyed;
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

void AppendOpen(std::vector<ReferenceLedger::Entry>& entries, const RefCounted* object, const Account& account,
                const std::string& objectClass)
{
    for (const auto& [owner, count] : account.countByOwner) {
        if (count != 0) {
            entries.push_back({object, owner, objectClass, count});
        }
    }
}

} // namespace

void ReferenceLedger::SwitchOn()
{
    Book& book = GetBook();
    const std::lock_guard lock(book.mutex);
    book.accounts.clear();
    book.leftByDestroyed.clear();
    s_isOn.store(true, std::memory_order_relaxed);
}

void ReferenceLedger::SwitchOff() { s_isOn.store(false, std::memory_order_relaxed); }

bool ReferenceLedger::IsOn() noexcept { return s_isOn.load(std::memory_order_relaxed); }

std::vector<ReferenceLedger::Entry> ReferenceLedger::GetOpenEntries()
{
    Book& book = GetBook();
    const std::lock_guard lock(book.mutex);
    std::vector<Entry> entries = book.leftByDestroyed;
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
    return text.str();
}

void ReferenceLedger::NoteAdded(const RefCounted* object, const void* owner)
{
    Book& book = GetBook();
    const std::lock_guard lock(book.mutex);
    Account& account = book.accounts.try_emplace(object, Account{object->GetReferenceCount() == 0, {}}).first->second;
    const auto [position, isNew] = account.countByOwner.try_emplace(owner, 0);
    if (++position->second == 0) {
        account.countByOwner.erase(position);
    }
}

void ReferenceLedger::NoteRemoved(const RefCounted* object, const void* owner)
{
    Book& book = GetBook();
    const std::lock_guard lock(book.mutex);
    const auto account = book.accounts.find(object);
    if (account == book.accounts.end()) {
        return;
    }
    auto& countByOwner = account->second.countByOwner;
    const auto position = countByOwner.find(owner);
    if (position != countByOwner.end()) {
        if (--position->second == 0) {
            countByOwner.erase(position);
        }
    } else if (account->second.complete) {
        countByOwner.emplace(owner, -1);
    }
}

void ReferenceLedger::NoteDestroyed(const RefCounted* object)
{
    Book& book = GetBook();
    const std::lock_guard lock(book.mutex);
    const auto account = book.accounts.find(object);
    if (account != book.accounts.end()) {
        AppendOpen(book.leftByDestroyed, object, account->second, {});
        book.accounts.erase(account);
    }
}

} // namespace du
