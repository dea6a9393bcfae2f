// Array<T>: bounds checks, copy-on-write, insertion and removal edges.
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>

#include <gtest/gtest.h>

PEGASUS_USING_PEGASUS;

TEST(ArrayBounds, IndexInsertRemoveOutOfRangeThrow)
{
    Array<Uint32> a;
    EXPECT_THROW(a[0], IndexOutOfBoundsException);
    a.append(1);
    a.append(2);
    const Array<Uint32>& c = a;
    EXPECT_THROW(c[2], IndexOutOfBoundsException);
    EXPECT_THROW(a.insert(3, 9), IndexOutOfBoundsException);
    EXPECT_THROW(a.remove(2), IndexOutOfBoundsException);
    EXPECT_THROW(a.remove(1, 2), IndexOutOfBoundsException);
    EXPECT_THROW(a.remove(0, 0xFFFFFFFFu), IndexOutOfBoundsException);
    a.remove(5, 0);  // nothing to remove is never an error
    EXPECT_EQ(a.size(), 2u);
}

TEST(ArrayEdit, InsertPrependRemoveKeepOrder)
{
    Array<String> a;
    a.append("b");
    a.prepend("a");
    a.insert(2, "d");
    a.insert(2, "c");
    const String more[] = { "e", "f" };
    a.append(more, 2);
    ASSERT_EQ(a.size(), 6u);
    a.remove(1, 2);
    ASSERT_EQ(a.size(), 4u);
    EXPECT_EQ(a[0], "a");
    EXPECT_EQ(a[1], "d");
    EXPECT_EQ(a[3], "f");
    a.grow(2, "g");
    EXPECT_EQ(a[5], "g");
    Array<Boolean> flags(3, true);
    EXPECT_TRUE(flags.getData()[2]);
    Array<Uint16> zeros(4);
    EXPECT_EQ(zeros[3], 0);
}

TEST(ArraySharing, CopiesAreIndependentAndSelfAppendWorks)
{
    Array<String> a;
    for (int i = 0; i < 20; ++i)
        a.append(String("v"));
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

    Array<Uint32> s1(2, 7), s2;
    s1.swap(s2);
    EXPECT_EQ(s1.size(), 0u);
    EXPECT_EQ(s2[1], 7u);
}
