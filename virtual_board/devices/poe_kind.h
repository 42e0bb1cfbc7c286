#pragma once
// What tells one kind of PoE controller from another: its protocol, and what its ports have been
// told in that. All else is the ports' own (poe_ports.h).

#include "virtual_board/devices/poe_controller.h"

#include <span>

namespace vb {

/** What a port follows of all that its controller was told. */
struct PoePortRules {
    bool isInService;
    PoeGoal goal; // how far it goes without being triggered
    bool powersLegacy;
    bool noticesDisconnect; // else it stays powered when its device is gone
    bool isLimitFixed;      // else the limit is that of the device's class
    uint32_t limitMw;
    uint32_t priority; // 0 is the least important, kPoeHighestPriority the most
};

/** How power is given to ports. */
struct PoeBudget {
    bool isKept; // else every request is granted
    uint32_t powerMw;
    uint32_t reserveMw;    // of that, what ports do not get
    bool countsDrawn;      // what devices draw, else what they asked for
    bool servesByPriority; // else first come, first served
};

struct PoeKind {
    /** A controller as the factory delivers it. */
    void (*build)(PoeController &poe);
    /** What the firmware begins with in a mode. */
    void (*begin)(PoeController &poe);
    /** What runs when the controller starts. */
    PoeMode (*firstMode)(const PoeController &poe);
    /** How long it works on a frame. */
    uint64_t (*workTime)(const PoeController &poe, uint8_t firstByte);
    /** Works on a frame; the answer, if there is one, is left in the controller. */
    void (*serve)(PoeController &poe, const uint8_t *data, uint32_t length,
                  const PoeFrameFault &fault, uint64_t nowNs);
    PoePortRules (*portRules)(const PoeController &poe, uint32_t port);
    PoeBudget (*budget)(const PoeController &poe);
    /** Whether what it keeps for itself is such as it can be. */
    bool (*isConsistent)(const PoeController &poe);
};

struct PoeKindRow {
    PoeChip chip;
    const PoeKind &kind;
};

/** The catalogue: poe_kinds.cpp, or what a build has in its place. */
extern const std::span<const PoeKindRow> kPoeKinds;

/** The kind of a controller; null when this build does not know it. */
const PoeKind *findPoeKind(PoeChip chip);

/** The kind of a controller that is consistent. */
const PoeKind &poeKindOf(const PoeController &poe);

/** The firmware starts in a mode: no port has power. */
void poeEnterMode(PoeController &poe, PoeMode mode, uint64_t nowNs);

} // namespace vb
