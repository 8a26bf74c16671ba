#include "ModelFixture.h"

#include "model/StoreFile.h"

#include <QFont>

#include "../support/PlistPrinting.h"

using namespace model;

namespace {
QVariantMap port(const QString& key, const QString& name, const QString& type, const QStringList& menu = {})
{
    QVariantMap info{{PortInfoKeys::key, key}, {PortInfoKeys::name, name}, {PortInfoKeys::type, type}};
    if (!menu.isEmpty()) info.insert(PortInfoKeys::menuItems, menu);
    return info;
}
}  // namespace

class AttributeTest : public ModelFixture {};

TEST_F(AttributeTest, PortNamesGiveLabelPositionAndCategory)
{
    Attribute* a = Attribute::createFromPort(&store, port(QStringLiteral("headline"), QStringLiteral("Headline [2] (Text)"),
                                                          QStringLiteral("QCPortTypeString")), QStringLiteral("x"));
    EXPECT_EQ(a->label(), QStringLiteral("Headline "));
    EXPECT_EQ(a->position(), 2u);
    EXPECT_EQ(a->category(), QStringLiteral("Text"));
    EXPECT_EQ(a->type(), kTypeString);

    Attribute* b = Attribute::createFromPort(&store, port(QStringLiteral("c"), QStringLiteral("Colour (Text)"),
                                                          QStringLiteral("QCPortTypeColor")), QColor(Qt::red));
    EXPECT_EQ(b->label(), QStringLiteral("Colour (Text)")) << "without a [n] mark the label stays whole";
    EXPECT_EQ(b->category(), QStringLiteral("Text"));
    EXPECT_EQ(b->position(), kNoPosition);
    EXPECT_EQ(b->type(), kTypeColor);
}

TEST_F(AttributeTest, KeysAndPortTypesChooseTheType)
{
    auto typeOf = [&](const QString& key, const QString& type, const QStringList& menu = {}) {
        return Attribute::createFromPort(&store, port(key, key, type, menu), QVariant())->type();
    };
    EXPECT_EQ(typeOf(QStringLiteral("Logo_File"), QStringLiteral("QCPortTypeString")), kTypeFilePath);
    EXPECT_EQ(typeOf(QStringLiteral("ImagePath"), QStringLiteral("QCPortTypeString")), kTypeFilePath);
    EXPECT_EQ(typeOf(QStringLiteral("Body_RTF"), QStringLiteral("QCPortTypeString")), kTypeStyledText);
    EXPECT_EQ(typeOf(QStringLiteral("Sub_Font_Name"), QStringLiteral("QCPortTypeString")), kTypeFont);
    EXPECT_EQ(typeOf(QStringLiteral("Lower_Rich_Font_Name"), QStringLiteral("QCPortTypeString")), kTypeRichFont);
    EXPECT_EQ(typeOf(QStringLiteral("mode"), QStringLiteral("QCPortTypeIndex")), kTypeIndex) << "an empty menu is a plain index";
    EXPECT_EQ(typeOf(QStringLiteral("mode"), QStringLiteral("QCPortTypeIndex"), {QStringLiteral("A"), QStringLiteral("B")}), kTypeIndexMenu);
    EXPECT_EQ(typeOf(QStringLiteral("on"), QStringLiteral("QCPortTypeBoolean")), kTypeBoolean);
    EXPECT_EQ(typeOf(QStringLiteral("n"), QStringLiteral("QCPortTypeNumber")), kTypeNumber);
    EXPECT_EQ(typeOf(QStringLiteral("img"), QStringLiteral("QCPortTypeImage")), kTypeImage);
    EXPECT_EQ(typeOf(QStringLiteral("videoInput"), QStringLiteral("QCPortTypeImage")), kTypeVideoInput);

    Attribute* font = Attribute::createFromPort(&store, port(QStringLiteral("Sub_Font_Name"), QStringLiteral("x"), QStringLiteral("QCPortTypeString")), QVariant());
    EXPECT_EQ(font->label(), QStringLiteral("Font"));
    Attribute* rich = Attribute::createFromPort(&store, port(QStringLiteral("A_Rich_Font_Name"), QStringLiteral("x"), QStringLiteral("QCPortTypeString")), QVariant());
    EXPECT_EQ(rich->label(), QStringLiteral("Rich Font"));
}

TEST_F(AttributeTest, KeyframesInterpolateAndHold)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    Attribute* a = addAttribute(c, QStringLiteral("size"), kTypeNumber, 5.0f);
    a->addTimepoint(1.0, 10.0f);
    a->addTimepoint(3.0, 30.0f);
    EXPECT_TRUE(a->animateable());
    EXPECT_FALSE(a->permissionToChange()) << "animated values are never the operator's";
    const std::pair<double, float> expected[] = {{2.0, 20.f}, {0.5, 10.f}, {4.0, 30.f}, {3.0, 30.f}};
    for (const auto& [t, v] : expected) {
        composition->setEditorTimepoint(t);
        EXPECT_FLOAT_EQ(a->currentValue().toFloat(), v) << "at " << t;
    }
    EXPECT_EQ(a->previousTimePoint(3.0), 1.0);
    EXPECT_EQ(a->nextTimePoint(3.0), kConstantTimepoint);
    EXPECT_EQ(c->nextTimePoint(1.0), 3.0);
    EXPECT_EQ(c->nextTimePoint(3.0), kNoNextTimepoint);
    EXPECT_EQ(c->previousTimePoint(1.0), 0.0);
}

TEST_F(AttributeTest, EveryAnimatingTypeIsReadAQuarterOfTheWayBetweenKeyframes)
{
    // Away from the midpoint, interpolation run the wrong way round shows.
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    Attribute* number = addAttribute(c, QStringLiteral("n"), kTypeNumber, 0.0f);
    number->addTimepoint(1.0, 10.0f);
    number->addTimepoint(5.0, 30.0f);
    Attribute* colour = addAttribute(c, QStringLiteral("c"), kTypeColor, QColor(Qt::black));
    colour->addTimepoint(1.0, QColor::fromRgbF(0, 1, 0.2f, 1));
    colour->addTimepoint(5.0, QColor::fromRgbF(1, 0, 0.6f, 0));
    struct Stepped {
        int type;
        QVariant first, second;
    };
    const Stepped stepped[] = {{kTypeString, QStringLiteral("one"), QStringLiteral("two")},
                               {kTypeIndex, 3, 7},
                               {kTypeBoolean, false, true},
                               {kTypeIndexMenu, 0, 2}};
    std::vector<Attribute*> steps;
    for (const Stepped& s : stepped) {
        Attribute* a = addAttribute(c, QStringLiteral("s%1").arg(s.type), s.type, s.first);
        a->addTimepoint(1.0, s.first);
        a->addTimepoint(5.0, s.second);
        steps.push_back(a);
    }

    composition->setEditorTimepoint(2.0);
    EXPECT_FLOAT_EQ(number->currentValue().toFloat(), 15.0f);
    EXPECT_FLOAT_EQ(number->valueAtTime(4.0).toFloat(), 25.0f);
    const QColor quarter = colour->currentValue().value<QColor>();
    EXPECT_NEAR(quarter.redF(), 0.25, 0.002);
    EXPECT_NEAR(quarter.greenF(), 0.75, 0.002);
    EXPECT_NEAR(quarter.blueF(), 0.3, 0.002);
    EXPECT_NEAR(quarter.alphaF(), 0.75, 0.002);
    for (size_t i = 0; i < steps.size(); ++i) {
        EXPECT_EQ(steps[i]->currentValue(), stepped[i].first) << "type " << stepped[i].type << " holds until the next keyframe";
        EXPECT_EQ(steps[i]->valueAtTime(4.99), stepped[i].first) << "type " << stepped[i].type;
        EXPECT_EQ(steps[i]->valueAtTime(5.0), stepped[i].second) << "type " << stepped[i].type;
    }
}

TEST_F(AttributeTest, KeyframeQueriesFindTheirNeighboursAmongMany)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    c->setEndTime(1000);
    Attribute* a = addAttribute(c, QStringLiteral("n"), kTypeNumber, 0.0f);
    for (int i = 0; i < 500; ++i) a->addTimepoint(i * 0.1, float(i));
    // 0.1 × i as a double is not the single-precision key; the search must not care.
    EXPECT_DOUBLE_EQ(a->previousTimePoint(25 * 0.1), double(float(24 * 0.1)));
    EXPECT_DOUBLE_EQ(a->nextTimePoint(25 * 0.1), double(float(26 * 0.1)));
    EXPECT_DOUBLE_EQ(a->previousTimePoint(2.55), double(float(2.5)));
    EXPECT_DOUBLE_EQ(a->nextTimePoint(2.55), double(float(2.6)));
    EXPECT_EQ(a->previousTimePoint(0.0), kConstantTimepoint);
    EXPECT_EQ(a->nextTimePoint(49.91), kConstantTimepoint);
    EXPECT_TRUE(a->hasKeyframeAtTimePoint(12.304));
    EXPECT_FALSE(a->hasKeyframeAtTimePoint(12.35));
    EXPECT_EQ(a->keyframeTimesInRange(1.0, 1.35), (QList<float>{float(10 * 0.1), float(11 * 0.1), float(12 * 0.1), float(13 * 0.1)}));
    EXPECT_TRUE(a->keyframeTimesInRange(60, 70).isEmpty());
    EXPECT_FLOAT_EQ(a->valueAtTime(2.525).toFloat(), 25.25f);
    a->deleteTimepoint(2.504);
    EXPECT_FALSE(a->hasKeyframeAtTimePoint(2.5));
    EXPECT_FLOAT_EQ(a->valueAtTime(2.5).toFloat(), 25.0f) << "interpolated across the gap";
}

TEST_F(AttributeTest, SettingAnAnimatedValueWritesAKeyframeAtThePlayhead)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    Attribute* a = addAttribute(c, QStringLiteral("size"), kTypeNumber, 5.0f);
    a->setAnimateable(true);
    EXPECT_TRUE(a->values().isEmpty()) << "switching animation on leaves no keyframe";
    composition->setEditorTimepoint(1.5);
    a->setCurrentValue(8.0f);
    EXPECT_TRUE(a->hasKeyframeAtTimePoint(1.5));
    EXPECT_TRUE(a->hasKeyframeAtTimePoint(1.504)) << "keyframes match to the hundredth";
    EXPECT_FALSE(a->hasKeyframeAtTimePoint(1.506));

    composition->setEditorTimepoint(3.0);
    a->setAnimateable(false);
    EXPECT_FLOAT_EQ(a->valueForTimepoint(kConstantTimepoint).toFloat(), 8.0f) << "the shown value becomes the constant";
}

TEST_F(AttributeTest, ColoursInterpolatePerChannel)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    Attribute* a = addAttribute(c, QStringLiteral("colour"), kTypeColor, QColor(Qt::black));
    a->addTimepoint(0.0, QColor::fromRgbF(0, 0, 0, 0));
    a->addTimepoint(2.0, QColor::fromRgbF(1, 1, 1, 1));
    composition->setEditorTimepoint(1.0);
    const QColor mid = a->currentValue().value<QColor>();
    EXPECT_NEAR(mid.redF(), 0.5, 0.01);
    EXPECT_NEAR(mid.blueF(), 0.5, 0.01);
    EXPECT_NEAR(mid.alphaF(), 0.5, 0.01);
}

TEST_F(AttributeTest, DeletingTheLastKeyframeLeavesAConstant)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    Attribute* a = addAttribute(c, QStringLiteral("n"), kTypeNumber, 1.0f);
    a->addTimepoint(2.0, 7.0f);
    a->deleteTimepoint(2.0);
    EXPECT_FALSE(a->animateable());
    EXPECT_FLOAT_EQ(a->currentValue().toFloat(), 7.0f);
    a->deleteTimepoint(5.0);  // no keyframe there: nothing happens
    EXPECT_FLOAT_EQ(a->currentValue().toFloat(), 7.0f);
}

TEST_F(AttributeTest, MovingKeyframesIsClampedToTheComponentSpan)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    c->setStartTime(0);
    c->setEndTime(10);
    Attribute* a = addAttribute(c, QStringLiteral("n"), kTypeNumber, 1.0f);
    a->addTimepoint(1.0, 1.0f);
    a->addTimepoint(4.0, 4.0f);
    a->setTimePointSelected(4.0, true);
    {
        UndoGroup drag(store.undoManager());
        EXPECT_EQ(a->adjustTimepointsBy(-3.0, false), 0.0) << "the first key can move back by 1 only";
    }
    EXPECT_EQ(a->sortedKeyFrames(), (QList<float>{0.0f, 3.0f}));
    EXPECT_TRUE(a->isTimePointSelected(3.0)) << "the selection follows the keyframe";

    store.undoManager().undo();
    EXPECT_EQ(a->sortedKeyFrames(), (QList<float>{1.0f, 4.0f}));
    EXPECT_TRUE(a->isTimePointSelected(4.0));
}

TEST_F(AttributeTest, FontsAreNeverAnimated)
{
    QVariantMap dictionary{{QStringLiteral("key"), QStringLiteral("Title_Font_Name")},
                           {QStringLiteral("type"), int(kTypeFont)},
                           {QStringLiteral("animateable"), true},
                           {QStringLiteral("values"), QVariant::fromValue(KeyframeValues{{2.0f, QStringLiteral("DejaVu Sans")}})},
                           {QStringLiteral("category"), QStringLiteral("Text")},
                           {QStringLiteral("position"), 3}};
    Attribute* a = Attribute::createFromDictionary(&store, dictionary);
    EXPECT_FALSE(a->animateable());
    EXPECT_EQ(a->valueForTimepoint(kConstantTimepoint).toString(), QStringLiteral("DejaVu Sans"));
    EXPECT_EQ(a->category(), QStringLiteral("Text")) << "the dictionary form keeps what the store does not";
    EXPECT_EQ(a->position(), 3u);
}

TEST_F(AttributeTest, AFontStoredAsAnimatedOpensAsAConstant)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    Attribute* a = addAttribute(c, QStringLiteral("Title_Font_Name"), kTypeFont, QFont(QStringLiteral("DejaVu Serif")));
    // As a document written elsewhere may hold it.
    a->setPrimitiveValue(QStringLiteral("animateable"), true);
    a->setPrimitiveValue(QStringLiteral("values"), QVariant::fromValue(KeyframeValues{{2.0f, QFont(QStringLiteral("DejaVu Sans"))}}));
    const LoadedStore loaded = StoreFile::read(StoreFile::write(store));
    ASSERT_TRUE(loaded) << loaded.error.toStdString();
    const Attribute* back = loaded.composition->componentArray().front()->attributeForKey(QStringLiteral("Title_Font_Name"));
    EXPECT_FALSE(back->animateable());
    EXPECT_EQ(back->valueForTimepoint(kConstantTimepoint).value<QFont>().family(), QStringLiteral("DejaVu Sans"));
}

TEST_F(AttributeTest, KeyframeInformationForNumbersHasHalfwayControls)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    Attribute* a = addAttribute(c, QStringLiteral("n"), kTypeNumber, 0.0f);
    a->addTimepoint(1.0, 10.0f);
    a->addTimepoint(3.0, 30.0f);
    const plist::Array points = a->keyFrameInformation().array();
    ASSERT_EQ(points.size(), 3u) << "a point at 0 holds the first value";
    EXPECT_DOUBLE_EQ(points[0].value("kf").value("time").toDouble(), 0.0);
    EXPECT_DOUBLE_EQ(points[0].value("kf").value("value").toDouble(), 10.0);
    EXPECT_DOUBLE_EQ(points[1].value("lc").value("time").toDouble(), -0.5);
    EXPECT_DOUBLE_EQ(points[1].value("rc").value("time").toDouble(), 1.0);
    EXPECT_DOUBLE_EQ(points[2].value("lc").value("time").toDouble(), -1.0);
    EXPECT_DOUBLE_EQ(points[2].value("rc").value("time").toDouble(), 0.0);
    EXPECT_TRUE(points[2].value("fixedControls").toBool());
    EXPECT_TRUE(a->keyFrameValuesForMultiplexer().empty());
}

TEST_F(AttributeTest, SteppedCurvesForStringsAndIndexes)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    Attribute* text = addAttribute(c, QStringLiteral("t"), kTypeString, QStringLiteral("a"));
    text->addTimepoint(1.0, QStringLiteral("one"));
    text->addTimepoint(2.0, QStringLiteral("two"));
    const plist::Array steps = text->keyFrameInformation().array();
    ASSERT_EQ(steps.size(), 4u);
    EXPECT_EQ(steps[1].value("kf").value("value").toInt(), 0);
    EXPECT_EQ(steps[2].value("kf").value("value").toInt(), 0);
    EXPECT_EQ(steps[3].value("kf").value("value").toInt(), 1);
    EXPECT_EQ(text->keyFrameValuesForMultiplexer(), (plist::Array{plist::Value("one"), plist::Value("two")}));

    Attribute* index = addAttribute(c, QStringLiteral("i"), kTypeIndex, 0);
    index->addTimepoint(1.0, 3);
    index->addTimepoint(2.0, 3);
    const plist::Array indexSteps = index->keyFrameInformation().array();
    ASSERT_EQ(indexSteps.size(), 4u) << "an unchanged value adds no step";
    EXPECT_FALSE(indexSteps[1].value("kf").contains("value")) << "the first keyframe has no previous value";
}

TEST_F(AttributeTest, ColourKeyframesExportThreeChannelCurves)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    Attribute* a = addAttribute(c, QStringLiteral("colour"), kTypeColor, QColor(Qt::black));
    a->addTimepoint(1.0, QColor(Qt::red));
    a->addTimepoint(2.0, QColor(Qt::blue));
    const plist::Array channels = a->keyFrameInformation().array();
    ASSERT_EQ(channels.size(), 3u);
    EXPECT_EQ(channels[0].size(), 2u) << "no extra point at 0 for colours";
    EXPECT_DOUBLE_EQ(channels[0].array()[0].value("kf").value("value").toDouble(), 1.0);
    EXPECT_DOUBLE_EQ(channels[2].array()[1].value("kf").value("value").toDouble(), 1.0);
}

TEST_F(AttributeTest, UndoRestoresValuesAndAnimation)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    Attribute* a = addAttribute(c, QStringLiteral("n"), kTypeNumber, 1.0f);
    store.undoManager().removeAllActions();
    {
        UndoGroup group(store.undoManager());
        a->addTimepoint(2.0, 5.0f);
    }
    store.undoManager().undo();
    EXPECT_FALSE(a->animateable());
    EXPECT_FLOAT_EQ(a->currentValue().toFloat(), 1.0f);
    store.undoManager().redo();
    EXPECT_TRUE(a->animateable());
    EXPECT_TRUE(a->hasKeyframeAtTimePoint(2.0));
}
