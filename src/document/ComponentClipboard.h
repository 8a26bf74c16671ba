#pragma once
// Copy, cut and paste of components, and the data forms they exchange.
// Copying offers the selected components in the one component format;
// pasting takes, in this order of preference, components, an image (which
// becomes an image component) or plain text (which becomes a text
// component).

#include <QList>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <vector>

class QClipboard;
class QMimeData;

namespace model {
class Composition;
class QuartzComponent;
}  // namespace model

namespace document {

// The clipboard format of components: an archive of component dictionaries
// (see ComponentArchive), the "ComponentPBoardType" data, readable by every
// document of the program. It travels under a MIME type of its own, as the
// desktop's clipboard expects.
inline const QString ComponentMimeType = QStringLiteral("application/x-velloran-component");

class ComponentClipboard {
public:
    // The selected components, in selection order; null without a valid
    // selection.
    static std::unique_ptr<QMimeData> mimeDataForSelection(const model::Composition& composition);
    // True when the data offers components, an image or plain text.
    static bool pasteboardIsValid(const QMimeData& data);
    // Adds what the data offers as one undo step and answers the new
    // components; empty when the data offers nothing usable. The first
    // form on offer decides: undecodable components or an unreadable image
    // add nothing rather than falling back to another form.
    static std::vector<model::QuartzComponent*> paste(model::Composition& composition, const QMimeData& data);
    // The selection's data, then the selected components removed; one undo
    // step. Null, and nothing removed, without a valid selection.
    static std::unique_ptr<QMimeData> cut(model::Composition& composition);

    // The same on a clipboard of the application. Copy and cut answer
    // whether they put anything on it.
    static bool copy(const model::Composition& composition, QClipboard& clipboard);
    static bool cut(model::Composition& composition, QClipboard& clipboard);
    static std::vector<model::QuartzComponent*> paste(model::Composition& composition, const QClipboard& clipboard);
    static bool pasteboardIsValid(const QClipboard& clipboard);

    // The standard files paste instantiates, and the inputs it fills.
    static QString imageComponentName() { return QStringLiteral("ImageComponent"); }
    static QString textComponentName() { return QStringLiteral("TextComponent"); }
    static QString imageInputKey() { return QStringLiteral("Image"); }
    static QString textInputKey() { return QStringLiteral("Text"); }
};

}  // namespace document
