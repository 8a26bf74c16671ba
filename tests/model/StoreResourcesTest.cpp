// Large pictures live beside the store as files named by their content:
// written once, read back exactly, removed when no longer used, and never
// looked for outside the package.

#include "ModelFixture.h"

#include "model/StoreFile.h"
#include "model/StoreResources.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QRandomGenerator>
#include <QTemporaryDir>

using namespace model;

namespace {

// Noise does not compress: the picture stays large as TIFF.
QImage noise(int size, quint32 seed)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    QRandomGenerator random(seed);
    for (int y = 0; y < size; ++y) {
        auto* row = reinterpret_cast<quint32*>(image.scanLine(y));
        for (int x = 0; x < size; ++x) row[x] = random.generate() | 0xff000000u;
    }
    return image;
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

class StoreResourcesTest : public ModelFixture {
protected:
    StoreResourcesTest() { storePath = QDir(dir.path()).filePath(QStringLiteral("data.xml")); }
    QStringList imageFiles() const { return QDir(QDir(dir.path()).filePath(QStringLiteral("Images"))).entryList(QDir::Files); }
    bool save()
    {
        QString error;
        const bool ok = StoreFile::writeToFile(store, storePath, &error);
        EXPECT_TRUE(ok) << error.toStdString();
        return ok;
    }

    QTemporaryDir dir;
    QString storePath;
};

TEST_F(StoreResourcesTest, LargePicturesAreFilesBesideTheStoreAndReadBackExactly)
{
    QuartzComponent* c = addComponent(QStringLiteral("Logo"));
    const QImage big = noise(200, 1);
    Attribute* picture = addAttribute(c, QStringLiteral("Image"), kTypeImage, big);
    addAttribute(c, QStringLiteral("Small"), kTypeImage, noise(8, 2));
    ASSERT_TRUE(save());

    ASSERT_EQ(imageFiles().size(), 1) << "the small picture stays inside the store";
    const QByteArray xml = readAll(storePath);
    EXPECT_TRUE(xml.contains("type=\"tiff-file\">Images/"));
    EXPECT_LT(xml.size(), 40 * 1024) << "the store holds no base64 of the large picture";

    const LoadedStore loaded = StoreFile::readFile(storePath);
    ASSERT_TRUE(loaded) << loaded.error.toStdString();
    const QImage back = loaded.composition->componentArray().front()->attributeForKey(QStringLiteral("Image"))->currentValue().value<QImage>();
    EXPECT_EQ(back.convertToFormat(QImage::Format_ARGB32_Premultiplied), big);

    // Saved again unchanged: the same file, not written anew.
    const QString file = QDir(dir.path()).filePath(QStringLiteral("Images/") + imageFiles().front());
    const QDateTime longAgo = QDateTime::currentDateTime().addYears(-1);
    {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::ReadWrite));
        ASSERT_TRUE(f.setFileTime(longAgo, QFileDevice::FileModificationTime));
    }
    ASSERT_TRUE(save());
    EXPECT_LT(QFileInfo(file).lastModified(), QDateTime::currentDateTime().addDays(-1)) << "a rewrite would have made it new";

    // A new picture replaces the file; the old one goes once the store is in place.
    picture->setCurrentValue(noise(200, 3));
    ASSERT_TRUE(save());
    ASSERT_EQ(imageFiles().size(), 1);
    EXPECT_FALSE(QFileInfo::exists(file));
}

TEST_F(StoreResourcesTest, AMissingFileIsAnErrorNamingThePictureAndARepairDropsIt)
{
    QuartzComponent* c = addComponent(QStringLiteral("Logo"));
    addAttribute(c, QStringLiteral("Image"), kTypeImage, noise(200, 4));
    ASSERT_TRUE(save());
    ASSERT_TRUE(QFile::remove(QDir(dir.path()).filePath(QStringLiteral("Images/") + imageFiles().front())));

    const LoadedStore strict = StoreFile::readFile(storePath);
    ASSERT_FALSE(strict);
    EXPECT_TRUE(strict.error.contains(QLatin1String("\"Image\""))) << strict.error.toStdString();
    EXPECT_TRUE(strict.error.contains(QLatin1String("cannot be read"))) << strict.error.toStdString();

    const LoadedStore repaired = StoreFile::readFile(storePath, StoreReadMode::DropUnreadable);
    ASSERT_TRUE(repaired) << repaired.error.toStdString();
    EXPECT_EQ(repaired.dropped.size(), 1);
    EXPECT_EQ(repaired.composition->componentArray().size(), 1u);
}

TEST_F(StoreResourcesTest, NamesOutsideThePackageAreRefused)
{
    QuartzComponent* c = addComponent(QStringLiteral("Logo"));
    addAttribute(c, QStringLiteral("Image"), kTypeImage, noise(200, 5));
    ASSERT_TRUE(save());
    QByteArray xml = readAll(storePath);
    const qsizetype at = xml.indexOf("Images/");
    xml.replace(at, 7 + 32 + 5, "../../../etc/passwd");
    const StoreResources resources(dir.path());
    const LoadedStore loaded = StoreFile::read(xml, StoreReadMode::Strict, &resources);
    ASSERT_FALSE(loaded);
    EXPECT_TRUE(loaded.error.contains(QLatin1String("not the name of a file of the package"))) << loaded.error.toStdString();

    const LoadedStore withoutPackage = StoreFile::read(readAll(storePath));
    ASSERT_FALSE(withoutPackage) << "a store read from bytes alone has no files beside it";
    EXPECT_TRUE(withoutPackage.error.contains(QLatin1String("without its package"))) << withoutPackage.error.toStdString();
}

TEST_F(StoreResourcesTest, FilesThatAreNotOursAreLeftAlone)
{
    ASSERT_TRUE(QDir(dir.path()).mkpath(QStringLiteral("Images")));
    QFile mine(QDir(dir.path()).filePath(QStringLiteral("Images/notes.txt")));
    ASSERT_TRUE(mine.open(QIODevice::WriteOnly));
    mine.close();
    addComponent(QStringLiteral("Plain"));
    ASSERT_TRUE(save());
    EXPECT_TRUE(mine.exists());
}
