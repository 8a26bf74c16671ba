// A path handed over by a desktop leads to the package that holds it: the
// folder itself, its info file, a picture deep inside, a ".." path; and
// nothing when no package encloses the path.

#include "document/PackageLocation.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

void touch(const QString& path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
}

class PackageLocationTest : public ::testing::Test {
protected:
    PackageLocationTest()
    {
        package = root.filePath(QStringLiteral("Shows/News.composition"));
        touch(package + QStringLiteral("/data.xml"));
        touch(package + QStringLiteral("/CompositionInfo.xml"));
        touch(package + QStringLiteral("/QuickLook/Step-01.jpg"));
    }
    QTemporaryDir root;
    QString package;
};

TEST_F(PackageLocationTest, EveryPathInsideAPackageLeadsToIt)
{
    for (const QString& inside : {QString(), QStringLiteral("/"), QStringLiteral("/data.xml"),
                                  QStringLiteral("/CompositionInfo.xml"), QStringLiteral("/QuickLook"),
                                  QStringLiteral("/QuickLook/Step-01.jpg"), QStringLiteral("/QuickLook/../data.xml")})
        EXPECT_EQ(document::packageContainingPath(package + inside), package) << inside.toStdString();
}

TEST_F(PackageLocationTest, AFolderHoldingAStoreIsAPackageWhateverItsName)
{
    const QString renamed = root.filePath(QStringLiteral("Renamed"));
    touch(renamed + QStringLiteral("/data.xml"));
    touch(renamed + QStringLiteral("/QuickLook/Thumbnail.jpg"));
    EXPECT_EQ(document::packageContainingPath(renamed + QStringLiteral("/QuickLook/Thumbnail.jpg")), renamed);
}

TEST_F(PackageLocationTest, PathsOutsideAnyPackageLeadNowhere)
{
    touch(root.filePath(QStringLiteral("Shows/notes.txt")));
    EXPECT_TRUE(document::packageContainingPath(root.filePath(QStringLiteral("Shows/notes.txt"))).isEmpty());
    EXPECT_TRUE(document::packageContainingPath(root.filePath(QStringLiteral("Shows"))).isEmpty());
    EXPECT_TRUE(document::packageContainingPath(package + QStringLiteral("/missing.xml")).isEmpty());
    EXPECT_TRUE(document::packageContainingPath(QString()).isEmpty());
}

}  // namespace
