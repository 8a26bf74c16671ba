#pragma once
// Small pieces of command-line reading that several commands share.

#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace cli {

// Takes "FLAG VALUE" out of `args`. Nothing when the flag is absent; sets
// `missingValue` when it is the last word, with nothing to take.
std::optional<QString> takeOption(QStringList& args, const QString& flag, bool* missingValue);

// A frame size given as "WIDTHxHEIGHT", each side 1 to 16384: the size, or
// the message for a bad one ("--size needs WIDTHxHEIGHT", ...).
QString readFrameSize(const QString& text, QSize* size);

}  // namespace cli
