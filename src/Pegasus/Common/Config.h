// Basic types and macros of the OpenPegasus-compatible runtime.
#ifndef Pegasus_Config_h
#define Pegasus_Config_h

#include <cstddef>
#include <cstdlib>
#include <cstdio>
#include <iosfwd>

// The runtime targets Linux with gcc or clang.
#define PEGASUS_OS_TYPE_UNIX
#define PEGASUS_OS_LINUX
#define PEGASUS_COMPILER_GNU
#define PEGASUS_HAVE_NAMESPACES
#define PEGASUS_MAXHOSTNAMELEN 256

#define PEGASUS_IMPORT __attribute__((visibility("default")))
#define PEGASUS_EXPORT __attribute__((visibility("default")))
#define PEGASUS_HIDDEN_LINKAGE __attribute__((visibility("hidden")))

#define PEGASUS_NAMESPACE_BEGIN                                                                    \
    namespace Pegasus                                                                              \
    {
#define PEGASUS_NAMESPACE_END }
#define PEGASUS_NAMESPACE(X) Pegasus::X
#define PEGASUS_STD(X) std::X
#define PEGASUS_USING_STD using namespace std
#define PEGASUS_USING_PEGASUS using namespace Pegasus

#define PEGASUS_EXPLICIT explicit
#define PEGASUS_TEMPLATE_SPECIALIZATION template <>
#define PEGASUS_IOS_BINARY , std::ios::binary
#define PEGASUS_OR_IOS_BINARY | std::ios::binary

#define PEGASUS_SINT64_LITERAL(X) (Sint64(X##LL))
#define PEGASUS_UINT64_LITERAL(X) (Uint64(X##ULL))
#define PEGASUS_64BIT_CONVERSION_WIDTH "ll"

#define PEGASUS_FORMAT(A1, A2) __attribute__((format(printf, A1, A2)))

#ifndef PEGASUS_USE_EXPERIMENTAL_INTERFACES
#define PEGASUS_USE_EXPERIMENTAL_INTERFACES
#endif

namespace Pegasus
{

typedef bool Boolean;
typedef unsigned char Uint8;
typedef signed char Sint8;
typedef unsigned short Uint16;
typedef short Sint16;
typedef unsigned int Uint32;
typedef int Sint32;
typedef unsigned long long Uint64;
typedef long long Sint64;
typedef float Real32;
typedef double Real64;

}  // namespace Pegasus

#define PEG_NOT_FOUND Uint32(-1)

#define PEGASUS_ARRAY_SIZE(X) (sizeof(X) / sizeof(X[0]))

#include <Pegasus/Common/Linkage.h>

#endif /* Pegasus_Config_h */
