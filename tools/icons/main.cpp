// velloran-make-icons FOLDER SIZE...: writes the application's icon as the
// desktop's icon theme lays it out: FOLDER/hicolor/scalable/apps/NAME.svg
// and FOLDER/hicolor/SIZExSIZE/apps/NAME.png for each size.

#include "widgets/ApplicationArtwork.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgGenerator>
#include <QTextStream>

namespace {

QString iconFolder(const QString& root, const QString& size)
{
    return root + QStringLiteral("/hicolor/") + size + QStringLiteral("/apps");
}

bool writeSvg(const QString& root, QString* error)
{
    const QString folder = iconFolder(root, QStringLiteral("scalable"));
    if (!QDir().mkpath(folder)) {
        *error = QStringLiteral("cannot make %1").arg(folder);
        return false;
    }
    const QString path = folder + QLatin1Char('/') + widgets::ApplicationArtwork::iconName() + QStringLiteral(".svg");
    const int grid = widgets::ApplicationArtwork::kGrid;
    QSvgGenerator svg;
    svg.setFileName(path);
    svg.setSize(QSize(grid, grid));
    svg.setViewBox(QRect(0, 0, grid, grid));
    svg.setTitle(QStringLiteral("Velloran"));
    QPainter painter;
    if (!painter.begin(&svg)) {
        *error = QStringLiteral("cannot write %1").arg(path);
        return false;
    }
    widgets::ApplicationArtwork::draw(painter, grid);
    return painter.end();
}

bool writePng(const QString& root, int side, QString* error)
{
    const QString size = QStringLiteral("%1x%1").arg(side);
    const QString folder = iconFolder(root, size);
    const QString path = folder + QLatin1Char('/') + widgets::ApplicationArtwork::iconName() + QStringLiteral(".png");
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    widgets::ApplicationArtwork::draw(painter, side);
    painter.end();
    if (!QDir().mkpath(folder) || !image.save(path, "PNG")) {
        *error = QStringLiteral("cannot write %1").arg(path);
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    QTextStream err(stderr);
    QList<int> sides;
    for (qsizetype i = 2; i < arguments.size(); ++i) {
        bool ok = false;
        const int side = arguments[i].toInt(&ok);
        if (!ok || side < 1 || side > 1024) {
            err << "velloran-make-icons: not an icon size: " << arguments[i] << "\n";
            return 2;
        }
        sides << side;
    }
    if (arguments.size() < 2 || arguments[1].startsWith(QLatin1Char('-'))) {
        err << "usage: velloran-make-icons FOLDER SIZE...\n";
        return 2;
    }
    QString error;
    bool ok = writeSvg(arguments[1], &error);
    for (int side : sides) ok = ok && writePng(arguments[1], side, &error);
    if (!ok) {
        err << "velloran-make-icons: " << error << "\n";
        return 1;
    }
    return 0;
}
