#pragma once
// What connects the devices of a board: reset, watchdog, and the lines between the CPLD, the
// processor, the supplies and the PoE controller.

#include "virtual_board/board/board.h"

namespace vb {

/**
 * Brings the board up to now: a watchdog that has expired resets it, levels reach what they lead
 * to, PoE ports go on. Called around each request and each change from the world.
 */
void advanceBoard(Board &board, uint64_t nowNs);

/** A program has written a register, which held another content before. */
void registerWritten(Board &board, uint32_t reg, uint16_t before, uint64_t nowNs);

/** Resets the board: registers, lines and the PoE controller are as after switching on. */
void resetBoard(Board &board, ResetReason reason, uint64_t nowNs);

/** Drives all inputs of a CPLD that has been reset, as the devices' states say. */
void driveAllLines(Board &board, uint64_t nowNs);

/** Drives the line that tells whether the PoE controller is there. */
void drivePoeLine(Board &board);

/**
 * Drives a supply's lines as its state says. They stay so until the supply changes again or the
 * board is reset, so that each line can also be driven on its own by setting its register.
 */
void driveSupplyLines(Board &board, uint32_t index);

/** Whether the PoE controller is connected: the world can take it off the board. */
bool isPoePresent(const Board &board);

} // namespace vb
