#pragma once
// Growable output for the writers, written through a raw pointer: reserve
// the most a piece can take, write it, then commit its end. Appending one
// small piece after another through std::string costs a call and a check
// each; a file of a million pieces feels that. Private to the plist module.

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace plist {

class OutputBuffer {
public:
    char* reserve(std::size_t n)
    {
        if (bytes_.size() - used_ < n) bytes_.resize(std::max(bytes_.size() * 2, used_ + n));
        return bytes_.data() + used_;
    }
    unsigned char* reserveBytes(std::size_t n) { return reinterpret_cast<unsigned char*>(reserve(n)); }
    void commit(const char* end) { used_ = std::size_t(end - bytes_.data()); }
    void commit(const unsigned char* end) { commit(reinterpret_cast<const char*>(end)); }

    void append(std::string_view text)
    {
        char* p = reserve(text.size());
        std::memcpy(p, text.data(), text.size());
        used_ += text.size();
    }

    // A literal's length is known when compiling.
    template <std::size_t N> OutputBuffer& operator+=(const char (&literal)[N])
    {
        append(std::string_view(literal, N - 1));
        return *this;
    }
    OutputBuffer& operator+=(std::string_view text)
    {
        append(text);
        return *this;
    }

    std::size_t size() const { return used_; }
    std::string take()
    {
        bytes_.resize(used_);
        used_ = 0;
        return std::move(bytes_);
    }

private:
    std::string bytes_;
    std::size_t used_ = 0;
};

}  // namespace plist
