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
    return std::string((const char*)s.getCString());
}

// Runs f, which must throw exactly E (or a subclass); returns getMessage().
// Records a failure when f throws nothing or something else.
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
        try
        {
            throw;
        }
        catch (const Pegasus::Exception& e)
        {
            ADD_FAILURE() << "other exception: " << str(e.getMessage());
        }
        catch (...)
        {
            ADD_FAILURE() << "non-Pegasus exception";
        }
        return "<wrong exception>";
    }
    ADD_FAILURE() << "no exception";
    return "<no exception>";
}

}  // namespace qeltest

#endif
