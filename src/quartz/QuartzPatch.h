#pragma once
// One node of a Quartz Composer patch graph as it stands in a composition
// file: a dictionary with the node's class, key and state. While the patch is
// in memory its children live in `nodes()` rather than in "state"/"nodes";
// writing folds them back (patchDataForFileData).

#include "plist/LegacyArchive.h"
#include "plist/Value.h"

#include <QPointF>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

class QuartzComposition;

class QuartzPatch {
public:
    // A node made from a node dictionary; a null value gives the default node
    // {"class": "QCPatch", "state": {}}.
    explicit QuartzPatch(const plist::Value& dictionary = plist::Value());
    static std::unique_ptr<QuartzPatch> createRoot(QuartzComposition* owner, const plist::Value& dictionary);
    static std::unique_ptr<QuartzPatch> createChild(QuartzPatch* parent, const plist::Value& dictionary);

    QuartzPatch(const QuartzPatch&) = delete;
    QuartzPatch& operator=(const QuartzPatch&) = delete;

    // A deep, unowned copy of this subtree.
    std::unique_ptr<QuartzPatch> clone() const;

    // The node dictionary without its children.
    const plist::Value& data() const { return data_; }
    plist::Value& data() { return data_; }
    const std::vector<std::unique_ptr<QuartzPatch>>& nodes() const { return nodes_; }
    QuartzPatch* parentPatch() const { return parent_; }
    QuartzComposition* composition() const;
    bool isRootPatch() const { return owner_ != nullptr; }

    QString patchClass() const;
    // A class name beginning with "QLN" is one of our own plug-ins: it is
    // stored as a "QCPlugInPatch" node with the name as its identifier.
    void setPatchClass(const QString& patchClass);
    QString identifier() const;
    void setIdentifier(const QString& identifier);
    QString key() const;
    void setKey(const QString& key);
    const plist::Value& state() const;

    plist::legacy::Object userInfo() const;
    void setUserInfo(const plist::legacy::Object& userInfo);
    QString name() const;
    void setName(const QString& name);
    QPointF position() const;
    void setPosition(const QPointF& position);

    bool timebased() const;
    plist::Value timebase() const;
    void setTimebase(const plist::Value& timebase);  // null removes the setting

    // Graph editing.
    QuartzPatch* addNode(std::unique_ptr<QuartzPatch> child);
    QuartzPatch* addPatchWithClass(const QString& patchClass, const plist::Value& state = plist::Value(),
                                   const plist::Dictionary& inputPortState = {});
    void addConnectionFromComponent(const QString& sourceNode, const QString& sourcePort,
                                    const QString& destinationNode, const QString& destinationPort);
    // Both are sent to a child and publish on its parent.
    void publishPort(const QString& port, const QString& name, const std::optional<QString>& label = std::nullopt);
    void publishOutputPort(const QString& port, const QString& name);
    plist::Value infoForPublishedInputPortWithName(const QString& name) const;  // null when absent
    QuartzPatch* patchWithName(const QString& name) const;

    // Port values.
    bool setPortValue(const plist::Value& value, const QString& key, const QString& stateKey);
    void setPortValue(const plist::Value& value, const QString& key);
    plist::Value portValueForKey(const QString& key) const;

    // Merging and writing.
    void addNodesOfPatch(QuartzPatch& other);
    plist::Value patchDataForFileData(const plist::Value& compositionDictionary = plist::Value()) const;

private:
    plist::Value& mutableState();
    void normaliseState(const plist::Value& givenState);
    QString uniqueChildKey(const QString& patchClass) const;

    plist::Value data_;
    std::vector<std::unique_ptr<QuartzPatch>> nodes_;
    QuartzPatch* parent_ = nullptr;
    QuartzComposition* owner_ = nullptr;

    // The connections as last counted: which container, how many, the
    // largest number among their names.
    struct ConnectionCount {
        const void* identity = nullptr;
        std::size_t size = 0;
        long long largest = 0;
    };
    ConnectionCount connectionCount_;
};
