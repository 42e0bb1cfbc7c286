// The example that lets the system lamp show the unit's health.

#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"

#include <cerrno>
#include <unistd.h>

namespace {

using vb::FaultDevice;
using vb::FaultOp;

class HealthMonitorTest : public VirtualBoardTest {
  protected:
    static constexpr int kAttention = 3;
    // The codes of the lamp's states in its register.
    static constexpr uint16_t kLampGood = 3, kLampWarning = 2, kLampFault = 1;

    /** What a run prints. */
    Lines look(int exitCode) const {
        const ProcessResult result = runOnBoard(boardFolder(), {builtProgram("health_monitor")});
        EXPECT_EQ(result.exitCode, exitCode) << result.out << result.err;
        EXPECT_EQ(result.err, "");
        return linesOf(result.out);
    }
    /** The requests at one place fail. */
    void fail(FaultDevice device, uint32_t offset) {
        vb::FaultRule rule = refuse(device, FaultOp::Read, -EIO);
        rule.hasOffset = 1;
        rule.offset = offset;
        addFault(rule);
    }
};

const std::string kGood = "system lamp: 1, good";
const std::string kWarning = "system lamp: 2, warning";
const std::string kFault = "system lamp: 3, fault";

TEST_F(HealthMonitorTest, ANewUnitOfEveryKindIsWell) {
    for (const uint32_t devId : {0x0109u, 0x0309u, 0x0509u, 0x0609u, 0x0709u, 0x8809u}) {
        useModel(devId);
        EXPECT_EQ(look(0), Lines{kGood}) << std::hex << devId;
        EXPECT_EQ(devices().cpld.reg[7], kLampGood);
    }
}

TEST_F(HealthMonitorTest, ItGetsWarmAndHot) {
    world::set("temperature.ambient", "50");
    usleep(3600u * 1000000u);
    EXPECT_EQ(look(kAttention), (Lines{"temperature: 65 C", kWarning}));
    EXPECT_EQ(devices().cpld.reg[7], kLampWarning);
    world::set("temperature.ambient", "70");
    usleep(3600u * 1000000u);
    EXPECT_EQ(look(kAttention), (Lines{"temperature: 85 C", kFault}));
    EXPECT_EQ(devices().cpld.reg[7], kLampFault);
}

TEST_F(HealthMonitorTest, FansStandStillOrAreSlow) {
    useModel(0x0309);
    world::set("fan.1.state", "stuck");
    world::set("fan.4.state", "failing");
    usleep(20 * 1000000);
    EXPECT_EQ(look(kAttention), (Lines{"fan 1: stands still or is not there",
                                       "fan 4: is slower than the others", kFault}));
    for (const char *fan : {"2", "3", "4"})
        world::set(std::string("fan.") + fan + ".present", "no");
    usleep(20 * 1000000);
    EXPECT_EQ(look(kAttention).size(), 5u) << "they are known to be four";
}

TEST_F(HealthMonitorTest, SuppliesFailOrAreMissing) {
    world::set("supply.1.input", "failed");
    world::set("supply.2.present", "no");
    EXPECT_EQ(look(kAttention),
              (Lines{"supply 1: tells status 1", "supply 2: is not plugged", kFault}));
    world::set("supply.1.input", "good");
    EXPECT_EQ(look(kAttention), (Lines{"supply 2: is not plugged", kWarning}));
}

TEST_F(HealthMonitorTest, ModulesTellOfThemselves) {
    for (const char *port : {"49", "50"}) {
        world::set(std::string("sfp.") + port + ".module", "sr");
        world::set(std::string("sfp.") + port + ".link", "up");
    }
    world::set("sfp.51.module", "dac"); // tells nothing
    EXPECT_EQ(look(0), Lines{kGood});
    world::set("sfp.50.rx-power", "20");
    EXPECT_EQ(look(kAttention), (Lines{"port 50: receives too little light", kWarning}));
    world::set("sfp.50.state", "dead");
    EXPECT_EQ(look(kAttention), (Lines{"port 50: has a module that does not answer", kFault}));
}

TEST_F(HealthMonitorTest, ATransmitterThatIsOffSendsNoLight) {
    world::set("sfp.49.module", "sr");
    world::set("sfp.49.link", "up");
    devices().cpld.reg[12] |= 1 << 6;
    EXPECT_EQ(look(0), Lines{kGood});
    devices().cpld.reg[12] = 0;
    world::set("sfp.49.state", "tx-fault");
    EXPECT_EQ(look(kAttention), (Lines{"port 49: has too low a laser current",
                                       "port 49: sends too little light", kWarning}));
}

TEST_F(HealthMonitorTest, WhatCannotBeReadIsAFault) {
    EXPECT_EQ(look(0), Lines{kGood}); // from here on the model is known
    fail(FaultDevice::Cpld, 28);
    EXPECT_EQ(look(kAttention), (Lines{"fan 1: cannot be read: status -5", kFault}));
}

TEST_F(HealthMonitorTest, ALampThatCannotBeSetIsToldOf) {
    addFault(refuse(FaultDevice::Cpld, FaultOp::Write, -EIO));
    const ProcessResult result = runOnBoard(boardFolder(), {builtProgram("health_monitor")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "health_monitor: ioLedStateSet: status -5\n");
}

TEST_F(HealthMonitorTest, RefusesWords) {
    const ProcessResult result = runOnBoard(boardFolder(), {builtProgram("health_monitor"), "x"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err, "usage: health_monitor\n");
    EXPECT_EQ(requests(), Lines{});
}

} // namespace
