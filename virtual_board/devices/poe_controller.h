#pragma once
// The PoE controller, reached over I2C: what every kind has. A frame that is written is answered by
// the bytes that the following reads return; what frames say is the kind's own (poe_kind.h).

#include "virtual_board/devices/poe_port.h"
#include "virtual_board/devices/rtl8239/image.h"
#include "virtual_board/devices/rtl8239/memory.h"

#include <cstdint>

namespace vb {

constexpr uint32_t kPoeLongestReply = 12; // the RTL8239's; a part of the layout, too

enum class PoeMode : uint8_t { Reset, Application, Loader };

/** Kind of a controller. Numbers from 0x80 on are free for controllers that a build adds. */
enum class PoeChip : uint8_t { Rtl8239 };

/**
 * Its state. Programs of one board share it, so its layout is one for all kinds: what a kind keeps
 * for itself is a member of the union, which is as large as that of the kind that is shipped. What
 * is marked as the RTL8239's and stands outside would be another layout inside, and boards of the
 * one before would be refused: other kinds leave it alone.
 */
struct PoeController {
    alignas(8) uint64_t runsFromNs;   // when loader or application is up after a start
    alignas(8) uint64_t replyReadyNs; // when the firmware has worked out its answer
    uint8_t isFitted;
    uint8_t isHeldInReset; // level of the reset line
    PoeMode mode;
    uint8_t replyLength;      // 0: there is no answer
    uint8_t latePolls;        // reads that still find no answer although it is due
    uint8_t hasSavedSettings; // RTL8239
    uint8_t isMissing;        // the world's face: it has been taken off the board
    PoeChip chip;
    uint8_t reply[kPoeLongestReply];
    union { // what the kind keeps for itself
        Rtl8239Memory rtl8239;
        uint8_t memory[sizeof(Rtl8239Memory)]; // of kinds that a build adds
    };
    PoePort port[kPoePorts];
    PoweredDevice device[kPoePorts]; // the world's face: what is plugged in
    PoeImage image;                  // RTL8239
};

/** What goes wrong with one frame. */
struct PoeFrameFault {
    bool isIgnored = false;
    bool hasWrongEcho = false;
    bool hasWrongChecksum = false;
    bool hasPowerLoss = false;
    bool hasNoEffect = false; // answered as if it had worked
    uint8_t latePolls = 0;
    uint32_t badPort = kPoePorts; // a port whose settings fail; kPoePorts: none
};

/** A controller as the factory delivers it, with an application that is up and waits. */
void poeBuild(PoeController &poe, PoeChip chip);

/** Brings all ports up to now. */
void poeAdvance(PoeController &poe, uint64_t nowNs);

/** Starts the firmware: the application when there is a whole one, else the loader. */
void poeStart(PoeController &poe, uint64_t nowNs);

/** The level of the reset line has changed. A stuck controller stays in reset for good. */
void poeSetReset(PoeController &poe, bool isHeld, bool isStuck, uint64_t nowNs);

/** The bus writes a frame; false when the controller does not acknowledge its address. */
bool poeWrite(PoeController &poe, const uint8_t *data, uint32_t length, const PoeFrameFault &fault,
              uint64_t nowNs);

/** The bus reads; a controller without an answer sends 0xFF. */
bool poeRead(PoeController &poe, uint8_t *data, uint32_t length, uint64_t nowNs);

/** Whether the state is one that a controller can have. */
bool poeIsConsistent(const PoeController &poe);

} // namespace vb
