#include "virtual_board/devices/mdio.h"

namespace vb {

namespace {

constexpr uint32_t kDataShift = 12;
constexpr uint32_t kDataMask = 0xFFFFu << kDataShift;

/** Carries a command out; the register's new content goes with it. */
MdioDone carryOut(Mdio &mdio, uint32_t &commandRegister) {
    const uint32_t command = mdio.command;
    MdioDone done = {};
    done.isDone = true;
    done.isWrite = (command & kMdioWrite) != 0;
    done.hasFailed = mdio.state == MdioState::Error;
    done.first = command >> 2 & 0x1F;
    done.second = command >> 7 & 0x1F;
    done.value = static_cast<uint16_t>(command >> kDataShift);
    uint32_t content = command & ~kMdioStart;
    uint16_t &reg = mdio.reg[done.first][done.second];
    if (done.hasFailed) {
        content |= kMdioError;
    } else if (done.isWrite) {
        reg = done.value;
    } else {
        done.value = reg;
        content = (content & ~kDataMask) | uint32_t{reg} << kDataShift;
    }
    commandRegister = content;
    mdio.command = 0;
    return done;
}

} // namespace

void mdioBuild(Mdio &mdio) {
    mdio = Mdio{};
    mdio.busyPolls = 1;
}

MdioDone mdioPoll(Mdio &mdio, uint32_t &commandRegister) {
    if ((commandRegister & kMdioStart) == 0) {
        mdio.command = 0;
        return {};
    }
    if (commandRegister != mdio.command) { // the first look at it, or it was overwritten
        mdio.command = commandRegister;
        mdio.pollsLeft = mdio.busyPolls;
    }
    if (mdio.state == MdioState::Stuck)
        return {};
    // A process that is killed between the two may leave a command without its number of polls.
    if (mdio.pollsLeft > 1) {
        --mdio.pollsLeft;
        return {};
    }
    return carryOut(mdio, commandRegister);
}

MdioDone mdioFinish(Mdio &mdio, uint32_t &commandRegister) {
    mdio.command = commandRegister;
    mdio.pollsLeft = 1;
    return mdioPoll(mdio, commandRegister);
}

bool mdioIsConsistent(const Mdio &mdio) {
    return mdio.state <= MdioState::Stuck && mdio.busyPolls >= 1 &&
           mdio.busyPolls <= kMdioMostBusyPolls && mdio.pollsLeft <= kMdioMostBusyPolls;
}

} // namespace vb
