#include "ModelFixture.h"

using namespace model;

class ComponentTest : public ModelFixture {};

TEST_F(ComponentTest, StandardAttributesAreMadeOnceAndCarryTheGeometry)
{
    QuartzComponent* c = addComponent(QStringLiteral("Logo"), QRectF(10, 20, 100, 50));
    EXPECT_NE(c->attributeForKey(QStringLiteral("marginX")), nullptr);
    EXPECT_NE(c->attributeForKey(QStringLiteral("marginY")), nullptr);
    EXPECT_TRUE(c->visibleInCompositionEditor());
    const std::size_t count = c->attributes().size();
    c->initializeAttributeObservers();
    EXPECT_EQ(c->attributes().size(), count) << "a second set-up adds nothing";
    EXPECT_EQ(c->drawingFrame(), QRectF(10, 20, 100, 50));
    EXPECT_FLOAT_EQ(c->extentH(), 110.f);
    EXPECT_FLOAT_EQ(c->centerV(), 45.f);
    c->setOpacityHumanReadable(50);
    EXPECT_DOUBLE_EQ(c->opacity(), 0.5);
}

TEST_F(ComponentTest, TimeSpanVisibilityAndValidation)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    composition->setDuration(10);
    c->setStartTime(2);
    c->setEndTime(5);
    composition->setEditorTimepoint(2.0);
    EXPECT_TRUE(c->visible());
    composition->setEditorTimepoint(5.0);
    EXPECT_TRUE(c->visible());
    composition->setEditorTimepoint(5.001);
    EXPECT_FALSE(c->visible());
    EXPECT_DOUBLE_EQ(c->validateStartTime(7), 5.0);
    EXPECT_DOUBLE_EQ(c->validateEndTime(1), 2.0);
    c->setDuration(-1);
    EXPECT_DOUBLE_EQ(c->endTime(), 5.0) << "a negative duration is ignored";
    c->setDuration(4);
    EXPECT_DOUBLE_EQ(c->endTime(), 6.0);
}

TEST_F(ComponentTest, ConstrainedProportionsRoundThePartner)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"), QRectF(0, 0, 100, 50));
    c->setConstrainProportions(true);
    c->setWidth(200);
    EXPECT_DOUBLE_EQ(c->height(), 100.0);
    c->setHeight(33);
    c->setConstrainProportions(false);
    c->setWidth(100);
    c->setConstrainProportions(true);
    c->setWidth(50);
    EXPECT_DOUBLE_EQ(c->height(), 17.0) << "16.5 rounds up";
    c->setWidth(-5);
    EXPECT_DOUBLE_EQ(c->width(), 50.0);
}

TEST_F(ComponentTest, ResizingByHandles)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"), QRectF(0, 0, 100, 50));
    const QRectF start = c->drawingFrame();
    c->resizeByMovingHandle(6, QPointF(130, -10), false, false, start);
    EXPECT_EQ(c->drawingFrame(), QRectF(0, -10, 130, 60));

    QuartzComponent* p = addComponent(QStringLiteral("P"), QRectF(0, 0, 100, 50));
    p->resizeByMovingHandle(6, QPointF(130, -10), true, false, p->drawingFrame());
    EXPECT_EQ(p->drawingFrame(), QRectF(0, -60, 130, 110));

    QuartzComponent* small = addComponent(QStringLiteral("S"), QRectF(0, 0, 3, 3));
    small->resizeByMovingHandle(1, QPointF(2, 0), false, false, small->drawingFrame());
    EXPECT_EQ(small->drawingFrame(), QRectF(0, 0, 3, 3)) << "shrinking below 2 aborts";

    QuartzComponent* centred = addComponent(QStringLiteral("F"), QRectF(0, 0, 100, 50));
    centred->resizeByMovingHandle(7, QPointF(110, 25), false, true, centred->drawingFrame());
    EXPECT_EQ(centred->drawingFrame(), QRectF(-10, 0, 120, 50)) << "from the centre both sides move";
}

TEST_F(ComponentTest, HandleHitTestingUsesMarginsRotationAndVisibility)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"), QRectF(0, 0, 100, 50));
    c->setMarginX(10);
    c->setMarginY(10);
    EXPECT_EQ(c->handleIndexForLocation(QPointF(-5, 20)), 0) << "inside the margin counts as the body";
    EXPECT_EQ(c->handleIndexForLocation(QPointF(-9, -9)), 1);
    EXPECT_EQ(c->handleIndexForLocation(QPointF(105, 55)), 8);
    EXPECT_EQ(c->handleIndexForLocation(QPointF(50, -9)), 5);
    EXPECT_EQ(c->handleIndexForLocation(QPointF(110, 20)), kHandleNone) << "containment is half-open";
    EXPECT_EQ(c->handleIndexForLocation(QPointF(200, 20)), kHandleNone);

    c->setZRotation(90);
    // The frame -10..110 x -10..60 turned a quarter about (50, 25): (50, 80) is inside the turned frame.
    EXPECT_NE(c->handleIndexForLocation(QPointF(50, 80)), kHandleNone);
    EXPECT_EQ(c->handleIndexForLocation(QPointF(105, 25)), kHandleNone);

    c->setVisibleInCompositionEditor(false);
    EXPECT_EQ(c->handleIndexForLocation(QPointF(50, 25)), kHandleNone);
}

TEST_F(ComponentTest, PermissionAndAnimationGroupsAreTriStates)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    EXPECT_EQ(c->permissionToMove(), kGroupNone);
    c->attributeForKey(QStringLiteral("originX"))->setPermissionToChange(true);
    EXPECT_EQ(c->permissionToMove(), kGroupSome);
    c->setPermissionToMove(kGroupAll);
    EXPECT_EQ(c->permissionToMove(), kGroupAll);
    c->setPermissionToMove(kGroupSome);
    EXPECT_EQ(c->permissionToMove(), kGroupNone) << "setting \"some\" revokes";

    EXPECT_EQ(c->animateable(), kGroupNone);
    c->attributeForKey(QStringLiteral("opacity"))->setAnimateable(true);
    EXPECT_EQ(c->animateable(), kGroupSome);
    c->setAnimateable(kGroupAll);
    EXPECT_EQ(c->animateable(), kGroupAll);

    QuartzComponent* bare = store.insertNewObject<QuartzComponent>();
    EXPECT_EQ(bare->animateable(), kGroupNone);
    EXPECT_EQ(bare->permissionToChangeAttributes(), kGroupNone);
}

TEST_F(ComponentTest, ADragIsOneUndoStep)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"), QRectF(0, 0, 100, 50));
    store.undoManager().removeAllActions();
    {
        UndoGroup drag(store.undoManager());
        for (int i = 1; i <= 20; ++i) c->setOriginX(i);
        c->setOriginY(7);
    }
    EXPECT_EQ(store.undoManager().undoCount(), 1u);
    store.undoManager().undo();
    EXPECT_EQ(c->drawingFrame(), QRectF(0, 0, 100, 50));
}

TEST_F(ComponentTest, GeometryChangesAreAnnouncedOnTheComponent)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    QStringList heard;
    c->observe(QStringLiteral("width"), [&](ManagedObject*, const QString& key) { heard << key; });
    c->setNeedsUpdate(false);
    c->setWidth(300);
    EXPECT_EQ(heard, QStringList{QStringLiteral("width")});
    EXPECT_TRUE(c->needsUpdate());
}

TEST_F(ComponentTest, DictionaryFormRoundTripsThroughAttributes)
{
    QuartzComponent* c = addComponent(QStringLiteral("Logo"));
    addAttribute(c, QStringLiteral("text"), kTypeString, QStringLiteral("hello"));
    const QVariantMap dictionary = c->dictionaryWithData();
    EXPECT_EQ(dictionary.value(QStringLiteral("title")).toString(), QStringLiteral("Logo"));
    EXPECT_FALSE(dictionary.contains(QStringLiteral("zLevel")));
    const QVariantList attributes = dictionary.value(QStringLiteral("attributes")).toList();
    EXPECT_EQ(attributes.size(), int(c->attributes().size()));
    const QVariantMap info = c->componentInfo();
    EXPECT_EQ(info.value(QStringLiteral("attributes")).toList().size(), attributes.size());
}

TEST_F(ComponentTest, PastedComponentsGetFreshAttributes)
{
    QuartzComponent* original = addComponent(QStringLiteral("Logo"), QRectF(5, 6, 70, 80));
    addAttribute(original, QStringLiteral("text"), kTypeString, QStringLiteral("hello"))->setCategory(QStringLiteral("Text"));
    original->setQuartzCompositionData(QByteArray("not really a composition"));
    QuartzComponent* copy = QuartzComponent::createFromDictionary(composition, original->dictionaryWithData());
    EXPECT_EQ(copy->title(), QStringLiteral("Logo"));
    EXPECT_EQ(copy->quartzCompositionData(), original->quartzCompositionData());
    EXPECT_EQ(copy->drawingFrame(), original->drawingFrame());
    EXPECT_EQ(copy->attributes().size(), original->attributes().size()) << "no second set of margins";
    Attribute* text = copy->attributeForKey(QStringLiteral("text"));
    ASSERT_NE(text, nullptr);
    EXPECT_NE(text, original->attributeForKey(QStringLiteral("text")));
    EXPECT_EQ(text->category(), QStringLiteral("Text"));
    copy->setOriginX(500);
    EXPECT_DOUBLE_EQ(original->originX(), 5.0) << "the copy shares nothing with the original";
    EXPECT_EQ(copy->composition(), composition);
}

TEST_F(ComponentTest, ExpandingIsAnnouncedOnceAndRecordsNoUndo)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    store.undoManager().removeAllActions();
    int heard = 0;
    c->observe(QStringLiteral("expanded"), [&](ManagedObject*, const QString&) { ++heard; });
    c->setExpanded(true);
    c->setExpanded(true);
    EXPECT_TRUE(c->expanded());
    EXPECT_EQ(heard, 1) << "only a change is announced";
    c->setExpanded(false);
    EXPECT_EQ(heard, 2);
    EXPECT_FALSE(store.undoManager().canUndo()) << "opening a component in the timeline is not an edit";
}
