// Test controls of the server tests' provider module (libQELServerTestProvider).
// The test programs link the module, so the server's dlopen() finds it
// already loaded and these functions reach the very state its providers use.
#ifndef QEL_Tests_ServerTestControl_h
#define QEL_Tests_ServerTestControl_h

#include <string>

namespace servertest
{

// Forgets knobs, counters and the call record.
void reset();

// How a provider operation misbehaves, keyed "<Provider>.<operation>"
// (e.g. "Item.enumerateInstances"); "" behaves normally. Modes are listed
// in ServerTestProviders.cpp.
void setKnob(const std::string& target, const std::string& mode);

// Providers in mode "gated" wait until the gate is open; reset() opens it. A
// provider reaching the gate counts "gate.waiting".
void closeGate();
void openGate();

// Events counted by the providers ("Test_InitFail.initialize", "Item.terminate"...).
unsigned counter(const std::string& name);

// What the last recorded provider call received, as text.
std::string lastCall();

}  // namespace servertest

#endif
