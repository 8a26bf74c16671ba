// The Watcher passes what it watches on, under whatever port names a file
// connects, and keeps the type a stored port class gives it.

#include "CompositionBuilder.h"

#include <gtest/gtest.h>

using test::Node;

namespace {

TEST(Watcher, PassesItsInputThrough)
{
    Node r = test::root();
    r.child(Node("QCWatcher", "Watcher_1"))
        .publishInput("In", "Watcher_1", "input")
        .publishOutput("Out", "Watcher_1", "output");
    auto composition = test::load(r);
    EXPECT_TRUE(composition->unsupportedClasses().isEmpty());
    runtime::Renderer renderer(composition, QSize(8, 8));
    for (const QVariant& v : {QVariant(2.5), QVariant(QStringLiteral("text")), QVariant(true)}) {
        ASSERT_TRUE(renderer.setInputValue("In", v));
        renderer.render(0);
        EXPECT_EQ(renderer.outputValue("Out"), v);
    }
}

TEST(Watcher, TakesOtherPortNamesAsItsOwnAndIsTypedByItsPortClass)
{
    Node source("QCSplitter", "Splitter_1");
    source.state("portClass", "QCNumberPort").custom("input", 7.0);
    Node watcher("QCWatcher", "Watcher_1");
    watcher.state("portClass", "QCStringPort");
    Node r = test::root();
    r.child(source)
        .child(watcher)
        .connect("Splitter_1", "output", "Watcher_1", "inputValue")
        .publishOutput("Out", "Watcher_1", "outputValue");
    auto composition = test::load(r);
    EXPECT_TRUE(test::problemsText(*composition).isEmpty()) << test::problemsText(*composition).toStdString();
    runtime::Renderer renderer(composition, QSize(8, 8));
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("Out").toString(), QStringLiteral("7"));

    // A stored system port ("_time" of a patch without an external time
    // base) is not taken for the watched value.
    Node timed("QCWatcher", "Watcher_2");
    timed.system("_time", 99.0);
    Node r2 = test::root();
    r2.child(timed).publishOutput("Out", "Watcher_2", "output");
    runtime::Renderer other(test::load(r2), QSize(8, 8));
    other.render(0);
    EXPECT_NE(other.outputValue("Out").toDouble(), 99.0);
}

}  // namespace
