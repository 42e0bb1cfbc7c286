#pragma once
// Processes that die in the middle of what the library does, at a point that the test chooses.

#include <functional>
#include <string>

/** A call by which the library's PoE code reaches out. */
enum class LibraryCall { Lock, Unlock, Store, Sleep, Send, Fetch };

/**
 * Lets a function see every such call of this process before it is made; where it answers true, the
 * process kills itself instead. Locks are those of the file at a path.
 */
void watchCalls(const std::string &lockFile, const std::function<bool(LibraryCall)> &diesBefore);
void ignoreCalls();
