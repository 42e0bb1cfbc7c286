#pragma once
// What is wrong with the SFP cages and the modules in them; at least that nothing is.

#include "iodbg/core/findings.h"
#include "iodbg/core/model.h"
#include "iodbg/transceivers/cage.h"
#include "iodbg/transceivers/module.h"

#include <cstdint>

namespace iodbg {

Findings transceiverFindings(const Model &model);

/** The same of one cage with a module in it. */
Findings pluggedCageFindings(const Model &model, uint32_t port, const CageLines &lines,
                             const Module &module);

/** Its quick part, for those who look often. A cage that is well says nothing. */
Findings cageLineFindings(const Model &model);

} // namespace iodbg
