#include "HttpHeaders.h"

#include "CimXmlReader.h"
#include "CimXmlWriter.h"
#include "ProtocolError.h"
#include "XmlText.h"

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/ValueText.h>

#include <cctype>
#include <cstdlib>
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

// Longer CIMError trailers are left out: clients bound the size of a header section.
constexpr size_t kMaxErrorTrailer = 4096;

const std::string* field(const HeaderFields& fields, const char* name)
{
    // Any "NN-" prefix of an M-POST answer is skipped.
    for (const auto& f : fields)
    {
        const std::string& n = f.first;
        const size_t dash = n.size() > 3 && n[2] == '-' &&
                                    std::isdigit(static_cast<unsigned char>(n[0])) &&
                                    std::isdigit(static_cast<unsigned char>(n[1]))
                                ? 3
                                : 0;
        if (strcasecmp(n.c_str() + dash, name) == 0)
            return &f.second;
    }
    return nullptr;
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

HeaderFields errorTrailers(const CIMException& error, const std::string& prefix)
{
    std::string element;
    writeError(element, error);
    String description = cimStatusCodeToString(error.getCode());
    if (error.getMessage().size() != 0)
        description = description + ": " + error.getMessage();
    HeaderFields trailers{
        {prefix + "CIMStatusCode", std::to_string(static_cast<int>(error.getCode()))},
        {prefix + "CIMStatusCodeDescription", uriEncode(toUtf8(description))},
    };
    std::string encoded = uriEncode(element);
    if (encoded.size() <= kMaxErrorTrailer)
        trailers.emplace_back(prefix + "CIMError", std::move(encoded));
    return trailers;
}

std::string errorTrailerNames(const std::string& prefix)
{
    return prefix + "CIMStatusCode, " + prefix + "CIMStatusCodeDescription, " + prefix + "CIMError";
}

bool errorFromTrailers(const HeaderFields& trailers, CIMException& error)
{
    const std::string* code = field(trailers, "CIMStatusCode");
    if (code == nullptr)
        return false;
    const std::string number = trimmed(*code);
    char* end = nullptr;
    const long n = std::strtol(number.c_str(), &end, 10);
    const bool numeric = !number.empty() && *end == '\0';
    if (numeric && n == 0)
        return false;
    if (const std::string* cimError = field(trailers, "CIMError"))
    {
        std::string element;
        try
        {
            pugi::xml_document doc;
            if (uriDecode(trimmed(*cimError), element))
            {
                parseDocument(doc, element.data(), element.size());
                CimXmlReader reader;
                error = reader.error(doc.document_element());
                return true;
            }
        }
        catch (const Exception&)
        {
        }
        catch (const ProtocolError&)
        {
        }
    }
    // Without a readable CIMError: the number (anything else is a failure all the same)
    // and the description.
    std::string description;
    const std::string* text = field(trailers, "CIMStatusCodeDescription");
    if (text == nullptr || !uriDecode(trimmed(*text), description))
        description = "the answer failed after it had begun (CIMStatusCode " + number + ")";
    const String message = ValueText::messageText(description);
    error = numeric && n > 0 ? statusException(n, message) : CIMException(CIM_ERR_FAILED, message);
    return true;
}

}  // namespace cimxml
}  // namespace qel
