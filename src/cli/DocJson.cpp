#include "cli/DocJson.h"

#include "cli/DocValues.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/Ruler.h"
#include "model/StopFrame.h"
#include "model/VideoModeCatalogue.h"

namespace cli {

namespace {

QJsonObject attributeJson(const model::Attribute& a)
{
    QJsonObject values;
    const model::KeyframeValues stored = a.values();
    for (auto it = stored.begin(); it != stored.end(); ++it)
        values.insert(QString::number(double(it.key()), 'g', 10), jsonFromAttributeValue(it.value(), a.type()));
    return {
        {QStringLiteral("key"), a.key()},
        {QStringLiteral("label"), a.label()},
        {QStringLiteral("type"), a.type()},
        {QStringLiteral("animateable"), a.animateable()},
        {QStringLiteral("permissionToChange"), a.permissionToChange()},
        {QStringLiteral("quartzAttribute"), a.quartzAttribute()},
        {QStringLiteral("category"), a.category()},
        {QStringLiteral("position"), qint64(a.position())},
        {QStringLiteral("currentValue"), jsonFromAttributeValue(a.currentValue(), a.type())},
        {QStringLiteral("values"), values},
    };
}

QJsonObject componentJson(const model::QuartzComponent& c)
{
    std::vector<model::Attribute*> attributes = c.attributes();
    std::stable_sort(attributes.begin(), attributes.end(),
                     [](const model::Attribute* x, const model::Attribute* y) { return x->key() < y->key(); });
    QJsonArray list;
    for (const model::Attribute* a : attributes) list.append(attributeJson(*a));
    return {
        {QStringLiteral("title"), c.title()},
        {QStringLiteral("compositionFilename"), c.compositionFilename()},
        {QStringLiteral("zLevel"), qint64(c.zLevel())},
        {QStringLiteral("startTime"), c.startTime()},
        {QStringLiteral("endTime"), c.endTime()},
        {QStringLiteral("selected"), c.selected()},
        {QStringLiteral("constrainProportions"), c.constrainProportions()},
        {QStringLiteral("attributes"), list},
    };
}

}  // namespace

QJsonObject compositionJson(const model::Composition& composition)
{
    QJsonArray stopFrames;
    std::vector<model::StopFrame*> stops = composition.stopFrames();
    std::sort(stops.begin(), stops.end(),
              [](const model::StopFrame* a, const model::StopFrame* b) { return a->timepoint() < b->timepoint(); });
    for (const model::StopFrame* s : stops)
        stopFrames.append(QJsonObject{{QStringLiteral("time"), s->timepoint()}, {QStringLiteral("name"), s->triggerInformation()}});
    QJsonArray rulers;
    for (const model::Ruler* r : composition.rulers())
        rulers.append(QJsonObject{{QStringLiteral("position"), r->position()}, {QStringLiteral("horizontal"), r->horizontal()}});
    QJsonArray components;
    for (const model::QuartzComponent* c : composition.componentsSortedByZLevel()) components.append(componentJson(*c));
    return {
        {QStringLiteral("broadcastMode"), composition.broadcastMode()},
        {QStringLiteral("width"), composition.width()},
        {QStringLiteral("height"), composition.height()},
        {QStringLiteral("duration"), composition.duration()},
        {QStringLiteral("editorTimepoint"), composition.editorTimepoint()},
        {QStringLiteral("posterFrameTimepoint"), composition.posterFrameTimepoint()},
        {QStringLiteral("backgroundMode"), composition.backgroundMode()},
        {QStringLiteral("showsRulers"), composition.showsRulers()},
        {QStringLiteral("showsSafeZones"), composition.showsSafeZones()},
        {QStringLiteral("stopFrames"), stopFrames},
        {QStringLiteral("rulers"), rulers},
        {QStringLiteral("components"), components},
    };
}

QJsonObject compositionInfoJson(const model::Composition& composition)
{
    return jsonFromValue(composition.compositionInfo()).toObject();
}

QJsonArray videoModesJson()
{
    QJsonArray modes;
    for (const model::VideoMode& m : model::VideoModeCatalogue::modes()) {
        modes.append(QJsonObject{
            {QStringLiteral("name"), m.name},
            {QStringLiteral("group"), m.group},
            {QStringLiteral("width"), m.width},
            {QStringLiteral("height"), m.height},
            {QStringLiteral("rateCode"), m.rateCode},
            {QStringLiteral("framesPerSecond"), model::VideoModeCatalogue::framesPerSecond(m.rateCode)},
            {QStringLiteral("interlaced"), m.interlaced},
            {QStringLiteral("pixelFormat"), m.pixelFormat},
        });
    }
    return modes;
}

}  // namespace cli
