#pragma once
// Turns a whole composition into one composition file that a playout engine
// plays without the editor: every component's graph side by side, each with
// a renderer patch placing its image, timelines replaying its keyframes, a
// time window switching it on and off, and the two plug-ins that give the
// composition time and the stop-frame pauses. Editable attributes become the
// file's published inputs.

#include "document/WorkProgress.h"

#include <QString>

#include <functional>
#include <memory>

class QuartzComposition;

namespace model {
class Composition;
class QuartzComponent;
}  // namespace model

namespace document {

// Makes the label of a published input from the component, the separator
// and the port key.
using KeyFactory = std::function<QString(const model::QuartzComponent&, const QString& separator,
                                         const QString& portKey)>;

class CompositionExport {
public:
    // False when the standard "Renderer" file or one of its patches is
    // missing, or the file cannot be written.
    // `progress` is told the components done (and the file written last);
    // an export is not stopped half way, so its answer is ignored.
    static bool exportToPath(const model::Composition& composition, const QString& path, bool includeBackground,
                             const KeyFactory& keyFactory, const WorkProgress& progress = {});
    // The graph exportToPath writes; null when the standard "Renderer"
    // file or one of its patches is missing.
    static std::unique_ptr<QuartzComposition> exportedComposition(const model::Composition& composition,
                                                                  bool includeBackground, const KeyFactory& keyFactory,
                                                                  const WorkProgress& progress = {});
    // Title, separator and port key joined: the labels a document writes.
    static QString documentKey(const model::QuartzComponent& component, const QString& separator,
                               const QString& portKey);
    // Published ports that a playout system drives: the trigger input and
    // the waiting output (only with stop frames), the root's "active"
    // output, and the switch of the clear patch.
    static QString triggerKey() { return QStringLiteral("trigger"); }
    static QString waitingForTriggerKey() { return QStringLiteral("waitingForTrigger"); }
    static QString activeKey() { return QStringLiteral("active"); }
    static QString clearEnableKey() { return QStringLiteral("clear_enable"); }
    // Every character that is neither alphanumeric nor "_" becomes "_".
    static QString stringByTrimmingInvalidKeyCharacters(const QString& string);
};

}  // namespace document
