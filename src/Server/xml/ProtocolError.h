// A request the server cannot read as one CIM operation: answered with an HTTP error and
// the CIMError header rather than with a CIM ERROR element.
#ifndef QEL_SERVER_XML_PROTOCOLERROR_H
#define QEL_SERVER_XML_PROTOCOLERROR_H

#include <stdexcept>
#include <string>

namespace qel
{
namespace cimxml
{

class ProtocolError : public std::runtime_error
{
public:
    ProtocolError(int httpStatus, std::string cimError, const std::string& message)
        : std::runtime_error(message), _httpStatus(httpStatus), _cimError(std::move(cimError))
    {
    }
    int httpStatus() const { return _httpStatus; }
    // Value of the CIMError header: "request-not-well-formed", "request-not-valid",
    // "unsupported-operation", "header-mismatch", "unsupported-cim-version",
    // "unsupported-dtd-version", "unsupported-protocol-version", "multiple-requests-unsupported".
    const std::string& cimError() const { return _cimError; }

private:
    int _httpStatus;
    std::string _cimError;
};

}  // namespace cimxml
}  // namespace qel

#endif
