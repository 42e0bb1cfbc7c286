#pragma once
// The SFP cages of the front panel: which ports have one, where on the I2C buses, and on which
// lines of the CPLD.

#include "virtual_board/board/i2c_bus.h"

namespace vb {

/** The port of the first uplink: they are behind all other ports. */
uint32_t firstUplink(const Model &model);

/** Whether a model has a cage at a port of its panel. */
bool isSfpCage(const Model &model, uint32_t port);

/** Where the module in the cage of a port has its identification. */
I2cPlace placeOfModule(const Model &model, uint32_t port);

/** The module in the cage of a port. */
SfpModule &sfpModule(Board &board, uint32_t port);

/** What surrounds it. */
SfpCage sfpCage(const Board &board, uint32_t port, uint64_t nowNs);

/** Puts what has changed at the modules on the lines. */
void driveSfpLines(Board &board, uint64_t nowNs);

/** Puts everything on the lines of a CPLD that has been reset. */
void startSfpLines(Board &board, uint64_t nowNs);

/** The power comes: all modules start. */
void startSfpModules(Board &board, uint64_t nowNs);

/** A transfer on the bus of the cages; false when no module answers. */
bool sfpTransfer(Board &board, const I2cTransfer &transfer);

} // namespace vb
