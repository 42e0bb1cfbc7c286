#pragma once
// Reads and writes of the quill's registers.

#include "tests/second_controller/library/registers.h"

#include <cstdint>

namespace quill {

/** Reads a register's bytes, all that there is room for. */
int32_t readRegister(Register number, uint32_t index, std::span<uint8_t> data);

int32_t writeRegister(Register number, uint32_t index, Bytes data);

// Registers of 4 bytes, most significant byte first.

int32_t readLong(Register number, uint32_t index, uint32_t *value);
int32_t writeLong(Register number, uint32_t index, uint32_t value);

} // namespace quill
