// Any byte string as the answer to an EnumerateInstances request, read as it would arrive:
// reading either succeeds or refuses it with a ResponseError, and how the bytes are cut
// (the first byte says where) never changes the outcome.
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/ResponseDecoder.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace
{

using qel::cimxml::CimRequest;
using qel::cimxml::CimResponse;

// The answer re-encoded, or the refusal: what a client would make of the bytes.
std::string outcome(const CimRequest& r, const char* data, size_t size, size_t cut)
{
    try
    {
        qel::cimxml::ResponseDecoder decoder(r);
        for (size_t at = 0; at < size; at += cut)
            decoder.feed(data + at, std::min(cut, size - at));
        const CimResponse a = decoder.finish();
        return "ok " + qel::cimxml::encodeResponse(a, "h", r.nameSpace);
    }
    catch (const qel::cimxml::ResponseError&)
    {
        return "refused";
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    CimRequest r;
    r.messageId = "1";
    r.operation = qel::cimxml::Operation::EnumerateInstances;
    r.methodName = "EnumerateInstances";
    r.nameSpace = Pegasus::CIMNamespaceName("root/qel");
    const char* body = reinterpret_cast<const char*>(data) + 1;
    const size_t cut = 1 + data[0] % 16;
    if (outcome(r, body, size - 1, cut) != outcome(r, body, size - 1, size))
        __builtin_trap();  // the pieces a body arrives in must not matter
    return 0;
}
