#pragma once
// The scripting interface of `velloran-cli doc apply`: a JSON list of edits
// run through the same model operations as the editor, one undo step each.

#include <QJsonArray>
#include <QString>
#include <QStringList>

namespace document {
class CompositionDocument;
}

namespace cli {

// Stops at the first bad edit with "edit N: reason"; the caller then does
// not save, so the package on disk is untouched.
// `messages` receives the texts the editor would show in alerts.
bool applyEdits(document::CompositionDocument& document, const QJsonArray& edits, QString* error,
                QStringList* messages = nullptr);

}  // namespace cli
