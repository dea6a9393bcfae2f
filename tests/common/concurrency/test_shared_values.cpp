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

namespace
{
const int kThreads = 4;
const int kRounds = 2000;

template <class Body>
int runThreads(Body body)
{
    std::atomic<int> failures(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] { failures += body(t); });
    for (std::thread& th : threads)
        th.join();
    return failures.load();
}
}  // namespace

TEST(SharedValuesThreads, StringCopiesStayIndependent)
{
    const String source("QEL_FCPort.DeviceID=\"2100000E1E1B2C3D\"");
    int failures = runThreads([&](int t) {
        int bad = 0;
        for (int i = 0; i < kRounds; ++i)
        {
            String mine(source);
            mine.append(Char16('0' + t));
            mine[0] = Char16('q');
            if (mine.size() != source.size() + 1 || source[0] != 'Q')
                ++bad;
        }
        return bad;
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(source, "QEL_FCPort.DeviceID=\"2100000E1E1B2C3D\"");
}

TEST(SharedValuesThreads, PathsAndValuesSharedAcrossThreads)
{
    const CIMObjectPath path("//h/root/qel:QEL_FCPort.SystemName=\"s\",DeviceID=\"2100000E1E1B2C3D\"");
    const CIMValue value(path);
    Array<String> names;
    for (int i = 0; i < 8; ++i)
        names.append(String("n"));
    const Array<String> sharedNames(names);

    int failures = runThreads([&](int t) {
        int bad = 0;
        for (int i = 0; i < kRounds; ++i)
        {
            CIMObjectPath copy(path);
            if (!copy.identical(path) || copy.makeHashCode() != path.makeHashCode())
                ++bad;
            copy.setHost(t % 2 ? "other" : "");
            CIMValue v(value);
            CIMObjectPath out;
            v.get(out);
            if (!out.identical(path))
                ++bad;
            Array<String> mine(sharedNames);
            mine[t] = "changed";
            if (sharedNames[t] != "n")
                ++bad;
        }
        return bad;
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(std::string(path.getHost().getCString()), "h");
}
