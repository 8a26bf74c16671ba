// Physics and Physics Effect, wired as the corpus wires them: a recursor
// brings last frame's position back, a force effect pushes it, the physics
// integrates with friction.

#include "CompositionBuilder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using test::Node;

namespace {

constexpr double kFrame = 1.0 / 60.0;

// A spring towards Target: force = −Tension·(y − Target) on the recursor's
// position y, as the avocado "bouncy animation" builds it.
Node springMacro()
{
    plist::Array saved;
    saved.push_back(plist::Value(plist::Array{"QCNumberPort", "Output_Value"}));
    Node macro("QCPatch", "Patch_1");
    macro.child(Node("QCRecursor", "Recursor_1").state("savedPorts", plist::Value(std::move(saved))))
        .child(Node("QCExpression", "Expression_1").state("expression", "-K*(y-L)"))
        .child(Node("QCPhysicsEffect", "PhysicsEffect_force_1").identifier("force").state("numberOfInputs", 1))
        .child(Node("QCPhysics", "Physics_1").state("numberOfInputs", 1))
        .connect("Recursor_1", "Output_Value", "Expression_1", "y")
        .connect("Recursor_1", "Output_Value", "PhysicsEffect_force_1", "input_0")
        .connect("Expression_1", "outputResult", "PhysicsEffect_force_1", "effect_1")
        .connect("PhysicsEffect_force_1", "output_1", "Physics_1", "input_1")
        .publishInput("Value", "Recursor_1", "Initial_Output_Value")
        .publishInput("Sample", "Physics_1", "inputSampling")
        .publishInput("Friction", "Physics_1", "inputFriction")
        .publishInput("Tension", "Expression_1", "K")
        .publishInput("Target", "Expression_1", "L")
        .publishOutput("Output_Value", "Physics_1", "output_1");
    return macro;
}

struct Spring {
    Spring(double tension, double friction, double target)
    {
        Node r = test::root();
        r.child(springMacro()).publishOutput("Out", "Patch_1", "Output_Value");
        for (const char* key : {"Value", "Sample", "Friction", "Tension", "Target"}) r.publishInput(key, "Patch_1", key);
        composition = test::load(r);
        renderer = std::make_unique<runtime::Renderer>(composition, QSize(8, 8));
        set("Tension", tension);
        set("Friction", friction);
        set("Target", target);
    }
    void set(const char* key, const QVariant& v) { ASSERT_TRUE(renderer->setInputValue(key, v)) << key; }
    double at(double time)
    {
        renderer->render(time);
        return renderer->outputValue("Out").toDouble();
    }
    std::vector<double> run(const std::vector<double>& times)
    {
        std::vector<double> values;
        for (double t : times) values.push_back(at(t));
        return values;
    }
    std::shared_ptr<const runtime::Composition> composition;
    std::unique_ptr<runtime::Renderer> renderer;
};

// x'' = −K(x − 1) − c·x', from 0 at rest.
double dampedSpring(double K, double c, double t)
{
    const double w = std::sqrt(K), zeta = c / (2 * w), wd = w * std::sqrt(1 - zeta * zeta);
    return 1 - std::exp(-zeta * w * t) * (std::cos(wd * t) + zeta * w / wd * std::sin(wd * t));
}

TEST(Physics, ADampedSpringFollowsTheOscillatorAndSettles)
{
    Spring spring(30.0, 8.0, 1.0);  // the avocado defaults: tension 30, friction 8
    EXPECT_TRUE(test::problemsText(*spring.composition).isEmpty()) << test::problemsText(*spring.composition).toStdString();
    EXPECT_TRUE(spring.composition->unsupportedClasses().isEmpty());
    double peak = 0;
    for (int frame = 0; frame <= 240; ++frame) peak = std::max(peak, spring.at(frame * kFrame));
    EXPECT_GT(peak, 1.02);  // under-damped: it overshoots a little (3.5 % exactly)
    EXPECT_LT(peak, 1.06);
    EXPECT_NEAR(spring.at(241 * kFrame), 1.0, 1e-4);

    // One explicit step per frame leads the exact motion by about a frame;
    // at 240 frames a second the curve is within 1.5 % of it.
    Spring fine(30.0, 8.0, 1.0);
    for (int frame = 0; frame <= 960; ++frame) {
        const double t = frame / 240.0;
        EXPECT_NEAR(fine.at(t), dampedSpring(30.0, 8.0, t), 0.015) << "frame " << frame;
    }
}

TEST(Physics, TheSameTimesGiveTheSameValuesAndAResetStartsOver)
{
    const std::vector<double> times{0.0, 0.013, 0.05, 0.051, 0.2, 0.21, 0.21, 0.3, 0.9, 0.93};
    Spring a(50.0, 3.0, 2.0), b(50.0, 3.0, 2.0);
    const std::vector<double> first = a.run(times);
    EXPECT_EQ(first, b.run(times));
    a.renderer->reset();
    EXPECT_EQ(first, a.run(times));
    EXPECT_NE(first.front(), first.back());  // it did move

    // A frame at any time straight after a reset shows the starting value.
    a.renderer->reset();
    EXPECT_DOUBLE_EQ(a.at(7.5), 0.0);
    a.renderer->reset();
    EXPECT_DOUBLE_EQ(a.at(0.25), 0.0);
}

TEST(Physics, AJumpInTimeAdvancesOneCappedStepAndARewindKeepsThePosition)
{
    Spring jumping(30.0, 8.0, 1.0), steady(30.0, 8.0, 1.0);
    for (int frame = 0; frame < 10; ++frame) {
        jumping.at(frame * kFrame);
        steady.at(frame * kFrame);
    }
    // A gap of a thousand seconds simulates what a gap of 1/20 s does.
    const double jumped = jumping.at(1000.0);
    EXPECT_DOUBLE_EQ(jumped, steady.at(9 * kFrame + 0.05));
    // (1000 + 1/60) − 1000 is not exactly 1/60 in doubles.
    EXPECT_NEAR(jumping.at(1000.0 + kFrame), steady.at(9 * kFrame + 0.05 + kFrame), 1e-9);

    // Going back in time keeps the position and forgets the velocity.
    const double before = jumping.at(1000.0 + 2 * kFrame);
    EXPECT_DOUBLE_EQ(jumping.at(3.0), before);
    const double after = jumping.at(3.0 + kFrame);
    Spring fresh(30.0, 8.0, 1.0);
    fresh.set("Value", before);
    fresh.at(0.0);
    EXPECT_DOUBLE_EQ(after, fresh.at(kFrame));
}

TEST(Physics, SamplingFollowsTheInputAndLettingGoKeepsTheMotion)
{
    Spring flick(0.0, 2.0, 0.0);  // no spring: only friction
    flick.set("Sample", true);
    // The recursor initialises from "Value" while sampling, as in Image Flow.
    ASSERT_TRUE(flick.renderer->setNodeInputValue("Patch_1/Recursor_1", "inputInitialize", true));
    for (int frame = 0; frame <= 2; ++frame) {
        flick.set("Value", 0.1 * frame);
        EXPECT_NEAR(flick.at(frame * kFrame), 0.1 * frame, 1e-12);
    }
    flick.set("Sample", false);
    ASSERT_TRUE(flick.renderer->setNodeInputValue("Patch_1/Recursor_1", "inputInitialize", false));
    double last = 0.2;
    for (int frame = 3; frame < 600; ++frame) {
        const double x = flick.at(frame * kFrame);
        EXPECT_GE(x, last) << "frame " << frame;  // still moving the same way, slower and slower
        last = x;
    }
    // 6 units/s under a drag of 2/s coasts about 6/2 = 3 units further.
    EXPECT_NEAR(last, 0.2 + 0.1 * std::exp(-2 * kFrame) / (1 - std::exp(-2 * kFrame)), 0.01);
}

TEST(Physics, HostileValuesAndTimesStayFinite)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    for (double tension : {1e300, -1e300, 1e6, nan}) {
        for (double friction : {-5.0, 1e300, nan, inf}) {
            Spring s(tension, friction, -1e308);
            s.set("Value", 1e308);
            const std::vector<double> times{0.0, -1.0, 1e300, -1e300, 5.0, 5.0 + kFrame, nan, 6.0, 7.0, 8.0};
            for (double t : times) {
                const double x = s.at(t);
                EXPECT_TRUE(std::isfinite(x)) << tension << " " << friction << " t=" << t;
            }
            for (int frame = 0; frame < 100; ++frame) EXPECT_TRUE(std::isfinite(s.at(9.0 + frame * kFrame)));
        }
    }
}

TEST(Physics, PortsFollowTheStoredValueCountAndUnknownEffectsStayInert)
{
    Node r = test::root();
    r.child(Node("QCPhysics", "Physics_1").state("numberOfInputs", 3))
        .child(Node("QCPhysicsEffect", "PhysicsEffect_force_1").identifier("force").state("numberOfInputs", 2))
        .child(Node("QCPhysicsEffect", "PhysicsEffect_vortex_1").identifier("vortex"))
        .connect("PhysicsEffect_force_1", "output_2", "Physics_1", "input_3")
        .publishInput("A", "PhysicsEffect_force_1", "input_1")
        .publishInput("F", "PhysicsEffect_force_1", "effect_2")
        .publishOutput("Out", "Physics_1", "output_3");
    auto composition = test::load(r);
    EXPECT_TRUE(test::problemsText(*composition).count("missing") == 0) << test::problemsText(*composition).toStdString();
    EXPECT_EQ(composition->unsupportedClasses(), QStringList{"QCPhysicsEffect"});

    // The second value of the effect drives the third of the physics.
    runtime::Renderer renderer(composition, QSize(8, 8));
    ASSERT_TRUE(renderer.setInputValue("A", 4.0));
    ASSERT_TRUE(renderer.setInputValue("F", 3600.0));  // pushes 1 unit in a 1/60 s step
    renderer.render(0.0);
    EXPECT_DOUBLE_EQ(renderer.outputValue("Out").toDouble(), 4.0);
    renderer.render(kFrame);
    EXPECT_NEAR(renderer.outputValue("Out").toDouble(), 5.0, 1e-9);
}

TEST(Physics, StoredValueCountsAreCapped)
{
    Node r = test::root();
    r.child(Node("QCPhysics", "Physics_1").state("numberOfInputs", 1e12))
        .child(Node("QCPhysics", "Physics_2").state("numberOfInputs", -3))
        .child(Node("QCPhysicsEffect", "PhysicsEffect_force_1").identifier("force").state("numberOfInputs", 5000))
        .publishOutput("Last", "Physics_1", "output_100")
        .publishOutput("Beyond", "Physics_1", "output_101");
    auto composition = test::load(r);
    const QString problems = test::problemsText(*composition);
    EXPECT_TRUE(problems.contains("Physics_1: 2147483647 values asked for; the first 100")) << problems.toStdString();
    EXPECT_TRUE(problems.contains("PhysicsEffect_force_1: 5000 values")) << problems.toStdString();
    EXPECT_TRUE(problems.contains("output_101")) << problems.toStdString();  // a missing port
    EXPECT_FALSE(problems.contains("Physics_2")) << problems.toStdString();
    runtime::Renderer renderer(composition, QSize(8, 8));
    renderer.render(0);
    renderer.render(kFrame);
    EXPECT_EQ(renderer.outputKeys(), QStringList{"Last"});
}

}  // namespace
