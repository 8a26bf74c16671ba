#include "rtf/ControlWords.h"

#include <string_view>
#include <unordered_map>

namespace rtf {

namespace {

using namespace std::string_view_literals;

std::string_view view(QByteArrayView name) { return {name.data(), size_t(name.size())}; }

const std::unordered_map<std::string_view, char16_t>& symbols()
{
    static const std::unordered_map<std::string_view, char16_t> table = {
        {"emdash"sv, 0x2014},   {"endash"sv, 0x2013},    {"emspace"sv, 0x2003}, {"enspace"sv, 0x2002},
        {"qmspace"sv, 0x2005},  {"bullet"sv, 0x2022},    {"lquote"sv, 0x2018},  {"rquote"sv, 0x2019},
        {"ldblquote"sv, 0x201C}, {"rdblquote"sv, 0x201D}, {"zwj"sv, 0x200D},    {"zwnj"sv, 0x200C},
        {"ltrmark"sv, 0x200E},  {"rtlmark"sv, 0x200F},   {"zwbo"sv, 0x200B},    {"zwnbo"sv, 0xFEFF},
    };
    return table;
}

const std::unordered_map<std::string_view, Word>& words()
{
    static const std::unordered_map<std::string_view, Word> table = [] {
        std::unordered_map<std::string_view, Word> t = {
            {"ansi"sv, Word::Ansi}, {"mac"sv, Word::Mac}, {"pc"sv, Word::Pc},
            {"pca"sv, Word::Pca}, {"ansicpg"sv, Word::AnsiCodePage}, {"deff"sv, Word::DefaultFont},
            {"uc"sv, Word::UnicodeSkip}, {"u"sv, Word::Unicode},
            {"fonttbl"sv, Word::FontTable}, {"colortbl"sv, Word::ColourTable},
            {"f"sv, Word::Font}, {"fcharset"sv, Word::FontCharset}, {"cpg"sv, Word::FontCodePage},
            {"red"sv, Word::Red}, {"green"sv, Word::Green}, {"blue"sv, Word::Blue},
            // Section and page breaks become paragraph breaks; table rows too.
            {"par"sv, Word::Par}, {"sect"sv, Word::Par}, {"page"sv, Word::Par}, {"row"sv, Word::Par},
            {"pard"sv, Word::Pard}, {"ql"sv, Word::AlignLeft}, {"qc"sv, Word::AlignCentre},
            {"qr"sv, Word::AlignRight}, {"qj"sv, Word::AlignJustify}, {"qd"sv, Word::AlignJustify},
            {"line"sv, Word::Line}, {"tab"sv, Word::Tab}, {"cell"sv, Word::Cell},
            {"plain"sv, Word::Plain}, {"b"sv, Word::Bold}, {"i"sv, Word::Italic},
            {"ulnone"sv, Word::UnderlineNone}, {"strike"sv, Word::Strike}, {"striked"sv, Word::Strike},
            {"fs"sv, Word::FontSize}, {"cf"sv, Word::Colour}, {"v"sv, Word::Hidden},
        };
        // Every underline style is drawn as a plain underline.
        for (std::string_view ul : {"ul"sv, "uld"sv, "uldash"sv, "uldashd"sv, "uldashdd"sv, "uldb"sv,
                 "ulhwave"sv, "ulldash"sv, "ulth"sv, "ulthd"sv, "ulthdash"sv, "ulthdashd"sv,
                 "ulthdashdd"sv, "ulthldash"sv, "ululdbwave"sv, "ulw"sv, "ulwave"sv})
            t.emplace(ul, Word::Underline);
        // Destinations whose content is not text of the document. The ones
        // written as {\*\...} need no entry: unknown starred groups are skipped.
        for (std::string_view d : {"stylesheet"sv, "info"sv, "pict"sv, "object"sv, "header"sv, "headerl"sv,
                 "headerr"sv, "headerf"sv, "footer"sv, "footerl"sv, "footerr"sv, "footerf"sv, "footnote"sv,
                 "annotation"sv, "fldinst"sv, "filetbl"sv, "revtbl"sv, "listtable"sv, "listoverridetable"sv,
                 "rsidtbl"sv, "pn"sv, "nonshppict"sv, "shp"sv, "shpinst"sv, "xe"sv, "tc"sv, "txe"sv,
                 "template"sv, "userprops"sv, "ftnsep"sv, "ftnsepc"sv, "ftncn"sv, "aftnsep"sv,
                 "aftnsepc"sv, "aftncn"sv, "private"sv, "themedata"sv, "colorschememapping"sv,
                 "datastore"sv, "latentstyles"sv, "generator"sv, "falt"sv, "panose"sv, "objdata"sv,
                 "atnid"sv, "atnauthor"sv, "atrfstart"sv, "atrfend"sv, "bkmkstart"sv, "bkmkend"sv,
                 "docvar"sv, "datafield"sv, "formfield"sv, "expandedcolortbl"sv, "listpicture"sv})
            t.emplace(d, Word::SkippedDestination);
        for (const auto& [name, character] : symbols()) t.emplace(name, Word::Symbol);
        return t;
    }();
    return table;
}

}  // namespace

Word lookupWord(QByteArrayView name)
{
    const auto it = words().find(view(name));
    return it == words().end() ? Word::Unknown : it->second;
}

char16_t symbolCharacter(QByteArrayView name)
{
    const auto it = symbols().find(view(name));
    return it == symbols().end() ? 0 : it->second;
}

char16_t controlSymbolCharacter(char symbol)
{
    switch (symbol) {
    case '\\': return u'\\';
    case '{': return u'{';
    case '}': return u'}';
    case '~': return 0x00A0;  // no-break space
    case '-': return 0x00AD;  // optional hyphen
    case '_': return 0x2011;  // no-break hyphen
    case '\t': return u'\t';  // a tab escaped by some writers
    default: return 0;
    }
}

}  // namespace rtf
