// Helpers shared by the object-model, provider-API and client tests.
#ifndef QEL_TEST_RUNTIME_SUPPORT_H
#define QEL_TEST_RUNTIME_SUPPORT_H

#include <string>
#include <gtest/gtest.h>
#include <Pegasus/Common/String.h>

namespace qeltest
{

inline std::string str(const Pegasus::String& s)
{
    return (const char*)s.getCString();
}

// Runs f, which must throw E (or a subclass), and returns getMessage().
template <class E, class F>
std::string thrownMessage(F&& f)
{
    try
    {
        f();
    }

    catch (const E& e)
    {
        return str(e.getMessage());
    }

    catch (...)
    {
        ADD_FAILURE() << "another exception was thrown";
        return "<wrong exception>";
    }

    ADD_FAILURE() << "no exception";
    return "<no exception>";
}

}  // namespace qeltest

#endif
