// "Background.qtz", "MovieBackground.qtz" and "FPS.qtz": one patch named
// "Background" each, added by the export with the background.

#include "StandardComponentsSupport.h"

#include "quartz/QuartzStrings.h"

#include <set>

using plist::Value;

namespace {

std::set<QString> publishedInputs(const QuartzPatch& patch)
{
    std::set<QString> keys;
    for (const Value& port : patch.state().value("publishedInputPorts").array()) keys.insert(quartz::toQt(port.value("key").string()));
    return keys;
}

// The file's "Background" patch alone in a new root, with port values set
// as the export sets them (file values).
std::shared_ptr<const runtime::Composition> exportedBackground(const QString& fileName,
                                                               const std::map<QString, Value>& values)
{
    auto file = stdtest::loadModel(fileName);
    if (!file) return nullptr;
    QuartzPatch* background = file->rootPatch().patchWithName(QStringLiteral("Background"));
    EXPECT_TRUE(background);
    if (!background) return nullptr;
    QuartzComposition out;
    QuartzPatch& copy = *out.rootPatch().addNode(background->clone());
    for (const auto& [key, value] : values) copy.setPortValue(value, key);
    const auto data = out.fileDataByRemovingPixelFormatSetting(true);
    QString error;
    auto composition = runtime::Composition::loadData(data.value_or(QByteArray()), &error);
    EXPECT_TRUE(composition) << error.toStdString();
    return composition;
}

QImage render(const std::shared_ptr<const runtime::Composition>& composition, QSize size, double time = 0)
{
    runtime::Renderer renderer(composition, size);
    renderer.render(time);
    return renderer.snapshot();
}

}  // namespace

TEST(BackgroundFiles, EachOffersAPatchNamedBackgroundWithItsPorts)
{
    const std::pair<const char*, std::set<QString>> files[] = {
        {"Background.qtz", {QStringLiteral("backgroundColor"), QStringLiteral("backgroundImage")}},
        {"MovieBackground.qtz", {QStringLiteral("Filename")}},
        {"FPS.qtz", {}},
    };
    std::set<QString> nodeKeys;
    for (const auto& [name, ports] : files) {
        SCOPED_TRACE(name);
        const auto file = stdtest::loadModel(QString::fromLatin1(name));
        ASSERT_TRUE(file);
        const QuartzPatch* background = file->rootPatch().patchWithName(QStringLiteral("Background"));
        ASSERT_TRUE(background);
        EXPECT_EQ(publishedInputs(*background), ports);
        // The export puts a background and the overlay into one root.
        EXPECT_TRUE(nodeKeys.insert(background->key()).second) << "key " << background->key().toStdString() << " used twice";
    }
}

TEST(BackgroundFiles, BackgroundFillsTheFrameWithTheColourAndTheImageOverIt)
{
    const auto plain = exportedBackground(QStringLiteral("Background.qtz"),
                                          {{QStringLiteral("backgroundColor"), QuartzComposition::quartzValueForObject(QColor(0, 0, 255))}});
    ASSERT_TRUE(plain);
    EXPECT_TRUE(plain->problems().isEmpty()) << plain->problems().join(QLatin1Char('\n')).toStdString();
    for (const QSize size : {QSize(1920, 1080), QSize(480, 270)}) {
        const QImage picture = render(plain, size);
        for (const QPoint p : {QPoint(0, 0), QPoint(size.width() - 1, size.height() - 1), QPoint(size.width() / 2, size.height() / 2)})
            EXPECT_TRUE(stdtest::near(stdtest::colourAt(picture, p.x(), p.y()), QColor(0, 0, 255))) << p.x() << "," << p.y();
    }

    // Left half red, right half green: stretched over the frame, the right
    // way round and the right way up.
    QImage image(4, 2, QImage::Format_ARGB32);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) image.setPixel(x, y, x < 2 ? qRgb(255, 0, 0) : qRgb(0, 255, 0));
    image.setPixel(0, 0, qRgb(255, 255, 0));  // top-left marker
    const auto withImage = exportedBackground(QStringLiteral("Background.qtz"),
                                              {{QStringLiteral("backgroundColor"), QuartzComposition::quartzValueForObject(QColor(0, 0, 255))},
                                               {QStringLiteral("backgroundImage"), QuartzComposition::quartzValueForObject(image)}});
    ASSERT_TRUE(withImage);
    const QImage picture = render(withImage, QSize(480, 270));
    stdtest::savePicture(picture, QStringLiteral("background-image"));
    EXPECT_TRUE(stdtest::near(stdtest::colourAt(picture, 10, 10), QColor(255, 255, 0), 8));
    EXPECT_TRUE(stdtest::near(stdtest::colourAt(picture, 100, 250), QColor(255, 0, 0), 8));
    EXPECT_TRUE(stdtest::near(stdtest::colourAt(picture, 470, 10), QColor(0, 255, 0), 8));
}

TEST(BackgroundFiles, MovieBackgroundPlaysWithoutErrorAndShowsNothingHere)
{
    const auto movie = exportedBackground(QStringLiteral("MovieBackground.qtz"), {{QStringLiteral("Filename"), Value("/no/such/movie.mov")}});
    ASSERT_TRUE(movie);
    EXPECT_TRUE(stdtest::isBlank(render(movie, QSize(480, 270), 1.0)));
}

TEST(BackgroundFiles, FrameRateOverlayCountsFramesInTheUpperLeftCorner)
{
    const auto overlay = exportedBackground(QStringLiteral("FPS.qtz"), {});
    ASSERT_TRUE(overlay);
    EXPECT_TRUE(overlay->problems().isEmpty()) << overlay->problems().join(QLatin1Char('\n')).toStdString();
    for (const QSize size : {QSize(1920, 1080), QSize(480, 270)}) {
        SCOPED_TRACE(size.width());
        runtime::Renderer renderer(overlay, size);
        for (int frame = 0; frame <= 25; ++frame) renderer.render(frame / 25.0);
        EXPECT_NEAR(renderer.nodeOutputValue(QStringLiteral("FrameRate/Counter"), QStringLiteral("framesPerSecond")).toDouble(), 25.0, 1e-6);
        EXPECT_EQ(renderer.nodeOutputValue(QStringLiteral("FrameRate/Counter"), QStringLiteral("label")).toString(), QStringLiteral("25.0 fps"));
        renderer.setSize(size);
        renderer.render(26 / 25.0);
        const QImage picture = renderer.snapshot();
        stdtest::savePicture(picture, QStringLiteral("fps-%1").arg(size.width()));
        const QRect ink = stdtest::boundsWhere(picture, [](QRgb p) { return qAlpha(p) > 0; });
        ASSERT_FALSE(ink.isNull());
        EXPECT_LT(ink.right(), size.width() / 3);
        EXPECT_LT(ink.bottom(), size.height() / 6);
        EXPECT_LE(ink.left(), size.width() / 40 + 1) << "in the corner, whatever the size";
    }
}
