#pragma once
// What is wrong with the PoE controller and its ports; at least that nothing is.

#include "iodbg/core/findings.h"
#include "iodbg/core/model.h"

#include <cstdint>
#include <map>

namespace iodbg {

/** Which ports have a fault, of those that have been asked already: each answer takes its time. */
using PoePortFaults = std::map<uint32_t, bool>;

Findings poeFindings(const Model &model, const PoePortFaults &known = {});

/** Its quick part, for those who look often. */
Findings poeControllerFindings(const Model &model);

} // namespace iodbg
