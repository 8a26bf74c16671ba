#include "app/WindowScreenshot.h"

#include "model/Composition.h"
#include "model/QuartzComponent.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPixmap>
#include <QThread>
#include <QWidget>
#include <QWindow>

#include <algorithm>

namespace app {

bool saveWindowScreenshot(QWidget* window, const QString& path, int timeoutMs, const QString& part)
{
    if (!window) return false;
    window->show();
    QElapsedTimer clock;
    clock.start();
    // The first resize reaches the scroll view only once the platform has
    // mapped the window; before that the canvas has not been fitted.
    while (!(window->windowHandle() && window->windowHandle()->isExposed()) && clock.elapsed() < timeoutMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
    // Let the layout requests and resizes posted by showing run to the end.
    for (int round = 0; round < 5; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    // Rendering paints every widget afresh, so nothing depends on whether
    // the screen has been painted yet.
    QWidget* shown = part.isEmpty() ? window : window->findChild<QWidget*>(part);
    if (!shown) return false;
    return shown->grab().save(path, "PNG");
}

bool selectComponentsWithTitles(model::Composition& composition, const QStringList& titles, QString* missing)
{
    const std::vector<model::QuartzComponent*> all = composition.componentArray();
    for (const QString& title : titles) {
        const bool found = std::any_of(all.begin(), all.end(), [&](const model::QuartzComponent* c) { return c->title() == title; });
        if (!found) {
            if (missing) *missing = title;
            return false;
        }
    }
    composition.clearSelection();
    for (model::QuartzComponent* c : all)
        if (titles.contains(c->title())) c->setSelected(true);
    return true;
}

}  // namespace app
