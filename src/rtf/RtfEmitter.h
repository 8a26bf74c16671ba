#pragma once
// Low-level RTF output: control words with their delimiters and text with
// every character RTF cannot carry literally escaped. The output is ASCII.

#include <QByteArray>
#include <QStringView>

namespace rtf {

class RtfEmitter {
public:
    void word(const char* name);
    void word(const char* name, int parameter);
    void openGroup();
    void closeGroup();
    void newline();  // only for people reading the file; readers ignore it
    void text(QStringView text);

    const QByteArray& bytes() const { return m_out; }

private:
    void character(char16_t c);
    void literal(char c);

    QByteArray m_out;
    bool m_afterWord = false;  // a control word ends here: text needs a delimiting space first
};

}  // namespace rtf
