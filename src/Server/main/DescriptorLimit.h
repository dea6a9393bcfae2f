// The number of files the server may hold open: every connection takes one. Raised at
// start from the soft limit to the hard limit, so that connection limits, not the
// descriptor table, decide who is served.
#ifndef QEL_SERVER_MAIN_DESCRIPTORLIMIT_H
#define QEL_SERVER_MAIN_DESCRIPTORLIMIT_H

#include <cstddef>

namespace qel
{
namespace server
{

// Raises RLIMIT_NOFILE's soft limit to its hard limit; returns the soft limit now in force
// (0 when it cannot be read).
size_t raiseDescriptorLimit();

// Descriptors kept for everything but client connections: listeners, provider files, the
// simulator's state, logs.
constexpr size_t kReservedDescriptors = 64;

}  // namespace server
}  // namespace qel

#endif
