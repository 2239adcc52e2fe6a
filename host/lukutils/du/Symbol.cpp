#include <du/RandomBits.h>
#include <du/Symbol.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>

namespace du
{

namespace
{

/// Keyed by two random words, because texts come from documents: with a known key a document could be written whose
/// names all share one slot.
class TextHash
{
public:
    TextHash() noexcept : m_key0(RandomBits()), m_key1(RandomBits()) {}

    std::size_t operator()(std::string_view text) const noexcept
    {
        const char* position = text.data();
        std::size_t left = text.size();
        std::uint64_t hash = m_key1 ^ left;
        while (left > 16) {
            hash = Mix(Read8(position) ^ m_key0, Read8(position + 8) ^ hash);
            position += 16;
            left -= 16;
        }
        const auto [first, second] = ReadUpTo16(position, left);
        hash = Mix(first ^ m_key0, second ^ hash);
        return static_cast<std::size_t>(Mix(hash ^ m_key0, m_key1));
    }

private:
    static std::uint64_t Mix(std::uint64_t a, std::uint64_t b) noexcept
    {
        __extension__ using Product = unsigned __int128;
        const Product product = Product{a} * b;
        return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
    }

    static std::uint64_t Read8(const char* bytes) noexcept
    {
        std::uint64_t word;
        std::memcpy(&word, bytes, sizeof(word));
        return word;
    }

    static std::uint64_t Read4(const char* bytes) noexcept
    {
        std::uint32_t word;
        std::memcpy(&word, bytes, sizeof(word));
        return word;
    }

    /// The two words overlap unless there are 8 or 16 bytes; the length is in the hash already.
    static std::pair<std::uint64_t, std::uint64_t> ReadUpTo16(const char* bytes, std::size_t size) noexcept
    {
        if (size >= 8) {
            return {Read8(bytes), Read8(bytes + size - 8)};
        }
        if (size >= 4) {
            return {Read4(bytes), Read4(bytes + size - 4)};
        }
        if (size == 0) {
            return {0, 0};
        }
        const auto byte = [bytes](std::size_t i) { return std::uint64_t{static_cast<unsigned char>(bytes[i])}; };
        return {byte(0) | (byte(size / 2) << 8), byte(size - 1)};
    }

    std::uint64_t m_key0;
    std::uint64_t m_key1;
};

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

bool Symbol::TextLess(const Symbol& a, const Symbol& b) noexcept
{
    if (a.IsNull() || b.IsNull()) {
        return a.IsNull() && !b.IsNull();
    }
    return a.GetText() < b.GetText();
}

const Symbol::Entry* Symbol::Intern(std::string_view text) { return SymbolTable::Get().Intern(text); }

const std::string& Symbol::EmptyText() noexcept
{
    static const std::string* const s_empty = new std::string;
    return *s_empty;
}

} // namespace du
