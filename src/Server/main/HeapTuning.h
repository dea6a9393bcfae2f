// How the C library's allocator behaves in this server. Its defaults suit short programs,
// not a server whose large answers come and go:
//  - it gives the top of a heap back as soon as a request frees it, so the next request
//    faults the same memory in again (a large answer streamed in small pieces never raises
//    the threshold the way one large block would), and blocks from 128 KiB up are mapped
//    and unmapped each time. Freed memory now stays in the heap until the server is
//    quiet, when the HTTP front trims it (http::HeapTrimmer).
//  - it makes up to eight arenas per core, one per busy thread, and the free memory left
//    between live blocks in each of them cannot be given back: after a burst the server
//    stayed several times its idle size. One arena per core (at least two) keeps that small.
// An administrator's MALLOC_ARENA_MAX, MALLOC_TRIM_THRESHOLD_ or MALLOC_MMAP_THRESHOLD_ in
// the environment wins.
#ifndef QEL_SERVER_MAIN_HEAPTUNING_H
#define QEL_SERVER_MAIN_HEAPTUNING_H

namespace qel
{
namespace server
{

// Call once at start, before the server's threads.
void tuneHeap();

}  // namespace server
}  // namespace qel

#endif
