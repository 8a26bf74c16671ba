#pragma once
// A row of joined icon buttons, each with a tag: the toolbar's align and
// distribute controls.

#include <QIcon>
#include <QString>
#include <QWidget>

#include <vector>

class QToolButton;

namespace widgets {

class VLSegmentedControl : public QWidget {
    Q_OBJECT
public:
    struct Segment {
        int tag;
        QIcon icon;
        QString toolTip;
    };
    explicit VLSegmentedControl(const std::vector<Segment>& segments, QWidget* parent = nullptr);

    QToolButton* buttonForTag(int tag) const;

Q_SIGNALS:
    void segmentTriggered(int tag);

private:
    std::vector<std::pair<int, QToolButton*>> buttons_;
};

}  // namespace widgets
