// Any byte string as a request body: decoding either succeeds, refuses it with a
// ProtocolError, or reports a CIM error; and a decoded request encodes again.
#include <Server/xml/ProtocolError.h>
#include <Server/xml/RequestCodec.h>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    try
    {
        const qel::cimxml::DecodedRequest d =
            qel::cimxml::decodeRequest(reinterpret_cast<const char*>(data), size);
        if (!d.failed)
        {
            const std::string again = qel::cimxml::encodeRequest(d.request);
            const qel::cimxml::DecodedRequest back =
                qel::cimxml::decodeRequest(again.data(), again.size());
            if (back.failed)
                __builtin_trap();  // what we write we must read
        }
    }
    catch (const qel::cimxml::ProtocolError&)
    {
    }
    return 0;
}
