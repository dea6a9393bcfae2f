// Text to number conversions with the CIM rules for integer and real
// literals (decimal without leading zeros or 0x hex, 64-bit range checks).
// Shared by object path parsing, key comparison and value decoding.
#ifndef Pegasus_StringConversion_h
#define Pegasus_StringConversion_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMType.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE StringConversion
{
public:
    // 1*digit without leading zeros ("0" alone is fine), within 64 bits.
    static Boolean
    decimalStringToUint64(const char* text, Uint64& x, Boolean allowLeadingZeros = false);
    // "0x" or "0X" then 1*hexdigit, within 64 bits.
    static Boolean hexStringToUint64(const char* text, Uint64& x);
    // Decimal or hex.
    static Boolean stringToUnsignedInteger(const char* text, Uint64& x);
    // Optional '+' or '-', then decimal or hex, within the Sint64 range.
    static Boolean stringToSignedInteger(const char* text, Sint64& x);
    // [sign] *digit "." 1*digit [exponent], not overflowing a double.
    static Boolean stringToReal64(const char* text, Real64& x);
    // Whether x fits the unsigned (signed) integer type.
    static Boolean checkUintBounds(Uint64 x, CIMType type);
    static Boolean checkSintBounds(Sint64 x, CIMType type);
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_StringConversion_h */
