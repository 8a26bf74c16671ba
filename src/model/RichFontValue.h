#pragma once
// A styled font exposed by a family of published ports sharing one prefix
// ("Lower_Rich_Font_Name", "Lower_Rich_Font_Size", ...). The editor shows
// the family as one attribute; the renderer and the export get it port by port.

#include "plist/Value.h"

#include <QColor>
#include <QFont>
#include <QMetaType>
#include <QVariantMap>

#include <functional>

namespace model {

struct TextShadow {
    double offsetX = 0, offsetY = 0, blurRadius = 0;
    bool operator==(const TextShadow&) const = default;
};

// The styling the inspector's text controls edit. Absent members are unset.
struct TextAttributes {
    std::optional<QColor> foregroundColor;
    std::optional<TextShadow> shadow;
    std::optional<int> underlineStyle;
    std::optional<QColor> underlineColor;
    std::optional<int> strikethroughStyle;
    std::optional<QColor> strikethroughColor;
};

class RichFontValue {
public:
    static const QStringList& memberNames();  // "Rich_Font_Name" first

    RichFontValue() = default;
    // Reads every member of the family whose name port is `nameKey`.
    RichFontValue(const QString& nameKey, const std::function<QVariant(const QString&)>& readPort);

    const QVariantMap& attributes() const { return attributes_; }
    const QString& keyPattern() const { return keyPattern_; }
    QString keyForMember(const QString& member) const { return QString(keyPattern_).replace(QLatin1String("%@"), member); }
    QVariant valueForInputKey(const QString& member) const { return attributes_.value(keyForMember(member)); }
    void setValueForInputKey(const QString& member, const QVariant& value) { attributes_.insert(keyForMember(member), value); }

    QFont font() const;
    void setFont(const QFont& font);
    QColor color() const { return valueForInputKey(QStringLiteral("Rich_Font_Color")).value<QColor>(); }
    void setColor(const QColor& color) { setValueForInputKey(QStringLiteral("Rich_Font_Color"), color); }

    TextAttributes textAttributes() const;
    void setTextAttributes(const TextAttributes& attributes);

    plist::Value quartzValues() const;
    const QVariantMap& renderAttributes() const { return attributes_; }

    QVariantMap toMap() const { return {{QStringLiteral("attributes"), attributes_}, {QStringLiteral("keyPattern"), keyPattern_}}; }
    static RichFontValue fromMap(const QVariantMap& map);
    bool operator==(const RichFontValue& other) const = default;

private:
    QVariantMap attributes_;
    QString keyPattern_;
};

}  // namespace model

Q_DECLARE_METATYPE(model::RichFontValue)
