#include "rtf/Rtf.h"
#include "rtf/RtfEmitter.h"
#include "rtf/RunFormat.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextDocumentFragment>

#include <string>
#include <unordered_map>
#include <vector>

namespace rtf {

namespace {

struct Run {
    QString text;
    RunFormat format;
};

struct Paragraph {
    Qt::Alignment alignment;
    std::vector<Run> runs;
};

std::vector<Paragraph> collectParagraphs(const QTextDocument& document)
{
    std::vector<Paragraph> paragraphs;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        Paragraph paragraph{block.blockFormat().alignment(), {}};
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (fragment.isValid())
                paragraph.runs.push_back({fragment.text(), resolveRunFormat(fragment.charFormat(), document.defaultFont())});
        }
        paragraphs.push_back(std::move(paragraph));
    }
    return paragraphs;
}

// Families or colours in order of first use; the index is the \f or \cf number.
template <typename T, typename Key = T>
class NumberedTable {
public:
    int indexOf(const T& value, const Key& key)
    {
        const auto [it, added] = m_indexes.try_emplace(key, int(m_values.size()));
        if (added) m_values.push_back(value);
        return it->second;
    }
    const std::vector<T>& values() const { return m_values; }

private:
    std::vector<T> m_values;
    std::unordered_map<Key, int> m_indexes;
};

struct FamilyNumbers : NumberedTable<QString, std::u16string> {
    int indexOf(const QString& family) { return NumberedTable::indexOf(family, family.toStdU16String()); }
};
struct ColourNumbers : NumberedTable<QColor, QRgb> {
    int indexOf(const QColor& colour) { return NumberedTable::indexOf(colour, colour.rgb()); }
};

const char* alignmentWord(Qt::Alignment alignment)
{
    if (alignment & Qt::AlignHCenter) return "qc";
    if (alignment & Qt::AlignJustify) return "qj";
    if (alignment & Qt::AlignRight) return "qr";  // AlignTrailing is the same bit
    return "ql";
}

class Writer {
public:
    explicit Writer(const QTextDocument& document) : m_paragraphs(collectParagraphs(document))
    {
        for (const Paragraph& paragraph : m_paragraphs) {
            for (const Run& run : paragraph.runs) {
                m_families.indexOf(run.format.family);
                if (run.format.colour) m_colours.indexOf(*run.format.colour);
            }
        }
        // \deff0 must name a font even when there is no text.
        if (m_families.values().empty()) m_families.indexOf(resolveRunFormat({}, document.defaultFont()).family);
    }

    QByteArray write()
    {
        m_out.openGroup();
        m_out.word("rtf", 1);
        m_out.word("ansi");
        m_out.word("ansicpg", 1252);
        m_out.word("deff", 0);
        m_out.word("uc", 1);
        m_out.newline();
        writeFontTable();
        writeColourTable();
        for (size_t i = 0; i < m_paragraphs.size(); ++i) {
            if (i > 0) {
                m_out.word("par");
                m_out.newline();
            }
            writeParagraph(m_paragraphs[i]);
        }
        m_out.closeGroup();
        m_out.newline();
        return m_out.bytes();
    }

private:
    void writeFontTable()
    {
        m_out.openGroup();
        m_out.word("fonttbl");
        for (size_t i = 0; i < m_families.values().size(); ++i) {
            m_out.openGroup();
            m_out.word("f", int(i));
            m_out.word("fnil");
            m_out.word("fcharset", 0);
            QString name = m_families.values()[i];
            m_out.text(name.remove(u';'));  // a ';' would end the name early
            m_out.text(u";");
            m_out.closeGroup();
        }
        m_out.closeGroup();
        m_out.newline();
    }

    void writeColourTable()
    {
        m_out.openGroup();
        m_out.word("colortbl");
        m_out.text(u";");  // entry 0: the automatic colour
        for (const QColor& colour : m_colours.values()) {
            m_out.word("red", colour.red());
            m_out.word("green", colour.green());
            m_out.word("blue", colour.blue());
            m_out.text(u";");
        }
        m_out.closeGroup();
        m_out.newline();
    }

    void writeParagraph(const Paragraph& paragraph)
    {
        m_out.word("pard");
        m_out.word(alignmentWord(paragraph.alignment));
        for (const Run& run : paragraph.runs) {
            writeFormatChanges(run.format);
            m_out.text(run.text);
        }
    }

    // Only what differs from the run before; the first run states font and size.
    void writeFormatChanges(const RunFormat& format)
    {
        const int font = m_families.indexOf(format.family);
        if (!m_writtenOnce || font != m_writtenFont) m_out.word("f", font);
        if (!m_writtenOnce || format.halfPoints != m_written.halfPoints) m_out.word("fs", format.halfPoints);
        if (format.bold != m_written.bold) m_out.word(format.bold ? "b" : "b0");
        if (format.italic != m_written.italic) m_out.word(format.italic ? "i" : "i0");
        if (format.underline != m_written.underline) m_out.word(format.underline ? "ul" : "ulnone");
        if (format.strike != m_written.strike) m_out.word(format.strike ? "strike" : "strike0");
        if (format.colour != m_written.colour)
            m_out.word("cf", format.colour ? m_colours.indexOf(*format.colour) + 1 : 0);
        m_written = format;
        m_writtenFont = font;
        m_writtenOnce = true;
    }

    std::vector<Paragraph> m_paragraphs;
    FamilyNumbers m_families;
    ColourNumbers m_colours;
    RtfEmitter m_out;
    RunFormat m_written;  // RTF's defaults until the first run
    int m_writtenFont = 0;
    bool m_writtenOnce = false;
};

}  // namespace

QByteArray write(const QTextDocument& document)
{
    return Writer(document).write();
}

QByteArray write(const QTextDocumentFragment& fragment)
{
    QTextDocument document;
    QTextCursor(&document).insertFragment(fragment);
    return write(document);
}

}  // namespace rtf
