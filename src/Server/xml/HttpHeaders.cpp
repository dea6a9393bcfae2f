#include "HttpHeaders.h"

#include "XmlText.h"

#include <cctype>
#include <strings.h>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{
namespace
{

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::string trimmed(const std::string& s)
{
    size_t b = s.find_first_not_of(" \t");
    if (b == std::string::npos)
        return std::string();
    size_t e = s.find_last_not_of(" \t");
    return s.substr(b, e - b + 1);
}

}  // namespace

std::string uriEncode(const std::string& text)
{
    static const char* hex = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : text)
    {
        if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == '~')
        {
            out += static_cast<char>(c);
        }
        else
        {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

bool uriDecode(const std::string& text, std::string& out)
{
    out.clear();
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] != '%')
        {
            out += text[i];
            continue;
        }
        if (i + 2 >= text.size())
            return false;
        const int hi = hexValue(text[i + 1]), lo = hexValue(text[i + 2]);
        if (hi < 0 || lo < 0)
            return false;
        out += static_cast<char>(hi * 16 + lo);
        i += 2;
    }
    return true;
}

std::string cimMethodHeader(const CimRequest& request)
{
    if (request.operation == Operation::InvokeMethod)
        return toUtf8(request.methodName);
    return entryOf(request.operation).name;
}

std::string cimObjectHeader(const CimRequest& request)
{
    if (request.operation != Operation::InvokeMethod)
        return uriEncode(toUtf8(request.nameSpace.getString()));
    CIMObjectPath target = request.target;
    target.setHost(String());
    target.setNameSpace(request.nameSpace);
    return uriEncode(toUtf8(target.toString()));
}

bool cimMethodMatches(const std::string& header, const CimRequest& request)
{
    return strcasecmp(trimmed(header).c_str(), toUtf8(request.methodName).c_str()) == 0;
}

bool cimObjectMatches(const std::string& header, const CimRequest& request)
{
    std::string decoded;
    if (!uriDecode(trimmed(header), decoded))
        return false;
    try
    {
        const String text = fromUtf8(decoded.c_str(), "CIMObject header");
        if (request.operation != Operation::InvokeMethod)
        {
            if (!CIMNamespaceName::legal(text))
                return false;
            return CIMNamespaceName(text) == request.nameSpace;
        }
        CIMObjectPath received(text);
        CIMObjectPath expected = request.target;
        expected.setHost(String());
        expected.setNameSpace(request.nameSpace);
        received.setHost(String());
        return received.identical(expected);
    }
    catch (const Exception&)
    {
        return false;
    }
}

}  // namespace cimxml
}  // namespace qel
