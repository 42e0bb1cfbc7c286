#pragma once
// What is wrong with the unit, and what to do about it.

#include "iodbg/findings.h"
#include "iodbg/model.h"

namespace iodbg {

// Each looks at one part of the unit and finds at least one thing to say, if only that it is good.
Findings identityFindings();
Findings temperatureFindings();
Findings fanFindings(const Model &model);
Findings supplyFindings(const Model &model);
Findings poeFindings(const Model &model);
Findings clockFindings(const Model &model);
Findings flashFindings();
Findings transceiverFindings(const Model &model);

// The quick part of two of them, for those who look often. A cage that is well says nothing.
Findings poeControllerFindings(const Model &model);
Findings cageLineFindings(const Model &model);

} // namespace iodbg
