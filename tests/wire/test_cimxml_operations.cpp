// The codec's table of operations and the runtime's: one entry each, under one name.
#include <Server/xml/Operations.h>

#include <gtest/gtest.h>

using namespace qel::cimxml;

namespace
{

TEST(CimXmlOperations, EveryOperationIsInTheTableUnderTheRuntimesName)
{
    for (int i = 0; i <= static_cast<int>(Operation::InvokeMethod); ++i)
    {
        const Operation op = static_cast<Operation>(i);
        SCOPED_TRACE(Pegasus::cimOperationName(op));
        const OperationEntry& entry = entryOf(op);
        EXPECT_EQ(entry.operation, op);
        EXPECT_STREQ(entry.name, Pegasus::cimOperationName(op));
        EXPECT_EQ(findIntrinsic(entry.name), op == Operation::InvokeMethod ? nullptr : &entry);
    }
}

}  // namespace
