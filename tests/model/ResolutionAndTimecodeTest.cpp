#include "model/RichFontValue.h"
#include "model/Timecode.h"
#include "model/VideoModeCatalogue.h"
#include "model/ValueTransformers.h"
#include "model/VideoResolution.h"

#include <QSet>
#include <QTextBlock>
#include <QTextDocument>

#include <gtest/gtest.h>

using namespace model;

TEST(VideoResolution, CatalogueNamesResolveAsTheyAre)
{
    const VideoResolution r(QStringLiteral("1080i25 RGBA"));
    EXPECT_EQ(r.title(), QStringLiteral("1080i25 RGBA"));
    EXPECT_EQ(r.compositionWidth(), 1920);
    EXPECT_EQ(r.compositionHeight(), 1080);
    EXPECT_EQ(r.frameRate(), kRate25);
    EXPECT_EQ(r.aspectRatio(), 1.0);
    EXPECT_EQ(VideoResolution(QStringLiteral("2160p59.94 RGBA")).compositionWidth(), 3840);
}

TEST(VideoResolution, OldNamesFindTheMatchingMode)
{
    const VideoResolution progressive(QStringLiteral("HD 1080p25"));
    EXPECT_EQ(progressive.title(), QStringLiteral("1080p25 RGBA"));
    const VideoResolution interlaced(QStringLiteral("HD 1080i25"));
    EXPECT_EQ(interlaced.title(), QStringLiteral("1080i25 RGBA"));
    EXPECT_EQ(VideoResolution(QStringLiteral("SD PAL Widescreen")).title(), QStringLiteral("576i25 RGBA"));
    EXPECT_EQ(VideoResolution(QStringLiteral("SD NTSC")).title(), QStringLiteral("480i29.97 RGBA"));
    EXPECT_EQ(VideoResolution(QStringLiteral("HD 720p59.94")).title(), QStringLiteral("720p59.94 RGBA"));
    EXPECT_EQ(VideoResolution(QStringLiteral("UHD p50")).title(), QStringLiteral("2160p50 RGBA"));

    const VideoResolution fourK(QStringLiteral("4K p25"));
    EXPECT_TRUE(fourK.title().isNull());
    EXPECT_EQ(fourK.compositionWidth(), 0);
    const VideoResolution unknown(QStringLiteral("nonsense"));
    EXPECT_FALSE(unknown.isValid());
    EXPECT_EQ(unknown.compositionHeight(), 0);
    EXPECT_FALSE(VideoResolution(QString()).isValid());
}

TEST(VideoResolution, CatalogueCoversTheBroadcastModesOnce)
{
    QSet<QString> names;
    for (const VideoMode& m : VideoModeCatalogue::modes()) {
        EXPECT_FALSE(names.contains(m.name)) << m.name.toStdString();
        names.insert(m.name);
        EXPECT_EQ(m.pixelFormat, QStringLiteral("rgba"));
        EXPECT_EQ(VideoResolution(m.name).title(), m.name);
    }
    for (const char* required : {"576i25 RGBA", "480i29.97 RGBA", "720p50 RGBA", "720p59.94 RGBA", "720p60 RGBA",
                                 "1080i25 RGBA", "1080i29.97 RGBA", "1080p23.98 RGBA", "1080p24 RGBA", "1080p25 RGBA",
                                 "1080p29.97 RGBA", "1080p30 RGBA", "1080p50 RGBA", "1080p59.94 RGBA", "1080p60 RGBA",
                                 "2160p25 RGBA", "2160p50 RGBA", "2160p59.94 RGBA", "2160p60 RGBA"})
        EXPECT_TRUE(names.contains(QString::fromLatin1(required))) << required;
}

TEST(Timecode, FormatsAndParsesNonDropRates)
{
    const Timecode t = Timecode::fromSeconds(3661.5, kRate25);
    EXPECT_EQ(t.toString(), QStringLiteral("01:01:01:12"));
    EXPECT_DOUBLE_EQ(t.secondsSinceMidnight(), 3661.48);
    auto parsed = Timecode::fromString(QStringLiteral("01:01:01:12"), kRate25);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->frames(), t.frames());
    EXPECT_EQ(Timecode::fromString(QStringLiteral("02:10"), kRate25)->frames(), 60);
    EXPECT_FALSE(Timecode::fromString(QStringLiteral("00:00:00:25"), kRate25)) << "no frame 25 at 25 fps";
    EXPECT_FALSE(Timecode::fromString(QStringLiteral("ab:cd"), kRate25));
    EXPECT_EQ(Timecode::fromSeconds(-3, kRate25).toString(), QStringLiteral("00:00:00:00"));
    EXPECT_EQ(Timecode::fromSeconds(0.04 * 3, kRate25).frames(), 3) << "a hair below a frame boundary counts as it";
}

TEST(Timecode, DropFrameSkipsLabelsAtTheMinute)
{
    // 29.97 drop-frame: one real minute of frames is 1798 labels ahead of 00:00:00;00.
    EXPECT_EQ(Timecode(kRate2997, 1799).toString(), QStringLiteral("00:00:59;29"));
    EXPECT_EQ(Timecode(kRate2997, 1800).toString(), QStringLiteral("00:01:00;02"));
    EXPECT_EQ(Timecode(kRate2997, 17982).toString(), QStringLiteral("00:10:00;00")) << "every tenth minute keeps its labels";
    EXPECT_FALSE(Timecode::fromString(QStringLiteral("00:01:00;00"), kRate2997)) << "a dropped label";
    for (qint64 frames : {0LL, 1800LL, 17981LL, 17982LL, 107892LL, 123456LL}) {
        const Timecode t(kRate2997, frames);
        auto back = Timecode::fromString(t.toString(), kRate2997);
        ASSERT_TRUE(back) << t.toString().toStdString();
        EXPECT_EQ(back->frames(), frames) << t.toString().toStdString();
    }
    EXPECT_EQ(Timecode(kRate5994, 3600).toString(), QStringLiteral("00:01:00;04"));
    EXPECT_NEAR(Timecode::fromSeconds(60.0, kRate2997).secondsSinceMidnight(), 60.0, 1.0 / 29.97);
}

TEST(RichFontValue, MembersTextAttributesAndRoundTrip)
{
    const QVariantMap ports{{QStringLiteral("Lower_Rich_Font_Name"), QStringLiteral("DejaVu Sans")},
                            {QStringLiteral("Lower_Rich_Font_Size"), 24.0f}};
    RichFontValue value(QStringLiteral("Lower_Rich_Font_Name"), [&](const QString& k) { return ports.value(k); });
    EXPECT_EQ(value.keyPattern(), QStringLiteral("Lower_%@"));
    EXPECT_EQ(value.attributes().size(), 11);
    EXPECT_EQ(value.font().pointSizeF(), 24.0);
    TextAttributes none = value.textAttributes();
    EXPECT_FALSE(none.foregroundColor || none.shadow || none.underlineStyle || none.strikethroughStyle);

    value.setValueForInputKey(QStringLiteral("Rich_Font_Use_Shadow"), 2);
    EXPECT_FALSE(value.textAttributes().shadow) << "only 1 switches the shadow on";

    TextAttributes all;
    all.foregroundColor = QColor(Qt::red);
    all.shadow = TextShadow{2, -3, 4};
    all.underlineStyle = 1;
    all.underlineColor = QColor(Qt::blue);
    all.strikethroughStyle = 1;
    all.strikethroughColor = QColor(Qt::green);
    value.setTextAttributes(all);
    const QVariantMap before = value.attributes();
    value.setTextAttributes(value.textAttributes());
    EXPECT_EQ(value.attributes(), before);

    value.setTextAttributes(TextAttributes{});
    EXPECT_EQ(value.valueForInputKey(QStringLiteral("Rich_Font_Use_Shadow")).toInt(), 0);
    EXPECT_FLOAT_EQ(value.valueForInputKey(QStringLiteral("Rich_Font_Shadow_Offset_Y")).toFloat(), -3.f)
        << "switching the shadow off keeps its geometry";
    EXPECT_EQ(value.quartzValues().value("Lower_Rich_Font_Name").string(), "DejaVu Sans");
}

TEST(ValueTransformers, TimecodeCountsAndUrls)
{
    Timecode::setProjectRateCode(kRate25);
    EXPECT_EQ(transformers::timepointToString(-3), QStringLiteral("00:00:00:00"));
    EXPECT_EQ(transformers::timepointToString(61.2), QStringLiteral("00:01:01:05"));
    EXPECT_DOUBLE_EQ(*transformers::stringToTimepoint(QStringLiteral("00:01:01:05")), 61.2);
    EXPECT_FALSE(transformers::stringToTimepoint(QStringLiteral("soon")));

    EXPECT_FALSE(transformers::countGreaterThanOne(QStringLiteral("a long string")));
    const QVariantList two{1, 2};
    EXPECT_TRUE(transformers::countGreaterThanOne(two));
    EXPECT_FALSE(transformers::countGreaterThanTwo(two));
    EXPECT_TRUE(transformers::countGreaterThanTwo(QVariant::fromValue(QList<int>{1, 2, 3})));
    EXPECT_FALSE(transformers::countGreaterThanOne(QVariant(5)));

    EXPECT_TRUE(transformers::stringToURL(QString()).isEmpty());
    EXPECT_EQ(transformers::urlToString(transformers::stringToURL(QStringLiteral("/tmp/a b.png"))), QStringLiteral("/tmp/a b.png"));
}

TEST(ValueTransformers, StyledTextGoesThroughRtf)
{
    const QString rtf = QStringLiteral("{\\rtf1\\ansi{\\fonttbl\\f0 DejaVu Sans;}\\f0\\fs48 Caf\\'e9 {\\b bold}}");
    auto document = transformers::rtfToDocument(rtf);
    EXPECT_EQ(document->toPlainText(), QStringLiteral("Café bold"));
    auto again = transformers::rtfToDocument(transformers::documentToRtf(*document));
    EXPECT_EQ(again->toPlainText(), QStringLiteral("Café bold"));
    bool boldKept = false;
    for (auto it = again->firstBlock().begin(); !it.atEnd(); ++it)
        if (it.fragment().text() == QLatin1String("bold")) boldKept = it.fragment().charFormat().fontWeight() == QFont::Bold;
    EXPECT_TRUE(boldKept);

    EXPECT_TRUE(transformers::rtfToDocument(QString())->isEmpty());
    EXPECT_TRUE(transformers::rtfToDocument(QStringLiteral("not rtf"))->isEmpty());
    EXPECT_EQ(transformers::documentToRtf(QTextDocument()), QString());
}
