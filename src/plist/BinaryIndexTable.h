#pragma once
// A map from a key to an object number for the binary writer, which looks
// up every string, number and container it writes. Open addressing with
// linear probing and a power-of-two size: several times faster here than
// std::unordered_map, whose prime-modulo buckets and node chains dominated
// the writer's time. Private to the plist module.

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace plist::binary {

inline std::uint64_t mixBits(std::uint64_t x)
{
    // splitmix64's finaliser: every input bit affects the low bits used
    // for the slot.
    x ^= x >> 30;
    x *= 0xBF58476D1CE4E5B9ull;
    x ^= x >> 27;
    x *= 0x94D049BB133111EBull;
    x ^= x >> 31;
    return x;
}

// The last n (1 to 7) bytes at p as one word, in at most three loads that
// stay inside the text. Copying them byte by byte into a word stalled the
// processor on the load that followed the byte stores.
inline std::uint64_t tailWord(const char* p, std::size_t n)
{
    if (n >= 4) {
        std::uint32_t first, last;
        std::memcpy(&first, p, 4);
        std::memcpy(&last, p + n - 4, 4);
        return first | std::uint64_t(last) << 32;
    }
    const auto byte = [p](std::size_t i) { return std::uint64_t(static_cast<unsigned char>(p[i])); };
    return byte(0) | byte(n / 2) << 8 | byte(n - 1) << 16;
}

// Eight bytes at a time: most texts here are short keys and names, for which
// a general-purpose byte hash costs more than the lookup it serves.
inline std::uint64_t hashText(std::string_view text)
{
    const char* p = text.data();
    std::size_t n = text.size();
    std::uint64_t h = 0x9E3779B97F4A7C15ull ^ n;
    for (; n >= 8; p += 8, n -= 8) {
        std::uint64_t word;
        std::memcpy(&word, p, 8);
        h = (h ^ word) * 0xBF58476D1CE4E5B9ull;
        h ^= h >> 29;
    }
    if (n) h = (h ^ tailWord(p, n)) * 0x94D049BB133111EBull;
    return mixBits(h);
}

// Equal texts are often one text: keys read from a file share theirs.
inline bool sameKey(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && (a.data() == b.data() || std::memcmp(a.data(), b.data(), a.size()) == 0);
}
template <class Key> bool sameKey(const Key& a, const Key& b)
{
    return a == b;
}

template <class Key> class IndexTable {
public:
    static constexpr std::uint32_t kEmpty = UINT32_MAX;

    // The object number stored for the key, or kEmpty in a new slot that the
    // caller must set before the next call.
    std::uint32_t& findOrAdd(const Key& key, std::uint64_t hash)
    {
        if (2 * (count_ + 1) > slots_.size()) grow();
        const std::size_t mask = slots_.size() - 1;
        for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
            Slot& slot = slots_[i];
            if (slot.index == kEmpty) {
                slot.hash = hash;
                slot.key = key;
                ++count_;
                return slot.index;
            }
            if (slot.hash == hash && sameKey(slot.key, key)) return slot.index;
        }
    }

private:
    struct Slot {
        std::uint64_t hash = 0;
        Key key{};
        std::uint32_t index = kEmpty;
    };

    void grow()
    {
        std::vector<Slot> old(slots_.empty() ? 256 : slots_.size() * 2);
        old.swap(slots_);
        const std::size_t mask = slots_.size() - 1;
        for (const Slot& slot : old) {
            if (slot.index == kEmpty) continue;
            std::size_t i = slot.hash & mask;
            while (slots_[i].index != kEmpty) i = (i + 1) & mask;
            slots_[i] = slot;
        }
    }

    std::vector<Slot> slots_;
    std::size_t count_ = 0;
};

}  // namespace plist::binary
