// velloran-cli doc ...: documents made, changed, dumped, exported and
// rendered without the editor, and never left broken.

#include "../support/CliRunner.h"
#include "../support/ComponentFiles.h"

#include "document/CompositionDocument.h"
#include "document/DocumentJournal.h"
#include "model/StandardComponents.h"
#include "model/Composition.h"
#include "runtime/Composition.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

namespace {

QJsonObject parseObject(const QString& text)
{
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

QByteArray fileHash(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return {};
    return QCryptographicHash::hash(f.readAll(), QCryptographicHash::Sha256);
}

}  // namespace

class DocCommandTest : public ::testing::Test {
protected:
    DocCommandTest()
    {
        doc = dir.filePath(QStringLiteral("Show.composition"));
        box = testfiles::writeBoxComposition(
            QDir(dir.path()), QStringLiteral("Box.qtz"),
            {{"QCStringPort", QStringLiteral("Title"), QStringLiteral("Title"), plist::Value("Hello")}});
    }

    QJsonObject dump()
    {
        const CliResult r = runCli({QStringLiteral("doc"), QStringLiteral("dump"), doc});
        EXPECT_EQ(r.code, 0) << r.err.toStdString();
        return parseObject(r.out);
    }

    CliResult apply(const QJsonArray& edits)
    {
        const QString path = dir.filePath(QStringLiteral("edits.json"));
        QFile f(path);
        f.open(QIODevice::WriteOnly | QIODevice::Truncate);
        f.write(QJsonDocument(edits).toJson());
        f.close();
        return runCli({QStringLiteral("doc"), QStringLiteral("apply"), doc, path});
    }

    static QJsonObject attribute(const QJsonObject& component, const QString& key)
    {
        for (const QJsonValue& a : component.value(QLatin1String("attributes")).toArray())
            if (a.toObject().value(QLatin1String("key")).toString() == key) return a.toObject();
        return {};
    }

    QTemporaryDir dir;
    QString doc;
    QString box;
};

TEST_F(DocCommandTest, NewMakesASavedPackage)
{
    CliResult r = runCli({QStringLiteral("doc"), QStringLiteral("new"), QStringLiteral("--mode"),
                          QStringLiteral("720p50 RGBA"), QStringLiteral("--duration"), QStringLiteral("12"), doc});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    for (const char* file : {"data.xml", "Composition.qtz", "CompositionInfo.xml", "QuickLook/Thumbnail.jpg"})
        EXPECT_TRUE(QDir(doc).exists(QLatin1String(file))) << file;
    const QJsonObject model = dump();
    EXPECT_EQ(model.value(QLatin1String("broadcastMode")).toString(), QStringLiteral("720p50 RGBA"));
    EXPECT_EQ(model.value(QLatin1String("width")).toInt(), 1280);
    EXPECT_EQ(model.value(QLatin1String("duration")).toDouble(), 12.0);

    r = runCli({QStringLiteral("doc"), QStringLiteral("info"), doc});
    ASSERT_EQ(r.code, 0);
    EXPECT_EQ(parseObject(r.out).value(QLatin1String("width")).toInt(), 1280);

    // Nothing is overwritten, and unknown modes are refused.
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 1);
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), QStringLiteral("--mode"), QStringLiteral("8K"),
                      dir.filePath(QStringLiteral("Other.composition"))}).code, 1);
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new")}).code, 2);
}

TEST_F(DocCommandTest, AddPlacesFilesAsADropWould)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    QImage picture(64, 48, QImage::Format_ARGB32);
    picture.fill(Qt::green);
    const QString png = dir.filePath(QStringLiteral("Logo.png"));
    ASSERT_TRUE(picture.save(png));
    const CliResult r = runCli({QStringLiteral("doc"), QStringLiteral("add"), doc, box, png});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QJsonArray components = dump().value(QLatin1String("components")).toArray();
    ASSERT_EQ(components.size(), 2);
    EXPECT_EQ(components[0].toObject().value(QLatin1String("title")).toString(), QStringLiteral("Box"));
    const QJsonObject image = components[1].toObject();
    EXPECT_EQ(attribute(image, QStringLiteral("inputWidth")).value(QLatin1String("currentValue")).toDouble(), 64);

    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("add"), doc, dir.filePath(QStringLiteral("none.qtz"))}).code, 1);
}

TEST_F(DocCommandTest, ApplyDrivesTheModel)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    const QJsonArray edits = QJsonDocument::fromJson(QStringLiteral(R"([
        {"op": "composition", "duration": 20, "backgroundMode": 1, "backgroundColor": "#102030", "showsRulers": true},
        {"op": "add", "path": "%1", "inputs": {"Title": "Breaking"}, "title": "Strap"},
        {"op": "add", "path": "%1"},
        {"op": "set", "component": "Strap", "key": "Color", "value": "#FF000080"},
        {"op": "permission", "component": 0, "key": "Title", "allowed": true},
        {"op": "animate", "component": 0, "key": "originX", "on": true},
        {"op": "keyframe", "component": 0, "key": "originX", "time": 0, "value": 0},
        {"op": "keyframe", "component": 0, "key": "originX", "time": 2, "value": 500},
        {"op": "time", "t": 1},
        {"op": "component", "component": 1, "title": "Second", "start": 3, "end": 9},
        {"op": "select", "components": [0, "Second"]},
        {"op": "command", "name": "alignComponents", "mode": 5},
        {"op": "stopFrame", "time": 4, "name": "Out"},
        {"op": "ruler", "position": 540, "horizontal": true}
    ])").arg(box).toUtf8()).array();
    ASSERT_EQ(edits.size(), 14);
    const CliResult r = apply(edits);
    ASSERT_EQ(r.code, 0) << r.err.toStdString();

    const QJsonObject model = dump();
    EXPECT_EQ(model.value(QLatin1String("duration")).toDouble(), 20);
    EXPECT_EQ(model.value(QLatin1String("backgroundMode")).toInt(), 1);
    EXPECT_EQ(model.value(QLatin1String("stopFrames")).toArray().size(), 1);
    EXPECT_EQ(model.value(QLatin1String("rulers")).toArray().size(), 1);
    const QJsonArray components = model.value(QLatin1String("components")).toArray();
    ASSERT_EQ(components.size(), 2);
    const QJsonObject strap = components[0].toObject();
    EXPECT_EQ(strap.value(QLatin1String("title")).toString(), QStringLiteral("Strap"));
    EXPECT_EQ(attribute(strap, QStringLiteral("Title")).value(QLatin1String("currentValue")).toString(), QStringLiteral("Breaking"));
    EXPECT_TRUE(attribute(strap, QStringLiteral("Title")).value(QLatin1String("permissionToChange")).toBool());
    EXPECT_EQ(attribute(strap, QStringLiteral("Color")).value(QLatin1String("currentValue")).toString(), QStringLiteral("#ff000080"));
    const QJsonObject originX = attribute(strap, QStringLiteral("originX"));
    EXPECT_TRUE(originX.value(QLatin1String("animateable")).toBool());
    EXPECT_EQ(originX.value(QLatin1String("values")).toObject().value(QLatin1String("2")).toDouble(), 500);
    const QJsonObject second = components[1].toObject();
    EXPECT_EQ(second.value(QLatin1String("startTime")).toDouble(), 3);
    // Aligned bottoms: both at the lower of the two.
    EXPECT_EQ(attribute(second, QStringLiteral("originY")).value(QLatin1String("currentValue")).toDouble(),
              attribute(strap, QStringLiteral("originY")).value(QLatin1String("currentValue")).toDouble());
}

TEST_F(DocCommandTest, ABadEditChangesNothingOnDisk)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    const QByteArray before = fileHash(QDir(doc).filePath(QStringLiteral("data.xml")));
    const QJsonArray edits = QJsonDocument::fromJson(QStringLiteral(R"([
        {"op": "composition", "duration": 30},
        {"op": "add", "path": "%1"},
        {"op": "set", "component": 0, "key": "originX", "value": "far left"}
    ])").arg(box).toUtf8()).array();
    const CliResult r = apply(edits);
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.err.contains(QStringLiteral("edit 2:"))) << r.err.toStdString();
    EXPECT_EQ(fileHash(QDir(doc).filePath(QStringLiteral("data.xml"))), before);

    for (const char* bad : {R"([{"op": "set", "component": 5, "key": "x", "value": 1}])",
                            R"([{"op": "set", "component": "Nobody", "key": "x", "value": 1}])",
                            R"([{"op": "explode"}])", R"([{"op": "command", "name": "formatDisk"}])"}) {
        EXPECT_EQ(apply(QJsonDocument::fromJson(bad).array()).code, 1) << bad;
    }
    EXPECT_EQ(fileHash(QDir(doc).filePath(QStringLiteral("data.xml"))), before);
}

TEST_F(DocCommandTest, DumpReadsValuesAtAGivenTimeOnTheFrameGrid)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    ASSERT_EQ(apply(QJsonDocument::fromJson(QStringLiteral(R"([
        {"op": "add", "path": "%1"},
        {"op": "keyframe", "component": 0, "key": "originX", "time": 1, "value": 100},
        {"op": "keyframe", "component": 0, "key": "originX", "time": 5, "value": 500}
    ])").arg(box).toUtf8()).array()).code, 0);
    auto originXAt = [&](const QString& time) {
        const CliResult r = runCli({QStringLiteral("doc"), QStringLiteral("dump"), doc, QStringLiteral("--time"), time});
        EXPECT_EQ(r.code, 0) << r.err.toStdString();
        const QJsonObject model = parseObject(r.out);
        return std::pair(model.value(QLatin1String("editorTimepoint")).toDouble(),
                         attribute(model.value(QLatin1String("components")).toArray()[0].toObject(), QStringLiteral("originX"))
                             .value(QLatin1String("currentValue"))
                             .toDouble());
    };
    EXPECT_EQ(originXAt(QStringLiteral("2")), std::pair(2.0, 200.0));
    // 1.03 s at 25 frames a second is the frame at 1.04 s.
    const auto [t, x] = originXAt(QStringLiteral("1.03"));
    EXPECT_DOUBLE_EQ(t, 1.04);
    EXPECT_NEAR(x, 104.0, 1e-3);
    EXPECT_EQ(dump().value(QLatin1String("editorTimepoint")).toDouble(), 0.0) << "without --time: where opening puts it";
    for (const char* bad : {"soon", "nan"})
        EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("dump"), doc, QStringLiteral("--time"), QLatin1String(bad)}).code, 2) << bad;
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("dump"), doc, QStringLiteral("--time")}).code, 2);
}

TEST_F(DocCommandTest, ApplyCanShowTheResultAndSaveNothing)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    ASSERT_EQ(apply(QJsonDocument::fromJson(QStringLiteral(R"([{"op": "add", "path": "%1"}])").arg(box).toUtf8()).array()).code, 0);
    const QByteArray before = fileHash(QDir(doc).filePath(QStringLiteral("data.xml")));
    const QString edits = dir.filePath(QStringLiteral("more.json"));
    QFile f(edits);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(R"([{"op": "keyframe", "component": 0, "key": "originX", "time": 4, "value": 9},
                {"op": "select", "components": [0]},
                {"op": "command", "name": "jumpToBeginning"},
                {"op": "command", "name": "jumpToNextKeyframe"},
                {"op": "select", "components": []}])");
    f.close();
    const CliResult r = runCli({QStringLiteral("doc"), QStringLiteral("apply"), doc, edits, QStringLiteral("--dump"), QStringLiteral("--dry-run")});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QJsonObject model = parseObject(r.out);
    EXPECT_EQ(model.value(QLatin1String("editorTimepoint")).toDouble(), 4.0) << "the playhead moved by the jumps is shown";
    EXPECT_FALSE(model.value(QLatin1String("components")).toArray()[0].toObject().value(QLatin1String("selected")).toBool());
    EXPECT_EQ(fileHash(QDir(doc).filePath(QStringLiteral("data.xml"))), before) << "a dry run saves nothing";

    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("apply"), doc, edits, QStringLiteral("--loud")}).code, 2);
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("apply"), doc, dir.filePath(QStringLiteral("none.json")), QStringLiteral("--dry-run")}).code, 1);
}

TEST_F(DocCommandTest, EditsFollowTheEditorsRules)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    const QJsonArray edits = QJsonDocument::fromJson(QStringLiteral(R"([
        {"op": "add", "path": "%1"},
        {"op": "set", "component": 0, "key": "inputWidth", "value": 100},
        {"op": "set", "component": 0, "key": "inputHeight", "value": 50},
        {"op": "component", "component": 0, "constrainProportions": true, "start": 0, "end": 5},
        {"op": "set", "component": 0, "key": "inputWidth", "value": 200},
        {"op": "component", "component": 0, "start": 7, "end": 9},
        {"op": "keyframe", "component": 0, "key": "originY", "time": 8},
        {"op": "keyframe", "component": 0, "key": "originX", "time": 7.5, "value": 10},
        {"op": "keyframe", "component": 0, "key": "originX", "time": 8.5, "value": 30},
        {"op": "keyframe", "component": 0, "key": "originX", "time": 8},
        {"op": "time", "t": 1.03}
    ])").arg(box).toUtf8()).array();
    const CliResult r = apply(edits);
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QJsonObject c = dump().value(QLatin1String("components")).toArray()[0].toObject();
    EXPECT_EQ(attribute(c, QStringLiteral("inputHeight")).value(QLatin1String("currentValue")).toDouble(), 100)
        << "proportions are kept as in the editor";
    EXPECT_EQ(c.value(QLatin1String("startTime")).toDouble(), 7);
    EXPECT_EQ(c.value(QLatin1String("endTime")).toDouble(), 9);
    const QJsonObject originY = attribute(c, QStringLiteral("originY"));
    EXPECT_EQ(originY.value(QLatin1String("values")).toObject().value(QLatin1String("8")).toDouble(),
              originY.value(QLatin1String("currentValue")).toDouble())
        << "a keyframe without a value keeps the value there";
    EXPECT_FALSE(originY.value(QLatin1String("values")).toObject().value(QLatin1String("8")).isNull());
    EXPECT_EQ(attribute(c, QStringLiteral("originX")).value(QLatin1String("values")).toObject().value(QLatin1String("8")).toDouble(), 20)
        << "between keyframes: the value shown there";
}

TEST_F(DocCommandTest, RepairDropsWhatCannotBeReadAndKeepsTheRest)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    ASSERT_EQ(apply(QJsonDocument::fromJson(QStringLiteral(R"([
        {"op": "add", "path": "%1", "title": "Keep me"},
        {"op": "set", "component": 0, "key": "Title", "value": "Unreadable"}
    ])").arg(box).toUtf8()).array()).code, 0);
    const QString store = QDir(doc).filePath(QStringLiteral("data.xml"));
    QFile file(store);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray bytes = file.readAll();
    file.close();
    const qsizetype at = bytes.indexOf("Unreadable");
    ASSERT_GT(at, 0);
    bytes.replace(bytes.lastIndexOf("type=\"string\"", at), 13, "type=\"bool\"");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
    file.close();

    CliResult r = runCli({QStringLiteral("doc"), QStringLiteral("dump"), doc});
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.err.contains(QStringLiteral("\"Title\""))) << "the failure names the attribute: " << r.err.toStdString();
    EXPECT_EQ(r.err.count(QLatin1Char('\n')), 1) << r.err.toStdString();

    r = runCli({QStringLiteral("doc"), QStringLiteral("repair"), doc});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QJsonArray dropped = parseObject(r.out).value(QLatin1String("dropped")).toArray();
    ASSERT_EQ(dropped.size(), 1);
    EXPECT_TRUE(dropped[0].toString().contains(QStringLiteral("Title")));
    EXPECT_TRUE(QFile::exists(store + QStringLiteral(".damaged")));
    const QJsonArray components = dump().value(QLatin1String("components")).toArray();
    ASSERT_EQ(components.size(), 1);
    EXPECT_EQ(components[0].toObject().value(QLatin1String("title")).toString(), QStringLiteral("Keep me"));

    r = runCli({QStringLiteral("doc"), QStringLiteral("repair"), doc});
    EXPECT_EQ(r.code, 0);
    EXPECT_TRUE(parseObject(r.out).value(QLatin1String("dropped")).toArray().isEmpty()) << "a sound document loses nothing";
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("repair")}).code, 2);
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("repair"), dir.filePath(QStringLiteral("None.composition"))}).code, 1);
}

TEST_F(DocCommandTest, RecoverListsAppliesAndDiscardsWhatACrashLeft)
{
    QTemporaryDir journals;
    document::DocumentJournal::setFolderForTesting(journals.path());
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    auto leaveJournal = [&](double duration) {
        QString error;
        auto opened = document::CompositionDocument::open(doc, &error);
        ASSERT_TRUE(opened) << error.toStdString();
        opened->enableJournal();
        opened->composition()->setDuration(duration);
        QCoreApplication::processEvents();
        opened->journal()->flush();
        const QString path = opened->journal()->journalPath();
        ASSERT_TRUE(QFile::copy(path, path + QStringLiteral(".kept")));
        opened.reset();  // a normal close drops the journal; the copy stands for a crash
        ASSERT_TRUE(QFile::rename(path + QStringLiteral(".kept"), path));
    };
    leaveJournal(23);
    CliResult r = runCli({QStringLiteral("doc"), QStringLiteral("recover"), doc});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(parseObject(r.out).value(QLatin1String("records")).toInt(), 1);
    EXPECT_TRUE(parseObject(r.out).value(QLatin1String("recoverable")).toBool());
    EXPECT_EQ(dump().value(QLatin1String("duration")).toDouble(), 10.0) << "listing changes nothing";

    r = runCli({QStringLiteral("doc"), QStringLiteral("recover"), doc, QStringLiteral("--apply")});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(dump().value(QLatin1String("duration")).toDouble(), 23.0);
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("recover"), doc, QStringLiteral("--apply")}).code, 1)
        << "applied and saved: nothing left";

    leaveJournal(5);
    r = runCli({QStringLiteral("doc"), QStringLiteral("recover"), doc, QStringLiteral("--discard")});
    ASSERT_EQ(r.code, 0);
    EXPECT_EQ(parseObject(runCli({QStringLiteral("doc"), QStringLiteral("recover"), doc}).out).value(QLatin1String("records")).toInt(), 0);
    EXPECT_EQ(dump().value(QLatin1String("duration")).toDouble(), 23.0);

    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("recover"), doc, QStringLiteral("--apply"), QStringLiteral("--discard")}).code, 2);
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("recover"), dir.filePath(QStringLiteral("None.composition"))}).code, 1);
    document::DocumentJournal::setFolderForTesting({});
}

TEST_F(DocCommandTest, CheckTextFindsTheFieldAndSampleThatOverflow)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    const QString lowerThird = model::StandardComponents::pathForComponent(QStringLiteral("LowerThird"));
    ASSERT_EQ(apply(QJsonDocument::fromJson(QStringLiteral(R"([
        {"op": "add", "path": "%1", "title": "Strap"},
        {"op": "set", "component": 0, "key": "originX", "value": 200},
        {"op": "set", "component": 0, "key": "originY", "value": 150},
        {"op": "set", "component": 0, "key": "CIName", "value": "Ada Lovelace"},
        {"op": "set", "component": 0, "key": "CITitle", "value": "Analyst"}
    ])").arg(lowerThird).toUtf8()).array()).code, 0);
    const QString samples = dir.filePath(QStringLiteral("samples.txt"));
    auto writeSamples = [&](const QByteArray& text) {
        QFile f(samples);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(text);
    };
    auto results = [&](const CliResult& r) { return parseObject(r.out).value(QLatin1String("results")).toArray(); };

    writeSamples("Bo\nAl\n");
    CliResult r = runCli({QStringLiteral("doc"), QStringLiteral("check-text"), doc, QStringLiteral("--samples"), samples});
    EXPECT_EQ(r.code, 0) << "short names fit: " << r.out.toStdString();
    EXPECT_EQ(results(r).size(), 4) << "two fields, two samples";

    // A name far too long for the strap, and Japanese that DejaVu does not have.
    writeSamples(QStringLiteral("Bo\nMaximiliane Alexandrina von Hohenzollern-Sigmaringen und Waldburg\n日本語\n").toUtf8());
    r = runCli({QStringLiteral("doc"), QStringLiteral("check-text"), doc, QStringLiteral("--samples"), samples});
    EXPECT_EQ(r.code, 3) << r.err.toStdString();
    QStringList overflowingFields;
    bool fallbackFound = false;
    for (const QJsonValue& v : results(r)) {
        const QJsonObject o = v.toObject();
        if (!o.value(QLatin1String("fits")).toBool()) {
            EXPECT_TRUE(o.value(QLatin1String("sample")).toString().startsWith(QLatin1String("Maximiliane")));
            EXPECT_GT(o.value(QLatin1String("measuredWidth")).toDouble(), o.value(QLatin1String("room")).toDouble());
            overflowingFields << o.value(QLatin1String("field")).toString();
        }
        if (o.value(QLatin1String("sample")).toString() == QStringLiteral("日本語")) fallbackFound = o.value(QLatin1String("fallbackGlyph")).toBool();
    }
    EXPECT_TRUE(overflowingFields.contains(QStringLiteral("Strap_CIName"))) << overflowingFields.join(u',').toStdString();
    EXPECT_TRUE(fallbackFound) << "a font without Japanese glyphs falls back";

    r = runCli({QStringLiteral("doc"), QStringLiteral("check-text"), doc});
    EXPECT_EQ(results(r).size(), 12) << "the six default samples for each field";

    // With the defaults, a name that fits once overflows when doubled; the title beside it still fits.
    ASSERT_EQ(apply(QJsonDocument::fromJson(R"([{"op": "set", "component": 0, "key": "CIName", "value": "Alexandrina Hohenzollern"}])").array()).code, 0);
    r = runCli({QStringLiteral("doc"), QStringLiteral("check-text"), doc});
    EXPECT_EQ(r.code, 3);
    auto fitsFor = [&](const QString& field, const QString& sample) {
        for (const QJsonValue& v : results(r))
            if (v[QLatin1String("field")] == field && v[QLatin1String("sample")] == sample) return v[QLatin1String("fits")].toBool(true);
        ADD_FAILURE() << "no result for " << field.toStdString() << " with " << sample.toStdString();
        return true;
    };
    EXPECT_FALSE(fitsFor(QStringLiteral("Strap_CIName"), QStringLiteral("Alexandrina Hohenzollern Alexandrina Hohenzollern")));
    EXPECT_TRUE(fitsFor(QStringLiteral("Strap_CITitle"), QStringLiteral("Analyst Analyst")));
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("check-text"), doc, QStringLiteral("--samples")}).code, 2);
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("check-text"), doc, QStringLiteral("--samples"), dir.filePath(QStringLiteral("none.txt"))}).code, 1);
}

TEST_F(DocCommandTest, ThumbnailsWriteAPicturePerStopFrame)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    ASSERT_EQ(apply(QJsonDocument::fromJson(QStringLiteral(R"([
        {"op": "add", "path": "%1"},
        {"op": "stopFrame", "time": 1}, {"op": "stopFrame", "time": 2}
    ])").arg(box).toUtf8()).array()).code, 0);
    const QString out = dir.filePath(QStringLiteral("steps"));
    const CliResult r = runCli({QStringLiteral("doc"), QStringLiteral("thumbnails"), doc, out, QStringLiteral("--size"), QStringLiteral("320x180")});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(parseObject(r.out).value(QLatin1String("pictures")).toArray().size(), 2);
    EXPECT_EQ(QImage(QDir(out).filePath(QStringLiteral("Step-02.png"))).size(), QSize(320, 180));
    for (const char* bad : {"big", "0x180", "20000x10", "320x"})
        EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("thumbnails"), doc, out, QStringLiteral("--size"), QLatin1String(bad)}).code, 2) << bad;
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("thumbnails"), doc, out, QStringLiteral("--size")}).code, 2) << "no size after --size";
}

TEST_F(DocCommandTest, SchemaPrintsOrWritesTheFieldSchema)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    ASSERT_EQ(apply(QJsonDocument::fromJson(QStringLiteral(R"([
        {"op": "add", "path": "%1", "title": "Strap"},
        {"op": "permission", "component": 0, "key": "Title", "allowed": true}
    ])").arg(box).toUtf8()).array()).code, 0);
    CliResult r = runCli({QStringLiteral("doc"), QStringLiteral("schema"), doc});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QJsonObject schema = parseObject(r.out);
    EXPECT_TRUE(schema.value(QLatin1String("properties")).toObject().contains(QLatin1String("Strap_Title")));
    EXPECT_EQ(schema[QLatin1String("gddPlayoutOptions")][QLatin1String("client")][QLatin1String("steps")].toInt(), 1)
        << "a template without stop frames plays in one step";
    const QString file = dir.filePath(QStringLiteral("fields.gdd.json"));
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("schema"), doc, QStringLiteral("-o"), file}).code, 0);
    EXPECT_TRUE(QFile::exists(file));
    EXPECT_TRUE(QFile::exists(QDir(doc).filePath(QStringLiteral("Fields.gdd.json")))) << "every save writes it";
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("schema"), dir.filePath(QStringLiteral("None.composition"))}).code, 1);
    EXPECT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("schema"), doc, QStringLiteral("-o")}).code, 2);
}

TEST_F(DocCommandTest, ExportAndRenderPlayTheTemplate)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    const QJsonArray edits = QJsonDocument::fromJson(QStringLiteral(R"([
        {"op": "add", "path": "%1"},
        {"op": "set", "component": 0, "key": "Color", "value": "#0000FF"},
        {"op": "set", "component": 0, "key": "originX", "value": 100},
        {"op": "set", "component": 0, "key": "originY", "value": 100}
    ])").arg(box).toUtf8()).array();
    ASSERT_EQ(apply(edits).code, 0);

    const QString exported = dir.filePath(QStringLiteral("Show.qtz"));
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("export"), doc, exported}).code, 0);
    auto loaded = runtime::Composition::loadFile(exported);
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->inputKeys().contains(QStringLiteral("clear_enable")));

    const QString png = dir.filePath(QStringLiteral("frame.png"));
    const CliResult r = runCli({QStringLiteral("render"), doc, QStringLiteral("--time"), QStringLiteral("1"),
                                QStringLiteral("-o"), png});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QImage frame(png);
    EXPECT_EQ(frame.size(), QSize(1920, 1080));
    EXPECT_GT(frame.pixelColor(200, 1080 - 150).blue(), 200);
}

TEST_F(DocCommandTest, ModesListTheCatalogue)
{
    const CliResult r = runCli({QStringLiteral("modes")});
    ASSERT_EQ(r.code, 0);
    const QJsonArray modes = QJsonDocument::fromJson(r.out.toUtf8()).array();
    bool found = false;
    for (const QJsonValue& m : modes)
        found |= m.toObject().value(QLatin1String("name")).toString() == QLatin1String("1080i25 RGBA");
    EXPECT_TRUE(found);
}

// A save killed at any moment leaves a package that opens with all its
// data: the old state or the new one, never a broken one.
TEST_F(DocCommandTest, KilledSavesLeaveAnOpenablePackage)
{
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("new"), doc}).code, 0);
    ASSERT_EQ(runCli({QStringLiteral("doc"), QStringLiteral("add"), doc, box}).code, 0);
    QRandomGenerator random(7);
    for (int round = 0; round < 12; ++round) {
        const QString edits = dir.filePath(QStringLiteral("round.json"));
        QFile f(edits);
        f.open(QIODevice::WriteOnly | QIODevice::Truncate);
        f.write(QStringLiteral(R"([{"op": "composition", "duration": %1}, {"op": "add", "path": "%2"}])")
                    .arg(10 + round)
                    .arg(box)
                    .toUtf8());
        f.close();
        QProcess child;
        child.start(QStringLiteral(VELLORAN_CLI_PATH), {QStringLiteral("doc"), QStringLiteral("apply"), doc, edits});
        ASSERT_TRUE(child.waitForStarted());
        QThread::msleep(random.bounded(5, 120));
        child.kill();
        child.waitForFinished();

        QString error;
        auto opened = document::CompositionDocument::open(doc, &error);
        ASSERT_TRUE(opened) << "round " << round << ": " << error.toStdString();
        EXPECT_GE(opened->composition()->componentArray().size(), 1u);
    }
}
