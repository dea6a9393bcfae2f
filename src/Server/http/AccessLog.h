// The access log of the CIM-XML front-end: one info line per request saying when it
// arrived, who sent it from where, what it asked for, how it ended and how long it took:
//
//   access time=2024-05-02T09:14:07.250Z user=monitor client=127.0.0.1
//     op=EnumerateInstances class=QEL_FCPort method=- http=200 cim=CIM_ERR_SUCCESS
//     duration=3.412ms
//
// (one line; "-" where a field does not apply or is not known, e.g. the user of a request
// refused before it authenticated; error="..." after a failed operation).
#ifndef QEL_SERVER_HTTP_ACCESSLOG_H
#define QEL_SERVER_HTTP_ACCESSLOG_H

#include "HttpMessage.h"

#include <Server/xml/Messages.h>

#include <chrono>
#include <string>

namespace qel
{
namespace http
{

struct AccessRecord
{
    std::chrono::system_clock::time_point arrived;
    std::chrono::steady_clock::time_point started;  // for the duration
    std::string user;
    std::string client;
    std::string operation;
    std::string className;
    std::string method;  // of an extrinsic call
    int httpStatus = 0;
    std::string cimStatus;  // "" when the answer carries no CIM result
    std::string error;      // the CIM error's description
    std::chrono::microseconds duration{0};
};

// Operation, class and method of a decoded request.
void describeRequest(AccessRecord& record, const cimxml::CimRequest& request);
// Status, CIM result and duration (up to `finished`) of the answer.
void describeOutcome(
    AccessRecord& record, const HttpResponse& response, const cimxml::CimResponse& result,
    std::chrono::steady_clock::time_point finished);

// The line itself. Client-supplied text is escaped so that a line stays one line.
std::string accessLine(const AccessRecord& record);

// Writes the line at info level when the access log is on.
void writeAccessLog(const AccessRecord& record);

}  // namespace http
}  // namespace qel

#endif
