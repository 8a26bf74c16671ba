#pragma once
// A patch that contains patches: QCPatch and the other macro-capable classes.
// It owns its children, wires their connections and carries the published
// ports through which values cross its boundary.

#include "runtime/Patch.h"

#include <QHash>

namespace runtime {

class MacroPatch : public Patch {
public:
    explicit MacroPatch(const PatchSetup& setup);
    ~MacroPatch() override;

    // A macro renders when any child renders.
    ExecutionMode executionMode() const override;
    void execute(ExecutionContext& context, double time) override;
    MacroPatch* asMacro() override { return this; }
    void reset() override;

    const std::vector<std::unique_ptr<Patch>>& children() const { return children_; }
    Patch* child(const QString& key) const;
    // The child's key must be unique among the children (see uniqueChildKey).
    Patch& addChild(std::unique_ptr<Patch> child);
    // Removes the child and every connection that touches it.
    bool removeChild(const QString& key);
    // "Sprite_1", "Sprite_2", ...: the editor's naming, first free number.
    QString uniqueChildKey(const QString& className) const;

    // Both ports must belong to children of this macro. An input has one
    // source: a new connection replaces the old one.
    bool connect(OutputPort& source, InputPort& destination, QString* error = nullptr);

    InputPort& publishInput(const QString& key, InputPort& childPort);
    OutputPort& publishOutput(const QString& key, OutputPort& childPort);

    // Forget the cached execution mode after the children changed.
    void childrenChanged();
    // Something below this macro changed outside the flow of values along
    // connections (children added or removed, a value set directly on an
    // inner port): this macro and those around it hear of it.
    void contentsChangedBelow();

protected:
    // Called on this macro and each one around it when children come or go
    // anywhere below, for what a subclass works out from its contents.
    virtual void contentsChanged() {}

private:
    std::vector<std::unique_ptr<Patch>> children_;
    QHash<QString, Patch*> byKey_;  // large macros: lookups must not be linear
    mutable int consumerCache_ = -1;  // -1 unknown, else 0/1
};

}  // namespace runtime
