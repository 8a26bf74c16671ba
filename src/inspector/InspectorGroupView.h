#pragma once
// One named, collapsible group of the inspector's column: a header that
// folds and unfolds it, over the content of one pane.

#include <QWidget>

class QToolButton;

namespace inspector {

class InspectorGroupView : public QWidget {
    Q_OBJECT
public:
    InspectorGroupView(const QString& title, QWidget* content, QWidget* parent = nullptr);

    QString title() const;
    QWidget* content() const { return content_; }
    QToolButton* header() const { return header_; }
    bool isExpanded() const;
    void setExpanded(bool expanded);

private:
    QToolButton* header_;
    QWidget* content_;
};

}  // namespace inspector
