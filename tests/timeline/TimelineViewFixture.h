#pragma once
// The timeline panel on the offscreen platform over a 10-second document at
// 25 frames a second, zoomed to 300 pixels a second (12 pixels a frame) and
// wide enough to show all of it, with a mouse that speaks seconds and rows:
// press(2.5, 1) presses the rows at 2.5 s in the second row. The ruler and
// name-column helpers speak seconds and rows too. Snapshots of the model
// let a test compare the state after a drag, after undo and after redo.

#include "TimelineModelFixture.h"

#include "document/DocumentCommands.h"
#include "model/StopFrame.h"
#include "timeline/TimelinePanel.h"
#include "timeline/TimelinePainter.h"
#include "timeline/VLTimelineRulerView.h"
#include "timeline/VLTimelineScrollView.h"

#include <QMouseEvent>
#include <QTest>

#include <algorithm>

class TimelineViewFixture : public TimelineModelFixture {
protected:
    TimelineViewFixture() : commands(*composition)
    {
        panel.resize(3400, 600);
        panel.setDocument(document.get(), [this] { return &commands; });
        view()->setZoomValue(1.0);
        panel.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&panel));
    }

    timeline::VLTimelineView* view() const { return panel.timelineView(); }
    timeline::TimelineGeometry geometry() const { return view()->timelineGeometry(); }
    QWidget* timeRuler() const { return panel.scrollView()->horizontalRuler()->contentView(); }
    QWidget* nameColumn() const { return panel.scrollView()->verticalRuler()->contentView(); }

    // The point of the rows at `seconds` in `row`, `dx` pixels further.
    QPointF at(double seconds, int row, double dx = 0) const
    {
        const timeline::TimelineGeometry g = geometry();
        return QPointF(g.xPositionAtTime(seconds, false) + dx, g.rowTop(row) + g.rowHeight() / 2);
    }

    void send(QWidget* target, QEvent::Type type, QPointF p, Qt::KeyboardModifiers modifiers = {})
    {
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const Qt::MouseButtons buttons = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(Qt::LeftButton);
        // Sent directly: QTest's mouse moves carry no buttons or modifiers.
        QMouseEvent event(type, p, target->mapToGlobal(p), button, buttons, modifiers);
        QCoreApplication::sendEvent(target, &event);
    }
    void press(QPointF p, Qt::KeyboardModifiers m = {})
    {
        QCoreApplication::processEvents();  // the rows and sizes of the last change
        send(view(), QEvent::MouseButtonPress, p, m);
    }
    void dragTo(QPointF p, Qt::KeyboardModifiers m = {}) { send(view(), QEvent::MouseMove, p, m); }
    void release(QPointF p, Qt::KeyboardModifiers m = {}) { send(view(), QEvent::MouseButtonRelease, p, m); }
    void click(QPointF p, Qt::KeyboardModifiers m = {})
    {
        press(p, m);
        release(p, m);
    }
    // A drag in one movement, as a quick hand makes it.
    void drag(QPointF from, QPointF to, Qt::KeyboardModifiers m = {})
    {
        press(from, m);
        dragTo(to, m);
        release(to, m);
    }

    int rowOf(const model::Attribute* attribute) const
    {
        const timeline::TimelineRows& rows = view()->rows();
        for (int i = 0; i < rows.count(); ++i)
            if (rows.row(i)->attribute == attribute) return i;
        ADD_FAILURE() << "no row shows the attribute";
        return -1;
    }

    int rowOf(const model::QuartzComponent* component) const { return view()->rows().rowOfComponent(component); }

    // The time ruler: below the stop-frame strip, or in it.
    QPointF rulerAt(double seconds) const
    {
        return QPointF(geometry().xPositionAtTime(seconds, true), timeRuler()->height() - 4);
    }
    QPointF stopStripAt(double seconds) const { return QPointF(geometry().xPositionAtTime(seconds, true), 3); }
    // The centre of a stop-frame button in the ruler's corner.
    QPointF cornerButton(int action) const
    {
        const auto buttons = timeline::VLTimelineControlButtons::stopFrameButtons();
        const QRectF r = buttons.rectInView(timeRuler()->size(), view()->metrics().componentsWidth);
        const double x = action == timeline::VLTimelineControlButtons::kPrevious ? buttons.previousOffset().x() + 4
                         : action == timeline::VLTimelineControlButtons::kNext ? buttons.nextOffset().x() + 4
                                                                                : buttons.middleOffset().x() + 6;
        return QPointF(r.x() + x, r.center().y());
    }
    void pressRuler(QPointF p) { send(timeRuler(), QEvent::MouseButtonPress, p); }
    void dragRulerTo(QPointF p) { send(timeRuler(), QEvent::MouseMove, p); }
    void releaseRuler(QPointF p) { send(timeRuler(), QEvent::MouseButtonRelease, p); }

    // The name column: a point of row `row`, `x` points from its left.
    QPointF nameAt(int row, double x) const
    {
        return QPointF(x, geometry().rowTop(row) + geometry().rowHeight() / 2);
    }
    // The centre of a keyframe button of an attribute row.
    QPointF keyframeButton(int row, int action) const
    {
        const auto buttons = timeline::VLTimelineControlButtons::keyframeButtons();
        const QRectF r = buttons.rectInRect(
            timeline::TimelinePainter::nameRowRect(geometry(), row, view()->metrics().componentsWidth, 0));
        const double x = action == timeline::VLTimelineControlButtons::kPrevious ? buttons.previousOffset().x() + 4
                         : action == timeline::VLTimelineControlButtons::kNext ? buttons.nextOffset().x() + 4
                                                                                : buttons.middleOffset().x() + 6;
        return QPointF(r.x() + x, r.center().y());
    }
    void hoverName(QPointF p)
    {
        QMouseEvent event(QEvent::MouseMove, p, nameColumn()->mapToGlobal(p), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(nameColumn(), &event);
    }
    void clickName(QPointF p, Qt::KeyboardModifiers m = {})
    {
        hoverName(p);
        send(nameColumn(), QEvent::MouseButtonPress, p, m);
        send(nameColumn(), QEvent::MouseButtonRelease, p, m);
    }

    void key(int k, Qt::KeyboardModifiers m = {}) { QTest::keyClick(view(), Qt::Key(k), m); }

    // Undo steps left behind by what a test did since startCounting().
    std::size_t steps()
    {
        QCoreApplication::processEvents();
        return undoManager().undoCount();
    }

    // Everything a timeline edit can change: spans, keyframes with their
    // values, stop frames.
    QString snapshot() const
    {
        QStringList lines;
        for (const model::QuartzComponent* c : composition->componentsSortedByInverseZLevel()) {
            QString line = QStringLiteral("%1 [%2, %3]").arg(c->title()).arg(c->startTime()).arg(c->endTime());
            for (const model::Attribute* a : c->attributes()) {
                if (!a->animateable()) continue;
                line += QStringLiteral(" %1:").arg(a->key());
                const model::KeyframeValues& keys = a->keyframes();
                for (auto it = keys.begin(); it != keys.end(); ++it)
                    line += QStringLiteral(" %1=%2").arg(it.key()).arg(it.value().toString());
            }
            lines << line;
        }
        QStringList stops;
        for (double t : composition->stopFrameTimepoints()) stops << QString::number(t);
        lines << QStringLiteral("stops: ") + stops.join(QLatin1Char(' '));
        return lines.join(QLatin1Char('\n'));
    }

    // The drag just made is one step, and undo then redo gives back the
    // dragged state exactly.
    void expectOneUndoableStep(const QString& before)
    {
        const QString after = snapshot();
        EXPECT_NE(after, before) << "the drag changed nothing";
        ASSERT_EQ(steps(), 1u) << "a drag is one undo step";
        undoManager().undo();
        QCoreApplication::processEvents();
        EXPECT_EQ(snapshot().toStdString(), before.toStdString()) << "undo gives back the state before";
        undoManager().redo();
        QCoreApplication::processEvents();
        EXPECT_EQ(snapshot().toStdString(), after.toStdString()) << "redo gives back the dragged state";
    }

    std::vector<double> selectedTimes(const model::Attribute* a) const
    {
        std::vector<double> times(a->selectedTimepoints().begin(), a->selectedTimepoints().end());
        std::sort(times.begin(), times.end());
        return times;
    }

    document::DocumentCommands commands;
    timeline::TimelinePanel panel;
};
