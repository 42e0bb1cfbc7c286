#pragma once
// What the bits of the CPLD's registers are for, register by register.

#include "iodbg/core/report.h"

#include <cstdint>

namespace iodbg {

/** A table for the fields of registers. */
Table emptyFieldTable();

/** Adds a row for each field that is known of a register, with what it holds. */
void addFields(Table &fields, uint32_t reg, uint16_t content);

} // namespace iodbg
