// Photoshop files in a drop: imported layer by layer when nobody takes them
// over (the command line), handed over when the editor asks for them, and
// flat with the Command key.
#include "CommandsFixture.h"

#include "document/ComponentDrop.h"
#include "model/StandardComponents.h"
#include "psd/PSDLayerImporter.h"

namespace {

const QString kLayered = QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/psd/agpsd_rgb8_zip.psd");

QStringList titles(const std::vector<model::QuartzComponent*>& components)
{
    QStringList list;
    for (const model::QuartzComponent* c : components) list << c->title();
    return list;
}

}  // namespace

class ComponentDropTest : public CommandsFixture {};

TEST_F(ComponentDropTest, WithoutATakerEveryVisibleLayerComesInBottomFirst)
{
    const document::DropResult result = document::addComponentsFromPaths(*composition, {kLayered});
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.componentsAdded, 6);
    const QStringList got = titles(composition->componentsSortedByZLevel());
    ASSERT_EQ(got.size(), 6);
    EXPECT_EQ(got.front(), QStringLiteral("Background - agpsd_rgb8_zip"));
    EXPECT_EQ(got.back(), QStringLiteral("Ünïcødé ✓ 日本 - agpsd_rgb8_zip"));
    EXPECT_FALSE(got.contains(QStringLiteral("Hidden - agpsd_rgb8_zip")));
}

TEST_F(ComponentDropTest, ATakerGetsTheFileAndTheImageComponentInstead)
{
    QStringList handed;
    const document::DropResult result = document::addComponentsFromPaths(
        *composition, {kLayered}, false,
        [&](const QString& psdPath, const QString& componentFile) { handed << psdPath << componentFile; });
    EXPECT_EQ(result.componentsAdded, 0);
    EXPECT_TRUE(composition->componentArray().empty());
    const QString imageComponent = model::StandardComponents::pathForComponent(QStringLiteral("ImageComponent"));
    EXPECT_EQ(handed, (QStringList{kLayered, imageComponent}));
}

TEST_F(ComponentDropTest, TheCommandKeyKeepsTheFileFlatAndFromTheTaker)
{
    bool handed = false;
    const document::DropResult result = document::addComponentsFromPaths(
        *composition, {kLayered}, true, [&](const QString&, const QString&) { handed = true; });
    EXPECT_FALSE(handed);
    EXPECT_EQ(result.componentsAdded, 1);
    ASSERT_EQ(composition->componentArray().size(), 1u);
    EXPECT_EQ(composition->componentArray().front()->width(), 24);
}

TEST_F(ComponentDropTest, TheCombinedPictureIsTitledWithTheFileAtTheOrigin)
{
    const auto importer = psd::PSDLayerImporter::fromPath(kLayered, false);
    ASSERT_TRUE(importer);
    const QString imageComponent = model::StandardComponents::pathForComponent(QStringLiteral("ImageComponent"));
    model::QuartzComponent* c = document::importCombinedPSDImage(*composition, *importer, imageComponent);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->title(), QStringLiteral("agpsd_rgb8_zip"));
    EXPECT_EQ(QPointF(c->originX(), c->originY()), QPointF(0, 0));
    const QString missing = QStringLiteral("/nonexistent/Image.qtz");
    EXPECT_EQ(document::importCombinedPSDImage(*composition, *importer, missing), nullptr);
    EXPECT_EQ(composition->componentArray().size(), 1u);
}
