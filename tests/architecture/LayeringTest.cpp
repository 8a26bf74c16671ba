// The modules of src/ include only what they may: the arrows of the design,
// followed transitively. The libraries below the editor never include a
// widget header or read the application's palette, so they run headless.

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QTextStream>

#include <gtest/gtest.h>

namespace {

// What each module may include directly.
const QMap<QString, QStringList> kArrows{
    {QStringLiteral("plist"), {}},
    {QStringLiteral("quartz"), {QStringLiteral("plist")}},
    {QStringLiteral("runtime"), {QStringLiteral("plist"), QStringLiteral("quartz")}},
    {QStringLiteral("rtf"), {}},
    {QStringLiteral("psd"), {}},
    {QStringLiteral("model"), {QStringLiteral("quartz"), QStringLiteral("runtime"), QStringLiteral("plist"), QStringLiteral("rtf")}},
    {QStringLiteral("document"), {QStringLiteral("model"), QStringLiteral("quartz"), QStringLiteral("runtime"), QStringLiteral("psd")}},
    {QStringLiteral("cli"), {QStringLiteral("document"), QStringLiteral("playout")}},
    {QStringLiteral("widgets"), {QStringLiteral("model")}},
    {QStringLiteral("canvas"), {QStringLiteral("document"), QStringLiteral("widgets")}},
    {QStringLiteral("timeline"), {QStringLiteral("document"), QStringLiteral("widgets")}},
    {QStringLiteral("inspector"), {QStringLiteral("document"), QStringLiteral("widgets")}},
    {QStringLiteral("playout"), {QStringLiteral("document"), QStringLiteral("runtime")}},
    {QStringLiteral("preview"), {QStringLiteral("playout"), QStringLiteral("widgets")}},
    {QStringLiteral("app"), {QStringLiteral("canvas"), QStringLiteral("timeline"), QStringLiteral("inspector"), QStringLiteral("preview"),
                             QStringLiteral("cli")}},
};

// Modules that must run without a screen.
const QStringList kHeadless{QStringLiteral("plist"), QStringLiteral("quartz"), QStringLiteral("runtime"), QStringLiteral("rtf"),
                            QStringLiteral("psd"),   QStringLiteral("model"),  QStringLiteral("document"), QStringLiteral("cli"),
                            QStringLiteral("playout")};

QSet<QString> reachable(const QString& module)
{
    QSet<QString> seen{module};
    QStringList todo{module};
    while (!todo.isEmpty())
        for (const QString& next : kArrows.value(todo.takeLast()))
            if (!seen.contains(next)) {
                seen.insert(next);
                todo.append(next);
            }
    return seen;
}

struct Include {
    QString file;
    int line;
    QString text;
};

std::vector<Include> includesOf(const QString& directory)
{
    static const QRegularExpression include(QStringLiteral(R"(^\s*#\s*include\s*([<"][^>"]+[>"]))"));
    std::vector<Include> found;
    QDirIterator it(directory, {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) continue;
        QTextStream in(&file);
        for (int line = 1; !in.atEnd(); ++line) {
            const QString text = in.readLine();
            const auto match = include.match(text);
            if (match.hasMatch()) found.push_back({path, line, match.captured(1)});
        }
    }
    return found;
}

QString sourceDir() { return QStringLiteral(VELLORAN_SOURCE_DIR "/src"); }

QStringList modules() { return QDir(sourceDir()).entryList(QDir::Dirs | QDir::NoDotAndDotDot); }

}  // namespace

TEST(Layering, EveryModuleIsKnown)
{
    for (const QString& module : modules()) EXPECT_TRUE(kArrows.contains(module)) << module.toStdString() << " needs its arrows here";
}

TEST(Layering, ModulesIncludeOnlyWhatTheirArrowsReach)
{
    for (const QString& module : modules()) {
        if (module == QLatin1String("app")) continue;  // the application may use everything
        const QSet<QString> allowed = reachable(module);
        for (const Include& inc : includesOf(sourceDir() + QLatin1Char('/') + module)) {
            if (!inc.text.startsWith(QLatin1Char('"'))) continue;
            const QString target = inc.text.mid(1).section(QLatin1Char('/'), 0, 0);
            if (!kArrows.contains(target)) continue;  // a file of the same folder
            EXPECT_TRUE(allowed.contains(target)) << inc.file.toStdString() << ":" << inc.line << " includes " << inc.text.toStdString();
        }
    }
}

TEST(Layering, HeadlessModulesUseNoWidgetsAndNoPalette)
{
    const QSet<QString> widgetHeaders = [] {
        const QStringList names = QDir(QStringLiteral(VELLORAN_QTWIDGETS_HEADERS)).entryList(QDir::Files);
        return QSet<QString>(names.begin(), names.end());
    }();
    ASSERT_TRUE(widgetHeaders.contains(QStringLiteral("QWidget")));
    static const QRegularExpression palette(QStringLiteral(R"(\b(QGuiApplication|QApplication)::palette\b|\bqApp\s*->\s*palette\b)"));
    for (const QString& module : kHeadless) {
        const QString directory = sourceDir() + QLatin1Char('/') + module;
        for (const Include& inc : includesOf(directory)) {
            const QString header = inc.text.mid(1, inc.text.size() - 2).section(QLatin1Char('/'), -1);
            EXPECT_FALSE(inc.text.startsWith(QLatin1Char('<')) && (widgetHeaders.contains(header) || inc.text.contains(QLatin1String("QtWidgets"))))
                << inc.file.toStdString() << ":" << inc.line << " includes the widget header " << inc.text.toStdString();
        }
        QDirIterator it(directory, {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
            EXPECT_FALSE(palette.match(QString::fromUtf8(file.readAll())).hasMatch())
                << file.fileName().toStdString() << " reads the application palette";
        }
    }
}
