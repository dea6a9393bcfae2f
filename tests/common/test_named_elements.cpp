// Member lists (properties, qualifiers, methods, parameters) find members by name ignoring
// ASCII case and refuse a second member of the same name at every length: scanned while
// short, indexed from NamedElementList::kIndexedFrom on, and still after removals and
// copies.
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/NameIndex.h>
#include <Pegasus/Common/NamedElementList.h>
#include "test_runtime_support.h"

#include <cctype>
#include <string>

using namespace Pegasus;
using namespace qeltest;

namespace
{

constexpr Uint32 kIndexed = NamedElementList<CIMProperty>::kIndexedFrom;

// Names of one length, first and last letter (what a scan compares first), differing only
// inside: every pair has to be told apart by its full text.
std::string nameAt(Uint32 i)
{
    std::string digits = std::to_string(100000 + i);
    return "N" + digits + "z";
}

std::string upper(std::string s)
{
    for (char& c : s)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

CIMInstance instanceWith(Uint32 n)
{
    CIMInstance inst("QEL_Wide");
    for (Uint32 i = 0; i < n; ++i)
        inst.addProperty(CIMProperty(CIMName(nameAt(i).c_str()), CIMValue(Uint32(i))));
    return inst;
}

void expectEveryNameAtItsPlace(const CIMInstance& inst, Uint32 n, const char* what)
{
    ASSERT_EQ(inst.getPropertyCount(), n) << what;
    for (Uint32 i = 0; i < n; ++i)
        ASSERT_EQ(inst.findProperty(CIMName(upper(nameAt(i)).c_str())), i) << what << " " << i;
    EXPECT_EQ(inst.findProperty("N199999z"), PEG_NOT_FOUND) << what;
}

class MemberListLength : public ::testing::TestWithParam<Uint32>
{
};

TEST_P(MemberListLength, FindsEveryMemberAndRefusesEveryDuplicate)
{
    const Uint32 n = GetParam();
    CIMInstance inst = instanceWith(n);
    expectEveryNameAtItsPlace(inst, n, "built");
    for (Uint32 i : {Uint32(0), n / 2, n - 1})
    {
        const std::string again = upper(nameAt(i));
        EXPECT_EQ(
            thrownMessage<AlreadyExistsException>(
                [&] { inst.addProperty(CIMProperty(CIMName(again.c_str()), CIMValue(true))); }),
            "already exists: property \"" + again + "\"");
    }
    EXPECT_EQ(inst.getPropertyCount(), n);
}

TEST_P(MemberListLength, StaysRightAfterRemovalsAndCopies)
{
    const Uint32 n = GetParam();
    CIMInstance inst = instanceWith(n);
    inst.removeProperty(n / 2);
    EXPECT_EQ(inst.findProperty(CIMName(nameAt(n / 2).c_str())), PEG_NOT_FOUND);
    if (n / 2 + 1 < n)
    {
        EXPECT_EQ(inst.findProperty(CIMName(nameAt(n / 2 + 1).c_str())), n / 2);
    }
    // Added back at the end; the others can still not be added twice.
    inst.addProperty(CIMProperty(CIMName(nameAt(n / 2).c_str()), CIMValue(true)));
    EXPECT_EQ(inst.findProperty(CIMName(nameAt(n / 2).c_str())), n - 1);
    EXPECT_THROW(
        inst.addProperty(CIMProperty(CIMName(nameAt(0).c_str()), CIMValue(true))),
        AlreadyExistsException);

    const CIMInstance copy = instanceWith(n).clone();
    expectEveryNameAtItsPlace(copy, n, "clone");
}

// Copies take the original's index, or none; a copy that grows afterwards must still find
// every member and refuse every duplicate, old or new.
TEST_P(MemberListLength, CopiesThatGrowStayRight)
{
    const Uint32 n = GetParam();
    CIMClass c(CIMName("QEL_Wide"));
    for (Uint32 i = 0; i < n; ++i)
        c.addProperty(CIMProperty(CIMName(nameAt(i).c_str()), CIMValue(Uint32(i))));
    CIMInstance built = c.buildInstance(false, false, CIMPropertyList());
    CIMInstance cloned = instanceWith(n).clone();
    for (CIMInstance* inst : {&built, &cloned})
    {
        const char* what = inst == &built ? "built from its class" : "clone";
        expectEveryNameAtItsPlace(*inst, n, what);
        inst->addProperty(CIMProperty(CIMName(nameAt(n).c_str()), CIMValue(true)));
        inst->addProperty(CIMProperty(CIMName(nameAt(n + 1).c_str()), CIMValue(true)));
        EXPECT_EQ(inst->findProperty(CIMName(upper(nameAt(n + 1)).c_str())), n + 1) << what;
        for (Uint32 i : {Uint32(0), n / 2, n - 1, n})
        {
            EXPECT_THROW(
                inst->addProperty(CIMProperty(CIMName(upper(nameAt(i)).c_str()), CIMValue(false))),
                AlreadyExistsException)
                << what << " " << i;
        }
        EXPECT_EQ(inst->getPropertyCount(), n + 2) << what;
    }
    // The class itself is not changed by its instances growing.
    EXPECT_EQ(c.getPropertyCount(), n);
    EXPECT_EQ(c.findProperty(CIMName(nameAt(n).c_str())), PEG_NOT_FOUND);
}

TEST_P(MemberListLength, QualifiersAndMethodsAreListsLikeProperties)
{
    const Uint32 n = GetParam();
    CIMProperty p(CIMName("P"), CIMValue(true));
    CIMClass c(CIMName("QEL_Wide"));
    for (Uint32 i = 0; i < n; ++i)
    {
        p.addQualifier(CIMQualifier(CIMName(nameAt(i).c_str()), CIMValue(true)));
        c.addMethod(CIMMethod(CIMName(nameAt(i).c_str()), CIMTYPE_UINT32));
    }
    const CIMName last(upper(nameAt(n - 1)).c_str());
    EXPECT_EQ(p.findQualifier(last), n - 1);
    EXPECT_EQ(c.findMethod(last), n - 1);
    EXPECT_THROW(p.addQualifier(CIMQualifier(last, CIMValue(false))), AlreadyExistsException);
    EXPECT_THROW(c.addMethod(CIMMethod(last, CIMTYPE_UINT8)), AlreadyExistsException);
}

INSTANTIATE_TEST_SUITE_P(
    AroundTheIndex, MemberListLength,
    ::testing::Values(1u, kIndexed - 1, kIndexed, kIndexed + 1, 4 * kIndexed + 3));

TEST(NameIndex, FoldsAsciiLettersOnly)
{
    // As CIM names compare: "Ä" and "ä" are different names, "A" and "a" the same.
    EXPECT_EQ(NameIndex::hash(String("PortSpeed")), NameIndex::hash(String("pORTsPEED")));
    EXPECT_NE(NameIndex::hash(String("PortSpeed")), NameIndex::hash(String("PortSpeeds")));
    CIMInstance inst = instanceWith(kIndexed);
    inst.addProperty(CIMProperty(CIMName(String("\xc3\x84rger")), CIMValue(true)));
    inst.addProperty(CIMProperty(CIMName(String("\xc3\xa4rger")), CIMValue(true)));
    EXPECT_EQ(inst.findProperty(CIMName(String("\xc3\xa4rger"))), kIndexed + 1);
    EXPECT_THROW(
        inst.addProperty(CIMProperty(CIMName(String("\xc3\xa4RGER")), CIMValue(true))),
        AlreadyExistsException);
}

}  // namespace
