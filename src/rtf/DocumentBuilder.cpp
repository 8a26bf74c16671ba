#include "rtf/DocumentBuilder.h"

#include <QTextBlock>
#include <QTextBlockFormat>

namespace rtf {

DocumentBuilder::DocumentBuilder() : m_document(std::make_unique<QTextDocument>()), m_cursor(m_document.get())
{
    // Building is not an edit the user could undo.
    m_document->setUndoRedoEnabled(false);
}

void DocumentBuilder::appendText(const QString& text, const QTextCharFormat& format, Qt::Alignment alignment)
{
    if (text.isEmpty()) return;
    if (!m_run.isEmpty() && (format != m_runFormat || alignment != m_runAlignment)) flushRun();
    if (m_run.isEmpty()) {
        m_runFormat = format;
        m_runAlignment = alignment;
    }
    m_run += text;
}

void DocumentBuilder::breakParagraph(Qt::Alignment alignment)
{
    flushRun();
    alignCurrentBlock(alignment);
    m_cursor.insertBlock();
}

std::unique_ptr<QTextDocument> DocumentBuilder::finish(Qt::Alignment alignment)
{
    flushRun();
    if (m_cursor.block().length() <= 1) alignCurrentBlock(alignment);
    m_document->setUndoRedoEnabled(true);
    m_document->setModified(false);
    return std::move(m_document);
}

void DocumentBuilder::flushRun()
{
    if (m_run.isEmpty()) return;
    alignCurrentBlock(m_runAlignment);
    m_cursor.insertText(m_run, m_runFormat);
    m_run.clear();
}

void DocumentBuilder::alignCurrentBlock(Qt::Alignment alignment)
{
    QTextBlockFormat format = m_cursor.blockFormat();
    if (format.hasProperty(QTextFormat::BlockAlignment) && format.alignment() == alignment) return;
    format.setAlignment(alignment);
    m_cursor.setBlockFormat(format);
}

}  // namespace rtf
