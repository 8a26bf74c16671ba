// What the component inputs do to the picture: alignment, wrapping, colours,
// layout, motion and formats. Each component is drawn one pixel per
// component pixel on a frame of its own size.

#include "StandardComponentsSupport.h"

using stdtest::inkBounds;

namespace {

QImage draw(const QString& fileName, QSize size, const QVariantMap& inputs = {}, double time = 0)
{
    return stdtest::renderComponent(fileName, size, size, inputs, time);
}

bool isWhiteInk(QRgb p) { return qAlpha(p) >= 128 && qRed(p) > 200 && qGreen(p) > 200 && qBlue(p) > 200; }

}  // namespace

TEST(TextComponents, AlignTheTextInTheBox)
{
    const QSize box(800, 200);
    struct Case {
        int alignment, vertical;
        const char* name;
    };
    for (const Case c : {Case{0, 1, "left"}, Case{1, 1, "centre"}, Case{2, 1, "right"}, Case{1, 0, "top"}, Case{1, 2, "bottom"}}) {
        SCOPED_TRACE(c.name);
        const QImage picture = draw(QStringLiteral("Text.qtz"), box,
                                    {{QStringLiteral("Text"), QStringLiteral("Hello")},
                                     {QStringLiteral("Alignment"), c.alignment},
                                     {QStringLiteral("Vertical_Alignment"), c.vertical}});
        stdtest::savePicture(picture, QStringLiteral("text-%1").arg(QLatin1String(c.name)));
        const QRect ink = inkBounds(picture);
        ASSERT_FALSE(ink.isNull());
        const double cx = ink.center().x(), cy = ink.center().y();
        if (c.alignment == 0) {
            EXPECT_LT(ink.left(), 15);
        }
        if (c.alignment == 1) {
            EXPECT_NEAR(cx, box.width() / 2.0, 6);
        }
        if (c.alignment == 2) {
            EXPECT_GT(ink.right(), box.width() - 15);
        }
        if (c.vertical == 0) {
            EXPECT_LT(ink.top(), 30);
        }
        if (c.vertical == 1) {
            EXPECT_NEAR(cy, box.height() / 2.0, 12);
        }
        if (c.vertical == 2) {
            EXPECT_GT(ink.bottom(), box.height() - 35);
        }
    }
}

TEST(TextComponents, WrapAtTheBoxWidthAndFollowFontSizeAndColour)
{
    const QString words = QStringLiteral("one two three four five six seven eight");
    const QImage wrapped = draw(QStringLiteral("Text.qtz"), QSize(400, 500),
                                {{QStringLiteral("Text"), words}, {QStringLiteral("Vertical_Alignment"), 0}});
    stdtest::savePicture(wrapped, QStringLiteral("text-wrapped"));
    const QRect lines = inkBounds(wrapped);
    ASSERT_FALSE(lines.isNull());
    EXPECT_LE(lines.right(), 400);
    EXPECT_GT(lines.height(), 3 * 72) << "several lines";

    const auto inkHeight = [](double size) {
        return inkBounds(draw(QStringLiteral("TextComponent.qtz"), QSize(1000, 300),
                              {{QStringLiteral("Text"), QStringLiteral("HHH")}, {QStringLiteral("Text_Font_Size"), size}}))
            .height();
    };
    EXPECT_NEAR(inkHeight(120) / double(inkHeight(60)), 2.0, 0.15) << "font sizes are pixels of the component";
    // Capitals are about 0.7 of the glyph size.
    EXPECT_NEAR(inkHeight(100), 72, 8);

    const QImage red = draw(QStringLiteral("Text.qtz"), QSize(800, 120), {{QStringLiteral("Color"), QColor(Qt::red)}});
    const QRect redInk = stdtest::boundsWhere(red, [](QRgb p) { return qAlpha(p) == 255 && qRed(p) == 255 && qGreen(p) == 0 && qBlue(p) == 0; });
    EXPECT_FALSE(redInk.isNull());
    EXPECT_TRUE(stdtest::boundsWhere(red, isWhiteInk).isNull());
}

TEST(LowerThird, LaysOutBarStripeNameAndTitle)
{
    const QSize bar(1200, 180);
    const QImage picture = draw(QStringLiteral("LowerThird.qtz"), bar,
                                {{QStringLiteral("CIName"), QStringLiteral("Ada Lovelace")},
                                 {QStringLiteral("CITitle"), QStringLiteral("Mathematician")},
                                 {QStringLiteral("Bar_Color"), QColor(0, 0, 128)},
                                 {QStringLiteral("Accent_Color"), QColor(255, 128, 0)}});
    stdtest::savePicture(picture, QStringLiteral("lower-third"));
    EXPECT_TRUE(stdtest::near(stdtest::colourAt(picture, 1190, 5), QColor(0, 0, 128)));
    EXPECT_TRUE(stdtest::near(stdtest::colourAt(picture, 5, 90), QColor(255, 128, 0)));
    EXPECT_TRUE(stdtest::near(stdtest::colourAt(picture, 14, 90), QColor(0, 0, 128))) << "the stripe is 12 pixels wide";

    const QImage upper = picture.copy(0, 0, bar.width(), bar.height() / 2);
    const QImage lower = picture.copy(0, bar.height() / 2, bar.width(), bar.height() / 2);
    const QRect name = stdtest::boundsWhere(upper, isWhiteInk);
    const QRect title = stdtest::boundsWhere(lower, isWhiteInk);
    ASSERT_FALSE(name.isNull());
    ASSERT_FALSE(title.isNull());
    EXPECT_NEAR(name.left(), 40, 6);
    EXPECT_NEAR(title.left(), 40, 6);
    EXPECT_GT(name.height(), title.height()) << "the name is set larger";
}

TEST(Ticker, RunsInFromTheRightAtItsSpeed)
{
    const QSize band(1920, 72);
    const QVariantMap inputs{{QStringLiteral("Background_Color"), QColor(0, 0, 0)}, {QStringLiteral("Speed"), 300.0}};
    const QImage start = draw(QStringLiteral("Ticker.qtz"), band, inputs, 0.0);
    EXPECT_TRUE(stdtest::near(stdtest::colourAt(start, 960, 36), QColor(0, 0, 0))) << "the band";
    EXPECT_TRUE(stdtest::boundsWhere(start, isWhiteInk).isNull()) << "the text starts beyond the right edge";
    for (const double t : {1.0, 2.5}) {
        const QImage running = draw(QStringLiteral("Ticker.qtz"), band, inputs, t);
        stdtest::savePicture(running, QStringLiteral("ticker-%1").arg(t));
        const QRect text = stdtest::boundsWhere(running, isWhiteInk);
        ASSERT_FALSE(text.isNull()) << t;
        EXPECT_NEAR(text.left(), 1920 - 300 * t, 8) << t;
    }
}

TEST(Clock, ShowsTheTimeCentredInTheChosenFormat)
{
    const QSize box(420, 120);
    const QImage seconds = draw(QStringLiteral("Clock.qtz"), box, {{QStringLiteral("Format"), 0}});
    const QImage minutes = draw(QStringLiteral("Clock.qtz"), box, {{QStringLiteral("Format"), 1}});
    stdtest::savePicture(seconds, QStringLiteral("clock"));
    const QRect a = inkBounds(seconds), b = inkBounds(minutes);
    ASSERT_FALSE(a.isNull());
    ASSERT_FALSE(b.isNull());
    EXPECT_NEAR(a.center().x(), box.width() / 2.0, 6);
    EXPECT_NEAR(a.center().y(), box.height() / 2.0, 12);
    EXPECT_GT(a.width(), b.width() * 1.3) << "HH:mm:ss is longer than HH:mm";
}

TEST(Box, FillsWithTheColourInsideAnOptionalBorder)
{
    const QSize size(400, 300);
    const QVariantMap colours{{QStringLiteral("Color"), QColor(0, 128, 0)}, {QStringLiteral("Border_Color"), QColor(255, 255, 0)}};
    const QImage plain = draw(QStringLiteral("Box.qtz"), size, colours);
    for (const QPoint p : {QPoint(0, 0), QPoint(399, 299), QPoint(200, 150)})
        EXPECT_TRUE(stdtest::near(stdtest::colourAt(plain, p.x(), p.y()), QColor(0, 128, 0))) << p.x() << "," << p.y();

    QVariantMap bordered = colours;
    bordered.insert(QStringLiteral("Border_Width"), 10.0);
    const QImage framed = draw(QStringLiteral("Box.qtz"), size, bordered);
    stdtest::savePicture(framed, QStringLiteral("box-border"));
    for (const QPoint p : {QPoint(1, 150), QPoint(9, 150), QPoint(398, 150), QPoint(200, 1), QPoint(200, 298)})
        EXPECT_TRUE(stdtest::near(stdtest::colourAt(framed, p.x(), p.y()), QColor(255, 255, 0))) << p.x() << "," << p.y();
    for (const QPoint p : {QPoint(11, 150), QPoint(388, 150), QPoint(200, 11), QPoint(200, 150)})
        EXPECT_TRUE(stdtest::near(stdtest::colourAt(framed, p.x(), p.y()), QColor(0, 128, 0))) << p.x() << "," << p.y();

    // A translucent fill stays translucent over the border colour.
    QVariantMap glass = bordered;
    glass.insert(QStringLiteral("Color"), QColor(0, 128, 0, 128));
    const QImage translucent = draw(QStringLiteral("Box.qtz"), size, glass);
    EXPECT_NEAR(stdtest::colourAt(translucent, 200, 150).alpha(), 128, 3);
}

TEST(ImageComponent, PassesTheImageOnAtItsNaturalSize)
{
    const auto composition = stdtest::loadRuntime(QStringLiteral("ImageComponent.qtz"));
    ASSERT_TRUE(composition);
    runtime::Renderer renderer(composition, QSize(320, 240));
    QImage image(64, 48, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::green);
    ASSERT_TRUE(renderer.setInputValue(QStringLiteral("Image"), image));
    // As the editor's size-to-fit does: sizes 0, render, read the image.
    renderer.setInputValue(QStringLiteral("inputWidth"), 0.0);
    renderer.setInputValue(QStringLiteral("inputHeight"), 0.0);
    renderer.render(0);
    const auto output = renderer.firstImageOutput();
    ASSERT_TRUE(output);
    EXPECT_NE(output->className, QStringLiteral("QCRenderInImage")) << "size-to-fit skips render-in-image roots";
    const QImage out = renderer.nodeOutputValue(output->node, output->port).value<QImage>();
    EXPECT_EQ(out.size(), QSize(64, 48));
}
