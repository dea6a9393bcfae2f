// Any byte string as a server's answer: "<operation name> <document>". Reading it either
// gives a response or refuses it with ResponseError, whichever pieces it arrives in (it is
// read whole and in pieces of the size the document's first byte gives, and both readings
// must agree); and reading an open's or a pull's state, or a count, from what was read
// either succeeds or throws the CIMException that says what the answer lacks.
#include <Server/xml/Operations.h>
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/ResponseDecoder.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace
{

// The answer re-encoded, or the refusal: what a client would make of the bytes.
std::string
outcome(const Pegasus::CIMOperationRequest& request, const char* data, size_t size, size_t cut)
{
    try
    {
        qel::cimxml::ResponseDecoder decoder(request);
        for (size_t at = 0; at < size; at += cut)
            decoder.feed(data + at, std::min(cut, size - at));
        const Pegasus::CIMOperationResponse r = decoder.finish();
        try
        {
            Pegasus::Boolean eos = false;
            r.enumerationContext(eos);
        }
        catch (const Pegasus::CIMException&)
        {
        }
        try
        {
            r.enumerationCount();
        }
        catch (const Pegasus::CIMException&)
        {
        }
        return "ok " + qel::cimxml::encodeResponse(r, "h", request.nameSpace);
    }
    catch (const qel::cimxml::ResponseError&)
    {
        return "refused";
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string input(reinterpret_cast<const char*>(data), size);
    const size_t space = input.find(' ');
    if (space == std::string::npos)
        return 0;
    const qel::cimxml::OperationEntry* entry =
        qel::cimxml::findIntrinsic(input.substr(0, space).c_str());
    if (entry == nullptr)
        return 0;
    Pegasus::CIMOperationRequest request;
    request.messageId = "1";
    request.operation = entry->operation;
    request.methodName = entry->name;
    request.nameSpace = Pegasus::CIMNamespaceName("root/qel");
    const char* body = input.data() + space + 1;
    const size_t length = input.size() - space - 1;
    const size_t cut = length == 0 ? 1 : 1 + static_cast<unsigned char>(body[0]) % 16;
    if (outcome(request, body, length, cut) != outcome(request, body, length, length + 1))
        __builtin_trap();  // the pieces a body arrives in must not matter
    return 0;
}
