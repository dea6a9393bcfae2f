// CIMDateTime: a CIM timestamp or interval in its 25-character text form
// (yyyymmddhhmmss.mmmmmmsutc or ddddddddhhmmss.mmmmmm:000), with wildcards.
#ifndef Pegasus_CIMDateTime_h
#define Pegasus_CIMDateTime_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Array.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMDateTime
{
public:
    // Passed for a field of the numeric constructors that is a wildcard.
    static const Uint32 WILDCARD;

    // The zero interval "00000000000000.000000:000".
    CIMDateTime();
    CIMDateTime(const CIMDateTime& x);
    // Throws InvalidDateTimeFormatException or DateTimeOutOfRangeException.
    CIMDateTime(const String& str);
    // Microseconds since 0000-01-01 (timestamp, UTC) or an interval length.
    CIMDateTime(Uint64 usec, Boolean isInterval);
    CIMDateTime(
        Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes, Uint32 seconds,
        Uint32 microseconds, Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset);
    CIMDateTime(
        Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds, Uint32 microseconds,
        Uint32 numSignificantMicrosecondDigits);
    ~CIMDateTime();

    CIMDateTime& operator=(const CIMDateTime& x);

    String toString() const;
    // The same 25 characters and a NUL, written into text: no String made.
    void toChars(char (&text)[26]) const;
    void set(const String& str);
    void setTimeStamp(
        Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes, Uint32 seconds,
        Uint32 microseconds, Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset);
    void setInterval(
        Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds, Uint32 microseconds,
        Uint32 numSignificantMicrosecondDigits);
    void clear();

    // Local time with the local UTC offset.
    static CIMDateTime getCurrentDateTime();
    // finish - start in microseconds; mixing intervals and timestamps throws
    // InvalidDateTimeFormatException.
    static Sint64 getDifference(CIMDateTime startTime, CIMDateTime finishTime);

    Boolean isInterval() const;
    Boolean isInterval();
    Boolean isTimeStamp() const;
    Boolean equal(const CIMDateTime& x) const;
    // Timestamps are normalised to UTC.
    Uint64 toMicroSeconds() const;

    CIMDateTime operator+(const CIMDateTime& x) const;
    CIMDateTime& operator+=(const CIMDateTime& x);
    CIMDateTime operator-(const CIMDateTime& x) const;
    CIMDateTime& operator-=(const CIMDateTime& x);
    CIMDateTime operator*(Uint64 x) const;
    CIMDateTime& operator*=(Uint64 x);
    CIMDateTime operator/(Uint64 num) const;
    CIMDateTime& operator/=(Uint64 num);
    Uint64 operator/(const CIMDateTime& cdt) const;

    Boolean operator<(const CIMDateTime& x) const;
    Boolean operator<=(const CIMDateTime& x) const;
    Boolean operator>(const CIMDateTime& x) const;
    Boolean operator>=(const CIMDateTime& x) const;
    Boolean operator!=(const CIMDateTime& x) const;

private:
    static int _compare(const CIMDateTime& x, const CIMDateTime& y);

    // Microseconds of the written fields (local time for timestamps; the
    // offset is applied only when comparing or converting).
    Uint64 _usec;
    // Minutes east (sign '+') or west ('-') of UTC; 0 for intervals.
    Uint32 _utcOffset;
    // ':' for an interval, '+' or '-' for a timestamp.
    char _sign;
    // Trailing characters of the 21-character field part that are '*'.
    Uint16 _numWildcards;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMDateTime& x, const CIMDateTime& y);

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMDateTime_h */
