#include "DescriptorLimit.h"

#include <sys/resource.h>

namespace qel
{
namespace server
{

size_t raiseDescriptorLimit()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return 0;
    if (limit.rlim_cur < limit.rlim_max)
    {
        rlimit raised = limit;
        raised.rlim_cur = limit.rlim_max;
        if (::setrlimit(RLIMIT_NOFILE, &raised) == 0)
            limit = raised;
    }
    return limit.rlim_cur == RLIM_INFINITY ? static_cast<size_t>(-1)
                                           : static_cast<size_t>(limit.rlim_cur);
}

}  // namespace server
}  // namespace qel
