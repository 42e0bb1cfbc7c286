#pragma once
// What is wrong with what the board says of itself; at least that nothing is.

#include "iodbg/core/findings.h"

namespace iodbg {

Findings identityFindings();

} // namespace iodbg
