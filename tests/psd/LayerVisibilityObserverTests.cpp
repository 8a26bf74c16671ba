// A layer's "visible" switch is observable: the import sheet's preview and
// layer list follow it.
#include "psd/PSDLayerImporter.h"

#include <gtest/gtest.h>

namespace {

psd::PSDLayer makeLayer(const QString& name, bool visible = true)
{
    QImage image(2, 2, QImage::Format_RGBA8888);
    image.fill(Qt::red);
    return psd::PSDLayer(image, name, QPointF(1, 2), 0.5, visible);
}

TEST(LayerVisibility, ObserversHearRealChangesWithTheNewValue)
{
    psd::PSDLayer layer = makeLayer(QStringLiteral("A"));
    std::vector<bool> heard;
    const int token = layer.addVisibleObserver([&](bool visible) { heard.push_back(visible); });
    EXPECT_NE(token, 0);
    layer.setVisible(true);  // unchanged: nothing to tell
    layer.setVisible(false);
    layer.setVisible(true);
    EXPECT_EQ(heard, (std::vector<bool>{false, true}));

    layer.removeVisibleObserver(token);
    layer.removeVisibleObserver(token);  // twice is harmless
    layer.removeVisibleObserver(12345);  // so is a token never given
    layer.setVisible(false);
    EXPECT_EQ(heard.size(), 2u);
    EXPECT_EQ(layer.visibleObserverCount(), 0);
}

TEST(LayerVisibility, EveryObserverIsToldAndCanLeaveWhileBeingTold)
{
    psd::PSDLayer layer = makeLayer(QStringLiteral("A"));
    int first = 0, second = 0;
    int firstToken = 0;
    firstToken = layer.addVisibleObserver([&](bool) {
        ++first;
        layer.removeVisibleObserver(firstToken);
    });
    layer.addVisibleObserver([&](bool) { ++second; });
    layer.setVisible(false);
    layer.setVisible(true);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    EXPECT_EQ(layer.visibleObserverCount(), 1);
}

TEST(LayerVisibility, ACopyIsAnotherLayerToObservers)
{
    psd::PSDLayer original = makeLayer(QStringLiteral("A"));
    int heard = 0;
    original.addVisibleObserver([&](bool) { ++heard; });
    psd::PSDLayer copy = original;
    EXPECT_EQ(copy.visibleObserverCount(), 0);
    EXPECT_EQ(copy.name(), QStringLiteral("A"));
    copy.setVisible(false);
    EXPECT_EQ(heard, 0);

    // Assigning into an observed layer keeps its observers.
    psd::PSDLayer other = makeLayer(QStringLiteral("B"), false);
    original = other;
    EXPECT_EQ(original.name(), QStringLiteral("B"));
    EXPECT_EQ(original.visibleObserverCount(), 1);
    original.setVisible(true);
    EXPECT_EQ(heard, 1);
}

TEST(LayerVisibility, AMovedLayerTakesItsObserversAlong)
{
    std::vector<psd::PSDLayer> layers;
    layers.push_back(makeLayer(QStringLiteral("A")));
    int heard = 0;
    layers[0].addVisibleObserver([&](bool) { ++heard; });
    for (int i = 0; i < 20; ++i) layers.push_back(makeLayer(QStringLiteral("more")));  // the vector grows
    EXPECT_EQ(layers[0].visibleObserverCount(), 1);
    layers[0].setVisible(false);
    EXPECT_EQ(heard, 1);
}

}  // namespace
