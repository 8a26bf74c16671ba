#pragma once
// A guide line on the canvas.

#include "model/ManagedObject.h"

namespace model {

class Composition;

class Ruler : public ManagedObject {
    Q_OBJECT
public:
    static const EntityDescription& entityDescription();
    explicit Ruler(ObjectStore* store) : ManagedObject(store, entityDescription()) {}

    double position() const { return storedValue(QStringLiteral("position")).toDouble(); }
    void setPosition(double position);
    bool horizontal() const { return storedValue(QStringLiteral("horizontal")).toBool(); }
    void setHorizontal(bool horizontal);
    Composition* composition() const;
};

}  // namespace model
