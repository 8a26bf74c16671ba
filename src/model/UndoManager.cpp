#include "model/UndoManager.h"

#include <QLoggingCategory>
#include <QMetaObject>

namespace model {

Q_LOGGING_CATEGORY(lcUndo, "velloran.undo")

UndoManager::UndoManager(QObject* parent) : QObject(parent) {}

UndoManager::~UndoManager() { *alive_ = false; }

void UndoManager::beginUndoGrouping()
{
    openGroups_.push_back(Group{});
    Q_EMIT didOpenUndoGroup();
}

void UndoManager::endUndoGrouping()
{
    if (openGroups_.empty()) {
        qCWarning(lcUndo) << "endUndoGrouping without an open group";
        return;
    }
    Group group = std::move(openGroups_.back());
    openGroups_.pop_back();
    Q_EMIT didCloseUndoGroup();
    if (!openGroups_.empty()) {
        // A nested group is part of its parent: undoing the parent undoes it.
        Group& parent = openGroups_.back();
        for (auto& action : group.actions) parent.actions.push_back(std::move(action));
        if (parent.name.isEmpty()) parent.name = group.name;
        return;
    }
    // Writes that ended where they began change nothing: no entry, and a
    // group of nothing but those is no step (a drag back to its start).
    std::erase_if(group.actions, [](const Action& a) { return a.stillChanged && !a.stillChanged(); });
    if (group.actions.empty()) return;
    if (undoing_) {
        redoStack_.push_back(std::move(group));
    } else {
        if (!redoing_) redoStack_.clear();
        undoStack_.push_back(std::move(group));
    }
    Q_EMIT changed();
}

void UndoManager::openAutomaticGroupIfNeeded()
{
    if (!openGroups_.empty() || !groupsByEvent_ || undoing_ || redoing_) return;
    beginUndoGrouping();
    openGroups_.back().automatic = true;
    if (closePosted_) return;
    closePosted_ = true;
    std::weak_ptr<bool> alive = alive_;
    QMetaObject::invokeMethod(
        this,
        [this, alive] {
            if (alive.expired()) return;
            closePosted_ = false;
            closeAutomaticGroup();
        },
        Qt::QueuedConnection);
}

void UndoManager::append(Action action)
{
    if (openGroups_.empty()) {
        // Without grouping by event, each registration outside a group is a step.
        beginUndoGrouping();
        openGroups_.back().actions.push_back(std::move(action));
        endUndoGrouping();
        return;
    }
    openGroups_.back().actions.push_back(std::move(action));
}

void UndoManager::registerUndo(std::function<void()> action)
{
    if (!isUndoRegistrationEnabled() || !action) return;
    openAutomaticGroupIfNeeded();
    append({std::move(action), {}});
}

void UndoManager::registerUndoForWrite(const void* object, const QString& key, std::function<void()> action,
                                       std::function<bool()> stillChanged)
{
    if (!isUndoRegistrationEnabled() || !action) return;
    openAutomaticGroupIfNeeded();
    if (!openGroups_.empty()) {
        auto& written = openGroups_.front().writtenKeys;
        const QPair<quintptr, QString> id(quintptr(object), key);
        if (written.contains(id)) return;  // the first old value stands
        written.insert(id);
        openGroups_.back().firstWrites.append(id);
    }
    append({std::move(action), std::move(stillChanged)});
}

std::size_t UndoManager::actionCountOfUndoStep() const
{
    if (openGroups_.size() == 1 && openGroups_.front().automatic && !openGroups_.front().actions.empty())
        return openGroups_.front().actions.size();
    return undoStack_.empty() ? 0 : undoStack_.back().actions.size();
}

void UndoManager::closeAutomaticGroup()
{
    if (openGroups_.size() == 1 && openGroups_.front().automatic) endUndoGrouping();
}

void UndoManager::setActionName(const QString& name)
{
    if (!openGroups_.empty())
        openGroups_.back().name = name;
    else if (!undoStack_.empty())
        undoStack_.back().name = name;
    Q_EMIT changed();
}

bool UndoManager::canUndo() const
{
    if (!undoStack_.empty()) return true;
    return openGroups_.size() == 1 && openGroups_.front().automatic && !openGroups_.front().actions.empty();
}

QString UndoManager::undoActionName() const
{
    if (openGroups_.size() == 1 && openGroups_.front().automatic && !openGroups_.front().actions.empty())
        return openGroups_.front().name;
    return undoStack_.empty() ? QString() : undoStack_.back().name;
}

QString UndoManager::redoActionName() const { return redoStack_.empty() ? QString() : redoStack_.back().name; }

void UndoManager::runGroup(Group group)
{
    // Actions run newest first; what they register becomes the opposite step.
    beginUndoGrouping();
    openGroups_.back().name = group.name;
    for (auto it = group.actions.rbegin(); it != group.actions.rend(); ++it) it->run();
    endUndoGrouping();
}

void UndoManager::undo()
{
    closeAutomaticGroup();
    if (!openGroups_.empty()) {
        qCWarning(lcUndo) << "undo while a group is open is ignored";
        return;
    }
    if (undoStack_.empty()) return;
    Q_EMIT willUndo();
    Group group = std::move(undoStack_.back());
    undoStack_.pop_back();
    undoing_ = true;
    runGroup(std::move(group));
    undoing_ = false;
    Q_EMIT didUndo();
    Q_EMIT changed();
}

void UndoManager::rollBackOpenGroup()
{
    if (openGroups_.empty()) return;
    Group& group = openGroups_.back();
    std::vector<Action> actions = std::move(group.actions);
    group.actions.clear();
    // The keys count as unwritten again, so that a later write in an outer
    // group still records the value they are back to.
    for (const auto& id : std::as_const(group.firstWrites)) openGroups_.front().writtenKeys.remove(id);
    group.firstWrites.clear();
    disableUndoRegistration();
    for (auto it = actions.rbegin(); it != actions.rend(); ++it) it->run();
    enableUndoRegistration();
}

void UndoManager::redo()
{
    closeAutomaticGroup();
    if (!openGroups_.empty() || redoStack_.empty()) return;
    Q_EMIT willRedo();
    Group group = std::move(redoStack_.back());
    redoStack_.pop_back();
    redoing_ = true;
    runGroup(std::move(group));
    redoing_ = false;
    Q_EMIT didRedo();
    Q_EMIT changed();
}

void UndoManager::removeAllActions()
{
    undoStack_.clear();
    redoStack_.clear();
    openGroups_.clear();
    Q_EMIT changed();
}

}  // namespace model
