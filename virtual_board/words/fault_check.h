#pragma once
// Which effects requests can have.

#include "virtual_board/board/faults.h"

namespace vb {

/** Throws Refused for a rule that could never fire. */
void checkFault(const FaultRule &rule);

} // namespace vb
