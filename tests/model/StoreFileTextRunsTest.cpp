#include "ModelFixture.h"

#include "model/StoreFile.h"
#include "model/StoreFileTextRuns.h"
#include "model/StoreValueCodec.h"

#include <QXmlStreamReader>

using namespace model;

namespace {

const QByteArray kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// Base64 text of `length` characters; `seed` makes different texts.
QByteArray base64Run(qsizetype length, char seed = 'A')
{
    static const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    QByteArray run(length, Qt::Uninitialized);
    for (qsizetype i = 0; i < length; ++i) run[i] = alphabet[(i * 7 + seed) % 64];
    return run;
}

}  // namespace

TEST(StoreFileTextRuns, EachRunComesBackAtTheStartTagItFollowed)
{
    // Characters of one, two, three and four UTF-8 bytes (the last is two
    // UTF-16 units) and a CR LF before, between and after the runs.
    const QByteArray first = base64Run(600), second = base64Run(2000, 'x');
    const QByteArray document = kDeclaration + "<s>\r\n<a t=\"é€😀\">" + first + "</a><b>short</b>\n<c u=\"𝄞\">" + second +
                                "&amp;tail</c><d/></s>";
    StoreFileTextRuns runs(document);
    ASSERT_FALSE(runs.isEmpty());
    EXPECT_FALSE(runs.xml().contains(first.left(100)));

    QXmlStreamReader xml(runs.xml());
    QStringList taken;
    while (xml.readNext() != QXmlStreamReader::Invalid && !xml.atEnd()) {
        if (!xml.isStartElement()) continue;
        const QByteArrayView run = runs.take(xml.characterOffset());
        taken.append(xml.name().toString() + QLatin1Char('=') + QString::fromLatin1(run));
    }
    ASSERT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    EXPECT_EQ(taken, (QStringList{QStringLiteral("s="), QStringLiteral("a=") + QString::fromLatin1(first), QStringLiteral("b="),
                                  QStringLiteral("c=") + QString::fromLatin1(second), QStringLiteral("d=")}));
    EXPECT_TRUE(runs.allTaken());
}

TEST(StoreFileTextRuns, NothingIsCutWherePositionsCouldBeWrongOrNothingIsGained)
{
    const QByteArray body = "<s><a>" + base64Run(StoreFileTextRuns::kMinimumRun) + "</a></s>";
    EXPECT_FALSE(StoreFileTextRuns(kDeclaration + body).isEmpty()) << "a run of the minimum length is cut";

    const QByteArray notCut[] = {
        body,                                                                      // no declaration
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + body,                  // another encoding
        "\xEF\xBB\xBF" + kDeclaration + body,                                      // a byte order mark first
        kDeclaration + "<s><a>" + base64Run(StoreFileTextRuns::kMinimumRun - 1) + "</a></s>",  // too short
        kDeclaration + "<s n=\"\xC3\">" + body + "</s>",                           // not UTF-8
    };
    for (const QByteArray& bytes : notCut) {
        StoreFileTextRuns runs(bytes);
        EXPECT_TRUE(runs.isEmpty()) << bytes.left(60).toStdString();
        EXPECT_EQ(runs.xml(), bytes);
    }
}

TEST(StoreFileTextRuns, ARunNotTakenBackIsNoticed)
{
    const QByteArray document = kDeclaration + "<s><a>" + base64Run(600) + "</a><b>" + base64Run(700) + "</b></s>";
    // Reads the document taking back only the run after <element>.
    const auto allTakenReadingOnly = [&](QLatin1String element) {
        StoreFileTextRuns runs(document);
        QXmlStreamReader xml(runs.xml());
        while (!xml.atEnd()) {
            if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == element) {
                EXPECT_FALSE(runs.take(xml.characterOffset()).isEmpty());
            }
        }
        return runs.allTaken();
    };
    EXPECT_FALSE(allTakenReadingOnly(QLatin1String("b"))) << "the run of <a> was passed by";
    EXPECT_FALSE(allTakenReadingOnly(QLatin1String("a"))) << "the run of <b> was never asked for";
}

TEST(StoreFileTextRuns, IdenticalRunsDecodeOnceAndDifferentRunsNeverMix)
{
    const QByteArray a = QByteArray(3000, 'a').toBase64();
    QByteArray b = a;
    b[0] = 'Z';  // same length, same middle, different bytes
    QByteArray c = a;
    c[c.size() - 5] = 'Z';
    const QByteArray document =
        kDeclaration + "<s><x>" + a + "</x><x>" + b + "</x><x>" + a + "</x><x>" + c + "</x></s>";
    StoreFileTextRuns runs(document);
    QList<QByteArray> decoded;
    QXmlStreamReader xml(runs.xml());
    while (!xml.atEnd())
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("x"))
            decoded.append(runs.fromBase64(runs.take(xml.characterOffset())));
    ASSERT_EQ(decoded.size(), 4);
    EXPECT_EQ(decoded[0], QByteArray::fromBase64(a));
    EXPECT_EQ(decoded[1], QByteArray::fromBase64(b));
    EXPECT_EQ(decoded[3], QByteArray::fromBase64(c));
    EXPECT_NE(decoded[0], decoded[1]);
    EXPECT_NE(decoded[0], decoded[3]);
    EXPECT_EQ(decoded[2].constData(), decoded[0].constData()) << "the repeated run shares the bytes decoded first";
}

class StoreFileCutReadingTest : public ModelFixture {
protected:
    // The reader cuts runs only after the exact declaration the writer
    // writes; the same file with the encoding's name in lower case is read
    // as it is, which is what a cut reading has to match.
    static QByteArray readWithoutCutting(QByteArray bytes) { return bytes.replace("encoding=\"UTF-8\"", "encoding=\"utf-8\""); }

    static void expectSameReading(const QByteArray& bytes, const char* what)
    {
        SCOPED_TRACE(what);
        const LoadedStore cut = StoreFile::read(bytes);
        const LoadedStore whole = StoreFile::read(readWithoutCutting(bytes));
        ASSERT_EQ(bool(cut), bool(whole)) << cut.error.toStdString() << " / " << whole.error.toStdString();
        EXPECT_EQ(cut.error.toStdString(), whole.error.toStdString());
        EXPECT_EQ(cut.warnings.join(QLatin1Char('\n')).toStdString(), whole.warnings.join(QLatin1Char('\n')).toStdString());
        if (cut && whole) {
            EXPECT_EQ(StoreFile::write(*cut.store), StoreFile::write(*whole.store));
        }
    }

    QByteArray binary = [] {
        QByteArray bytes(5000, Qt::Uninitialized);
        for (int i = 0; i < bytes.size(); ++i) bytes[i] = char(i * 31 % 251);
        return bytes;
    }();
    QString base64LikeTitle = QString::fromLatin1(base64Run(900, 'q'));
};

TEST_F(StoreFileCutReadingTest, LongTextsReadBackExactly)
{
    QuartzComponent* first = addComponent(base64LikeTitle);
    first->setQuartzCompositionData(binary);
    QuartzComponent* second = addComponent(QStringLiteral("second"));
    second->setQuartzCompositionData(binary);
    QuartzComponent* third = addComponent(QStringLiteral("third"));
    third->setQuartzCompositionData(binary.left(4000));
    QImage image(64, 64, QImage::Format_ARGB32);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) image.setPixel(x, y, qRgba(x * 4, y * 4, x ^ y, 200));
    composition->setBackgroundImage(image);
    const QString longText = base64LikeTitle + QStringLiteral(" & <Grüße> 😀 ]]> ") + base64LikeTitle;
    addAttribute(first, QStringLiteral("text"), kTypeString, longText);

    const QByteArray bytes = StoreFile::write(store);
    ASSERT_FALSE(StoreFileTextRuns(bytes).isEmpty()) << "the file has runs to cut";
    const LoadedStore loaded = StoreFile::read(bytes);
    ASSERT_TRUE(loaded) << loaded.error.toStdString();
    const std::vector<QuartzComponent*> components = loaded.composition->componentArray();
    ASSERT_EQ(components.size(), 3u);
    EXPECT_EQ(components[0]->title(), base64LikeTitle);
    EXPECT_EQ(components[0]->quartzCompositionData(), binary);
    EXPECT_EQ(components[1]->quartzCompositionData(), binary);
    EXPECT_EQ(components[2]->quartzCompositionData(), binary.left(4000));
    EXPECT_EQ(components[0]->attributeForKey(QStringLiteral("text"))->currentValue().toString(), longText);
    EXPECT_EQ(loaded.composition->backgroundImage(), image.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    expectSameReading(bytes, "as written");
}

TEST_F(StoreFileCutReadingTest, CuttingNeverChangesWhatAFileMeans)
{
    QuartzComponent* c = addComponent(QStringLiteral("plain"));
    c->setQuartzCompositionData(binary);
    const QByteArray good = StoreFile::write(store);
    const QByteArray run = base64Run(800, 'k');
    auto edited = [&](const char* from, const QByteArray& to) {
        QByteArray bytes = good;
        EXPECT_TRUE(bytes.contains(from)) << from;
        return bytes.replace(from, to);
    };
    const QByteArray title = "<attribute name=\"title\" type=\"string\">plain</attribute>";
    const struct {
        const char* what;
        QByteArray bytes;
    } cases[] = {
        {"a run in a comment", edited("<store version=\"1\">", "<store version=\"1\"><!-- a >" + run + " -->")},
        {"a run in an attribute's value", edited("<attribute name=\"title\"", "<attribute name=\"title>" + run + "\"")},
        {"a run in an unknown element", edited(title.constData(), title + "<extra>" + run + "</extra>")},
        {"a run in a font value", edited(title.constData(), title + "<attribute name=\"x\" type=\"font\" family=\"F\">" + run + "</attribute>")},
        {"a run after CDATA", edited(">plain<", "><![CDATA[<b>]]>" + run + "<")},
        {"a run before an entity and more text", edited(">plain<", ">" + run + "&amp;Grüße\n" + run + "<")},
        {"a run with a line break in base64", edited(">plain<", ">" + run + "\n" + run + "<")},
        {"a run of digits in a number", edited("type=\"double\">0<", "type=\"double\">" + QByteArray(700, '7') + "<")},
        {"a run of digits in a relationship", edited("<relationship name=\"components\">", "<relationship name=\"components\">" + QByteArray(600, '9') + " ")},
        {"a run that is not a number", edited("type=\"int\">0<", "type=\"int\">" + run + "<")},
        {"a run in the store's own text", edited("<store version=\"1\">", "<store version=\"1\">" + run)},
        {"a truncated run", good.left(good.indexOf("type=\"data\">") + 2000)},
        {"a run in a truncated file", good.left(good.indexOf("type=\"data\">") + 20 + binary.size() * 4 / 3)},
    };
    for (const auto& c : cases) expectSameReading(c.bytes, c.what);
}
