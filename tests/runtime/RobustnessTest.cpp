// Damaged bytes: every mutation of a valid composition loads or fails with
// a reason, and whatever loads renders. (The libFuzzer target
// fuzz/fuzz_qtz_loader.cpp explores the same ground without limits.)

#include "CompositionBuilder.h"

#include "plist/PropertyList.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

using test::Node;

namespace {

QByteArray sampleComposition(plist::Format format)
{
    Node text("QCTextImage", "TextImage_1");
    text.input("inputString", "Hi").input("inputGlyphSize", 0.2);
    Node rii("QCRenderInImage", "RenderInImage_1");
    rii.input("inputWidth", 32).input("inputHeight", 16).child(text).child(Node("QCBillboard", "Billboard_1"));
    rii.connect("TextImage_1", "outputImage", "Billboard_1", "inputImage");
    Node math("QCMath", "Math_1");
    math.state("operationCount", 1).custom("operation_1", 2).custom("operand_1", 0.5);
    Node r = test::root();
    r.child(Node("QCClear", "Clear_1")).child(rii).child(math).child(Node("QCSprite", "Sprite_1"));
    r.child(Node("QCLFO", "LFO_1").state("timebase", "parent"));
    r.connect("RenderInImage_1", "outputImage", "Sprite_1", "inputImage");
    r.connect("LFO_1", "outputValue", "Math_1", "inputValue");
    r.connect("Math_1", "outputValue", "Sprite_1", "inputRZ");
    r.publishInput("Scale", "Math_1", "operand_1");
    const auto bytes = plist::write(test::document(r), format);
    return bytes ? QByteArray(bytes->data(), qsizetype(bytes->size())) : QByteArray();
}

void loadAndRenderMutations(const QByteArray& original, quint32 seed)
{
    QRandomGenerator random(seed);
    int loaded = 0;
    for (int round = 0; round < 300; ++round) {
        QByteArray bytes = original;
        const int edits = 1 + int(random.bounded(4));
        for (int e = 0; e < edits; ++e) {
            const int at = int(random.bounded(quint32(bytes.size())));
            switch (random.bounded(3)) {
            case 0: bytes[at] = char(random.bounded(256)); break;
            case 1: bytes.truncate(std::max(1, at)); break;
            default: bytes.insert(at, char(random.bounded(256))); break;
            }
            if (bytes.isEmpty()) break;
        }
        QString error;
        auto composition = runtime::Composition::loadData(bytes, &error);
        if (!composition) {
            EXPECT_FALSE(error.isEmpty()) << "round " << round;
            continue;
        }
        ++loaded;
        runtime::Renderer renderer(composition, QSize(16, 12));
        renderer.render(0);
        renderer.render(1);
    }
    // Not every mutation breaks the file; some must still load.
    EXPECT_GT(loaded, 0);
}

TEST(Robustness, MutatedBinaryCompositions)
{
    const QByteArray original = sampleComposition(plist::Format::Binary);
    ASSERT_FALSE(original.isEmpty());
    loadAndRenderMutations(original, 20240611);
}

TEST(Robustness, MutatedXmlCompositions)
{
    const QByteArray original = sampleComposition(plist::Format::Xml);
    ASSERT_FALSE(original.isEmpty());
    loadAndRenderMutations(original, 7);
}

}  // namespace
