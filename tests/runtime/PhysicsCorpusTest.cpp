// The corpus files that use the recursor and physics patches: they load
// without those classes unsupported, and the "bouncy animation" of the
// avocado files behaves as its name says.

#include "runtime/Composition.h"
#include "runtime/Renderer.h"

#include "plist/PropertyList.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <cmath>

namespace {

QString corpusPath(const char* name)
{
    return QStringLiteral(VELLORAN_CORPUS_DIR "/") + QLatin1String(name);
}

#define REQUIRE_CORPUS_FILE(path) \
    if (!QFileInfo::exists(path)) GTEST_SKIP() << "not in the corpus: " << (path).toStdString()

TEST(PhysicsCorpus, RecursorAndPhysicsClassesAreSupportedWhereTheyAppear)
{
    for (const char* name : {"HelmutJ_CocoaSampleCode_Image Flow.qtz", "ideo_avocado_Button.qtz", "ideo_avocado_Flip.qtz",
                             "ideo_avocado_Layer.qtz", "ideo_avocado_Text Layer.qtz"}) {
        const QString path = corpusPath(name);
        REQUIRE_CORPUS_FILE(path);
        auto composition = runtime::Composition::loadFile(path, nullptr);
        ASSERT_TRUE(composition) << name;
        for (const char* cls : {"QCRecursor", "QCPhysics", "QCPhysicsEffect"})
            EXPECT_FALSE(composition->unsupportedClasses().contains(QLatin1String(cls))) << name << ": " << cls;
    }
    auto imageFlow = runtime::Composition::loadFile(corpusPath("HelmutJ_CocoaSampleCode_Image Flow.qtz"), nullptr);
    EXPECT_TRUE(imageFlow->unsupportedClasses().isEmpty()) << imageFlow->unsupportedClasses().join(' ').toStdString();
    // Its magnet force comes back into the physics macro around a loop.
    for (const QString& problem : imageFlow->problems()) EXPECT_FALSE(problem.contains("Magnet_Force")) << problem.toStdString();
}

TEST(PhysicsCorpus, ImageFlowPlaysFramesWithAFinitePosition)
{
    const QString path = corpusPath("HelmutJ_CocoaSampleCode_Image Flow.qtz");
    REQUIRE_CORPUS_FILE(path);
    runtime::Renderer renderer(runtime::Composition::loadFile(path, nullptr), QSize(160, 90));
    for (int frame = 0; frame < 90; ++frame) {
        renderer.render(frame / 30.0);
        const QVariant x = renderer.nodeOutputValue("Patch_4", "X_Position");
        ASSERT_TRUE(x.isValid());
        ASSERT_TRUE(std::isfinite(x.toDouble())) << "frame " << frame;
    }
}

// The avocado files' "bouncy animation" virtual patch, run on its own: a
// spring (tension 30, friction 8 by default) that carries "Progress" to
// "Number", overshooting a little.
TEST(PhysicsCorpus, TheBouncyAnimationSpringsToItsTarget)
{
    const QString path = corpusPath("ideo_avocado_Flip.qtz");
    REQUIRE_CORPUS_FILE(path);
    const auto file = plist::readFile(path.toStdString());
    ASSERT_TRUE(file);
    const plist::Value* definition = file->value("virtualPatches").find("/bouncy animation");
    ASSERT_TRUE(definition);
    plist::Dictionary document;
    document["rootPatch"] = definition->value("rootPatch");
    document["inputParameters"] = definition->value("inputParameters");
    QString error;
    auto composition = runtime::Composition::fromPlist(plist::Value(std::move(document)), &error);
    ASSERT_TRUE(composition) << error.toStdString();
    EXPECT_TRUE(composition->unsupportedClasses().isEmpty());

    runtime::Renderer renderer(composition, QSize(8, 8));
    auto progressAt = [&](double t) {
        renderer.render(t);
        return renderer.outputValue("Progress").toDouble();
    };
    EXPECT_DOUBLE_EQ(progressAt(0), 0.0);
    ASSERT_TRUE(renderer.setInputValue("Number", 1.0));
    double peak = 0;
    int frame = 1;
    for (; frame <= 180; ++frame) peak = std::max(peak, progressAt(frame / 60.0));
    EXPECT_GT(peak, 1.005);
    EXPECT_LT(peak, 1.1);
    EXPECT_NEAR(progressAt(frame / 60.0), 1.0, 1e-3);

    // And back, from where it is.
    ASSERT_TRUE(renderer.setInputValue("Number", 0.0));
    const double first = progressAt(++frame / 60.0);
    EXPECT_LT(first, 1.0);
    EXPECT_GT(first, 0.9);
    for (int i = 0; i < 180; ++i) progressAt(++frame / 60.0);
    EXPECT_NEAR(progressAt(++frame / 60.0), 0.0, 1e-3);
}

}  // namespace
