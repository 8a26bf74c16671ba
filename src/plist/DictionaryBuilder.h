#pragma once
// Builds a dictionary from entries in the order a file gives them: append
// each, then finish() sorts once. Files written by the usual tools are
// already sorted, so finishing is then a single check. A repeated key keeps
// its last value, as if the entries were set one after the other.

#include "plist/Value.h"

namespace plist {

class DictionaryBuilder {
public:
    explicit DictionaryBuilder(std::size_t expectedSize = 0) { dictionary_.reserve(expectedSize); }

    void append(Key key, Value value) { dictionary_.appendUnordered(std::move(key), std::move(value)); }

    Dictionary finish()
    {
        dictionary_.restoreOrder();
        return std::move(dictionary_);
    }

private:
    Dictionary dictionary_;
};

}  // namespace plist
