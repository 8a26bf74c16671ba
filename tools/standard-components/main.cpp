// velloran-make-standard-components FOLDER: writes the standard component
// files (resources/standard-components) into FOLDER.

#include "StandardComponents.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    QTextStream err(stderr);
    if (arguments.size() != 2 || arguments[1].startsWith(QLatin1Char('-'))) {
        err << "usage: velloran-make-standard-components FOLDER\n";
        return 2;
    }
    QString error;
    if (!standardcomponents::writeAll(arguments[1], &error)) {
        err << "velloran-make-standard-components: " << error << "\n";
        return 1;
    }
    return 0;
}
