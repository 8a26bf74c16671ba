// How far long document work got: a save tells its parts in order and ends
// at the total, an export counts the components it has built, and a layer
// import stops between layers when told to.

#include "ExportFixture.h"

#include "../psd/PsdTestBuilder.h"

#include "document/ComponentDrop.h"
#include "document/CompositionDocument.h"
#include "model/StandardComponents.h"
#include "model/VideoResolution.h"
#include "psd/PSDLayerImporter.h"

namespace {

using Told = std::vector<std::pair<qint64, qint64>>;

document::WorkProgress recordInto(Told& told, qint64 stopAt = -1)
{
    return [&told, stopAt](qint64 done, qint64 total) {
        told.emplace_back(done, total);
        return done != stopAt;
    };
}

class WorkProgressTest : public ExportFixture {};

TEST_F(WorkProgressTest, ASaveTellsEachPartInOrderAndCannotBeStopped)
{
    auto document = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(QStringLiteral("720p25 RGBA")));
    const QString package = dir.filePath(QStringLiteral("Told.composition"));
    Told told;
    QString error;
    // Answering "stop" at every part does not stop a save.
    ASSERT_TRUE(document->saveAs(package, &error, [&](qint64 done, qint64 total) {
        told.emplace_back(done, total);
        return false;
    })) << error.toStdString();
    const qint64 parts = document::CompositionDocument::kSaveParts;
    Told expected;
    for (qint64 part = 0; part <= parts; ++part) expected.emplace_back(part, parts);
    EXPECT_EQ(told, expected);
    EXPECT_TRUE(QFile::exists(package + QStringLiteral("/QuickLook/Thumbnail.jpg")));

    told.clear();
    ASSERT_TRUE(document->save(&error, recordInto(told)));
    EXPECT_EQ(told, expected) << "Save as well as Save As";
}

TEST_F(WorkProgressTest, AnExportCountsItsComponentsAndTheFile)
{
    for (int i = 0; i < 3; ++i) addBox(QStringLiteral("Box %1").arg(i));
    Told told;
    ASSERT_TRUE(document::CompositionExport::exportToPath(*composition, dir.filePath(QStringLiteral("Told.qtz")), false,
                                                          &document::CompositionExport::documentKey, recordInto(told, 1)));
    EXPECT_EQ(told, Told({{0, 4}, {1, 4}, {2, 4}, {4, 4}})) << "an export is not stopped by the answer";
}

TEST_F(WorkProgressTest, ALayerImportStopsBetweenLayers)
{
    psdtest::Document d;
    d.width = 8;
    d.height = 8;
    for (int i = 0; i < 4; ++i) {
        psdtest::Layer layer;
        layer.rect = QRect(0, 0, 8, 8);
        layer.pascalName = QByteArray("L") + QByteArray::number(i);
        for (int id : {-1, 0, 1, 2}) layer.channels.push_back({id, std::vector<uint8_t>(64, uint8_t(id < 0 ? 255 : 40 * i))});
        d.layers.push_back(layer);
    }
    d.composite.assign(3, std::vector<uint8_t>(64, 0));
    auto importer = psd::PSDLayerImporter::fromData(psdtest::build(d), false);
    ASSERT_TRUE(importer);
    const QString imageComponent = model::StandardComponents::pathForComponent(QStringLiteral("ImageComponent"));
    Told told;
    EXPECT_EQ(document::importPSDLayers(*composition, *importer, imageComponent, recordInto(told, 2)), 2);
    EXPECT_EQ(told, Told({{0, 4}, {1, 4}, {2, 4}}));
    EXPECT_EQ(composition->componentArray().size(), 2u) << "the bottom two layers, in order";
}

}  // namespace
