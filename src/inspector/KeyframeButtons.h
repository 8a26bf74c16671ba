#pragma once
// The keyframe buttons beside an animateable row: go to the previous
// keyframe, add or remove the keyframe at the playhead, go to the next one.
// They act on the row's attribute in every selected component. The middle
// button is the mark too: a filled diamond when the value at the playhead
// is a keyframe, a hollow one when it is not.

#include <QPointer>
#include <QWidget>

#include <vector>

class QToolButton;

namespace model {
class Attribute;
class Composition;
class UndoManager;
}  // namespace model

namespace inspector {

class KeyframeButtons : public QWidget {
    Q_OBJECT
public:
    KeyframeButtons(model::Composition& composition, model::UndoManager& undo,
                    const std::vector<model::Attribute*>& attributes, QWidget* parent = nullptr);
    ~KeyframeButtons() override;

    QToolButton* previousButton() const { return previous_; }
    QToolButton* keyButton() const { return key_; }
    QToolButton* nextButton() const { return next_; }
    // A keyframe of any of the attributes sits at the playhead.
    bool keyframeAtPlayhead() const;

    void goToPrevious();
    void toggleKeyframe();
    void goToNext();
    // Enables the buttons and draws the mark for the playhead.
    void updateFlags();

private:
    std::vector<model::Attribute*> liveAttributes() const;

    QPointer<model::Composition> composition_;
    model::UndoManager& undo_;
    std::vector<QPointer<model::Attribute>> attributes_;
    QToolButton* previous_;
    QToolButton* key_;
    QToolButton* next_;
};

}  // namespace inspector
