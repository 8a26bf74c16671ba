#pragma once
// Undo and redo with the semantics editors of our platform expect: actions
// are closures collected in groups, groups nest, one top-level group is one
// step for the user. Undoing a group runs its actions in reverse order; the
// actions they register while undoing form the matching redo group.
//
// With groupsByEvent on (the default in the editor), a registration outside
// any group opens one that closes when control returns to the event loop, so
// everything one user event changes is one step.

#include <QList>
#include <QObject>
#include <QPair>
#include <QSet>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace model {

class UndoManager : public QObject {
    Q_OBJECT
public:
    explicit UndoManager(QObject* parent = nullptr);
    ~UndoManager() override;

    // Grouping.
    void beginUndoGrouping();
    void endUndoGrouping();
    int groupingLevel() const { return int(openGroups_.size()); }
    void setGroupsByEvent(bool on) { groupsByEvent_ = on; }
    bool groupsByEvent() const { return groupsByEvent_; }

    // Registration.
    void registerUndo(std::function<void()> action);
    // The undo of a write of `key` on `object`. Inside an open group only the
    // first write of a key on an object is recorded: its old value is what
    // undo restores, so a drag of any length keeps one entry per object and
    // key. `stillChanged` is asked when the outermost group closes; a write
    // whose value is back where it started leaves no entry.
    void registerUndoForWrite(const void* object, const QString& key, std::function<void()> action,
                              std::function<bool()> stillChanged = {});
    void disableUndoRegistration() { ++disabled_; }
    void enableUndoRegistration()
    {
        if (disabled_ > 0) --disabled_;
    }
    bool isUndoRegistrationEnabled() const { return disabled_ == 0; }
    void setActionName(const QString& name);

    // Undo and redo.
    bool canUndo() const;
    bool canRedo() const { return !redoStack_.empty(); }
    void undo();
    void redo();
    // Undoes what the innermost open group has recorded so far and forgets
    // it, leaving no step: for work cancelled half way.
    void rollBackOpenGroup();
    bool isUndoing() const { return undoing_; }
    bool isRedoing() const { return redoing_; }
    QString undoActionName() const;
    QString redoActionName() const;
    void removeAllActions();
    std::size_t undoCount() const { return undoStack_.size(); }
    // How many actions the step Undo would run holds.
    std::size_t actionCountOfUndoStep() const;

Q_SIGNALS:
    void willUndo();
    void didUndo();
    void willRedo();
    void didRedo();
    void didOpenUndoGroup();
    void didCloseUndoGroup();
    void changed();  // the stacks changed: menus refresh their titles

private:
    struct Action {
        std::function<void()> run;
        std::function<bool()> stillChanged;  // empty: always kept
    };
    struct Group {
        QString name;
        std::vector<Action> actions;
        QSet<QPair<quintptr, QString>> writtenKeys;  // kept by the outermost open group
        QList<QPair<quintptr, QString>> firstWrites;  // the keys first written in this group
        bool automatic = false;
    };
    void closeAutomaticGroup();
    void openAutomaticGroupIfNeeded();
    void append(Action action);
    void runGroup(Group group);

    std::vector<Group> undoStack_;
    std::vector<Group> redoStack_;
    std::vector<Group> openGroups_;
    int disabled_ = 0;
    bool groupsByEvent_ = true;
    bool undoing_ = false;
    bool redoing_ = false;
    bool closePosted_ = false;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

// Opens a group for its lifetime, so early returns close it too.
class UndoGroup {
public:
    explicit UndoGroup(UndoManager& manager, const QString& name = QString()) : manager_(manager)
    {
        manager_.beginUndoGrouping();
        if (!name.isEmpty()) manager_.setActionName(name);
    }
    ~UndoGroup() { manager_.endUndoGrouping(); }
    void rollBack() { manager_.rollBackOpenGroup(); }
    UndoGroup(const UndoGroup&) = delete;
    UndoGroup& operator=(const UndoGroup&) = delete;

private:
    UndoManager& manager_;
};

// Switches registration off for its lifetime (loading, selection clicks).
class UndoRegistrationPause {
public:
    explicit UndoRegistrationPause(UndoManager& manager) : manager_(manager) { manager_.disableUndoRegistration(); }
    ~UndoRegistrationPause() { manager_.enableUndoRegistration(); }
    UndoRegistrationPause(const UndoRegistrationPause&) = delete;
    UndoRegistrationPause& operator=(const UndoRegistrationPause&) = delete;

private:
    UndoManager& manager_;
};

}  // namespace model
