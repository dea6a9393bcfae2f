#include <Pegasus/Common/CIMResponseSink.h>

PEGASUS_NAMESPACE_BEGIN

CIMResponseSink::~CIMResponseSink() = default;

PEGASUS_NAMESPACE_END
