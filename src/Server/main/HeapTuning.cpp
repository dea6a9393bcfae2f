#include "HeapTuning.h"

#include <algorithm>
#include <cstdlib>
#include <malloc.h>
#include <thread>

namespace qel
{
namespace server
{

void tuneHeap()
{
    // Setting either threshold also ends the library's own adjusting of both.
    if (std::getenv("MALLOC_TRIM_THRESHOLD_") == nullptr)
        ::mallopt(M_TRIM_THRESHOLD, 256 * 1024 * 1024);
    if (std::getenv("MALLOC_MMAP_THRESHOLD_") == nullptr)
        ::mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);  // the largest it takes
    if (std::getenv("MALLOC_ARENA_MAX") == nullptr)
        ::mallopt(M_ARENA_MAX, static_cast<int>(std::max(2u, std::thread::hardware_concurrency())));
}

}  // namespace server
}  // namespace qel
