#include <du/Symbol.h>
#include <du/TextHash.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

namespace du
{

namespace
{

constexpr std::size_t kFirstCapacity = 16;
constexpr unsigned kShardBits = 6;

} // namespace

/// All known texts, spread over shards by the upper bits of the hash.
///
/// Readers probe a shard's table without a lock; writers add under the shard's mutex. An entry becomes visible with the
/// pointer in its slot, a grown table with the pointer in its shard. Grown-out tables are kept, since a reader may still
/// be in one; together they are smaller than the table in use.
class SymbolTable
{
public:
    using Entry = Symbol::Entry;

    static SymbolTable& Get()
    {
        static SymbolTable* const s_table = new SymbolTable;
        return *s_table;
    }

    const Entry* Find(std::string_view text) const noexcept
    {
        const std::size_t hash = m_hash(text);
        const Slots* const slots = ShardOf(hash).slots.load(std::memory_order_acquire);
        return slots ? slots->Find(hash, text) : nullptr;
    }

    const Entry* Intern(std::string_view text)
    {
        const std::size_t hash = m_hash(text);
        Shard& shard = ShardOf(hash);
        if (const Slots* const slots = shard.slots.load(std::memory_order_acquire)) {
            if (const Entry* const known = slots->Find(hash, text)) {
                return known;
            }
        }
        return shard.Add(hash, text);
    }

private:
    struct Slot {
        std::atomic<std::size_t> hash;
        std::atomic<const Entry*> entry;
    };

    struct Slots {
        explicit Slots(std::size_t capacity) : mask(capacity - 1), slots(std::make_unique<Slot[]>(capacity)) {}

        const Entry* Find(std::size_t hash, std::string_view text) const noexcept
        {
            for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
                const Entry* const entry = slots[i].entry.load(std::memory_order_acquire);
                if (!entry) {
                    return nullptr;
                }
                if (slots[i].hash.load(std::memory_order_relaxed) == hash && entry->text == text) {
                    return entry;
                }
            }
        }

        void Insert(const Entry* entry) noexcept
        {
            std::size_t i = entry->hash & mask;
            while (slots[i].entry.load(std::memory_order_relaxed)) {
                i = (i + 1) & mask;
            }
            slots[i].hash.store(entry->hash, std::memory_order_relaxed);
            slots[i].entry.store(entry, std::memory_order_release);
        }

        std::size_t mask;
        std::unique_ptr<Slot[]> slots;
        std::unique_ptr<Slots> grownOut;
    };

    struct alignas(64) Shard {
        const Entry* Add(std::size_t hash, std::string_view text)
        {
            const std::lock_guard lock(mutex);
            if (current) {
                if (const Entry* const known = current->Find(hash, text)) {
                    return known;
                }
            }
            if (!current || (count + 1) * 3 > (current->mask + 1) * 2) {
                Grow();
            }
            const Entry* const entry = new Entry{hash, std::string(text)};
            current->Insert(entry);
            ++count;
            return entry;
        }

        void Grow()
        {
            auto grown = std::make_unique<Slots>(current ? (current->mask + 1) * 2 : kFirstCapacity);
            for (std::size_t i = 0; current && i <= current->mask; ++i) {
                if (const Entry* const entry = current->slots[i].entry.load(std::memory_order_relaxed)) {
                    grown->Insert(entry);
                }
            }
            grown->grownOut = std::move(current);
            current = std::move(grown);
            slots.store(current.get(), std::memory_order_release);
        }

        std::atomic<const Slots*> slots{nullptr};
        std::mutex mutex;
        std::size_t count = 0;
        std::unique_ptr<Slots> current;
    };

    static constexpr std::size_t ShardIndex(std::size_t hash) noexcept
    {
        return hash >> (8 * sizeof(hash) - kShardBits);
    }
    Shard& ShardOf(std::size_t hash) noexcept { return m_shards[ShardIndex(hash)]; }
    const Shard& ShardOf(std::size_t hash) const noexcept { return m_shards[ShardIndex(hash)]; }

    TextHash m_hash;
    std::array<Shard, std::size_t{1} << kShardBits> m_shards;
};

Symbol Symbol::Find(std::string_view text) noexcept { return Symbol(SymbolTable::Get().Find(text)); }

const Symbol::Entry* Symbol::Intern(std::string_view text) { return SymbolTable::Get().Intern(text); }

const std::string& Symbol::EmptyText() noexcept
{
    static const std::string* const s_empty = new std::string;
    return *s_empty;
}

} // namespace du
