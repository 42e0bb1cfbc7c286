#pragma once
// What is wrong with the flash and what it holds; at least that nothing is.

#include "iodbg/core/findings.h"

namespace iodbg {

Findings flashFindings();

} // namespace iodbg
