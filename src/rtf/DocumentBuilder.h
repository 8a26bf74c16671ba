#pragma once
// Appends the reader's text to a QTextDocument: runs of one character format
// and paragraphs with their alignment.

#include <QString>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextDocument>

#include <memory>

namespace rtf {

class DocumentBuilder {
public:
    DocumentBuilder();

    void appendText(const QString& text, const QTextCharFormat& format, Qt::Alignment alignment);
    // A paragraph takes the alignment in force at its mark.
    void breakParagraph(Qt::Alignment alignment);
    // The end of input: an empty last paragraph takes the alignment then in force.
    std::unique_ptr<QTextDocument> finish(Qt::Alignment alignment);

private:
    void flushRun();
    void alignCurrentBlock(Qt::Alignment alignment);

    std::unique_ptr<QTextDocument> m_document;
    QTextCursor m_cursor;
    // Consecutive text of one format is inserted at once; \uN escapes and
    // control words would otherwise cut it into one insertion per character.
    QString m_run;
    QTextCharFormat m_runFormat;
    Qt::Alignment m_runAlignment;
};

}  // namespace rtf
