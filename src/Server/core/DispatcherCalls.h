// Inside the dispatcher: how it calls providers. One call maps whatever the
// provider lets escape to the CIMException the client gets and checks the
// handler protocol; a fan-out asks several providers under OpenPegasus's
// rules and hands what they deliver to the answer's sink; a class nobody
// serves gets one error. Included by the dispatcher's own files only.
#ifndef QEL_Server_DispatcherCalls_h
#define QEL_Server_DispatcherCalls_h

#include "Dispatcher.h"
#include "ProviderErrors.h"
#include "ProviderManager.h"
#include "ServerLog.h"

#include "CoreText.h"

#include <Pegasus/Common/CIMStatusCode.h>

#include <memory>

namespace Pegasus
{

// No provider serves the class, nor does the repository.
inline CIMException notSupportedForClass(const CIMName& className)
{
    return CIMException(
        CIM_ERR_NOT_SUPPORTED,
        "No provider or repository defined for class " + className.getString() + ".");
}

// Results of several providers: OpenPegasus drops a NOT_SUPPORTED answer
// unless every provider gave one; any other error fails the request, and
// the providers after it are not asked.
class FanOut
{
public:
    template <class Call>
    void run(Call&& call)
    {
        if (_error)
            return;
        try
        {
            call();
            _answered = true;
        }
        catch (const CIMException& e)
        {
            if (e.getCode() != CIM_ERR_NOT_SUPPORTED)
                _error = std::make_unique<CIMException>(e);
            else if (!_notSupported)
                _notSupported = std::make_unique<CIMException>(e);
        }
    }

    void finish() const
    {
        if (_error)
            throw *_error;
        if (!_answered && _notSupported)
            throw *_notSupported;
    }

private:
    bool _answered = false;
    std::unique_ptr<CIMException> _error;
    std::unique_ptr<CIMException> _notSupported;
};

// Anything a provider call lets escape becomes the CIMException the client
// gets; what is not a CIM error is logged, since it is a provider fault.
template <class I, class Call>
void Dispatcher::_call(const ProviderId& provider, const HandlerProtocol& protocol, Call&& call)
{
    ProviderManager::Lease lease = _providers.acquire(provider);
    I* iface = dynamic_cast<I*>(lease.provider());
    if (iface == nullptr)
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "Invalid provider interface.");
    try
    {
        call(*iface);
    }
    catch (const CIMException&)
    {
        throw;
    }
    catch (...)
    {
        CIMException mapped = currentExceptionAsCIMException();
        ServerLog::warning(
            "provider " + provider.describe() +
            " threw a non-CIM exception: " + toStd(mapped.getMessage()));
        throw mapped;
    }
    if (protocol.hasStatus())
        throw protocol.status();
}

// A sink that takes objects as they are delivered gets each batch from the
// handler's outlet during the provider's call; any other gets the provider's
// objects once its call has returned, when those it no longer holds can be
// filtered in place. Either way, a provider whose call fails adds nothing
// more, and its NOT_SUPPORTED is dropped when another provider answers.
template <class I, class H, class Target, class Ask, class Forward>
void Dispatcher::_fanOut(
    const std::vector<Target>& targets, Answer& answer, Ask&& ask, Forward&& forward)
{
    typedef typename H::Object Object;
    const bool asDelivered = answer.sink.delivery() == CIMResponseSink::Delivery::AsDelivered;
    FanOut fanOut;
    for (const Target& target : targets)
    {
        fanOut.run(
            [&]
            {
                H handler(
                    _threshold,
                    asDelivered ? DeliveryOutlet<Object>(forward) : DeliveryOutlet<Object>());
                _call<I>(
                    *target.provider, handler.protocol(),
                    [&](I& provider) { ask(provider, target, handler); });
                const Array<Object>& kept = handler.result();
                for (Uint32 i = 0; i < kept.size(); ++i)
                    forward(kept[i]);
            });
    }
    fanOut.finish();
}

}  // namespace Pegasus

#endif
