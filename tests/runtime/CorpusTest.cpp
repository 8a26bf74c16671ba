// Every real-world composition in the shared corpus loads (or fails with a
// reason), lists the inputs its root publishes in the file's order, and
// renders a few frames without crashing or hanging.

#include "runtime/Composition.h"
#include "runtime/Renderer.h"
#include "runtime/patches/TimelineCurve.h"

#include "plist/PropertyList.h"

#include <QDir>
#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace {

QStringList corpusFiles()
{
    return QDir(QStringLiteral(VELLORAN_CORPUS_DIR)).entryList({QStringLiteral("*.qtz")}, QDir::Files, QDir::Name);
}

QString corpusPath(const QString& name)
{
    return QStringLiteral(VELLORAN_CORPUS_DIR "/") + name;
}

class CorpusFile : public ::testing::TestWithParam<QString> {};

TEST_P(CorpusFile, LoadsListsInputsAndRenders)
{
    const QString path = corpusPath(GetParam());
    QString error;
    auto composition = runtime::Composition::loadFile(path, &error);
    if (!composition) {
        // Unreadable files are allowed, but only with a reason.
        EXPECT_FALSE(error.isEmpty());
        GTEST_SKIP() << "not loadable: " << error.toStdString();
    }
    const auto document = plist::readFile(path.toStdString());
    ASSERT_TRUE(document);
    QStringList declared;
    for (const plist::Value& entry : document->value("rootPatch").value("state").value("publishedInputPorts").array()) {
        const QString key = QString::fromStdString(entry.value("key").string());
        if (!declared.contains(key)) declared << key;
    }
    EXPECT_EQ(composition->inputKeys(), declared);
    for (const auto& input : composition->inputs()) EXPECT_FALSE(input.typeName().isEmpty());

    runtime::Renderer renderer(composition, QSize(160, 120));
    QElapsedTimer timer;
    timer.start();
    for (double t : {0.0, 0.5, 1.0, 2.5}) renderer.render(t);
    EXPECT_LT(timer.elapsed(), 30000) << "rendering four small frames took too long";
}

std::string testName(const ::testing::TestParamInfo<QString>& info)
{
    std::string name;
    for (QChar c : info.param.chopped(4)) name += c.isLetterOrNumber() ? char(c.toLatin1()) : '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Shared, CorpusFile, ::testing::ValuesIn(corpusFiles()), testName);

TEST(Corpus, IsPresent)
{
    EXPECT_GE(corpusFiles().size(), 50);
}

// Newer files cache each timeline segment: its Bézier control points and the
// power-basis value coefficients a, b, c. Our segments must agree.
TEST(Corpus, EveryKernelCompiles)
{
    int files = 0;
    for (const QString& name : corpusFiles()) {
        auto composition = runtime::Composition::loadFile(corpusPath(name), nullptr);
        if (!composition) continue;
        for (const QString& problem : composition->problems())
            EXPECT_FALSE(problem.contains(QLatin1String("kernel"))) << name.toStdString() << ": " << problem.toStdString();
        ++files;
    }
    EXPECT_GT(files, 0);
}

// The sample's kernel fades a photo's alpha over 100 pixels from each edge:
// a wide band of partly transparent pixels around an opaque middle.
TEST(Corpus, SoftRectangleKernelFadesTheEdges)
{
    auto composition = runtime::Composition::loadFile(corpusPath(QStringLiteral("HelmutJ_CocoaSampleCode_Soft Rectangle.qtz")), nullptr);
    ASSERT_TRUE(composition);
    runtime::Renderer renderer(composition, QSize(320, 240));
    renderer.render(1.0);
    const QImage frame = renderer.snapshot();
    int opaque = 0, partial = 0;
    for (int y = 0; y < frame.height(); ++y)
        for (int x = 0; x < frame.width(); ++x) {
            const int a = qAlpha(frame.pixel(x, y));
            opaque += a == 255;
            partial += a > 0 && a < 255;
        }
    EXPECT_GT(opaque, 1000);
    EXPECT_GT(partial, 5000);
}

TEST(Corpus, TimelineSegmentsMatchTheCachedBezierPaths)
{
    const auto document = plist::readFile(corpusPath("HelmutJ_CocoaSampleCode_3 Timelines.qtz").toStdString());
    ASSERT_TRUE(document);
    int checked = 0;
    std::function<void(const plist::Value&)> walk = [&](const plist::Value& node) {
        if (node.value("class").string() == "QCTimeLine") {
            for (const plist::Value& track : node.value("state").value("timeLines").value("timeLines").array()) {
                const plist::Value& frames = track.value("keyFrames");
                const auto segments = runtime::TimelineCurve::fromKeyFrames(frames).segments();
                for (std::size_t i = 0; i < segments.size() && i < frames.size(); ++i) {
                    const plist::Value cached = frames.array()[i].value("bezierPath");
                    if (!cached.value("valid").toBool()) continue;
                    const auto& points = cached.value("controlPoints").array();
                    ASSERT_EQ(points.size(), 4u);
                    for (int k = 0; k < 4; ++k) {
                        EXPECT_NEAR(segments[i][std::size_t(k)].x(), points[std::size_t(k)].value("time").toDouble(), 1e-5);
                        EXPECT_NEAR(segments[i][std::size_t(k)].y(), points[std::size_t(k)].value("value").toDouble(), 1e-5);
                    }
                    const double v0 = segments[i][0].y(), v1 = segments[i][1].y(), v2 = segments[i][2].y(), v3 = segments[i][3].y();
                    EXPECT_NEAR(-v0 + 3 * v1 - 3 * v2 + v3, cached.value("av").toDouble(), 1e-4);
                    EXPECT_NEAR(3 * v0 - 6 * v1 + 3 * v2, cached.value("bv").toDouble(), 1e-4);
                    EXPECT_NEAR(-3 * v0 + 3 * v1, cached.value("cv").toDouble(), 1e-4);
                    ++checked;
                }
            }
        }
        for (const plist::Value& child : node.value("state").value("nodes").array()) walk(child);
    };
    walk(document->value("rootPatch"));
    EXPECT_GE(checked, 10);
}

}  // namespace
