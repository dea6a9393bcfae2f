// The HTTP request qel-cimload repeats: headers and CIM-XML body, built once.
#ifndef QEL_BENCH_LOAD_CIMREQUESTTEXT_H
#define QEL_BENCH_LOAD_CIMREQUESTTEXT_H

#include "LoadOptions.h"

#include <string>

namespace qel
{
namespace load
{

// The IMETHODCALL document for the options' operation and parameters. Throws
// std::invalid_argument when the target is not a class name or object path of the kind the
// operation needs.
std::string requestBody(const LoadOptions& options);

// POST /cimom with Basic authentication, the CIM headers and `body`.
std::string httpRequest(const LoadOptions& options, const std::string& body);

}  // namespace load
}  // namespace qel

#endif
