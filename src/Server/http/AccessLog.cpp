#include "AccessLog.h"

#include <Server/core/ServerLog.h>
#include <Server/xml/XmlText.h>

#include <Pegasus/Common/CIMStatusCode.h>

#include <cstdio>
#include <ctime>

namespace qel
{
namespace http
{
namespace
{

// A field without blanks: anything outside printable ASCII, and '%', '"' and blanks, as
// %XX; an empty value as "-".
std::string field(const std::string& text)
{
    if (text.empty())
        return "-";
    std::string out;
    for (unsigned char c : text)
    {
        if (c <= 0x20 || c >= 0x7f || c == '%' || c == '"')
        {
            char code[4];
            std::snprintf(code, sizeof code, "%%%02X", c);
            out += code;
        }
        else
        {
            out += static_cast<char>(c);
        }
    }
    return out;
}

// A quoted text: '"' and '\' escaped, control characters as \xNN.
std::string quoted(const std::string& text)
{
    std::string out = "\"";
    for (unsigned char c : text)
    {
        if (c == '"' || c == '\\')
        {
            out += '\\';
            out += static_cast<char>(c);
        }
        else if (c < 0x20 || c == 0x7f)
        {
            char code[6];
            std::snprintf(code, sizeof code, "\\x%02x", c);
            out += code;
        }
        else
        {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

std::string utcTime(std::chrono::system_clock::time_point t)
{
    const auto ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(t.time_since_epoch()).count();
    const std::time_t seconds = static_cast<std::time_t>(ms / 1000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[96];
    std::snprintf(
        text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", parts.tm_year + 1900,
        parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
        static_cast<int>(ms % 1000));
    return text;
}

std::string text(const Pegasus::CIMName& name)
{
    return name.isNull() ? std::string() : cimxml::toUtf8(name.getString());
}

// The class a request is about: named directly, through an instance or class path, or
// as the target of a method call.
std::string classOf(const cimxml::CimRequest& r)
{
    if (!r.className.isNull())
        return text(r.className);
    if (!r.objectName.getClassName().isNull())
        return text(r.objectName.getClassName());
    if (!r.instance.isUninitialized())
        return text(r.instance.getClassName());
    if (!r.cimClass.isUninitialized())
        return text(r.cimClass.getClassName());
    return text(r.target.getClassName());
}

}  // namespace

void describeRequest(AccessRecord& record, const cimxml::CimRequest& request)
{
    record.operation = cimxml::entryOf(request.operation).name;
    record.className = classOf(request);
    if (request.operation == cimxml::Operation::InvokeMethod)
        record.method = cimxml::toUtf8(request.methodName);
}

void describeOutcome(
    AccessRecord& record, const HttpResponse& response, const cimxml::CimResponse& result,
    std::chrono::steady_clock::time_point finished)
{
    record.httpStatus = response.status;
    // Only a decoded request gets a CIM result; a refusal at the HTTP level has none.
    if (response.status == 200 && !record.operation.empty())
    {
        record.cimStatus = Pegasus::cimStatusCodeToString(
            result.failed ? result.error.getCode() : Pegasus::CIM_ERR_SUCCESS);
        if (result.failed)
            record.error = cimxml::toUtf8(result.error.getMessage());
    }
    record.duration =
        std::chrono::duration_cast<std::chrono::microseconds>(finished - record.started);
}

std::string accessLine(const AccessRecord& r)
{
    char duration[32];
    std::snprintf(
        duration, sizeof duration, "%.3fms", static_cast<double>(r.duration.count()) / 1000.0);
    std::string line = "access time=" + utcTime(r.arrived) + " user=" + field(r.user) +
                       " client=" + field(r.client) + " op=" + field(r.operation) +
                       " class=" + field(r.className) + " method=" + field(r.method) +
                       " http=" + std::to_string(r.httpStatus) + " cim=" + field(r.cimStatus) +
                       " duration=" + duration;
    if (!r.error.empty())
        line += " error=" + quoted(r.error);
    return line;
}

void writeAccessLog(const AccessRecord& record)
{
    if (Pegasus::ServerLog::accessLogEnabled())
        Pegasus::ServerLog::info(accessLine(record));
}

}  // namespace http
}  // namespace qel
