#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/Exception.h>

#include <cstring>
#include <ctime>
#include <sys/time.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{
const Uint64 SECOND = 1000000;
const Uint64 MINUTE = 60 * SECOND;
const Uint64 HOUR = 60 * MINUTE;
const Uint64 DAY = 24 * HOUR;

// Timestamps stay below the year 10000, intervals below 10^8 days.
const Uint64 TEN_THOUSAND_YEARS = 315569520000000000ULL;
const Uint64 HUNDRED_MILLION_DAYS = 8640000000000000000ULL;

// Days from 0000-01-01 to 1970-01-01 (proleptic Gregorian calendar).
const Sint64 DAYS_TO_1970 = 719528;

bool _isLeapYear(Uint32 year)
{
    return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0);
}

Uint32 _daysInMonth(Uint32 year, Uint32 month)
{
    static const Uint8 days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return (month == 2 && _isLeapYear(year)) ? 29 : days[month - 1];
}

// Days since 0000-01-01 of a valid date.
Sint64 _daysFromCivil(Sint64 y, Uint32 m, Uint32 d)
{
    y -= m <= 2;
    Sint64 era = (y >= 0 ? y : y - 399) / 400;
    Sint64 yoe = y - era * 400;
    Sint64 doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    Sint64 doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468 + DAYS_TO_1970;
}

void _civilFromDays(Sint64 days, Uint32& year, Uint32& month, Uint32& day)
{
    Sint64 z = days - DAYS_TO_1970 + 719468;
    Sint64 era = (z >= 0 ? z : z - 146096) / 146097;
    Sint64 doe = z - era * 146097;
    Sint64 yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    Sint64 doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    Sint64 mp = (5 * doy + 2) / 153;
    day = Uint32(doy - (153 * mp + 2) / 5 + 1);
    month = Uint32(mp < 10 ? mp + 3 : mp - 9);
    year = Uint32(yoe + era * 400 + (month <= 2));
}

[[noreturn]] void _outOfRange(const char* what)
{
    throw DateTimeOutOfRangeException(what);
}

// n digits at s, or WILDCARD if all n are '*'. Digits after an earlier
// wildcard field, or a mix of digits and '*', are malformed.
Uint32 _parseField(const Char16* s, Uint32 n, bool& priorWildcards)
{
    bool allWild = true;
    for (Uint32 i = 0; i < n; ++i)
        allWild = allWild && s[i] == '*';
    if (allWild)
    {
        priorWildcards = true;
        return CIMDateTime::WILDCARD;
    }
    if (priorWildcards)
        throw InvalidDateTimeFormatException();
    Uint32 x = 0;
    for (Uint32 i = 0; i < n; ++i)
    {
        Uint16 c = s[i];
        if (c < '0' || c > '9')
            throw InvalidDateTimeFormatException();
        x = x * 10 + (c - '0');
    }
    return x;
}

// Six microsecond characters; digits may turn into '*' part way and must
// then stay '*'. Returns the value and the count of leading digits.
Uint32 _parseMicroseconds(const Char16* s, bool priorWildcards, Uint32& significant)
{
    if (priorWildcards && s[0] != '*')
        throw InvalidDateTimeFormatException();
    Uint32 x = 0;
    significant = 6;
    for (Uint32 i = 0; i < 6; ++i)
    {
        Uint16 c = s[i];
        if (significant == 6 && c >= '0' && c <= '9')
            x = x * 10 + (c - '0');
        else if (c == '*')
        {
            if (significant == 6)
                significant = i;
            x *= 10;
        }
        else
            throw InvalidDateTimeFormatException();
    }
    return x;
}

void _putDigits(char*& p, Uint64 x, int n)
{
    for (int i = n - 1; i >= 0; --i)
    {
        p[i] = char('0' + x % 10);
        x /= 10;
    }
    p += n;
}
}  // namespace

const Uint32 CIMDateTime::WILDCARD = Uint32(-1);

CIMDateTime::CIMDateTime() : _usec(0), _utcOffset(0), _sign(':'), _numWildcards(0)
{
}

CIMDateTime::CIMDateTime(const CIMDateTime& x) = default;

CIMDateTime::CIMDateTime(const String& str) : CIMDateTime()
{
    set(str);
}

CIMDateTime::CIMDateTime(Uint64 usec, Boolean isInterval) : CIMDateTime()
{
    if (!isInterval && usec >= TEN_THOUSAND_YEARS)
        _outOfRange("Cannot create a CIMDateTime time stamp beyond the year 10,000");
    if (isInterval && usec >= HUNDRED_MILLION_DAYS)
        _outOfRange("Cannot create a CIMDateTime interval greater than 100 million days");
    _usec = usec;
    _sign = isInterval ? ':' : '+';
}

CIMDateTime::CIMDateTime(
    Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes, Uint32 seconds,
    Uint32 microseconds, Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset)
    : CIMDateTime()
{
    setTimeStamp(
        year, month, day, hours, minutes, seconds, microseconds, numSignificantMicrosecondDigits,
        utcOffset);
}

CIMDateTime::CIMDateTime(
    Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds, Uint32 microseconds,
    Uint32 numSignificantMicrosecondDigits)
    : CIMDateTime()
{
    setInterval(days, hours, minutes, seconds, microseconds, numSignificantMicrosecondDigits);
}

CIMDateTime::~CIMDateTime()
{
}

CIMDateTime& CIMDateTime::operator=(const CIMDateTime& x) = default;

void CIMDateTime::clear()
{
    *this = CIMDateTime();
}

void CIMDateTime::set(const String& str)
{
    // A bad text leaves this date-time cleared, never half set.
    clear();
    if (str.size() != 25)
        throw InvalidDateTimeFormatException();
    const Char16* s = str.getChar16Data();
    Uint16 sign = s[21];
    if (s[14] != '.')
        throw InvalidDateTimeFormatException();
    bool wild = false;
    CIMDateTime result;
    if (sign == ':')
    {
        Uint32 days = _parseField(s, 8, wild);
        Uint32 hours = _parseField(s + 8, 2, wild);
        Uint32 minutes = _parseField(s + 10, 2, wild);
        Uint32 seconds = _parseField(s + 12, 2, wild);
        Uint32 significant;
        Uint32 micro = _parseMicroseconds(s + 15, wild, significant);
        if (!(s[22] == '0' && s[23] == '0' && s[24] == '0'))
            throw InvalidDateTimeFormatException();
        result.setInterval(days, hours, minutes, seconds, micro, significant);
    }
    else if (sign == '+' || sign == '-')
    {
        Uint32 year = _parseField(s, 4, wild);
        Uint32 month = _parseField(s + 4, 2, wild);
        Uint32 day = _parseField(s + 6, 2, wild);
        Uint32 hours = _parseField(s + 8, 2, wild);
        Uint32 minutes = _parseField(s + 10, 2, wild);
        Uint32 seconds = _parseField(s + 12, 2, wild);
        Uint32 significant;
        Uint32 micro = _parseMicroseconds(s + 15, wild, significant);
        bool noWild = false;
        Uint32 offset = _parseField(s + 22, 3, noWild);
        if (noWild)
            throw InvalidDateTimeFormatException();
        // "-000" reads as "+000", as in the original.
        result.setTimeStamp(
            year, month, day, hours, minutes, seconds, micro, significant,
            sign == '+' ? Sint32(offset) : -Sint32(offset));
    }
    else
        throw InvalidDateTimeFormatException();
    *this = result;
}

void CIMDateTime::setTimeStamp(
    Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes, Uint32 seconds,
    Uint32 microseconds, Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset)
{
    clear();
    // A wildcard field makes it and every later field '*'; the count is of
    // the trailing characters of the first 21 (the '.' not counted here).
    Uint16 wild = 0;
    if (year == WILDCARD)
    {
        year = 0;
        wild = 20;
    }
    else if (year > 9999)
        _outOfRange("year is greater than 9999");

    if (month == WILDCARD)
    {
        month = 1;
        wild = wild ? wild : 16;
    }
    else if (month < 1 || month > 12)
        _outOfRange("illegal month number");

    if (day == WILDCARD)
    {
        day = 1;
        wild = wild ? wild : 14;
    }
    else if (day < 1 || day > _daysInMonth(year, month))
        _outOfRange("illegal day number");

    if (hours == WILDCARD)
    {
        hours = 0;
        wild = wild ? wild : 12;
    }
    else if (hours > 23)
        _outOfRange("illegal hours number ");

    if (minutes == WILDCARD)
    {
        minutes = 0;
        wild = wild ? wild : 10;
    }
    else if (minutes > 59)
        _outOfRange("illegal minutes number ");

    if (seconds == WILDCARD)
    {
        seconds = 0;
        wild = wild ? wild : 8;
    }
    else if (seconds > 59)
        _outOfRange("illegal seconds number ");

    if (numSignificantMicrosecondDigits > 6)
        _outOfRange("bad numSignificantMicrosecondDigits (must fall between 0 and 6)");
    if (microseconds > 999999)
        _outOfRange("microseconds number must be less than 999999");
    wild = wild ? wild : Uint16(6 - numSignificantMicrosecondDigits);

    if (utcOffset < -999 || utcOffset > 999)
        _outOfRange("illegal utcOffset");

    Uint64 days = Uint64(_daysFromCivil(year, month, day));
    _usec = microseconds + seconds * SECOND + minutes * MINUTE + hours * HOUR + days * DAY;
    _sign = utcOffset < 0 ? '-' : '+';
    _utcOffset = Uint32(utcOffset < 0 ? -utcOffset : utcOffset);
    _numWildcards = wild;
}

void CIMDateTime::setInterval(
    Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds, Uint32 microseconds,
    Uint32 numSignificantMicrosecondDigits)
{
    clear();
    Uint16 wild = 0;
    if (days == WILDCARD)
    {
        days = 1;  // the original counts one day under a wildcard day field
        wild = 20;
    }
    else if (days > 99999999)
        _outOfRange("illegal days number (must be less than 100000000");

    if (hours == WILDCARD)
    {
        hours = 0;
        wild = wild ? wild : 12;
    }
    else if (hours > 23)
        _outOfRange("illegal hours number ");

    if (minutes == WILDCARD)
    {
        minutes = 0;
        wild = wild ? wild : 10;
    }
    else if (minutes > 59)
        _outOfRange("illegal minutes number ");

    if (seconds == WILDCARD)
    {
        seconds = 0;
        wild = wild ? wild : 8;
    }
    else if (seconds > 59)
        _outOfRange("illegal seconds number ");

    if (numSignificantMicrosecondDigits > 6)
        _outOfRange("bad numSignificantMicrosecondDigits (must fall between 0 and 6)");
    if (microseconds > 999999)
        _outOfRange("microseconds number must be less than 999999");
    wild = wild ? wild : Uint16(6 - numSignificantMicrosecondDigits);

    _usec = microseconds + seconds * SECOND + minutes * MINUTE + hours * HOUR + Uint64(days) * DAY;
    _sign = ':';
    _utcOffset = 0;
    _numWildcards = wild;
}

String CIMDateTime::toString() const
{
    char buf[26];
    toChars(buf);
    return String(buf, 25);
}

void CIMDateTime::toChars(char (&buf)[26]) const
{
    char* p = buf;
    Uint64 usec = _usec;
    Uint64 micro = usec % SECOND;
    Uint64 seconds = (usec / SECOND) % 60;
    Uint64 minutes = (usec / MINUTE) % 60;
    Uint64 hours = (usec / HOUR) % 24;
    Uint64 days = usec / DAY;
    if (_sign == ':')
        _putDigits(p, days, 8);
    else
    {
        Uint32 year, month, day;
        _civilFromDays(Sint64(days), year, month, day);
        _putDigits(p, year, 4);
        _putDigits(p, month, 2);
        _putDigits(p, day, 2);
    }
    _putDigits(p, hours, 2);
    _putDigits(p, minutes, 2);
    _putDigits(p, seconds, 2);
    *p++ = '.';
    _putDigits(p, micro, 6);
    *p++ = _sign;
    _putDigits(p, _sign == ':' ? 0 : _utcOffset, 3);
    *p = '\0';

    // The last _numWildcards field characters before the sign become '*'.
    Uint32 n = _numWildcards;
    for (int i = 20; n > 0 && i >= 0; --i)
    {
        if (buf[i] == '.')
            continue;
        buf[i] = '*';
        --n;
    }
}

CIMDateTime CIMDateTime::getCurrentDateTime()
{
    struct timeval tv;
    gettimeofday(&tv, nullptr);
    time_t sec = tv.tv_sec;
    struct tm local;
    localtime_r(&sec, &local);
    long east = local.tm_gmtoff / 60;

    CIMDateTime result;
    result._usec =
        Uint64(DAYS_TO_1970) * DAY + Uint64(Sint64(sec) + east * 60) * SECOND + Uint64(tv.tv_usec);
    result._sign = east < 0 ? '-' : '+';
    result._utcOffset = Uint32(east < 0 ? -east : east);
    result._numWildcards = 0;
    return result;
}

Sint64 CIMDateTime::getDifference(CIMDateTime startTime, CIMDateTime finishTime)
{
    if (startTime.isInterval() != finishTime.isInterval())
        throw InvalidDateTimeFormatException();
    return Sint64(finishTime.toMicroSeconds() - startTime.toMicroSeconds());
}

Boolean CIMDateTime::isInterval() const
{
    return _sign == ':';
}

Boolean CIMDateTime::isInterval()
{
    return _sign == ':';
}

Boolean CIMDateTime::isTimeStamp() const
{
    return _sign != ':';
}

// The UTC offset is applied only as far as the wildcards allow: not at all
// when hours are wildcards, hours only when minutes are.
Uint64 CIMDateTime::toMicroSeconds() const
{
    if (_sign == ':')
        return _usec;
    Uint64 h = (_utcOffset / 60) * HOUR;
    Uint64 m = (_utcOffset % 60) * MINUTE;
    Uint64 shift = _numWildcards < 10 ? h + m : _numWildcards < 12 ? h : 0;
    return _sign == '+' ? _usec - shift : _usec + shift;
}

// Orders two date-times of the same kind; differing kinds throw
// TypeMismatchException. With wildcards the UTC-normalised texts are
// compared character by character, skipping positions where either has '*'.
int CIMDateTime::_compare(const CIMDateTime& x, const CIMDateTime& y)
{
    if (x.isInterval() != y.isInterval())
        throw TypeMismatchException("Trying to compare CIMDateTime objects of differing types");
    Uint64 xm = x.toMicroSeconds();
    Uint64 ym = y.toMicroSeconds();
    if (x._numWildcards == 0 && y._numWildcards == 0)
        return xm < ym ? -1 : xm > ym ? 1 : 0;
    CIMDateTime x1(x);
    CIMDateTime y1(y);
    if (!x.isInterval())
    {
        x1._usec = xm;
        x1._utcOffset = 0;
        x1._sign = '+';
        y1._usec = ym;
        y1._utcOffset = 0;
        y1._sign = '+';
    }
    String s1 = x1.toString();
    String s2 = y1.toString();
    const Char16* p1 = s1.getChar16Data();
    const Char16* p2 = s2.getChar16Data();
    for (Uint32 i = 0; i < 25; ++i)
    {
        if (p1[i] == '*' || p2[i] == '*')
            continue;
        int r = int(Uint16(p1[i])) - int(Uint16(p2[i]));
        if (r)
            return r;
    }
    return 0;
}

Boolean CIMDateTime::equal(const CIMDateTime& x) const
{
    return _compare(*this, x) == 0;
}

CIMDateTime CIMDateTime::operator+(const CIMDateTime& x) const
{
    CIMDateTime result(*this);
    return result += x;
}

CIMDateTime& CIMDateTime::operator+=(const CIMDateTime& x)
{
    if (!x.isInterval())
        throw TypeMismatchException();
    Uint64 add = x._usec;
    Uint64 limit = isInterval() ? HUNDRED_MILLION_DAYS : TEN_THOUSAND_YEARS;
    if (add >= limit || _usec >= limit - add)
        _outOfRange("Result of adding two CIMDateTimes is out of range.");
    _usec += add;
    return *this;
}

CIMDateTime CIMDateTime::operator-(const CIMDateTime& dt) const
{
    if (isInterval() && !dt.isInterval())
        throw TypeMismatchException();
    Uint64 x = toMicroSeconds();
    Uint64 y = dt.toMicroSeconds();
    if (x < y)
        _outOfRange("Result of subtracting two CIMDateTimes would be negative.");
    if (isInterval() == dt.isInterval())
        return CIMDateTime(x - y, true);
    // Timestamp minus interval keeps this timestamp's offset and wildcards.
    CIMDateTime result(*this);
    if (_usec < dt._usec)
        _outOfRange("Result of subtracting two CIMDateTimes would be negative.");
    result._usec = _usec - dt._usec;
    return result;
}

CIMDateTime& CIMDateTime::operator-=(const CIMDateTime& x)
{
    if (!x.isInterval())
        throw TypeMismatchException();
    if (_usec < x._usec)
        _outOfRange("Result of subtracting two CIMDateTimes would be negative.");
    _usec -= x._usec;
    return *this;
}

CIMDateTime CIMDateTime::operator*(Uint64 x) const
{
    CIMDateTime result(*this);
    return result *= x;
}

CIMDateTime& CIMDateTime::operator*=(Uint64 x)
{
    if (!isInterval())
        throw TypeMismatchException();
    if (x != 0 && _usec >= (HUNDRED_MILLION_DAYS + x - 1) / x)
        _outOfRange("Result of multiplying a CIMDateTime is out of range.");
    _usec *= x;
    return *this;
}

CIMDateTime CIMDateTime::operator/(Uint64 num) const
{
    CIMDateTime result(*this);
    return result /= num;
}

CIMDateTime& CIMDateTime::operator/=(Uint64 num)
{
    if (!isInterval())
        throw TypeMismatchException("Can not divide a TimeStamp by an integer");
    if (num == 0)
        throw Exception("Can not divide CIMDateTime by zero");
    _usec /= num;
    return *this;
}

Uint64 CIMDateTime::operator/(const CIMDateTime& cdt) const
{
    if (!isInterval() || !cdt.isInterval())
        throw TypeMismatchException(
            "Can not divide two CIMDateTime objects if one of them is a TimeStamp");
    if (cdt._usec == 0)
        throw Exception("Can not divide CIMDateTime by zero");
    return _usec / cdt._usec;
}

Boolean CIMDateTime::operator<(const CIMDateTime& x) const
{
    return _compare(*this, x) < 0;
}
Boolean CIMDateTime::operator<=(const CIMDateTime& x) const
{
    return _compare(*this, x) <= 0;
}
Boolean CIMDateTime::operator>(const CIMDateTime& x) const
{
    return _compare(*this, x) > 0;
}
Boolean CIMDateTime::operator>=(const CIMDateTime& x) const
{
    return _compare(*this, x) >= 0;
}
Boolean CIMDateTime::operator!=(const CIMDateTime& x) const
{
    return _compare(*this, x) != 0;
}

Boolean operator==(const CIMDateTime& x, const CIMDateTime& y)
{
    return x.equal(y);
}

PEGASUS_NAMESPACE_END
