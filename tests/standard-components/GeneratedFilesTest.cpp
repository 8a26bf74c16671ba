// The committed files are exactly what the generator makes: nobody edits
// them by hand or forgets to regenerate after changing the tool.

#include "StandardComponents.h"
#include "StandardComponentsSupport.h"

#include "plist/PropertyList.h"

#include "../support/PlistPrinting.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <set>

namespace {

std::optional<plist::Value> readPlist(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    const QByteArray bytes = file.readAll();
    return plist::read(std::string_view(bytes.constData(), std::size_t(bytes.size())));
}

}  // namespace

TEST(StandardComponentFiles, CommittedFilesAreWhatTheToolWritesNow)
{
    QTemporaryDir temporary;
    ASSERT_TRUE(temporary.isValid());
    QString error;
    ASSERT_TRUE(standardcomponents::writeAll(temporary.path(), &error)) << error.toStdString();

    const QStringList written = QDir(temporary.path()).entryList(QDir::Files, QDir::Name);
    ASSERT_FALSE(written.isEmpty());
    for (const QString& name : written) {
        SCOPED_TRACE(name.toStdString());
        const auto generated = readPlist(QDir(temporary.path()).filePath(name));
        ASSERT_TRUE(generated) << "the tool wrote a file that does not parse";
        const auto committed = readPlist(stdtest::pathOf(name));
        ASSERT_TRUE(committed) << "missing or unreadable in resources/standard-components; "
                                  "run velloran-make-standard-components resources/standard-components";
        EXPECT_EQ(*committed, *generated) << "out of date; run velloran-make-standard-components resources/standard-components";
    }

    // A file the tool no longer makes would still ship and be found by name.
    const std::set<QString> expected(written.begin(), written.end());
    for (const QString& name : QDir(stdtest::folder()).entryList({QStringLiteral("*.qtz"), QStringLiteral("*.plist")}, QDir::Files))
        EXPECT_TRUE(expected.count(name)) << name.toStdString() << " is committed but no longer generated";
}

TEST(StandardComponentFiles, GenerationIsRepeatable)
{
    // Byte-identical output on every run keeps the committed files stable.
    const auto first = standardcomponents::generateAll();
    const auto second = standardcomponents::generateAll();
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].name, second[i].name);
        EXPECT_TRUE(first[i].data == second[i].data) << first[i].name.toStdString();
    }
}
