#include "CompositionBuilder.h"

#include <gtest/gtest.h>

using test::Node;

namespace {

TEST(AnchorPositionPatch, CentreOfABoxAnchoredAtAPoint)
{
    Node anchor("QCAnchorPosition", "Anchor_1");
    anchor.input("inputX", 1.0).input("inputY", 1.0).input("inputWidth", 0.5).input("inputHeight", 0.25);
    Node r = test::root();
    r.child(anchor).publishInput("Mode", "Anchor_1", "inputMode");
    r.publishOutput("X", "Anchor_1", "outputX").publishOutput("Y", "Anchor_1", "outputY");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    const struct {
        int mode;
        double x, y;
    } cases[] = {{0, 1.25, 0.875}, {4, 1.0, 1.0}, {7, 1.0, 1.125}, {8, 0.75, 1.125}};
    for (const auto& c : cases) {
        renderer.setInputValue("Mode", c.mode);
        renderer.render(0);
        EXPECT_DOUBLE_EQ(renderer.outputValue("X").toDouble(), c.x) << c.mode;
        EXPECT_DOUBLE_EQ(renderer.outputValue("Y").toDouble(), c.y) << c.mode;
    }
}

}  // namespace
