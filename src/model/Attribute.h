#pragma once
// One editable input of a component: a published input of its composition
// file, or one of the editor's own settings (margins, visibility). Its value
// is a constant or keyframes on the composition timeline; its type decides
// how it is edited, animated and exported.

#include "model/AttributeTypes.h"
#include "model/KeyframeValues.h"
#include "model/ManagedObject.h"
#include "plist/Value.h"

#include <QStringList>

namespace runtime {
class Renderer;
}

namespace model {

class QuartzComponent;

// Keys of the port-attribute dictionary a component hands to createFromPort.
struct PortInfoKeys {
    static inline const QString key = QStringLiteral("key");
    static inline const QString name = QStringLiteral("name");
    static inline const QString type = QStringLiteral("type");
    static inline const QString menuItems = QStringLiteral("menuItems");
};

class Attribute : public ManagedObject {
    Q_OBJECT
public:
    static const EntityDescription& entityDescription();
    explicit Attribute(ObjectStore* store);

    // Creation.
    static Attribute* createFromPort(ObjectStore* store, const QVariantMap& info, const QVariant& value);
    static Attribute* create(ObjectStore* store, const QString& key, const QString& label, int type, const QVariant& value);
    static Attribute* createFromDictionary(ObjectStore* store, const QVariantMap& dictionary);

    // Stored properties.
    QString key() const { return storedValue(QStringLiteral("key")).toString(); }
    void setKey(const QString& key) { setStoredValue(QStringLiteral("key"), key); }
    QString label() const { return storedValue(QStringLiteral("label")).toString(); }
    void setLabel(const QString& label) { setStoredValue(QStringLiteral("label"), label); }
    QString title() const { return label(); }
    bool quartzAttribute() const { return storedValue(QStringLiteral("quartzAttribute")).toBool(); }
    void setQuartzAttribute(bool on) { setStoredValue(QStringLiteral("quartzAttribute"), on); }
    bool animateable() const { return storedValueAt(animateableIndex()).toBool(); }
    void setAnimateable(bool on);
    bool permissionToChange() const { return storedValue(QStringLiteral("permissionToChange")).toBool(); }
    void setPermissionToChange(bool on) { setStoredValue(QStringLiteral("permissionToChange"), on); }
    int type() const { return storedValueAt(typeIndex()).toInt(); }
    const AttributeTypeInfo& typeInfo() const { return attributeType(type()); }
    void setType(int type) { setStoredValue(QStringLiteral("type"), type); }
    QStringList possibleValues() const { return storedValue(QStringLiteral("possibleValues")).toStringList(); }
    void setPossibleValues(const QStringList& values) { setStoredValue(QStringLiteral("possibleValues"), values); }
    KeyframeValues values() const { return keyframes(); }
    // The stored table itself, without a copy; empty when none is stored.
    const KeyframeValues& keyframes() const;
    void setValues(const KeyframeValues& values);
    QuartzComponent* component() const;

    // Held in memory only.
    QString category() const { return category_; }
    void setCategory(const QString& category) { category_ = category; }
    quint64 position() const { return position_; }
    void setPosition(quint64 position) { position_ = position; }
    const QList<float>& selectedTimepoints() const { return selectedTimepoints_; }

    bool animationPossible() const;

    // Values.
    QVariant currentValue() const;
    // The value the attribute has at time t: the constant, or the keyframes
    // interpolated or held there.
    QVariant valueAtTime(double t) const;
    void setCurrentValue(const QVariant& value);
    void setDefaultCurrentValue(const QVariant& value) { setValueForTimepoint(value, kConstantTimepoint); }
    void setValueForTimepoint(const QVariant& value, double t);
    QVariant valueForTimepoint(double t) const;
    QVariant marginAdjustedValueForTimepoint(double t) const;
    QVariant interpolateValue(double startTime, double endTime, double time) const;
    static double interpolateFloat(double startValue, double startTime, double endValue, double endTime, double currentTime);

    // Keyframes.
    void addTimepoint(double t, const QVariant& value);
    void deleteTimepoint(double t);
    void deleteSelectedTimepoints();
    bool hasKeyframeAtTimePoint(double t) const;
    double adjustTimepointsBy(double delta, bool onlySelected);
    double previousTimePoint(double t) const;
    double nextTimePoint(double t) const;
    // The keyframe times in [from, to], ascending.
    QList<float> keyframeTimesInRange(double from, double to) const;
    bool isTimePointSelected(double t) const;
    void setTimePointSelected(double t, bool selected);
    void deselectAllTimePoints() { selectedTimepoints_.clear(); }
    QList<float> sortedKeyFrames() const { return values().keys(); }

    // The renderer push and the file forms of the value.
    void pushValueToRenderer() const;
    // Sets a value on any renderer of the component's composition, in the
    // port form of the attribute's type (a font as name and size, ...).
    void pushValue(runtime::Renderer& renderer, const QVariant& value) const;
    // File values for the export: port key → value, the timeline patch's
    // key points, and the values a multiplexer steps through.
    plist::Value quartzValues() const;
    plist::Value keyFrameInformation() const;
    static plist::Value keyFrameInfo(double time, const plist::Value& value, double lc, double rc);
    plist::Array keyFrameValuesForMultiplexer() const;

    QVariantMap dictionaryWithData() const;
    QVariantMap componentInfo() const;
    static int positionComparator(const Attribute* a, const Attribute* b);
    static int titleComparator(const Attribute* a, const Attribute* b);

private:
    QVariant interpolateBetween(const QVariant& a, float t0, const QVariant& b, float t1, double time) const;
    // Sets the keyframe selection as a step of the open undo group.
    void restoreSelectedTimepoints(const QList<float>& selection);
    static int valuesIndex();
    static int animateableIndex();
    static int typeIndex();
    void commonInit();
    double renderTimepoint() const;
    void storedValueDidChange(const QString& key) override;
    void awakeFromFetch() override { commonInit(); }

    QString category_;
    quint64 position_ = 0;
    QList<float> selectedTimepoints_;
};

}  // namespace model
