// Counters of the simulated library (see qelsim::Counters).
#ifndef QELSIM_STATS_H
#define QELSIM_STATS_H

#include "qelsim_control.h"

#include <atomic>

namespace qelsim
{

struct Stats
{
    std::atomic<uint64_t> fcListsHandedOut{0};
    std::atomic<uint64_t> fcListsFreed{0};
    std::atomic<uint64_t> iscsiArraysHandedOut{0};
    std::atomic<uint64_t> lesbArraysHandedOut{0};
    std::atomic<uint64_t> vvArraysHandedOut{0};
    std::atomic<uint64_t> badFrees{0};
    std::atomic<uint64_t> semWaits{0};
    std::atomic<uint64_t> semPosts{0};
    std::atomic<uint64_t> semFailedWaits{0};
    std::atomic<uint64_t> semUnbalancedPosts{0};
    std::atomic<uint64_t> unbracketedCalls{0};
    std::atomic<uint64_t> sessionsOpened{0};
    std::atomic<uint64_t> sessionsRefused{0};
    std::atomic<uint64_t> changesSaved{0};

    Counters snapshot() const;
    void reset();
};

Stats& stats();

}  // namespace qelsim

#endif
