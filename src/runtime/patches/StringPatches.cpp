// String processors: String Printer, case, length, compare, truncate,
// replace, number and date formatters.

#include "runtime/patches/PatchFamilies.h"

#include <QDateTime>
#include <QLocale>
#include <QRegularExpression>

#include <cmath>

namespace runtime {

void registerTextImagePatch(PatchRegistry& registry);

namespace {

// Conversions of a printf-style format with %@ (any value as text), %d,
// %i, %f, %e, %g, %x, %s and %%.
struct FormatPiece {
    QString literal;
    QChar conversion;  // null: literal only
    QString spec;      // e.g. "%.2f"
};

std::vector<FormatPiece> splitFormat(const QString& format)
{
    static const QRegularExpression re(QStringLiteral("%([-+ 0#]*\\d{0,3}(?:\\.\\d{1,3})?)(?:l|ll|h)?([@dixXfFeEgGs%])"));
    std::vector<FormatPiece> pieces;
    qsizetype last = 0;
    for (auto it = re.globalMatch(format); it.hasNext();) {
        const auto m = it.next();
        FormatPiece piece;
        piece.literal = format.mid(last, m.capturedStart() - last);
        if (m.captured(2) == QLatin1String("%")) {
            piece.literal += QLatin1Char('%');
        } else {
            piece.conversion = m.captured(2).at(0);
            piece.spec = QLatin1Char('%') + m.captured(1);
        }
        last = m.capturedEnd();
        pieces.push_back(piece);
    }
    pieces.push_back({format.mid(last), QChar(), QString()});
    return pieces;
}

QString formatArgument(const FormatPiece& piece, const Value& value)
{
    const char c = char(piece.conversion.toLatin1());
    const QByteArray spec = piece.spec.toLatin1();
    switch (c) {
    case '@':
    case 's': return value.toString();
    case 'd':
    case 'i': return QString::asprintf((spec + "lld").constData(), static_cast<long long>(std::llround(value.toNumber())));
    case 'x':
    case 'X': return QString::asprintf((spec + "ll" + c).constData(), static_cast<long long>(std::llround(value.toNumber())));
    default: return QString::asprintf((spec + c).constData(), value.toNumber());
    }
}

class StringFormatPatch : public Patch {
public:
    explicit StringFormatPatch(const PatchSetup& setup) : Patch(setup)
    {
        pieces_ = splitFormat(stateString(setup, "format", QStringLiteral("%@")));
        int n = 0;
        for (const FormatPiece& p : pieces_)
            if (!p.conversion.isNull()) arguments_.push_back(&addInput(QStringLiteral("argument_%1").arg(++n), PortType::Virtual));
        output_ = &addOutput(QStringLiteral("outputString"), PortType::String);
    }
    void execute(ExecutionContext&, double) override
    {
        QString s;
        std::size_t argument = 0;
        for (const FormatPiece& p : pieces_) {
            s += p.literal;
            if (!p.conversion.isNull()) s += formatArgument(p, arguments_[argument++]->value);
        }
        setOutput(*output_, s);
    }

private:
    std::vector<FormatPiece> pieces_;
    std::vector<InputPort*> arguments_;
    OutputPort* output_;
};

// A patch with one string input and one string output.
class StringFunctionPatch : public Patch {
public:
    StringFunctionPatch(const PatchSetup& setup, const char* input, const char* output, PortType outputType)
        : Patch(setup)
    {
        input_ = &addInput(QString::fromLatin1(input), PortType::String, QString());
        output_ = &addOutput(QString::fromLatin1(output), outputType);
    }

protected:
    InputPort* input_;
    OutputPort* output_;
};

class StringCasePatch : public StringFunctionPatch {
public:
    explicit StringCasePatch(const PatchSetup& setup) : StringFunctionPatch(setup, "inputString", "outputString", PortType::String)
    {
        mode_ = &addInput(QStringLiteral("inputMode"), PortType::Index, 0);
    }
    void execute(ExecutionContext&, double) override
    {
        const QString s = string(input_);
        switch (index(mode_)) {
        case 1: setOutput(*output_, s.toUpper()); break;
        case 2: setOutput(*output_, s.toLower()); break;
        default: {
            QString out = s.toLower();
            bool start = true;
            for (QChar& c : out) {
                if (start && c.isLetter()) c = c.toUpper();
                start = !c.isLetterOrNumber();
            }
            setOutput(*output_, out);
        }
        }
    }

private:
    InputPort* mode_;
};

class StringLengthPatch : public StringFunctionPatch {
public:
    explicit StringLengthPatch(const PatchSetup& setup) : StringFunctionPatch(setup, "inputString", "outputLength", PortType::Index) {}
    void execute(ExecutionContext&, double) override { setOutput(*output_, double(string(input_).size())); }
};

class StringComparePatch : public Patch {
public:
    explicit StringComparePatch(const PatchSetup& setup) : Patch(setup)
    {
        a_ = &addInput(QStringLiteral("inputString1"), PortType::String, QString());
        b_ = &addInput(QStringLiteral("inputString2"), PortType::String, QString());
        caseSensitive_ = &addInput(QStringLiteral("inputCaseSensitive"), PortType::Boolean, true);
        result_ = &addOutput(QStringLiteral("outputResult"), PortType::Boolean);
    }
    void execute(ExecutionContext&, double) override
    {
        const auto cs = boolean(caseSensitive_) ? Qt::CaseSensitive : Qt::CaseInsensitive;
        setOutput(*result_, string(a_).compare(string(b_), cs) == 0);
    }

private:
    InputPort* a_;
    InputPort* b_;
    InputPort* caseSensitive_;
    OutputPort* result_;
};

// Keeps at most inputMax characters (mode 0) or words (mode 1), from the
// start (direction 0) or the end, marking the cut with inputToken.
class StringTruncatePatch : public StringFunctionPatch {
public:
    explicit StringTruncatePatch(const PatchSetup& setup) : StringFunctionPatch(setup, "inputString", "outputString", PortType::String)
    {
        max_ = &addInput(QStringLiteral("inputMax"), PortType::Index, 10);
        mode_ = &addInput(QStringLiteral("inputMode"), PortType::Index, 0);
        direction_ = &addInput(QStringLiteral("inputDirection"), PortType::Index, 0);
        token_ = &addInput(QStringLiteral("inputToken"), PortType::String, QStringLiteral("…"));
    }
    void execute(ExecutionContext&, double) override
    {
        const QString s = string(input_);
        const int max = index(max_);
        const bool fromEnd = index(direction_) == 1;
        if (index(mode_) == 1) {
            QStringList words = s.split(QLatin1Char(' '), Qt::SkipEmptyParts);
            if (words.size() <= max) return setOutput(*output_, s);
            words = fromEnd ? words.mid(words.size() - max) : words.mid(0, max);
            const QString kept = words.join(QLatin1Char(' '));
            return setOutput(*output_, fromEnd ? string(token_) + kept : kept + string(token_));
        }
        if (s.size() <= max) return setOutput(*output_, s);
        setOutput(*output_, fromEnd ? string(token_) + s.right(max) : s.left(max) + string(token_));
    }

private:
    InputPort* max_;
    InputPort* mode_;
    InputPort* direction_;
    InputPort* token_;
};

class StringReplacePatch : public Patch {
public:
    explicit StringReplacePatch(const PatchSetup& setup) : Patch(setup)
    {
        source_ = &addInput(QStringLiteral("inputSourceString"), PortType::String, QString());
        search_ = &addInput(QStringLiteral("inputSearchString"), PortType::String, QString());
        replace_ = &addInput(QStringLiteral("inputReplaceString"), PortType::String, QString());
        caseSensitive_ = &addInput(QStringLiteral("inputCaseSensitive"), PortType::Boolean, true);
        output_ = &addOutput(QStringLiteral("outputString"), PortType::String);
    }
    void execute(ExecutionContext&, double) override
    {
        QString s = string(source_);
        const QString search = string(search_);
        if (!search.isEmpty())
            s.replace(search, string(replace_), boolean(caseSensitive_) ? Qt::CaseSensitive : Qt::CaseInsensitive);
        setOutput(*output_, s);
    }

private:
    InputPort* source_;
    InputPort* search_;
    InputPort* replace_;
    InputPort* caseSensitive_;
    OutputPort* output_;
};

// Number patterns as the platform's formatter writes them: "0" a digit
// always shown, "#" a digit when needed, "," grouping, "." the decimals.
class NumberFormatterPatch : public Patch {
public:
    explicit NumberFormatterPatch(const PatchSetup& setup)
        : Patch(setup), pattern_(stateString(setup, "format", QStringLiteral("#,##0.###")))
    {
        number_ = &addInput(QStringLiteral("inputNumber"), PortType::Number, 0.0);
        output_ = &addOutput(QStringLiteral("outputString"), PortType::String);
    }
    void execute(ExecutionContext&, double) override { setOutput(*output_, format(number(number_), pattern_)); }

    static QString format(double v, const QString& pattern)
    {
        const qsizetype first = pattern.indexOf(QRegularExpression(QStringLiteral("[0#]")));
        if (first < 0) return pattern;
        qsizetype last = first;
        while (last + 1 < pattern.size() && QStringLiteral("0#,.").contains(pattern[last + 1])) ++last;
        const QString prefix = pattern.left(first), suffix = pattern.mid(last + 1);
        const QString body = pattern.mid(first, last - first + 1);
        const QString integer = body.section(QLatin1Char('.'), 0, 0), fraction = body.section(QLatin1Char('.'), 1);
        const int minDecimals = int(fraction.count(QLatin1Char('0'))), maxDecimals = int(fraction.size());
        const int minIntegerDigits = int(integer.count(QLatin1Char('0')));
        QString digits = QString::number(std::abs(v), 'f', maxDecimals);
        QString intPart = digits.section(QLatin1Char('.'), 0, 0), fracPart = digits.section(QLatin1Char('.'), 1);
        while (fracPart.size() > minDecimals && fracPart.endsWith(QLatin1Char('0'))) fracPart.chop(1);
        while (intPart.size() < minIntegerDigits) intPart.prepend(QLatin1Char('0'));
        if (minIntegerDigits == 0 && intPart == QLatin1String("0")) intPart.clear();
        if (integer.contains(QLatin1Char(',')))
            for (qsizetype i = intPart.size() - 3; i > 0; i -= 3) intPart.insert(i, QLatin1Char(','));
        QString out = intPart;
        if (!fracPart.isEmpty()) out += QLatin1Char('.') + fracPart;
        if (out.isEmpty()) out = QStringLiteral("0");
        if (v < 0 && out.contains(QRegularExpression(QStringLiteral("[1-9]")))) out.prepend(QLatin1Char('-'));
        return prefix + out + suffix;
    }

private:
    QString pattern_;
    InputPort* number_;
    OutputPort* output_;
};

// Seconds since 2001-01-01 GMT as local date text: a Unicode date pattern
// ("HH:mm:ss", read with Qt's nearly identical pattern letters) or the
// "dateStyle"/"timeStyle" presets.
class DateFormatterPatch : public Patch {
public:
    explicit DateFormatterPatch(const PatchSetup& setup)
        : Patch(setup),
          pattern_(stateString(setup, "format")),
          dateStyle_(stateString(setup, "dateStyle")),
          timeStyle_(stateString(setup, "timeStyle"))
    {
        time_ = &addInput(QStringLiteral("inputTime"), PortType::Number, 0.0);
        output_ = &addOutput(QStringLiteral("outputString"), PortType::String);
    }
    void execute(ExecutionContext&, double) override
    {
        const double t = number(time_);
        if (!std::isfinite(t) || std::abs(t) > 1e11) return setOutput(*output_, QString());
        static const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
        const QDateTime when = reference.addMSecs(qint64(t * 1000)).toLocalTime();
        if (!pattern_.isEmpty()) return setOutput(*output_, QLocale::c().toString(when, pattern_));
        QStringList parts;
        if (!dateStyle_.isEmpty() && dateStyle_ != QLatin1String("None"))
            parts << QLocale::c().toString(when.date(), style(dateStyle_));
        if (!timeStyle_.isEmpty() && timeStyle_ != QLatin1String("None"))
            parts << QLocale::c().toString(when.time(), style(timeStyle_));
        setOutput(*output_, parts.join(QLatin1Char(' ')));
    }

private:
    static QLocale::FormatType style(const QString& name)
    {
        if (name == QLatin1String("Short")) return QLocale::ShortFormat;
        if (name == QLatin1String("Long") || name == QLatin1String("Full")) return QLocale::LongFormat;
        return QLocale::NarrowFormat;
    }
    QString pattern_, dateStyle_, timeStyle_;
    InputPort* time_;
    OutputPort* output_;
};

}  // namespace

void registerTextPatches(PatchRegistry& registry)
{
    registerTextImagePatch(registry);
    registry.add(QStringLiteral("QCStringFormat"), factoryOf<StringFormatPatch>(),
                 [](const QString& identifier) { return identifier.isEmpty() || identifier == QLatin1String("printer"); });
    registry.add(QStringLiteral("QCStringCase"), factoryOf<StringCasePatch>());
    registry.add(QStringLiteral("QCStringLength"), factoryOf<StringLengthPatch>());
    registry.add(QStringLiteral("QCStringCompare"), factoryOf<StringComparePatch>());
    registry.add(QStringLiteral("QCStringTruncate"), factoryOf<StringTruncatePatch>());
    registry.add(QStringLiteral("QCStringReplace"), factoryOf<StringReplacePatch>());
    registry.add(QStringLiteral("QCNumberFormatter"), factoryOf<NumberFormatterPatch>());
    registry.add(QStringLiteral("QCDateFormatter"), factoryOf<DateFormatterPatch>());
}

}  // namespace runtime
