#pragma once
// One component's share of the exported file: its own graph, a renderer
// placing its image, its timeline with multiplexers and colour makers, its
// timer and its time window.

#include "document/CompositionExport.h"
#include "quartz/QuartzComposition.h"

#include <QSet>

namespace document {

// Patches of the standard "Renderer" file copied for every component.
struct ExportTemplates {
    QuartzPatch* renderer = nullptr;
    QuartzPatch* position = nullptr;
    QuartzPatch* timer = nullptr;
    QuartzPatch* enabler = nullptr;
    QuartzPatch* logic = nullptr;
};

struct ExportContext {
    QuartzComposition& output;
    const model::Composition& composition;
    const KeyFactory& keyFactory;
    const ExportTemplates& templates;
    QString scalerKey;
    QString stopFramesKey;
    QString separator = QStringLiteral(" ");
    bool hasStopFrames = false;
    QSet<QString> usedNames;  // published input names so far

    QuartzPatch& root() { return output.rootPatch(); }
    // The trimmed name for a label, numbered until unused; `label` takes
    // the number too when `numberLabel` is set.
    QString uniqueName(QString& label, bool numberLabel) const;
};

// `index` counts components from 1, bottom first.
void exportComponent(ExportContext& context, const model::QuartzComponent& component, int index);

}  // namespace document
