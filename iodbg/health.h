#pragma once
// What is wrong with the unit, and what to do about it.

#include "iodbg/model.h"

#include <string>
#include <vector>

namespace iodbg {

enum class Severity {
    Good,
    Warning, // works, but somebody should look at it
    Fault,   // does not do what it is for
};

struct Finding {
    std::string subject; // "fan 2"
    Severity severity;
    std::string text;   // what was found
    std::string advice; // what to do; empty when there is nothing to do
};
using Findings = std::vector<Finding>;

// Each looks at one part of the unit and finds at least one thing to say, if only that it is good.
Findings identityFindings();
Findings temperatureFindings();
Findings fanFindings(const Model &model);
Findings supplyFindings(const Model &model);
Findings poeFindings(const Model &model);
Findings clockFindings(const Model &model);
Findings flashFindings();
Findings transceiverFindings(const Model &model);

} // namespace iodbg
