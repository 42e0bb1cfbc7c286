#pragma once
// The memory of the program that sends a request, as a driver reaches it: an address that is not
// the program's is an error, and no fault of the program.

#include <cstddef>

namespace vb {

/** Copies from the program's memory; false, with nothing of use copied, when it is not all there.
 */
bool copyFromUser(void *to, const void *from, size_t length);

/** Copies into the program's memory; false when it is not all there, or cannot be written. */
bool copyToUser(void *to, const void *from, size_t length);

} // namespace vb
