// Array<T>: bounds checks, copy-on-write, insertion and removal edges.
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>

#include <gtest/gtest.h>

PEGASUS_USING_PEGASUS;

TEST(ArrayEdit, InsertRemoveAndTheirBounds)
{
    Array<String> a;
    a.append("b");
    a.prepend("a");
    a.insert(2, "d");
    a.insert(2, "c");
    const String more[] = {"e", "f"};
    a.append(more, 2);
    a.remove(1, 2);
    ASSERT_EQ(a.size(), 4u);
    EXPECT_EQ(a[0], "a");
    EXPECT_EQ(a[1], "d");
    EXPECT_EQ(a[3], "f");

    // Out of range is refused, without wrap-around.
    Array<Uint32> n;
    EXPECT_THROW(n[0], IndexOutOfBoundsException);
    n.append(1);
    n.append(2);
    const Array<Uint32>& c = n;
    EXPECT_THROW(c[2], IndexOutOfBoundsException);
    EXPECT_THROW(n.insert(3, 9), IndexOutOfBoundsException);
    EXPECT_THROW(n.remove(2), IndexOutOfBoundsException);
    EXPECT_THROW(n.remove(1, 2), IndexOutOfBoundsException);
    EXPECT_THROW(n.remove(0, 0xFFFFFFFFu), IndexOutOfBoundsException);
    n.remove(5, 0);  // nothing to remove is never an error
    EXPECT_EQ(n.size(), 2u);
}

TEST(ArraySharing, CopiesAreIndependentAndSelfAppendWorks)
{
    Array<String> a(20, String("v"));
    Array<String> b(a);
    b[0] = "changed";
    b.remove(19);
    EXPECT_EQ(a[0], "v");
    EXPECT_EQ(a.size(), 20u);
    EXPECT_EQ(b.size(), 19u);
    Array<String> self;
    self.append("x");
    for (int i = 0; i < 10; ++i)
        self.append(self[0]);  // element of the array itself, across growth
    self.appendArray(self);
    EXPECT_EQ(self.size(), 22u);
    EXPECT_EQ(self[21], "x");
}
