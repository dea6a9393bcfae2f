// Any byte string as a server's answer: "<operation name> <document>". Reading it either
// gives a response or refuses it with ResponseError, and reading an open's or a pull's
// state, or a count, from what was read either succeeds or throws the CIMException that
// says what the answer lacks.
#include <Server/xml/Operations.h>
#include <Server/xml/ResponseCodec.h>

#include <cstddef>
#include <cstdint>
#include <string>

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
    try
    {
        const Pegasus::CIMOperationResponse r = qel::cimxml::decodeResponse(
            input.data() + space + 1, input.size() - space - 1, request);
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
    }
    catch (const qel::cimxml::ResponseError&)
    {
    }
    return 0;
}
