// Attributes made from a composition file's published input ports: label
// marks, type rules and the special ports (files, fonts, video input).

#include "model/Attribute.h"
#include "model/ObjectStore.h"
#include "model/Settings.h"

#include <QImage>

namespace model {

namespace {

// "[n]" in a port's name gives the sort position, "(Group)" the inspector
// group; the label is cut before the first mark.
void applyLabelMarks(QString& label, QString& category, quint64& position)
{
    position = kNoPosition;
    const int open = label.indexOf(QLatin1Char('['));
    if (open >= 0) {
        const int close = label.indexOf(QLatin1Char(']'), open + 1);
        if (close > open) position = label.mid(open + 1, close - open - 1).toULongLong();
    }
    const int paren = label.indexOf(QLatin1Char('('));
    if (paren >= 0) {
        const int close = label.indexOf(QLatin1Char(')'), paren + 1);
        if (close > paren) category = label.mid(paren + 1, close - paren - 1);
    }
    // Without a "[" the cut point is 0 and the label stays whole, category
    // mark included.
    const int b = std::max(open, 0);
    const int cut = paren < 0 ? b : std::min(b, paren);
    if (cut != 0) label = label.left(cut);
}

}  // namespace

Attribute* Attribute::createFromPort(ObjectStore* store, const QVariantMap& info, const QVariant& givenValue)
{
    Attribute* a = store->insertNewObject<Attribute>();
    const QString key = info.value(PortInfoKeys::key).toString();
    QString label = info.value(PortInfoKeys::name).toString();
    a->setKey(key);
    applyLabelMarks(label, a->category_, a->position_);

    QString typeName = info.value(PortInfoKeys::type).toString();
    if (key.contains(QLatin1String("RTF"))) typeName = QStringLiteral("__RTF__");
    if (key.contains(QLatin1String("Path")) || key.contains(QLatin1String("File"))) typeName = QStringLiteral("__FILE__");
    if (key.contains(QLatin1String("Rich_Font_Name"))) {
        label = QStringLiteral("Rich Font");
        typeName = QStringLiteral("__RICHFONT__");
    } else if (key.contains(QLatin1String("Font_Name"))) {
        label = QStringLiteral("Font");
        typeName = QStringLiteral("__FONT__");
    }
    a->setLabel(label);

    QVariant value = givenValue;
    const QStringList menu = info.value(PortInfoKeys::menuItems).toStringList();
    if (const AttributeTypeInfo* type = attributeTypeForPortType(typeName, !menu.isEmpty())) {
        a->setType(type->code);
        if (type->code == kTypeIndexMenu) a->setPossibleValues(menu);
        if (type->code == kTypeImage && key == QLatin1String("videoInput")) {
            // The live input's picture in the editor is the poster image, or
            // none at all: never an empty picture.
            a->setType(kTypeVideoInput);
            const QImage poster = QImage::fromData(Settings::value(Settings::kVideoInputPosterImage).toByteArray());
            value = poster.isNull() ? QVariant() : QVariant(poster);
        }
    }
    a->setCurrentValue(value);
    a->commonInit();
    return a;
}

}  // namespace model
