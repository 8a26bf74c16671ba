#include "model/RichFontValue.h"

#include "quartz/QuartzComposition.h"

namespace model {

namespace {
const QString kName = QStringLiteral("Rich_Font_Name");
const QString kSize = QStringLiteral("Rich_Font_Size");
const QString kColor = QStringLiteral("Rich_Font_Color");
const QString kUseShadow = QStringLiteral("Rich_Font_Use_Shadow");
const QString kBlur = QStringLiteral("Rich_Font_Shadow_Blur_Radius");
const QString kOffsetX = QStringLiteral("Rich_Font_Shadow_Offset_X");
const QString kOffsetY = QStringLiteral("Rich_Font_Shadow_Offset_Y");
const QString kUnderline = QStringLiteral("Rich_Font_Underline_Style");
const QString kUnderlineColor = QStringLiteral("Rich_Font_Underline_Color");
const QString kStrike = QStringLiteral("Rich_Font_Strikethrough_Style");
const QString kStrikeColor = QStringLiteral("Rich_Font_Strikethrough_Color");

bool isSet(const QVariant& v) { return v.isValid() && !v.isNull(); }
}  // namespace

const QStringList& RichFontValue::memberNames()
{
    static const QStringList names = {kName, kSize, kColor, kUseShadow, kBlur, kOffsetX, kOffsetY,
                                      kUnderline, kUnderlineColor, kStrike, kStrikeColor};
    return names;
}

RichFontValue::RichFontValue(const QString& nameKey, const std::function<QVariant(const QString&)>& readPort)
{
    keyPattern_ = QString(nameKey).replace(kName, QStringLiteral("%@"));
    attributes_.insert(nameKey, readPort(nameKey));
    for (const QString& member : memberNames()) {
        if (member == kName) continue;
        const QString key = QString(nameKey).replace(kName, member);
        attributes_.insert(key, readPort(key));
    }
}

QFont RichFontValue::font() const
{
    QFont f(valueForInputKey(kName).toString());
    const float size = valueForInputKey(kSize).toFloat();
    if (size > 0) f.setPointSizeF(size);
    return f;
}

void RichFontValue::setFont(const QFont& font)
{
    setValueForInputKey(kName, font.family());
    setValueForInputKey(kSize, float(font.pointSizeF()));
}

TextAttributes RichFontValue::textAttributes() const
{
    TextAttributes t;
    if (isSet(valueForInputKey(kColor))) t.foregroundColor = valueForInputKey(kColor).value<QColor>();
    if (valueForInputKey(kUseShadow).toInt() == 1)
        t.shadow = TextShadow{valueForInputKey(kOffsetX).toFloat(), valueForInputKey(kOffsetY).toFloat(),
                              valueForInputKey(kBlur).toFloat()};
    if (isSet(valueForInputKey(kUnderline))) {
        t.underlineStyle = valueForInputKey(kUnderline).toInt();
        if (isSet(valueForInputKey(kUnderlineColor))) t.underlineColor = valueForInputKey(kUnderlineColor).value<QColor>();
    }
    if (isSet(valueForInputKey(kStrike))) {
        t.strikethroughStyle = valueForInputKey(kStrike).toInt();
        if (isSet(valueForInputKey(kStrikeColor))) t.strikethroughColor = valueForInputKey(kStrikeColor).value<QColor>();
    }
    return t;
}

void RichFontValue::setTextAttributes(const TextAttributes& t)
{
    if (t.foregroundColor) setValueForInputKey(kColor, *t.foregroundColor);
    // Switching a decoration off keeps its colour and geometry for later.
    if (t.shadow) {
        setValueForInputKey(kUseShadow, 1);
        setValueForInputKey(kBlur, float(t.shadow->blurRadius));
        setValueForInputKey(kOffsetX, float(t.shadow->offsetX));
        setValueForInputKey(kOffsetY, float(t.shadow->offsetY));
    } else {
        setValueForInputKey(kUseShadow, 0);
    }
    if (t.underlineStyle) {
        setValueForInputKey(kUnderline, *t.underlineStyle);
        setValueForInputKey(kUnderlineColor, t.underlineColor ? QVariant(*t.underlineColor) : QVariant());
    } else {
        setValueForInputKey(kUnderline, 0);
    }
    if (t.strikethroughStyle) {
        setValueForInputKey(kStrike, *t.strikethroughStyle);
        setValueForInputKey(kStrikeColor, t.strikethroughColor ? QVariant(*t.strikethroughColor) : QVariant());
    } else {
        setValueForInputKey(kStrike, 0);
    }
}

plist::Value RichFontValue::quartzValues() const
{
    plist::Value result = plist::Value::emptyDictionary();
    for (auto it = attributes_.begin(); it != attributes_.end(); ++it) {
        const plist::Value v = QuartzComposition::quartzValueForObject(it.value());
        if (!v.isNull()) result.set(it.key().toStdString(), v);
    }
    return result;
}

RichFontValue RichFontValue::fromMap(const QVariantMap& map)
{
    RichFontValue v;
    v.attributes_ = map.value(QStringLiteral("attributes")).toMap();
    v.keyPattern_ = map.value(QStringLiteral("keyPattern")).toString();
    return v;
}

}  // namespace model
