#include <Pegasus/Common/ResultFilter.h>
#include <Pegasus/Common/CIMObjectRep.h>
#include <Pegasus/Common/CIMPropertyRep.h>
#include <Pegasus/Common/CheckRep.h>

#include <atomic>

PEGASUS_NAMESPACE_BEGIN

bool ResultFilter::_reusable(const CIMObjectRep& rep, long handles, Boolean includeQualifiers)
{
    // A handle can only be copied from another one, so a count of one
    // cannot grow behind our back.
    if (handles != 1)
        return false;
    // Dropping a qualifier changes its owner count, which a qualifier shared
    // with another list would see: that case keeps to the copy.
    if (!includeQualifiers && rep.qualifiers.size() != 0)
        return false;
    // A property with a rep of its own must have one handle: this list's. The properties
    // buildInstance made in the instance's block have uncounted handles here: no other
    // handle may share the block (one handed out shares it).
    for (Uint32 i = 0, n = rep.properties.size(); i < n; i++)
    {
        const std::shared_ptr<CIMPropertyRep>& p = rep.properties.at(i)._rep;
        if (!includeQualifiers && p->qualifiers.size() != 0)
            return false;
        const long count = p.use_count();
        if (count == 0)
            continue;  // of the instance's block
        if (count != 1)
            return false;  // (a block of another instance held by this handle alone is fine)
    }
    if (rep.propertyBlock && rep.propertyBlock.use_count() != 1)
        return false;
    // Whatever the last other holders did before letting go happened
    // before the changes made here.
    std::atomic_thread_fence(std::memory_order_acquire);
    return true;
}

template <class Handle>
Handle ResultFilter::_filtered(
    const Handle& delivered, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    const auto& rep = checkRep(delivered._rep);
    Handle result = _reusable(rep, delivered._rep.use_count(), includeQualifiers)
                        ? delivered
                        : delivered.clone();
    result.instanceFilter(includeQualifiers, includeClassOrigin, propertyList);
    return result;
}

CIMInstance ResultFilter::filtered(
    const CIMInstance& delivered, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _filtered(delivered, includeQualifiers, includeClassOrigin, propertyList);
}

CIMObject ResultFilter::filtered(
    const CIMObject& delivered, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _filtered(delivered, includeQualifiers, includeClassOrigin, propertyList);
}

PEGASUS_NAMESPACE_END
