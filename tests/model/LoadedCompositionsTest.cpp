// Components made from the same file share one loaded composition.

#include "model/LoadedCompositions.h"
#include "model/StandardComponents.h"
#include "runtime/Composition.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

QByteArray standardFile(const char* name)
{
    QFile file(model::StandardComponents::pathForComponent(QString::fromLatin1(name)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

TEST(LoadedCompositions, TheSameBytesInTheSameFolderLoadOnce)
{
    const QByteArray box = standardFile("Box");
    QString error;
    auto first = model::loadSharedComposition(box, QStringLiteral("/a"), &error);
    ASSERT_TRUE(first) << error.toStdString();
    EXPECT_EQ(model::loadSharedComposition(QByteArray(box.constData(), box.size()), QStringLiteral("/a"), &error), first)
        << "equal bytes, not only the same buffer";
    EXPECT_NE(model::loadSharedComposition(box, QStringLiteral("/b"), &error), first)
        << "file references resolve against another folder";
    EXPECT_NE(model::loadSharedComposition(standardFile("Clock"), QStringLiteral("/a"), &error), first);

    const std::weak_ptr<const runtime::Composition> watched = first;
    first.reset();
    EXPECT_TRUE(watched.expired()) << "the cache keeps no composition alive on its own";
    EXPECT_TRUE(model::loadSharedComposition(box, QStringLiteral("/a"), &error)) << "and loads it again when asked";
}

TEST(LoadedCompositions, BadBytesGiveAnErrorAndAreNotRemembered)
{
    QString error;
    EXPECT_FALSE(model::loadSharedComposition(QByteArray("not a property list"), QString(), &error));
    EXPECT_FALSE(error.isEmpty());
}

}  // namespace
