#include "stats.h"

namespace qelsim
{

Stats& stats()
{
    static Stats* s =
        new Stats();  // outlives every static destructor that may still call the library
    return *s;
}

Counters Stats::snapshot() const
{
    Counters c;
    c.fcListsHandedOut = fcListsHandedOut.load();
    c.fcListsFreed = fcListsFreed.load();
    c.iscsiArraysHandedOut = iscsiArraysHandedOut.load();
    c.lesbArraysHandedOut = lesbArraysHandedOut.load();
    c.vvArraysHandedOut = vvArraysHandedOut.load();
    c.badFrees = badFrees.load();
    c.semWaits = semWaits.load();
    c.semPosts = semPosts.load();
    c.semFailedWaits = semFailedWaits.load();
    c.semUnbalancedPosts = semUnbalancedPosts.load();
    c.unbracketedCalls = unbracketedCalls.load();
    c.sessionsOpened = sessionsOpened.load();
    c.sessionsRefused = sessionsRefused.load();
    c.changesSaved = changesSaved.load();
    return c;
}

void Stats::reset()
{
    for (auto* a :
         {&fcListsHandedOut, &fcListsFreed, &iscsiArraysHandedOut, &lesbArraysHandedOut,
          &vvArraysHandedOut, &badFrees, &semWaits, &semPosts, &semFailedWaits, &semUnbalancedPosts,
          &unbracketedCalls, &sessionsOpened, &sessionsRefused, &changesSaved})
        a->store(0);
}

}  // namespace qelsim
