#include "model/StoreValueCodec.h"

#include "model/KeyframeValues.h"
#include "model/RichFontValue.h"
#include "model/StoreFileTextRuns.h"
#include "model/StoreResources.h"
#include "quartz/TiffCodec.h"

#include <QColor>
#include <QFont>
#include <QImage>
#include <QUrl>
#include <QVarLengthArray>

#include <charconv>

namespace model::storecodec {

namespace {

QString shortest(double d)
{
    char buffer[64];
    auto r = std::to_chars(buffer, buffer + sizeof buffer, d);
    return QString::fromLatin1(buffer, int(r.ptr - buffer));
}

// Colour channels are 16-bit fractions: six significant digits read back to
// the same channel value, and keep files of animated colours small.
QString channel(double c) { return QString::number(c, 'g', 6); }

QString shortest(float f)
{
    char buffer[64];
    auto r = std::to_chars(buffer, buffer + sizeof buffer, f);
    return QString::fromLatin1(buffer, int(r.ptr - buffer));
}

// Straight from the text: a store holds tens of thousands of numbers, and
// none needs a temporary string of its own.
template <class T> bool parseNumber(QStringView text, T& out)
{
    text = text.trimmed();
    QVarLengthArray<char, 64> ascii(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c > 0x7f) return false;  // part of no number
        ascii[i] = char(c);
    }
    auto r = std::from_chars(ascii.data(), ascii.data() + ascii.size(), out);
    return r.ec == std::errc() && r.ptr == ascii.data() + ascii.size() && !ascii.isEmpty();
}

using Parts = QVarLengthArray<QStringView, 32>;

Parts splitAtSpaces(QStringView text)
{
    Parts parts;
    for (QStringView part : text.tokenize(u' ', Qt::SkipEmptyParts)) parts.append(part);
    return parts;
}

void writeTyped(QXmlStreamWriter& xml, const QString& element, const QXmlStreamAttributes& extra, const QString& type,
                const QString& text)
{
    xml.writeStartElement(element);
    xml.writeAttributes(extra);
    xml.writeAttribute(QStringLiteral("type"), type);
    if (!text.isEmpty()) xml.writeCharacters(text);
    xml.writeEndElement();
}

// XML 1.0 cannot carry most control characters, lone surrogates or U+FFFE
// and U+FFFF, and a reader turns a carriage return into a line feed. Text
// with any of them is written as its UTF-16 code units in base64, so what an
// operator pasted comes back exactly.
bool xmlCannotCarry(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c < 0x20 && c != u'\t' && c != u'\n') return true;
        if (c == 0xFFFE || c == 0xFFFF) return true;
        if (QChar::isHighSurrogate(c)) {
            if (i + 1 >= text.size() || !QChar::isLowSurrogate(text[i + 1].unicode())) return true;
            ++i;
        } else if (QChar::isLowSurrogate(c)) {
            return true;
        }
    }
    return false;
}

const QString kEncoding = QStringLiteral("encoding");
const QString kUtf16Base64 = QStringLiteral("utf16-base64");

void writeString(QXmlStreamWriter& xml, const QString& element, const QXmlStreamAttributes& extra, const QString& text)
{
    if (!xmlCannotCarry(text)) {
        writeTyped(xml, element, extra, QStringLiteral("string"), text);
        return;
    }
    QByteArray units(text.size() * 2, Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        units[2 * i] = char(c & 0xff);
        units[2 * i + 1] = char(c >> 8);
    }
    QXmlStreamAttributes attributes = extra;
    attributes.append(kEncoding, kUtf16Base64);
    writeTyped(xml, element, attributes, QStringLiteral("string"), QString::fromLatin1(units.toBase64()));
}

QString fromUtf16Base64(QStringView text)
{
    const QByteArray units = QByteArray::fromBase64(text.toLatin1());
    QString result(units.size() / 2, Qt::Uninitialized);
    for (qsizetype i = 0; i < result.size(); ++i)
        result[i] = QChar(char16_t(uchar(units[2 * i]) | (uchar(units[2 * i + 1]) << 8)));
    return result;
}

// The bytes the export writes too, encoded once for both (quartz/TiffCodec.h):
// a file beside the store when they are large and there is a package to
// hold it, base64 text otherwise.
void writeImage(QXmlStreamWriter& xml, const QString& element, const QXmlStreamAttributes& extra, const QImage& image,
                StoreResources* resources)
{
    const QByteArray bytes = quartz::tiff::encode(image);
    if (resources && bytes.size() >= StoreResources::kSmallestFileBytes) {
        const QString name = resources->put(bytes, QStringLiteral("tiff"));
        if (!name.isEmpty()) {
            writeTyped(xml, element, extra, QStringLiteral("tiff-file"), name);
            return;
        }
    }
    writeTyped(xml, element, extra, QStringLiteral("tiff"), QString::fromLatin1(bytes.toBase64()));
}

// Keyframe tables of plain numbers or colours (nearly all of them) are
// written as one run of numbers: "time value time value ..." or
// "time r g b a ...". Large animated templates stay small and fast to read.
bool writeCompactKeyframes(QXmlStreamWriter& xml, const KeyframeValues& keyframes, const QString& element,
                           const QXmlStreamAttributes& extra)
{
    if (keyframes.isEmpty()) return false;
    const int kind = keyframes.first().metaType().id();
    if (kind != QMetaType::Float && kind != QMetaType::QColor) return false;
    for (const QVariant& v : keyframes)
        if (v.metaType().id() != kind) return false;
    QStringList numbers;
    numbers.reserve(keyframes.size() * (kind == QMetaType::Float ? 2 : 5));
    for (auto it = keyframes.begin(); it != keyframes.end(); ++it) {
        numbers.append(shortest(it.key()));
        if (kind == QMetaType::Float) {
            numbers.append(shortest(it.value().toFloat()));
        } else {
            const QColor c = it.value().value<QColor>().toRgb();
            numbers << channel(c.redF()) << channel(c.greenF()) << channel(c.blueF()) << channel(c.alphaF());
        }
    }
    writeTyped(xml, element, extra, kind == QMetaType::Float ? QStringLiteral("float-keyframes") : QStringLiteral("color-keyframes"),
               numbers.join(QLatin1Char(' ')));
    return true;
}

bool readCompactKeyframes(QStringView text, bool colours, KeyframeValues& out)
{
    const Parts parts = splitAtSpaces(text);
    const int stride = colours ? 5 : 2;
    if (parts.size() % stride != 0) return false;
    for (int i = 0; i < parts.size(); i += stride) {
        float time;
        if (!parseNumber(parts[i], time)) return false;
        if (!colours) {
            float v;
            if (!parseNumber(parts[i + 1], v)) return false;
            out.insert(time, v);
            continue;
        }
        double c[4];
        for (int k = 0; k < 4; ++k)
            if (!parseNumber(parts[i + 1 + k], c[k]) || c[k] < 0 || c[k] > 1) return false;
        out.insert(time, QColor::fromRgbF(float(c[0]), float(c[1]), float(c[2]), float(c[3])));
    }
    return true;
}

}  // namespace

void writeValue(QXmlStreamWriter& xml, const QVariant& value, const QString& element, const QXmlStreamAttributes& extra,
                StoreResources* resources)
{
    const int id = value.metaType().id();
    // A null picture is no value: an empty image element could never be read back.
    const bool nullImage = id == QMetaType::QImage && value.value<QImage>().isNull();
    if (!value.isValid() || nullImage || (value.isNull() && id != QMetaType::QString && id != QMetaType::QByteArray)) {
        writeTyped(xml, element, extra, QStringLiteral("null"), {});
        return;
    }
    if (value.metaType() == QMetaType::fromType<KeyframeValues>()) {
        if (writeCompactKeyframes(xml, value.value<KeyframeValues>(), element, extra)) return;
        xml.writeStartElement(element);
        xml.writeAttributes(extra);
        xml.writeAttribute(QStringLiteral("type"), QStringLiteral("keyframes"));
        const KeyframeValues keyframes = value.value<KeyframeValues>();
        for (auto it = keyframes.begin(); it != keyframes.end(); ++it) {
            QXmlStreamAttributes time;
            time.append(QStringLiteral("time"), shortest(it.key()));
            writeValue(xml, it.value(), QStringLiteral("value"), time, resources);
        }
        xml.writeEndElement();
        return;
    }
    if (value.metaType() == QMetaType::fromType<RichFontValue>()) {
        xml.writeStartElement(element);
        xml.writeAttributes(extra);
        xml.writeAttribute(QStringLiteral("type"), QStringLiteral("richfont"));
        writeValue(xml, value.value<RichFontValue>().toMap(), QStringLiteral("value"), {}, resources);
        xml.writeEndElement();
        return;
    }
    switch (id) {
    case QMetaType::Bool: writeTyped(xml, element, extra, QStringLiteral("bool"), value.toBool() ? QStringLiteral("true") : QStringLiteral("false")); return;
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short: writeTyped(xml, element, extra, QStringLiteral("int"), QString::number(value.toLongLong())); return;
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UShort: writeTyped(xml, element, extra, QStringLiteral("uint"), QString::number(value.toULongLong())); return;
    case QMetaType::Double: writeTyped(xml, element, extra, QStringLiteral("double"), shortest(value.toDouble())); return;
    case QMetaType::Float: writeTyped(xml, element, extra, QStringLiteral("float"), shortest(value.toFloat())); return;
    case QMetaType::QString: writeString(xml, element, extra, value.toString()); return;
    case QMetaType::QByteArray: writeTyped(xml, element, extra, QStringLiteral("data"), QString::fromLatin1(value.toByteArray().toBase64())); return;
    case QMetaType::QUrl: writeTyped(xml, element, extra, QStringLiteral("url"), value.toUrl().toString()); return;
    case QMetaType::QColor: {
        const QColor c = value.value<QColor>().toRgb();
        writeTyped(xml, element, extra, QStringLiteral("color"),
                   QStringList{channel(c.redF()), channel(c.greenF()), channel(c.blueF()), channel(c.alphaF())}.join(QLatin1Char(' ')));
        return;
    }
    case QMetaType::QImage: writeImage(xml, element, extra, value.value<QImage>(), resources); return;
    case QMetaType::QFont: {
        const QFont f = value.value<QFont>();
        xml.writeStartElement(element);
        xml.writeAttributes(extra);
        xml.writeAttribute(QStringLiteral("type"), QStringLiteral("font"));
        xml.writeAttribute(QStringLiteral("family"), f.family());
        xml.writeAttribute(QStringLiteral("style"), f.styleName());
        xml.writeAttribute(QStringLiteral("size"), shortest(f.pointSizeF()));
        xml.writeAttribute(QStringLiteral("bold"), f.bold() ? QStringLiteral("true") : QStringLiteral("false"));
        xml.writeAttribute(QStringLiteral("italic"), f.italic() ? QStringLiteral("true") : QStringLiteral("false"));
        xml.writeEndElement();
        return;
    }
    case QMetaType::QStringList:
    case QMetaType::QVariantList: {
        xml.writeStartElement(element);
        xml.writeAttributes(extra);
        xml.writeAttribute(QStringLiteral("type"), id == QMetaType::QStringList ? QStringLiteral("strings") : QStringLiteral("list"));
        for (const QVariant& item : value.toList()) writeValue(xml, item, QStringLiteral("value"), {}, resources);
        xml.writeEndElement();
        return;
    }
    case QMetaType::QVariantMap: {
        xml.writeStartElement(element);
        xml.writeAttributes(extra);
        xml.writeAttribute(QStringLiteral("type"), QStringLiteral("map"));
        const QVariantMap map = value.toMap();
        for (auto it = map.begin(); it != map.end(); ++it) {
            QXmlStreamAttributes key;
            key.append(QStringLiteral("key"), it.key());
            writeValue(xml, it.value(), QStringLiteral("value"), key, resources);
        }
        xml.writeEndElement();
        return;
    }
    default:
        // Anything else that has a text form keeps it; nothing is dropped silently.
        writeString(xml, element, extra, value.toString());
        return;
    }
}

namespace {

bool readChildren(QXmlStreamReader& xml, QString& error, StoreFileTextRuns* runs, const StoreResources* resources,
                  const std::function<bool(const QXmlStreamAttributes&, const QVariant&)>& take)
{
    while (xml.readNextStartElement()) {
        const QXmlStreamAttributes attributes = xml.attributes();
        QVariant child;
        if (!readValue(xml, child, error, runs, resources)) return false;
        if (!take(attributes, child)) return false;
    }
    return !xml.hasError();
}

bool isBase64Type(QStringView type)
{
    return type == QLatin1String("data") || type == QLatin1String("image") || type == QLatin1String("tiff");
}

}  // namespace

bool readValue(QXmlStreamReader& xml, QVariant& value, QString& error, StoreFileTextRuns* runs,
               const StoreResources* resources)
{
    const QXmlStreamAttributes attributes = xml.attributes();
    const QStringView type = attributes.value(QLatin1String("type"));
    auto fail = [&](const QString& message) {
        error = QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(message);
        return false;
    };
    if (type == QLatin1String("keyframes")) {
        KeyframeValues keyframes;
        const bool ok = readChildren(xml, error, runs, resources, [&](const QXmlStreamAttributes& a, const QVariant& v) {
            float time = 0;
            if (!parseNumber(a.value(QLatin1String("time")), time)) return fail(QStringLiteral("a keyframe without a valid time"));
            keyframes.insert(time, v);
            return true;
        });
        value = QVariant::fromValue(keyframes);
        return ok;
    }
    if (type == QLatin1String("list") || type == QLatin1String("strings")) {
        QVariantList list;
        const bool ok = readChildren(xml, error, runs, resources, [&](const QXmlStreamAttributes&, const QVariant& v) {
            list.append(v);
            return true;
        });
        value = type == QLatin1String("strings") ? QVariant(QVariant(list).toStringList()) : QVariant(list);
        return ok;
    }
    if (type == QLatin1String("map") || type == QLatin1String("richfont")) {
        QVariantMap map;
        QVariant inner;
        const bool ok = readChildren(xml, error, runs, resources, [&](const QXmlStreamAttributes& a, const QVariant& v) {
            if (type == QLatin1String("richfont")) inner = v;
            else map.insert(a.value(QLatin1String("key")).toString(), v);
            return true;
        });
        value = type == QLatin1String("map") ? QVariant(map) : QVariant::fromValue(RichFontValue::fromMap(inner.toMap()));
        return ok;
    }
    if (type == QLatin1String("font")) {
        QFont font(attributes.value(QLatin1String("family")).toString());
        const QString style = attributes.value(QLatin1String("style")).toString();
        if (!style.isEmpty()) font.setStyleName(style);
        double size = 0;
        if (parseNumber(attributes.value(QLatin1String("size")), size) && size > 0) font.setPointSizeF(size);
        font.setBold(attributes.value(QLatin1String("bold")) == QLatin1String("true"));
        font.setItalic(attributes.value(QLatin1String("italic")) == QLatin1String("true"));
        xml.skipCurrentElement();
        value = font;
        return !xml.hasError();
    }
    // The text may begin with a run cut out before parsing; what the reader
    // still sees follows it.
    const QByteArrayView run = runs ? runs->take(xml.characterOffset()) : QByteArrayView();
    QString text = xml.readElementText();
    if (xml.hasError()) return false;
    const bool wholeTextIsRun = !run.isEmpty() && text.isEmpty();
    QByteArray base64;
    if (isBase64Type(type)) {
        // Never through UTF-16 when the whole text is a run.
        base64 = wholeTextIsRun ? QByteArray::fromRawData(run.data(), run.size()) : run.toByteArray() + text.toLatin1();
    } else if (!run.isEmpty()) {
        text.prepend(QString::fromLatin1(run));
    }
    if (type == QLatin1String("null")) {
        value = QVariant();
    } else if (type == QLatin1String("bool")) {
        if (text != QLatin1String("true") && text != QLatin1String("false")) return fail(QStringLiteral("invalid boolean \"%1\"").arg(text));
        value = text == QLatin1String("true");
    } else if (type == QLatin1String("int")) {
        qlonglong i;
        if (!parseNumber(text, i)) return fail(QStringLiteral("invalid integer \"%1\"").arg(text));
        value = i;
    } else if (type == QLatin1String("uint")) {
        qulonglong u;
        if (!parseNumber(text, u)) return fail(QStringLiteral("invalid integer \"%1\"").arg(text));
        value = u;
    } else if (type == QLatin1String("double")) {
        double d;
        if (!parseNumber(text, d)) return fail(QStringLiteral("invalid number \"%1\"").arg(text));
        value = d;
    } else if (type == QLatin1String("float")) {
        float f;
        if (!parseNumber(text, f)) return fail(QStringLiteral("invalid number \"%1\"").arg(text));
        value = f;
    } else if (type == QLatin1String("string")) {
        value = attributes.value(kEncoding) == kUtf16Base64 ? fromUtf16Base64(text) : text;
    } else if (type == QLatin1String("data")) {
        value = wholeTextIsRun ? runs->fromBase64(run) : QByteArray::fromBase64(base64);
    } else if (type == QLatin1String("url")) {
        value = QUrl(text);
    } else if (type == QLatin1String("color")) {
        const Parts parts = splitAtSpaces(text);
        double c[4];
        if (parts.size() != 4) return fail(QStringLiteral("a colour needs four components"));
        for (int i = 0; i < 4; ++i)
            if (!parseNumber(parts[i], c[i]) || c[i] < 0 || c[i] > 1) return fail(QStringLiteral("invalid colour \"%1\"").arg(text));
        value = QColor::fromRgbF(float(c[0]), float(c[1]), float(c[2]), float(c[3]));
    } else if (type == QLatin1String("float-keyframes") || type == QLatin1String("color-keyframes")) {
        KeyframeValues keyframes;
        if (!readCompactKeyframes(text, type == QLatin1String("color-keyframes"), keyframes))
            return fail(QStringLiteral("invalid keyframe numbers"));
        value = QVariant::fromValue(keyframes);
    } else if (type == QLatin1String("tiff")) {
        // Decoding remembers these bytes for the image, so saving it again
        // writes them as they are instead of encoding anew.
        const QByteArray bytes = wholeTextIsRun ? runs->fromBase64(run) : QByteArray::fromBase64(base64);
        QImage image;
        QString reason;
        if (!bytes.isEmpty() && (image = quartz::tiff::decode(bytes, &reason)).isNull())
            return fail(QStringLiteral("an image that is not readable TIFF data (%1)").arg(reason));
        value = image;
    } else if (type == QLatin1String("tiff-file")) {
        QString reason = QStringLiteral("a picture kept in a file, read without its package");
        const QByteArray bytes = resources ? resources->get(text.trimmed(), &reason) : QByteArray();
        if (bytes.isEmpty()) return fail(reason);
        QImage image = quartz::tiff::decode(bytes, &reason);
        if (image.isNull()) return fail(QStringLiteral("%1 is not readable TIFF data (%2)").arg(text.trimmed(), reason));
        value = image;
    } else if (type == QLatin1String("image")) {
        // Documents of earlier versions wrote a missing picture as an empty image.
        if (base64.trimmed().isEmpty()) {
            value = QVariant();
            return true;
        }
        QImage image;
        if (!image.loadFromData(QByteArray::fromBase64(base64), "PNG")) return fail(QStringLiteral("an image that is not PNG data"));
        value = image;
    } else {
        return fail(QStringLiteral("unknown value type \"%1\"").arg(type));
    }
    return true;
}

}  // namespace model::storecodec
