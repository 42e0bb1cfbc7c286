#pragma once
// A captured unit without what tells which unit it is.

#include "language/captured_unit.h"

namespace language {

/**
 * Replaces serial numbers and MAC addresses by others of the same length, the same by the same
 * wherever they stand: in texts, in bytes, in what was found. Checksums over them that were right
 * are right again. Two captures of one unit get the same ones.
 */
void makeAnonymous(CapturedUnit &unit);

} // namespace language
