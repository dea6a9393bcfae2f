// Values with shared representations (String, Array, CIMObjectPath,
// CIMValue) copied, compared and changed from several threads at once:
// every thread's copies stay independent and the shared source unchanged.
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

PEGASUS_USING_PEGASUS;

TEST(SharedValuesThreads, CopiesStayIndependentAcrossThreads)
{
    const String source("QEL_FCPort.DeviceID=\"2100000E1E1B2C3D\"");
    const CIMObjectPath path(
        "//h/root/qel:QEL_FCPort.SystemName=\"s\",DeviceID=\"2100000E1E1B2C3D\"");
    const CIMValue value(path);
    const Array<String> sharedNames(8, String("n"));
    std::atomic<int> failures(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
    {
        threads.emplace_back(
            [&, t]
            {
                for (int i = 0; i < 2000; ++i)
                {
                    String mine(source);
                    mine.append(Char16('0' + t));
                    mine[0] = Char16('q');
                    CIMObjectPath copy(path);
                    if (!copy.identical(path) || copy.makeHashCode() != path.makeHashCode())
                        ++failures;
                    copy.setHost(t % 2 ? "other" : "");
                    CIMValue v(value);
                    CIMObjectPath out;
                    v.get(out);
                    Array<String> names(sharedNames);
                    names[t] = "changed";
                    if (!out.identical(path) || sharedNames[t] != "n" || source[0] != 'Q' ||
                        mine.size() != source.size() + 1)
                        ++failures;
                }
            });
    }
    for (std::thread& th : threads)
        th.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(source, "QEL_FCPort.DeviceID=\"2100000E1E1B2C3D\"");
    EXPECT_EQ(std::string(path.getHost().getCString()), "h");
}
