#pragma once
// The small conversions the editor's controls bind through. "Forward" is
// model → view. Styled text (RTF) conversion comes with the RTF reader.

#include <QString>
#include <QUrl>
#include <QVariant>

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

QUrl stringToURL(const QString& path);  // empty stays empty
QString urlToString(const QUrl& url);

}  // namespace model::transformers
