#include "CommandsFixture.h"

#include "../support/ComponentFiles.h"

#include "model/StandardComponents.h"

#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

using document::Alert;
using model::QuartzComponent;

class MaintenanceCommandsTest : public CommandsFixture {
protected:
    MaintenanceCommandsTest()
    {
        commands.setSaveWithResources([this](const QList<QVariantMap>& copies) {
            saved.append(copies);
            ++saves;
            return true;
        });
    }

    // A component with a file-path attribute naming a file that exists.
    QuartzComponent* addLogo(const QString& fileName = QStringLiteral("logo.png"))
    {
        QuartzComponent* c = addComponent(QStringLiteral("Logo"));
        const QString path = dir.filePath(fileName);
        QFile(path).open(QIODevice::WriteOnly);
        addAttribute(c, QStringLiteral("Logo_File"), model::kTypeFilePath, path);
        return c;
    }

    void saveAs(const QString& relativePath) { composition->setFileURL(QUrl::fromLocalFile(dir.filePath(relativePath))); }

    QTemporaryDir dir;
    QList<QVariantMap> saved;
    int saves = 0;
};

TEST_F(MaintenanceCommandsTest, UnsavedDocumentsAreAskedToSaveFirst)
{
    QuartzComponent* logo = addLogo();
    const QString path = dir.filePath(QStringLiteral("logo.png"));
    startCounting();

    EXPECT_FALSE(commands.hasFileLocation());
    EXPECT_EQ(commands.makePathsRelative(),
              (Alert{QStringLiteral("Save Document"),
                     QStringLiteral("To make paths relative you must first save this document. Please save first and then try again."),
                     {}}));
    EXPECT_EQ(commands.embedResources(),
              (Alert{QStringLiteral("Save Document"),
                     QStringLiteral("To embed resources you must first save this document. Please save first and then try again."),
                     {}}));
    EXPECT_EQ(logo->valueForKey(QStringLiteral("Logo_File")).toString(), path);
    EXPECT_EQ(saves, 0);
    EXPECT_EQ(undoSteps(), 0u);
}

TEST_F(MaintenanceCommandsTest, MakingPathsRelativeListsTheOldPathsAndUndoes)
{
    saveAs(QStringLiteral("Empty.composition"));
    EXPECT_EQ(commands.makePathsRelative(),
              (Alert{QStringLiteral("Make Paths Relative"), QStringLiteral("No paths were found in this composition."),
                     QStringLiteral("relativePaths")}));

    QuartzComponent* logo = addLogo();
    const QString path = dir.filePath(QStringLiteral("logo.png"));
    saveAs(QStringLiteral("Shows/Template.composition"));
    startCounting();
    const Alert alert = commands.makePathsRelative();
    EXPECT_EQ(alert.title, QStringLiteral("Make Paths Relative"));
    EXPECT_EQ(alert.text, QStringLiteral("The following paths in this composition were changed to be relative to the "
                                         "composition's path:\n\n") + path);
    EXPECT_EQ(alert.suppressionKey, QStringLiteral("relativePaths"));
    EXPECT_EQ(logo->valueForKey(QStringLiteral("Logo_File")).toString(), QStringLiteral("../logo.png"));

    EXPECT_EQ(undoSteps(), 1u);
    undo();
    EXPECT_EQ(logo->valueForKey(QStringLiteral("Logo_File")).toString(), path);
}

TEST_F(MaintenanceCommandsTest, EmbeddingSavesTheCopiesAtOnceAndListsTheSources)
{
    saveAs(QStringLiteral("Shows/Template.composition"));
    EXPECT_EQ(commands.embedResources(),
              (Alert{QStringLiteral("Embed Resources"), QStringLiteral("No resources were embedded in this composition."),
                     QStringLiteral("embedResources")}));
    EXPECT_EQ(saves, 0) << "nothing to copy, nothing saved";

    QuartzComponent* logo = addLogo(QStringLiteral("logo.png"));
    QuartzComponent* sting = addLogo(QStringLiteral("sting.mov"));
    addAttribute(sting, QStringLiteral("Missing_File"), model::kTypeFilePath, dir.filePath(QStringLiteral("gone.png")));
    startCounting();
    const Alert alert = commands.embedResources();

    ASSERT_EQ(saves, 1);
    ASSERT_EQ(saved.size(), 2);
    QStringList sources;
    for (const QVariantMap& copy : saved) {
        sources.append(copy.value(QStringLiteral("source")).toString());
        EXPECT_TRUE(copy.value(QStringLiteral("dest")).toString().startsWith(dir.filePath(QStringLiteral("Shows/"))));
    }
    EXPECT_EQ(alert.title, QStringLiteral("Embed Resources"));
    EXPECT_EQ(alert.text, QStringLiteral("The following resources were embedded in the composition document:\n\n") +
                              sources.join(QLatin1Char('\n')));
    EXPECT_EQ(alert.suppressionKey, QStringLiteral("embedResources"));
    EXPECT_EQ(logo->valueForKey(QStringLiteral("Logo_File")).toString(), QStringLiteral("logo.png"));

    EXPECT_EQ(undoSteps(), 1u);
    undo();
    EXPECT_EQ(logo->valueForKey(QStringLiteral("Logo_File")).toString(), dir.filePath(QStringLiteral("logo.png")));
}

TEST_F(MaintenanceCommandsTest, UpgradeListsTheUpgradedComponents)
{
    EXPECT_EQ(commands.upgradeComposition(),
              (Alert{QStringLiteral("Upgrade Components Complete"),
                     QStringLiteral("No components were upgraded in this composition."), QStringLiteral("upgradeComponents")}));

    // Text components made from an older copy of the standard text file.
    QTemporaryDir standard;
    testfiles::writeBoxComposition(QDir(standard.path()), QStringLiteral("Text.qtz"),
                                   {{"QCStringPort", QStringLiteral("Text"), QStringLiteral("Text"), plist::Value("new")}});
    model::StandardComponents::setFolderForTesting(standard.path());
    for (const char* title : {"Headline", "Strap"}) {
        QuartzComponent* c = addComponent(QString::fromLatin1(title));
        c->setCompositionFilename(QStringLiteral("/Applications/Old/Text.qtz"));
    }
    QuartzComponent* box = addComponent(QStringLiteral("Box"));
    box->setCompositionFilename(QStringLiteral("/Applications/Old/Box.qtz"));
    startCounting();

    const Alert alert = commands.upgradeComposition();
    model::StandardComponents::setFolderForTesting(QString());
    EXPECT_EQ(alert.text, QStringLiteral("The following components in this composition were upgraded to newer "
                                         "versions:\n\nHeadline\nStrap"));
    EXPECT_EQ(box->compositionFilename(), QStringLiteral("/Applications/Old/Box.qtz"));
    const QuartzComponent* headline = composition->componentsSortedByZLevel().front();
    EXPECT_EQ(headline->compositionFilename(), standard.filePath(QStringLiteral("Text.qtz")));
    EXPECT_EQ(undoSteps(), 1u);
    undo();
    EXPECT_EQ(headline->compositionFilename(), QStringLiteral("/Applications/Old/Text.qtz"));
}

TEST_F(MaintenanceCommandsTest, CommandsRunByName)
{
    for (const QString& name : document::DocumentCommands::commandNames())
        EXPECT_TRUE(commands.performCommand(name)) << name.toStdString();
    composition->setPlayMode(0);
    EXPECT_FALSE(commands.performCommand(QStringLiteral("jumpToNextKeyframe:")));
    EXPECT_FALSE(commands.performCommand(QStringLiteral("exportQuartzComposition")));

    std::optional<Alert> alert;
    ASSERT_TRUE(commands.performCommand(QStringLiteral("embedResources"), 0, false, &alert));
    ASSERT_TRUE(alert.has_value());
    EXPECT_EQ(alert->title, QStringLiteral("Save Document"));

    QuartzComponent* a = addComponent(QStringLiteral("A"), QRectF(0, 0, 100, 50));
    QuartzComponent* b = addComponent(QStringLiteral("B"), QRectF(300, 200, 100, 50));
    select({b, a});
    ASSERT_TRUE(commands.performCommand(QStringLiteral("alignComponents"), document::kAlignLeft, true, &alert));
    EXPECT_FALSE(alert.has_value());
    EXPECT_EQ(b->originX(), 0) << "the anchor is A, first in the selection's order";
}
