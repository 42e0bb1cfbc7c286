#pragma once
// Power supplies: which are plugged, in what state, and what they measure.

#include "iodbg/core/model.h"
#include "iodbg/core/report.h"

namespace iodbg {

enum class Readings { Main, All };

/** Reads whether one of them is plugged. */
int32_t readPlugged(const Model &model, int32_t supply, bool &isPlugged);

/**
 * Adds to a section what is known of a supply; items that fail are noted in the report. False when
 * the supply is known not to be plugged: it is asked for nothing then, and nothing is to ask it.
 */
bool addSupply(Report &report, Section &section, const Model &model, uint32_t supply,
               Readings readings);

/** A row for each supply with a presence line: plugged or not, status. */
Table supplyTable(Report &report, const Model &model);

} // namespace iodbg
