#pragma once
// The template as a playout system receives it: the document's composition
// exported to one composition file (with the document's key factory) and
// played as written, the file deleted again.

#include "playout/VideoTiming.h"

#include <QSize>
#include <QString>
#include <QUrl>

#include <memory>
#include <optional>

namespace model {
class Composition;
}

namespace runtime {
class Composition;
}

namespace document {
class CompositionDocument;
}

namespace playout {

struct PlayoutTemplate {
    std::shared_ptr<const runtime::Composition> composition;
    VideoTiming timing;
    QSize size;               // the composition's pixel size
    double duration = 0;      // seconds
    // The document's composition file location; empty for a document never
    // saved, whose relative resource paths then cannot be resolved.
    QUrl compositionFile;
};

struct ExportRequest {
    // The preview plays the document's background; keyed playout does not.
    bool includeBackground = true;
    // Where the file is written and read back; empty: "VelloranPreview.qtz"
    // in the temporary folder, as the preview of any document.
    QString scratchPath;
};

// Null with the reason when the export, the write or the load fails.
std::optional<PlayoutTemplate> exportForPlayout(const model::Composition& composition, const QString& compositionFile,
                                                const ExportRequest& request, QString* error);
std::optional<PlayoutTemplate> exportForPlayout(const document::CompositionDocument& document,
                                                const ExportRequest& request, QString* error);

}  // namespace playout
