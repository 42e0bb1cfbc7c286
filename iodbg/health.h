#pragma once
// What is wrong with the unit, and what to do about it.

#include "iodbg/findings.h"
#include "iodbg/model.h"

#include <cstdint>
#include <optional>
#include <span>

namespace iodbg {

/**
 * What other parts are reached through: kernel module, shared files, CPLD, model. Where one of them
 * fails nothing is known of what hangs on it, and nobody is sent to look there.
 */
struct Grounds {
    Findings findings; // what is wrong with them, and the model when nothing is
    Model model;
    std::optional<int32_t> modelStatus; // of reading it; none where nothing can be asked

    /** The cause for which a part that needs these cannot be judged; none when it can. */
    std::optional<Subject> causeAmong(std::span<const Unit> needs) const;
};
Grounds judgeGrounds();

/** Everything; what must be there for the rest first. */
Findings unitFindings();

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

/**
 * Where no device of a bus answers, that is the bus's fault alone: what was found of the devices
 * becomes not judged, and the bus's finding is put in at this place.
 */
void blameBuses(Findings &findings, size_t place);

} // namespace iodbg
