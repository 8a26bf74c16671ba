#include "model/ValueTransformers.h"

#include "model/Timecode.h"
#include "rtf/Rtf.h"

#include <QSequentialIterable>

namespace model::transformers {

QString timepointToString(double seconds)
{
    return Timecode::fromSeconds(seconds < 0 ? 0 : seconds, Timecode::projectRateCode()).toString();
}

std::optional<double> stringToTimepoint(const QString& text)
{
    const auto timecode = Timecode::fromString(text, Timecode::projectRateCode());
    if (!timecode) return std::nullopt;
    return timecode->secondsSinceMidnight();
}

namespace {
std::optional<qsizetype> countOf(const QVariant& value)
{
    // Strings answer no count here, whatever their length.
    if (value.metaType().id() == QMetaType::QString || value.metaType().id() == QMetaType::QByteArray) return std::nullopt;
    if (value.metaType().id() == QMetaType::QVariantMap) return value.toMap().size();
    if (value.canConvert<QVariantList>()) return value.value<QSequentialIterable>().size();
    return std::nullopt;
}
}  // namespace

bool countGreaterThanOne(const QVariant& value)
{
    const auto n = countOf(value);
    return n && *n > 1;
}

bool countGreaterThanTwo(const QVariant& value)
{
    const auto n = countOf(value);
    return n && *n > 2;
}

QUrl stringToURL(const QString& path) { return path.isEmpty() ? QUrl() : QUrl::fromLocalFile(path); }

QString urlToString(const QUrl& url) { return url.isEmpty() ? QString() : url.toLocalFile(); }

std::unique_ptr<QTextDocument> rtfToDocument(const QString& rtf)
{
    std::unique_ptr<QTextDocument> document = rtf.isEmpty() ? nullptr : rtf::read(rtf.toUtf8());
    return document ? std::move(document) : std::make_unique<QTextDocument>();
}

QString documentToRtf(const QTextDocument& document)
{
    // The writer always makes a whole document; no text means no RTF.
    if (document.isEmpty()) return {};
    return QString::fromUtf8(rtf::write(document));
}

}  // namespace model::transformers
