#include "rtf/FontTable.h"

namespace rtf {

FontEntry fontEntryForName(const QString& name)
{
    FontEntry entry;
    entry.family = name;
    const qsizetype dash = name.lastIndexOf(u'-');
    if (dash <= 0 || name.contains(u' ')) return entry;
    const QStringView style = QStringView(name).sliced(dash + 1);
    struct Style {
        const char16_t* name;
        bool bold;
        bool italic;
    };
    static constexpr Style kStyles[] = {
        {u"Regular", false, false}, {u"Roman", false, false},      {u"Plain", false, false},
        {u"Bold", true, false},     {u"Italic", false, true},      {u"Oblique", false, true},
        {u"BoldItalic", true, true}, {u"BoldOblique", true, true},
    };
    for (const Style& known : kStyles) {
        if (style == QStringView(known.name)) {
            entry.family = name.left(dash);
            entry.impliesBold = known.bold;
            entry.impliesItalic = known.italic;
            break;
        }
    }
    return entry;
}

void FontTable::begin(int number)
{
    m_current = number;
    m_currentCodePage = 0;
    m_name.clear();
}

void FontTable::setCodePage(int codePage) { m_currentCodePage = codePage; }

void FontTable::appendName(const QString& text)
{
    if (m_current >= 0) m_name += text;
}

void FontTable::finish()
{
    if (m_current < 0) return;
    FontEntry entry = fontEntryForName(m_name.trimmed());
    entry.codePage = m_currentCodePage;
    m_fonts.insert_or_assign(m_current, entry);
    m_current = -1;
    m_name.clear();
}

const FontEntry* FontTable::find(int number) const
{
    const auto it = m_fonts.find(number);
    return it == m_fonts.end() ? nullptr : &it->second;
}

}  // namespace rtf
