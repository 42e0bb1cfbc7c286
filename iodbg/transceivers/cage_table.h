#pragma once
// SFP cages side by side: their lines, and what is in them.

#include "iodbg/core/model.h"
#include "iodbg/core/report.h"

#include <cstdint>
#include <string>
#include <vector>

namespace iodbg {

/**
 * A row for each of some cages of a model: lines, what is plugged, its light and temperature, and
 * the verdict on it. A module that does not answer hides no other.
 */
Table cageTable(Report &report, const Model &model, const std::vector<uint32_t> &cages);

/** The same for people: what only modules have stands below, for those that are plugged. */
std::string cagesText(const Table &cages);

/** The ports of a model's cages of which something is to be told. */
struct CageSummary {
    std::vector<uint32_t> plugged;
    // Of those with a module, and with lines that tell.
    std::vector<uint32_t> lostSignal, txFault;
};

/** Reads the lines of all cages; the first status that is not BSP_OK. */
int32_t readCages(const Model &model, CageSummary &summary);

/** Ports as people read them: "49-52, 54". */
Cell portsCell(const std::vector<uint32_t> &ports);

} // namespace iodbg
