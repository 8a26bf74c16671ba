#include "app/EditorStyle.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace app {

void applyEditorStyle(QApplication& application)
{
    application.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette p;
    const QColor window(0x2d, 0x2e, 0x32), base(0x1f, 0x20, 0x23), text(0xdd, 0xde, 0xe1);
    const QColor disabledText(0x7a, 0x7c, 0x82), highlight(0x2f, 0x86, 0xe0);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window.lighter(110));
    p.setColor(QPalette::ToolTipBase, QColor(0x3a, 0x3b, 0x40));
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, disabledText);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0x3a, 0x3b, 0x40));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, Qt::white);
    p.setColor(QPalette::Light, window.lighter(150));
    p.setColor(QPalette::Midlight, window.lighter(125));
    p.setColor(QPalette::Mid, window.darker(130));
    p.setColor(QPalette::Dark, QColor(0x18, 0x19, 0x1b));  // the canvas backdrop
    p.setColor(QPalette::Shadow, Qt::black);
    p.setColor(QPalette::Highlight, highlight);
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, highlight.lighter(120));
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, disabledText);
    p.setColor(QPalette::Disabled, QPalette::Highlight, window.lighter(130));
    application.setPalette(p);
}

}  // namespace app
