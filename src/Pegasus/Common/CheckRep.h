// Internal: the guard every shared-handle member runs before touching its
// representation. A default-constructed handle has none and must throw
// UninitializedObjectException instead of dereferencing null.
#ifndef Pegasus_CheckRep_h
#define Pegasus_CheckRep_h

#include <memory>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

template <class Rep>
inline Rep& checkRep(const std::shared_ptr<Rep>& rep)
{
    if (!rep)
        throw UninitializedObjectException();
    return *rep;
}

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CheckRep_h */
