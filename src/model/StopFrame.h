#pragma once
// A point on the timeline where playout holds until a trigger arrives.

#include "model/ManagedObject.h"

namespace model {

class Composition;

class StopFrame : public ManagedObject {
    Q_OBJECT
public:
    static const EntityDescription& entityDescription();
    explicit StopFrame(ObjectStore* store) : ManagedObject(store, entityDescription()) {}

    double timepoint() const { return storedValue(QStringLiteral("timepoint")).toDouble(); }
    void setTimepoint(double t);
    QString triggerInformation() const { return storedValue(QStringLiteral("triggerInformation")).toString(); }
    void setTriggerInformation(const QString& name);
    Composition* composition() const;
    // Equal to the hundredth of a second.
    bool isTimepoint(double t) const;
    // {"name", "time"}: the form the export and the preview use.
    QVariantMap dictionary() const;
};

}  // namespace model
