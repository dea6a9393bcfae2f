// Project extension (not part of the OpenPegasus API): CIM values of the simple types read
// from their text forms, as CIM-XML's VALUE elements carry them and as untyped method
// parameters and SetProperty values reach the server: booleans TRUE or FALSE in any case;
// integers in decimal or 0x hexadecimal, optionally signed, within the type's range; reals
// in plain decimal notation or NaN, INF, -INF; a char16 as one character; datetimes in the
// CIM form. White space around a text is ignored, except in strings and char16s. Shared by
// the CIM-XML reader and the server's dispatcher.
#ifndef Pegasus_ValueText_h
#define Pegasus_ValueText_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>

#include <functional>
#include <string>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE ValueText
{
public:
    // Where a text comes from, as error messages name it. A description that costs something
    // to build (an element and its byte offset) is only made when an error is thrown: values
    // are read by the thousand and almost never fail.
    class Origin
    {
    public:
        Origin(const char* description) : _fixed(description) {}
        Origin(const std::string& description) : _fixed(description.c_str()) {}
        explicit Origin(std::function<std::string()> describe) : _describe(std::move(describe)) {}
        std::string str() const { return _describe ? _describe() : std::string(_fixed); }

    private:
        const char* _fixed = nullptr;
        std::function<std::string()> _describe;
    };

    // A value of a simple type (not a reference or an embedded object) from text. Text that
    // does not fit the type throws CIMException(CIM_ERR_INVALID_PARAMETER) with
    // "<where>: <what is wrong> \"<text>\"".
    static CIMValue parseScalar(CIMType type, const std::string& text, const Origin& where);
    static CIMValue
    parseArray(CIMType type, const std::vector<std::string>& texts, const Origin& where);

    // TRUE or FALSE in any case, white space around it ignored; false for anything else.
    static bool parseBoolean(const std::string& text, bool& result);

    // A String for an error message about input: `bytes` as they stand when they are UTF-8,
    // else with every byte from 0x80 up written as \xNN, so that reporting bad input never
    // fails itself.
    static String messageText(const std::string& bytes);

    // CIMException(CIM_ERR_INVALID_PARAMETER) "text of <where> is not valid UTF-8".
    [[noreturn]] static void throwNotUtf8(const char* where);
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_ValueText_h */
