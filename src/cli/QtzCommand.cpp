// velloran-cli qtz inputs|check FILE.qtz: what a composition offers and
// whether the runtime can play it.

#include "cli/Command.h"
#include "runtime/Composition.h"
#include "runtime/gl/GlProgramCheck.h"

#include <QColor>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace cli {

namespace {

QJsonValue jsonValue(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QColor: {
        const QColor c = value.value<QColor>();
        return c.alpha() == 255 ? c.name(QColor::HexRgb).toUpper()
                                : QStringLiteral("#%1%2").arg(c.name(QColor::HexRgb).mid(1).toUpper())
                                      .arg(c.alpha(), 2, 16, QLatin1Char('0')).toUpper();
    }
    case QMetaType::QImage: {
        const QImage image = value.value<QImage>();
        return QJsonObject{{"width", image.width()}, {"height", image.height()}};
    }
    case QMetaType::QVariantList: {
        QJsonArray array;
        for (const QVariant& item : value.toList()) array.append(jsonValue(item));
        return array;
    }
    case QMetaType::QVariantMap: {
        QJsonObject object;
        const QVariantMap map = value.toMap();
        for (auto it = map.begin(); it != map.end(); ++it) object.insert(it.key(), jsonValue(it.value()));
        return object;
    }
    default: return QJsonValue::fromVariant(value);
    }
}

QJsonArray inputsJson(const runtime::Composition& composition)
{
    QJsonArray inputs;
    for (const runtime::PortDescription& port : composition.inputs()) {
        QJsonObject o{{"key", port.key}, {"name", port.name}, {"type", port.typeName()}, {"value", jsonValue(port.defaultValue)}};
        if (!port.menuItems.isEmpty()) o.insert("menuItems", QJsonArray::fromStringList(port.menuItems));
        if (port.minimum) o.insert("min", *port.minimum);
        if (port.maximum) o.insert("max", *port.maximum);
        inputs.append(o);
    }
    return inputs;
}

}  // namespace

int runQtzCommand(const QStringList& args, Streams& io)
{
    if (args.size() != 2 || (args[0] != QLatin1String("inputs") && args[0] != QLatin1String("check"))) {
        io.err << "usage: velloran-cli qtz inputs|check FILE.qtz\n";
        return kUsage;
    }
    QString error;
    const auto composition = runtime::Composition::loadFile(args[1], &error);
    if (args[0] == QLatin1String("inputs")) {
        if (!composition) {
            io.err << "velloran-cli: cannot load " << args[1] << ": " << error << "\n";
            return kFailure;
        }
        io.out << QJsonDocument(inputsJson(*composition)).toJson(QJsonDocument::Indented);
        return kSuccess;
    }
    QJsonObject patches;
    if (composition)
        for (const auto& [className, count] : composition->patchCounts()) patches.insert(className, count);
    QStringList problems = composition ? composition->problems() : QStringList{error};
    // Where OpenGL is at hand, the driver's own word on GLSL programs too.
    if (composition)
        if (const auto driver = runtime::programProblemsFromDriver(*composition)) problems << *driver;
    QJsonObject report{{"loadable", bool(composition)},
                       {"patches", patches},
                       {"unsupported", QJsonArray::fromStringList(composition ? composition->unsupportedClasses() : QStringList())},
                       {"problems", QJsonArray::fromStringList(problems)}};
    io.out << QJsonDocument(report).toJson(QJsonDocument::Indented);
    if (!composition) {
        io.err << "velloran-cli: cannot load " << args[1] << ": " << error << "\n";
        return kFailure;
    }
    return kSuccess;
}

}  // namespace cli
