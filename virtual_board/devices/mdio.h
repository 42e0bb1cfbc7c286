#pragma once
// The MDIO registers of the PHYs and the controller that reaches them: one command register in a
// page of memory, which programs write and poll. Memory does not react, so the controller looks at
// the register whenever a program that has mapped it sleeps: the first poll always finds a command
// busy.

#include "virtual_board/devices/board_map.h"

#include <cstdint>

namespace vb {

constexpr uint32_t kMdioAddresses = 32;
constexpr uint32_t kMdioPageSize = 4096;

constexpr uint32_t kMdioStart = 1;
constexpr uint32_t kMdioWrite = 2;
constexpr uint32_t kMdioError = 1u << 28;
constexpr uint32_t kMdioMostBusyPolls = 100000;

enum class MdioState : uint32_t {
    Good,
    Error, // commands fail
    Stuck, // commands never end
};

struct Mdio {
    // The world's face: the registers, by the first field of the address and the second.
    uint16_t reg[kMdioAddresses][kMdioAddresses];
    MdioState state;
    uint32_t busyPolls; // how many polls find a command busy, 1 at least
    // The command that is under way.
    uint32_t command; // 0: none
    uint32_t pollsLeft;
};

/** A command that has ended. */
struct MdioDone {
    bool isDone;
    bool isWrite, hasFailed;
    uint8_t first, second; // fields of the address
    uint16_t value;        // written or read
};

void mdioBuild(Mdio &mdio);

/** A program sleeps between two polls: the controller goes on with what the register holds. */
MdioDone mdioPoll(Mdio &mdio, uint32_t &commandRegister);

/** Nobody polls any more: a command that can end does. */
MdioDone mdioFinish(Mdio &mdio, uint32_t &commandRegister);

/** Whether the state is one that a controller can have. */
bool mdioIsConsistent(const Mdio &mdio);

} // namespace vb
