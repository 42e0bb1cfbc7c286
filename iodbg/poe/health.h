#pragma once
// What is wrong with the PoE controller and its ports; at least that nothing is.

#include "iodbg/core/findings.h"
#include "iodbg/core/model.h"

namespace iodbg {

Findings poeFindings(const Model &model);

/** Its quick part, for those who look often. */
Findings poeControllerFindings(const Model &model);

} // namespace iodbg
