#include "model/StoreFileTextRuns.h"

#include <QHashFunctions>

#include <algorithm>
#include <array>
#include <cstring>

namespace model {

namespace {

// What QXmlStreamWriter::writeStartDocument() writes.
constexpr QByteArrayView kDeclaration("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");

// Runs are megabytes long: one table look-up per character.
constexpr auto kBase64 = [] {
    std::array<bool, 256> table{};
    for (int c = 0; c < 256; ++c)
        table[std::size_t(c)] = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/' || c == '=';
    return table;
}();

const char* endOfBase64(const char* p, const char* end)
{
    // Blocks without a branch per character, then the last characters.
    constexpr int kBlock = 16;
    while (end - p >= kBlock) {
        bool all = true;
        for (int i = 0; i < kBlock; ++i) all &= kBase64[uchar(p[i])];
        if (!all) break;
        p += kBlock;
    }
    while (p != end && kBase64[uchar(*p)]) ++p;
    return p;
}

// The reader counts positions in UTF-16 units of the decoded text: one per
// UTF-8 sequence, two for a sequence beyond the basic plane.
qint64 utf16Length(QByteArrayView validUtf8)
{
    qint64 units = 0;
    for (const char c : validUtf8) {
        const auto byte = uchar(c);
        units += (byte & 0xC0) != 0x80;
        units += byte >= 0xF0;
    }
    return units;
}

// Different files' base64 mostly shares its start (the same XML header) and
// its end (the same closing tags); the middle tells them apart.
std::size_t sampleKey(QByteArrayView run)
{
    const qsizetype sample = std::min<qsizetype>(run.size(), 64);
    return qHash(run.sliced((run.size() - sample) / 2, sample), std::size_t(run.size()));
}

}  // namespace

StoreFileTextRuns::StoreFileTextRuns(const QByteArray& bytes) : original_(bytes), xml_(bytes)
{
    if (!bytes.startsWith(kDeclaration)) return;
    const char* const begin = original_.constData();
    const char* const end = begin + original_.size();
    qsizetype keptSize = 0;
    const char* kept = begin;  // the start of the text between runs
    qint64 characterOffset = 0;
    for (const char* p = begin; (p = static_cast<const char*>(std::memchr(p, '>', std::size_t(end - p))));) {
        const char* const runStart = ++p;
        p = endOfBase64(p, end);
        if (p - runStart < kMinimumRun) continue;
        const QByteArrayView before(kept, runStart - kept);
        characterOffset += utf16Length(before);
        keptSize += before.size();
        runs_.push_back({characterOffset, QByteArrayView(runStart, p - runStart)});
        kept = p;
    }
    if (runs_.empty()) return;

    QByteArray cut;
    cut.reserve(keptSize + (end - kept));
    const char* from = begin;
    for (const Run& run : runs_) {
        cut.append(from, run.text.data() - from);
        from = run.text.data() + run.text.size();
    }
    cut.append(from, end - from);
    // Positions are counted for UTF-8; anything else is read without cutting.
    if (!QByteArrayView(cut).isValidUtf8()) {
        runs_.clear();
        return;
    }
    xml_ = std::move(cut);
}

QByteArrayView StoreFileTextRuns::take(qint64 characterOffset)
{
    // Runs are taken back in document order: one passed by was not the text
    // of a value, so the cut XML does not mean what the file says.
    while (next_ < runs_.size() && runs_[next_].characterOffset < characterOffset) {
        skippedOne_ = true;
        ++next_;
    }
    if (next_ == runs_.size() || runs_[next_].characterOffset != characterOffset) return {};
    return runs_[next_++].text;
}

QByteArray StoreFileTextRuns::fromBase64(QByteArrayView run)
{
    const std::size_t key = sampleKey(run);
    for (auto [it, last] = decoded_.equal_range(key); it != last; ++it)
        if (it->second.first == run) return it->second.second;
    QByteArray bytes = QByteArray::fromBase64(QByteArray::fromRawData(run.data(), run.size()));
    decoded_.emplace(key, std::pair{run, bytes});
    return bytes;
}

}  // namespace model
