#pragma once
// What is wrong with the SFP cages and the modules in them; at least that nothing is.

#include "iodbg/core/findings.h"
#include "iodbg/core/model.h"

namespace iodbg {

Findings transceiverFindings(const Model &model);

/** Its quick part, for those who look often. A cage that is well says nothing. */
Findings cageLineFindings(const Model &model);

} // namespace iodbg
