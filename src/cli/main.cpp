#include "cli/Command.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <cstdio>

int main(int argc, char** argv)
{
    // Rendering needs a GUI application object for fonts and images, but
    // never a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    // People read stderr for problems; progress notes stay out unless asked
    // for with QT_LOGGING_RULES. Which backend draws is said once.
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        QLoggingCategory::setFilterRules(
            QStringLiteral("velloran.*.debug=false\nvelloran.*.info=false\nvelloran.backend.info=true"));
    QStringList args = QCoreApplication::arguments().mid(1);
    QTextStream out(stdout);
    QTextStream err(stderr);
    cli::Streams io{out, err};
    return cli::runCommandLine(args, io);
}
