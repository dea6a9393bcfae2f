// Names made from C strings are remembered by the address of their text, and names of
// classes share interned texts: a text seen at a known address may have changed since, and
// an interned text is still a String with value semantics.
#include "test_runtime_support.h"

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace Pegasus;
using qeltest::str;

namespace
{

TEST(NameRecall, AnAddressSeenBeforeMayHoldAnotherText)
{
    char buffer[32];
    // Longer, shorter, same length, illegal, empty: each read as it is now.
    const char* texts[] = {"SystemCreationClassName", "Name", "Nbme", "DeviceID", "Device-ID", ""};
    for (int round = 0; round < 2; ++round)
    {
        for (const char* t : texts)
        {
            SCOPED_TRACE(t);
            std::strcpy(buffer, t);
            const bool legal = CIMName::legal(String(t));
            if (legal)
            {
                EXPECT_EQ(str(CIMName(buffer).getString()), t);
                EXPECT_EQ(str(CIMNamespaceName(buffer).getString()), t);
            }
            else
            {
                EXPECT_THROW(CIMName name(buffer), InvalidNameException);
                EXPECT_THROW(CIMNamespaceName ns(buffer), InvalidNamespaceNameException);
            }
        }
    }
    std::strcpy(buffer, "/root/qel");
    EXPECT_EQ(str(CIMNamespaceName(buffer).getString()), "root/qel");
    std::strcpy(buffer, "root/qe");
    EXPECT_EQ(str(CIMNamespaceName(buffer).getString()), "root/qe");
}

TEST(NameRecall, NamesOfOneTextStayIndependentValues)
{
    const CIMName a("DeviceID");
    CIMName b("DeviceID");
    EXPECT_EQ(a.getString().getChar16Data(), b.getString().getChar16Data());
    b = CIMName("deviceid");
    EXPECT_TRUE(a.equal(b));
    EXPECT_EQ(str(a.getString()), "DeviceID");
    // Changing a String copied from a name changes neither the name nor its text.
    String copy = a.getString();
    copy.append(Char16('X'));
    copy[0] = Char16('d');
    EXPECT_EQ(str(copy), "deviceIDX");
    EXPECT_EQ(str(a.getString()), "DeviceID");
    EXPECT_EQ(str(CIMName("DeviceID").getString()), "DeviceID");
}

TEST(KeyOrder, SortedForFewAndForManyKeys)
{
    // 16 keys are sorted by position, 17 and more by a general sort: same result.
    for (Uint32 n : {2u, 16u, 17u})
    {
        SCOPED_TRACE(n);
        Array<CIMKeyBinding> keys;
        for (Uint32 i = n; i > 0; --i)
        {
            const std::string name = "K" + std::string(1, char('a' + i));
            keys.append(CIMKeyBinding(
                CIMName(name.c_str()), String(std::to_string(i).c_str()), CIMKeyBinding::NUMERIC));
        }
        const CIMObjectPath path(String(), CIMNamespaceName(), CIMName("X"), keys);
        const Array<CIMKeyBinding>& sorted = path.getKeyBindings();
        ASSERT_EQ(sorted.size(), n);
        for (Uint32 i = 1; i < n; ++i)
        {
            EXPECT_LT(
                String::compareNoCase(
                    sorted[i - 1].getName().getString(), sorted[i].getName().getString()),
                0);
        }
        // The keys handed in are not reordered.
        EXPECT_EQ(str(keys[0].getValue()), std::to_string(n));
    }
}

}  // namespace
