#pragma once
// The small conversions the editor's controls bind through. "Forward" is
// model → view.

#include <QString>
#include <QTextDocument>
#include <QUrl>
#include <QVariant>

#include <memory>
#include <optional>

namespace model::transformers {

// Seconds → timecode text at the project's rate; negative times show as 0.
QString timepointToString(double seconds);
// Timecode text → seconds since midnight; nothing for text that is no timecode.
std::optional<double> stringToTimepoint(const QString& text);

// True when the value is a collection of more than one (two) elements;
// anything that is not a collection gives false.
bool countGreaterThanOne(const QVariant& value);
bool countGreaterThanTwo(const QVariant& value);

// Styled text: RTF text ↔ a text document. Text that is not RTF, or empty
// text, gives an empty document; an empty document gives "".
std::unique_ptr<QTextDocument> rtfToDocument(const QString& rtf);
QString documentToRtf(const QTextDocument& document);

QUrl stringToURL(const QString& path);  // empty stays empty
QString urlToString(const QUrl& url);

}  // namespace model::transformers
