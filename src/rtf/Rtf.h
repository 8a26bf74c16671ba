#pragma once
// Styled text as RTF: our own small reader and writer.
//
// Attributes of the styled-text type hold RTF source; the editor shows and
// edits it as a QTextDocument. The reader takes what Cocoa (TextEdit),
// Word, WordPad and LibreOffice write and keeps the properties the editor
// uses: text, font family, size, bold, italic, underline, strikethrough,
// foreground colour and paragraph alignment. The writer produces plain
// RTF 1.x with exactly those properties, readable by the same programs.

#include <QByteArray>
#include <QString>

#include <memory>

class QTextDocument;
class QTextDocumentFragment;

namespace rtf {

// Hostile-input limits: no real document comes near them.
inline constexpr int kMaxGroupDepth = 256;            // deeper nesting is an error
inline constexpr int kMaxParameter = 1'000'000'000;   // |N| of a control word is clamped to this
inline constexpr double kMinPointSize = 0.5;          // \fsN is clamped to these sizes
inline constexpr double kMaxPointSize = 1638.0;

// Parses RTF bytes. Never throws or crashes; gives nullptr and a one-line
// error for input that is not RTF ("{\rtf" must come first), nesting deeper
// than kMaxGroupDepth and \binN claiming more bytes than remain. Unknown
// control words and unknown {\*\...} destinations are skipped; a document
// cut short (missing closing braces) gives the text read so far.
std::unique_ptr<QTextDocument> read(const QByteArray& rtf, QString* error = nullptr);

// The whole document as RTF: an \ansi\ansicpg1252 header, \fonttbl with one
// entry per family used, \colortbl, then one \pard paragraph per block with
// its alignment and the character runs. Pure ASCII: characters of code page
// 1252 as \'hh, all others as \uN? (negative above 32767). No document
// attributes (paper size, margins, ...). Always a complete RTF document,
// also for an empty one.
QByteArray write(const QTextDocument& document);
QByteArray write(const QTextDocumentFragment& fragment);

}  // namespace rtf
