#pragma once
// One Key per distinct key text met while reading an XML file, so that its
// dictionaries share their key names as those read from a binary file do:
// a document of many small dictionaries repeats a few dozen names. Private
// to the plist module.

#include "plist/BinaryIndexTable.h"
#include "plist/Key.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace plist {

class KeyInterner {
public:
    Key intern(std::string_view text)
    {
        if (text.empty()) return Key();
        const std::uint64_t hash = binary::hashText(text);
        if (2 * (count_ + 1) > slots_.size()) {
            // A file of ever new names would only grow the table: past the
            // limit, new names are not remembered.
            if (count_ >= kMaxKeys) return lookup(text, hash);
            grow();
        }
        const std::size_t mask = slots_.size() - 1;
        for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
            Slot& slot = slots_[i];
            if (slot.key.empty()) {
                slot.hash = hash;
                slot.key = Key(text);
                ++count_;
                return slot.key;
            }
            if (slot.hash == hash && slot.key == text) return slot.key;
        }
    }

private:
    static constexpr std::size_t kMaxKeys = 1u << 15;

    struct Slot {
        std::uint64_t hash = 0;
        Key key;  // empty in a free slot (the empty key is never stored)
    };

    Key lookup(std::string_view text, std::uint64_t hash) const
    {
        const std::size_t mask = slots_.size() - 1;
        for (std::size_t i = hash & mask; !slots_[i].key.empty(); i = (i + 1) & mask)
            if (slots_[i].hash == hash && slots_[i].key == text) return slots_[i].key;
        return Key(text);
    }

    void grow()
    {
        std::vector<Slot> old(slots_.empty() ? 64 : slots_.size() * 2);
        old.swap(slots_);
        const std::size_t mask = slots_.size() - 1;
        for (Slot& slot : old) {
            if (slot.key.empty()) continue;
            std::size_t i = slot.hash & mask;
            while (!slots_[i].key.empty()) i = (i + 1) & mask;
            slots_[i] = std::move(slot);
        }
    }

    std::vector<Slot> slots_;
    std::size_t count_ = 0;
};

}  // namespace plist
