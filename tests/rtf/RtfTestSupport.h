#pragma once
// What the tests compare: a document as paragraphs of runs with the shown
// values of the properties RTF carries here (unset ones resolved against the
// document's default font, as the editor would draw them).

#include "rtf/Rtf.h"

#include <QColor>
#include <QFile>
#include <QFont>
#include <QTextBlock>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <vector>

namespace rtftest {

struct Span {
    QString text;
    QString family;
    double points = 0;
    bool bold = false, italic = false, underline = false, strike = false;
    std::optional<QColor> colour;

    // For expectations: look("Arial", 12).withBold().t("text")
    Span t(const char* utf8) const { Span s = *this; s.text = QString::fromUtf8(utf8); return s; }
    Span withBold() const { Span s = *this; s.bold = true; return s; }
    Span withItalic() const { Span s = *this; s.italic = true; return s; }
    Span withUnderline() const { Span s = *this; s.underline = true; return s; }
    Span withStrike() const { Span s = *this; s.strike = true; return s; }
    Span withColour(int r, int g, int b) const { Span s = *this; s.colour = QColor(r, g, b); return s; }

    bool sameLook(const Span& o) const
    {
        return family == o.family && points == o.points && bold == o.bold && italic == o.italic &&
            underline == o.underline && strike == o.strike && colour == o.colour;
    }
    bool operator==(const Span& o) const { return text == o.text && sameLook(o); }
};

struct Paragraph {
    Qt::Alignment alignment = Qt::AlignLeft;
    std::vector<Span> spans;

    QString text() const
    {
        QString all;
        for (const Span& s : spans) all += s.text;
        return all;
    }
    bool operator==(const Paragraph& o) const { return alignment == o.alignment && spans == o.spans; }
};

inline Span look(const char* family, double points)
{
    Span s;
    s.family = QString::fromUtf8(family);
    s.points = points;
    return s;
}

inline std::ostream& operator<<(std::ostream& out, const Span& s)
{
    out << '"' << s.text.toStdString() << "\" " << s.family.toStdString() << ' ' << s.points << "pt"
        << (s.bold ? " b" : "") << (s.italic ? " i" : "") << (s.underline ? " ul" : "") << (s.strike ? " strike" : "");
    return s.colour ? out << ' ' << s.colour->name().toStdString() : out;
}

inline std::ostream& operator<<(std::ostream& out, const Paragraph& p)
{
    out << "align " << int(p.alignment) << ':';
    for (const Span& s : p.spans) out << " [" << s << ']';
    return out;
}

// Adjacent fragments that look the same are one span: how Qt splits them is not our concern.
inline std::vector<Paragraph> paragraphsOf(const QTextDocument& document)
{
    std::vector<Paragraph> paragraphs;
    const QFont base = document.defaultFont();
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        Paragraph paragraph;
        const Qt::Alignment a = block.blockFormat().alignment() & Qt::AlignHorizontal_Mask & ~Qt::AlignAbsolute;
        paragraph.alignment = a ? a : Qt::AlignLeft;
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextCharFormat f = it.fragment().charFormat();
            const QStringList families = f.fontFamilies().toStringList();
            Span span = look("", f.fontPointSize() > 0 ? f.fontPointSize() : base.pointSizeF());
            span.text = it.fragment().text();
            span.family = families.isEmpty() ? base.family() : families.first();
            span.bold = f.hasProperty(QTextFormat::FontWeight) ? f.fontWeight() >= QFont::DemiBold : base.bold();
            span.italic = f.fontItalic();
            span.underline = f.fontUnderline();
            span.strike = f.fontStrikeOut();
            if (f.hasProperty(QTextFormat::ForegroundBrush)) span.colour = f.foreground().color();
            if (!paragraph.spans.empty() && paragraph.spans.back().sameLook(span))
                paragraph.spans.back().text += span.text;
            else
                paragraph.spans.push_back(span);
        }
        paragraphs.push_back(paragraph);
    }
    return paragraphs;
}

inline QByteArray fixture(const char* name)
{
    QFile file(QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/rtf/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

// Reads RTF that must be accepted.
inline std::vector<Paragraph> readParagraphs(const QByteArray& rtf)
{
    QString error;
    const auto document = rtf::read(rtf, &error);
    EXPECT_TRUE(document) << error.toStdString();
    return document ? paragraphsOf(*document) : std::vector<Paragraph>{};
}

inline QStringList texts(const std::vector<Paragraph>& paragraphs)
{
    QStringList all;
    for (const Paragraph& p : paragraphs) all << p.text();
    return all;
}

inline QString u(const char* utf8) { return QString::fromUtf8(utf8); }

}  // namespace rtftest

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& s, std::ostream* out) { *out << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QStringList& l, std::ostream* out) { *out << '"' << l.join(u'|').toStdString() << '"'; }
QT_END_NAMESPACE
