#pragma once
// The fonts of \fonttbl by number, as the reader collects them.

#include <QString>

#include <map>

namespace rtf {

struct FontEntry {
    QString family;
    int codePage = 0;  // from \fcharset or \cpg; 0: the document's
    // Cocoa names fonts by PostScript name ("Helvetica-Bold"); the style part
    // becomes these flags and the family keeps the rest.
    bool impliesBold = false;
    bool impliesItalic = false;
};

// "Helvetica-BoldOblique" → {"Helvetica", bold, italic}. Names with a space
// or an unknown style part ("HelveticaNeue-Light") stay whole.
FontEntry fontEntryForName(const QString& name);

class FontTable {
public:
    // Starts an entry (\fN inside the table); its name comes with finish().
    void begin(int number);
    void setCodePage(int codePage);
    void appendName(const QString& text);
    // The ';' after the name; a second ';' for the same number changes nothing.
    void finish();

    const FontEntry* find(int number) const;
    // The code page of the entry being read, for the bytes of its name.
    int currentCodePage() const { return m_currentCodePage; }

private:
    std::map<int, FontEntry> m_fonts;
    int m_current = -1;
    int m_currentCodePage = 0;
    QString m_name;
};

}  // namespace rtf
