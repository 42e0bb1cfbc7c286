#pragma once
// Processes that die in the middle of what the library does, at a point that the test chooses.

#include <functional>

/** A call by which the library's PoE code reaches out. */
enum class LibraryCall { Lock, Unlock, Store, Sleep, Send, Fetch };

/**
 * Lets a function see every such call of this process before it is made; where it answers true, the
 * process kills itself instead.
 */
void watchCalls(const std::function<bool(LibraryCall)> &diesBefore);
void ignoreCalls();
