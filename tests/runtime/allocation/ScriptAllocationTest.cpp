// A composition that calls JavaScript thousands of times a frame (scripts
// inside an iterator) must not allocate per call beyond converting values:
// no engine per call, no compile per call, no memory mapping per call.

#include "../CompositionBuilder.h"
#include "../../support/AllocationCounter.h"

#include <gtest/gtest.h>

using test::Node;

namespace {

constexpr int kScripts = 10;
constexpr int kIterations = 100;

// An iterator whose sprites take their position from ten chained scripts,
// each fed by the iteration's position; half the scripts in the older form.
std::unique_ptr<runtime::Renderer> iteratedScripts()
{
    Node iterator("QCIterator", "Iterator_1");
    iterator.input("inputCount", kIterations);
    iterator.child(Node("QCIteratorVariables", "Variables_1"));
    std::string previous = "Variables_1", previousPort = "outputPosition";
    for (int i = 0; i < kScripts; ++i) {
        const std::string key = "JavaScript_" + std::to_string(i + 1);
        Node js("QCJavaScript", key);
        if (i % 2 == 0) {
            js.state("script", "var calls = 0;\nfunction (__number out) main (__number x) { calls++; return {out: x * 0.9 + 0.01}; }");
            iterator.child(js).connect(previous, previousPort, key, "x");
            previous = key, previousPort = "out";
        } else {
            js.state("script", "outputs[0] = inputs[0] + 0.001;");
            js.state("inputCount", 1);
            js.state("outputCount", 1);
            iterator.child(js).connect(previous, previousPort, key, "input_0");
            previous = key, previousPort = "output_0";
        }
    }
    Node sprite("QCSprite", "Sprite_1");
    sprite.input("inputWidth", 0.1).input("inputHeight", 0.1);
    iterator.child(sprite).connect(previous, previousPort, "Sprite_1", "inputX");
    Node r = test::root();
    r.child(Node("QCClear", "Clear_1"));
    r.child(iterator);
    return std::make_unique<runtime::Renderer>(test::load(r), QSize(64, 36));
}

TEST(ScriptAllocation, IteratedScriptsNeitherMapMemoryNorAllocatePerCall)
{
    if (!counting::allocationCountingAvailable()) GTEST_SKIP() << "allocations cannot be counted under the address sanitizer";
    auto renderer = iteratedScripts();
    // The first frames compile the scripts and let the engine's heap grow.
    for (int frame = 0; frame < 3; ++frame) renderer->render(frame * 0.1);

    const std::uint64_t mappedBefore = counting::mappingCount();
    const std::uint64_t allocatedBefore = counting::heapAllocationCount();
    constexpr int kFrames = 3;
    for (int frame = 0; frame < kFrames; ++frame) renderer->render(1.0 + frame * 0.1);
    const double calls = double(kFrames) * kScripts * kIterations;
    const double mappingsPerCall = double(counting::mappingCount() - mappedBefore) / calls;
    const double allocationsPerCall = double(counting::heapAllocationCount() - allocatedBefore) / calls;

    // A garbage collection may map a chunk now and then; a mapping per call
    // is the fault this guards against.
    EXPECT_LT(mappingsPerCall, 0.01);
    // Converting arguments and results allocates a little; compiling or
    // making an engine per call allocates tens of times per call.
    EXPECT_LT(allocationsPerCall, 8.0);
    RecordProperty("mappingsPerCall", std::to_string(mappingsPerCall));
    RecordProperty("allocationsPerCall", std::to_string(allocationsPerCall));
    std::printf("per script call: %.4f mappings, %.1f heap allocations\n", mappingsPerCall, allocationsPerCall);
}

TEST(ScriptAllocation, IteratedScriptsComputeTheirChain)
{
    // The same composition's picture, so that the bound above is not met by
    // scripts that silently stopped running: sprites spread from x ≈ 0.05
    // (first iteration) to x ≈ 0.64 units (last), where scripts that fail
    // would leave them all at the centre.
    auto renderer = iteratedScripts();
    renderer->render(0);
    const QImage image = renderer->snapshot();
    int left = image.width(), right = -1;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qRed(image.pixel(x, y)) > 128) left = std::min(left, x), right = std::max(right, x);
    const auto column = [&](double units) { return (units + 1.0) / 2.0 * image.width(); };
    EXPECT_NEAR(left, column(0.05 - 0.05), 2.0);
    EXPECT_NEAR(right, column(0.64 + 0.05), 2.0);
}

}  // namespace
