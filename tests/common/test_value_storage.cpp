// A CIMValue keeps its value in itself (simple scalars as they are; texts, paths and arrays
// in place; datetimes and embedded objects in a shared box). Copies, moves and assignments
// between values of every kind keep value semantics.
#include "test_runtime_support.h"

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMValue.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace Pegasus;

namespace
{

std::vector<CIMValue> oneOfEachKind()
{
    CIMInstance embedded("QEL_Embedded");
    embedded.addProperty(CIMProperty(CIMName("Name"), CIMValue(String("e"))));
    Array<String> texts;
    texts.append("a");
    texts.append("b");
    return {
        CIMValue(),
        CIMValue(CIMTYPE_STRING, true, 3),
        CIMValue(Boolean(true)),
        CIMValue(Sint64(-5)),
        CIMValue(Real64(0.5)),
        CIMValue(Char16('x')),
        CIMValue(String("text")),
        CIMValue(CIMObjectPath("X.k=1")),
        CIMValue(texts),
        CIMValue(Array<Uint16>(2, 7)),
        CIMValue(CIMDateTime(3723000001ULL, true)),
        CIMValue(embedded),
        CIMValue(Array<CIMInstance>(1, embedded)),
    };
}

TEST(ValueStorage, CopiesMovesAndAssignmentsKeepEveryKind)
{
    const std::vector<CIMValue> values = oneOfEachKind();
    for (size_t i = 0; i < values.size(); ++i)
    {
        SCOPED_TRACE(i);
        const CIMValue& original = values[i];
        CIMValue copy(original);
        EXPECT_TRUE(copy.equal(original));
        EXPECT_EQ(copy.getArraySize(), original.getArraySize());

        CIMValue moved(std::move(copy));
        EXPECT_TRUE(moved.equal(original));
        // What is moved from is a null boolean scalar again.
        EXPECT_TRUE(copy.isNull());
        EXPECT_EQ(copy.getType(), CIMTYPE_BOOLEAN);
        EXPECT_FALSE(copy.isArray());

        // Assigned over each other kind, and back.
        for (size_t j = 0; j < values.size(); ++j)
        {
            CIMValue target(values[j]);
            target = original;
            EXPECT_TRUE(target.equal(original));
            target = values[j];
            EXPECT_TRUE(target.equal(values[j]));
            CIMValue source(original);
            target = std::move(source);
            EXPECT_TRUE(target.equal(original));
        }
        CIMValue self(original);
        self = *&self;
        EXPECT_TRUE(self.equal(original));
        self.clear();
        EXPECT_TRUE(self.isNull());
    }
}

TEST(ValueStorage, SetReplacesAndCopiesDoNotShareChanges)
{
    CIMValue v(String("first"));
    const CIMValue kept = v;
    String text;
    v.get(text);
    v.set(Uint32(4));
    EXPECT_EQ(v.getType(), CIMTYPE_UINT32);
    kept.get(text);
    EXPECT_EQ(qeltest::str(text), "first");
    // A value set from its own content.
    v.set(String("self"));
    String inner;
    v.get(inner);
    v.set(inner);
    v.get(inner);
    EXPECT_EQ(qeltest::str(inner), "self");
    // An array read out is a copy: changing it leaves the value.
    CIMValue a(Array<Uint16>(2, 7));
    Array<Uint16> out;
    a.get(out);
    out[0] = 1;
    Array<Uint16> again;
    a.get(again);
    EXPECT_EQ(again[0], 7);
    // Embedded instances go in and come out as clones.
    CIMInstance embedded("QEL_Embedded");
    CIMValue e(embedded);
    embedded.addProperty(CIMProperty(CIMName("Late"), CIMValue(Uint8(1))));
    CIMInstance back;
    e.get(back);
    EXPECT_EQ(back.getPropertyCount(), 0u);
}

}  // namespace
