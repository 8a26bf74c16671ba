#include "plist/DateConversion.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace plist {

namespace {
constexpr double kSecondsFrom1970To2001 = 978307200.0;

// Days since 1970-01-01 of a proleptic Gregorian date (Howard Hinnant's algorithm).
long long daysFromCivil(long long y, unsigned m, unsigned d)
{
    y -= m <= 2;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = unsigned(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + (long long)doe - 719468;
}

void civilFromDays(long long z, long long& y, unsigned& m, unsigned& d)
{
    z += 719468;
    const long long era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = unsigned(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    y = (long long)yoe + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = doy - (153 * mp + 2) / 5 + 1;
    m = mp < 10 ? mp + 3 : mp - 9;
    y += m <= 2;
}

bool readNumber(std::string_view& text, std::size_t digits, long long& out)
{
    if (text.size() < digits) return false;
    auto [ptr, ec] = std::from_chars(text.data(), text.data() + digits, out);
    if (ec != std::errc() || ptr != text.data() + digits) return false;
    text.remove_prefix(digits);
    return true;
}

bool expect(std::string_view& text, char c)
{
    if (text.empty() || text.front() != c) return false;
    text.remove_prefix(1);
    return true;
}
}  // namespace

bool parseIso8601(std::string_view text, double& secondsSince2001)
{
    long long year, month, day, hour = 0, minute = 0, second = 0;
    bool negativeYear = !text.empty() && text.front() == '-';
    if (negativeYear) text.remove_prefix(1);
    if (!readNumber(text, 4, year) || !expect(text, '-') || !readNumber(text, 2, month) || !expect(text, '-') ||
        !readNumber(text, 2, day))
        return false;
    if (negativeYear) year = -year;
    double fraction = 0;
    if (!text.empty()) {
        if (!expect(text, 'T') || !readNumber(text, 2, hour) || !expect(text, ':') || !readNumber(text, 2, minute) ||
            !expect(text, ':') || !readNumber(text, 2, second))
            return false;
        if (!text.empty() && text.front() == '.') {
            std::size_t n = 1;
            while (n < text.size() && text[n] >= '0' && text[n] <= '9') ++n;
            std::string fractionText("0");
            fractionText.append(text.substr(0, n));
            std::from_chars(fractionText.data(), fractionText.data() + fractionText.size(), fraction);
            text.remove_prefix(n);
        }
        if (!expect(text, 'Z') || !text.empty()) return false;
    }
    if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 60) return false;
    const long long days = daysFromCivil(year, unsigned(month), unsigned(day));
    secondsSince2001 = double(days) * 86400.0 + double(hour * 3600 + minute * 60 + second) + fraction - kSecondsFrom1970To2001;
    return true;
}

std::string formatIso8601(double secondsSince2001)
{
    if (!std::isfinite(secondsSince2001)) secondsSince2001 = 0;
    const double unixSeconds = std::floor(secondsSince2001 + kSecondsFrom1970To2001);
    const double clamped = std::fmax(std::fmin(unixSeconds, 2.5e14), -2.5e14);
    long long total = (long long)clamped;
    long long days = total / 86400;
    long long rest = total % 86400;
    if (rest < 0) {
        rest += 86400;
        --days;
    }
    long long y;
    unsigned m, d;
    civilFromDays(days, y, m, d);
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%04lld-%02u-%02uT%02lld:%02lld:%02lldZ", y, m, d, rest / 3600, (rest / 60) % 60,
                  rest % 60);
    return buffer;
}

}  // namespace plist
