#pragma once
// What is wrong with the chassis: each looks at one part of the unit and finds at least one thing
// to say, if only that it is good.

#include "iodbg/core/findings.h"
#include "iodbg/core/model.h"

namespace iodbg {

Findings temperatureFindings();
Findings fanFindings(const Model &model);
Findings supplyFindings(const Model &model);
Findings clockFindings(const Model &model);

} // namespace iodbg
