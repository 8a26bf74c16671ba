#pragma once
// Bounds-checked big-endian reading over a byte range of a Photoshop file.
// A read past the end of the range yields zero and marks the reader failed;
// callers check ok() before they trust a value that sizes a loop or buffer.

#include <cstdint>
#include <cstring>

namespace psd::detail {

class ByteReader {
public:
    ByteReader(const unsigned char* file, int64_t begin, int64_t end) : file_(file), pos_(begin), end_(end) {}

    int64_t pos() const { return pos_; }
    int64_t end() const { return end_; }
    int64_t remaining() const { return end_ - pos_; }
    bool ok() const { return ok_; }
    bool has(int64_t n) const { return n >= 0 && n <= remaining(); }
    const unsigned char* data() const { return file_ + pos_; }

    bool skip(int64_t n)
    {
        if (!has(n)) return fail();
        pos_ += n;
        return true;
    }
    bool seek(int64_t absolute)
    {
        if (absolute < 0 || absolute > end_) return fail();
        pos_ = absolute;
        return true;
    }

    uint8_t u8() { return uint8_t(take(1)); }
    uint16_t u16() { return uint16_t(take(2)); }
    int16_t i16() { return int16_t(u16()); }
    uint32_t u32() { return uint32_t(take(4)); }
    int32_t i32() { return int32_t(u32()); }
    uint64_t u64() { return take(8); }
    // A length field: 4 bytes, or 8 where the large format widens it.
    uint64_t length(bool wide) { return wide ? u64() : u32(); }

    // True when the next four bytes equal the given code; consumes them only then.
    bool expect(const char (&code)[5])
    {
        if (!has(4) || std::memcmp(file_ + pos_, code, 4) != 0) return false;
        pos_ += 4;
        return true;
    }

private:
    uint64_t take(int n)
    {
        if (!has(n)) {
            fail();
            return 0;
        }
        uint64_t v = 0;
        for (int i = 0; i < n; ++i) v = (v << 8) | file_[pos_ + i];
        pos_ += n;
        return v;
    }
    bool fail()
    {
        ok_ = false;
        pos_ = end_;
        return false;
    }

    const unsigned char* file_;
    int64_t pos_;
    int64_t end_;
    bool ok_ = true;
};

}  // namespace psd::detail
