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
        const OperationSpec& spec = specOf(op);
        EXPECT_EQ(spec.operation, op);
        EXPECT_STREQ(spec.name, Pegasus::cimOperationName(op));
        EXPECT_EQ(findIntrinsic(spec.name), op == Operation::InvokeMethod ? nullptr : &spec);
    }
}

}  // namespace
