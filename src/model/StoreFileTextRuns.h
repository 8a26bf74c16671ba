#pragma once
// Long base64 texts (component files, images) make up most of a store file,
// and QXmlStreamReader copies text into its buffers one character at a time.
// Before parsing, every long run of base64 characters that directly follows a
// '>' is cut out of the XML and kept aside; the value reader takes it back by
// the position of the start tag it followed.
//
// Cutting never changes what a file means: a run that no value took back
// (it stood in a comment, an attribute value, an unknown element...) leaves
// allTaken() false, and the caller then reads the original bytes instead.

#include <QByteArray>
#include <QByteArrayView>

#include <unordered_map>
#include <utility>
#include <vector>

namespace model {

class StoreFileTextRuns {
public:
    // Runs shorter than this stay in the XML: cutting them saves nothing.
    static constexpr qsizetype kMinimumRun = 512;

    // Cuts nothing unless the file starts with the declaration the store
    // writer writes, so that positions in the XML are UTF-8 text.
    explicit StoreFileTextRuns(const QByteArray& bytes);

    bool isEmpty() const { return runs_.empty(); }
    // The XML without the runs.
    const QByteArray& xml() const { return xml_; }

    // The run that followed the start tag ending at `characterOffset` (as
    // QXmlStreamReader::characterOffset() tells it on that start element);
    // empty when none did.
    QByteArrayView take(qint64 characterOffset);
    bool allTaken() const { return next_ == runs_.size() && !skippedOne_; }

    // A document repeats the same component file many times: identical runs
    // decode once and share their bytes.
    QByteArray fromBase64(QByteArrayView run);

private:
    struct Run {
        qint64 characterOffset;  // in the XML without the runs, in UTF-16 units
        QByteArrayView text;     // into original_
    };
    QByteArray original_;
    QByteArray xml_;
    std::vector<Run> runs_;
    std::size_t next_ = 0;
    bool skippedOne_ = false;
    std::unordered_multimap<std::size_t, std::pair<QByteArrayView, QByteArray>> decoded_;  // by sample of the run
};

}  // namespace model
