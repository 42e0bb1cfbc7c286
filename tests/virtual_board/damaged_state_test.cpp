// State files that something else has written to: refused, mended, or harmless where they are read.

#include "language/trace_json.h"
#include "language/trace_text.h"
#include "tests/support/json.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/board/consistency.h"

#include <cstring>
#include <fstream>
#include <memory>

namespace {

class DamagedStateTest : public VirtualBoardTest {
  protected:
    /** Why the board cannot be opened anew; nothing when it can. */
    std::string refusal() const {
        vb::BoardFolder folder;
        vb::FolderError error = {};
        return folder.open(boardFolder().c_str(), error) ? "" : error.text;
    }

    /** Overwrites a value for as long as it takes to see how the board is judged then. */
    template <typename Value, typename Bad>
    std::string refusalWith(Value &value, Bad bad) {
        const Value good = value;
        value = static_cast<Value>(bad);
        const std::string reason = refusal();
        value = good;
        return reason;
    }

    template <typename Value, typename Bad>
    void expectRefused(const char *part, Value &value, Bad bad) {
        const std::string expected =
            "is damaged: board.state holds impossible values (" + std::string(part) + ")";
        const std::string reason = refusalWith(value, bad);
        EXPECT_NE(reason.find(expected), std::string::npos)
            << "expected " << part << ": " << reason;
        EXPECT_EQ(refusal(), ""); // as it was
    }
};

TEST_F(DamagedStateTest, ValuesThatIndexAndChooseAreRefused) {
    vb::Devices &board = devices();
    constexpr uint32_t kMany = UINT32_MAX;
    expectRefused("the clock", this->board().clock.pace.mode, 4);
    expectRefused("the clock", this->board().clock.pace.rate, 999);
    expectRefused("the clock", this->board().clock.anchorNs, UINT64_MAX);
    expectRefused("the clock", this->board().clock.systemLeadNs, INT64_MIN);
    expectRefused("the clock", this->board().clock.monotonicLeadNs, INT64_MAX);
    expectRefused("the clock", this->board().clock.systemOffsetNs, INT64_MAX);
    expectRefused("the lines", board.gpio.external[31], 2);
    expectRefused("the lines", board.gpio.driven[0], 0xFF);
    expectRefused("the lines", board.gpio.isOutput[5], 2);
    expectRefused("the EEPROM", board.eeprom.blocks, 3);
    expectRefused("the EEPROM", board.eeprom.blocks, 5);
    expectRefused("the supplies", board.supply[1].eeprom.blocks, 0);
    expectRefused("the supplies", board.supply[0].eeprom.blocks, 2);
    expectRefused("the supplies", board.supply[1].isPresent, 2);
    expectRefused("the supplies", board.supply[0].pmbus.hasInputFailed, 2);
    expectRefused("the supplies", board.supply[0].pmbus.hasOutputFailed, kMany);
    expectRefused("the supplies", board.supply[0].pmbus.outputMw, 4000001);
    expectRefused("the supplies", board.supply[0].pmbus.inputMa, kMany);
    expectRefused("the supplies", board.supply[0].pmbus.outputMv, 127001);
    expectRefused("the supplies", board.supply[1].pmbus.degrees[2], INT32_MIN);
    expectRefused("the supplies", board.supply[1].pmbus.degrees[0], 1001);
    expectRefused("the watchdog", board.watchdog.lineLevel, 2);
    expectRefused("the last reset", board.lastReset, 4);
    expectRefused("the console", board.console.speed, 115201);
    expectRefused("the flash", board.flash[2].geometry.eraseSize, 0);
    expectRefused("the flash", board.flash[3].geometry.pageSize, 3);
    expectRefused("the flash", board.flash[0].geometry.type, 2);
    expectRefused("the flash", board.flash[1].geometry.size, 0);
    expectRefused("the flash", board.flash[1].isWriteProtected, 2);
    expectRefused("the flash", board.flash[3].isBad[2047], 2);
    expectRefused("the flash", board.flashTiming, 2);
    expectRefused("the fans and the temperature", board.climate.fans, 4);
    expectRefused("the fans and the temperature", board.climate.fans, kMany);
    expectRefused("the fans and the temperature", board.climate.fan[1].state, 4);
    expectRefused("the fans and the temperature", board.climate.fan[0].isPresent, 2);
    expectRefused("the fans and the temperature", board.climate.fan[0].rpm, kMany);
    expectRefused("the fans and the temperature", board.climate.sensor, 3);
    expectRefused("the fans and the temperature", board.climate.ambient, INT32_MAX);
    expectRefused("the calendar clock", board.clockChip.isFitted, 0);
    expectRefused("the calendar clock", board.clockChip.isBatteryEmpty, 2);
    expectRefused("the SFP modules", board.sfp[53].kind, 11);
    expectRefused("the SFP modules", board.sfp[48].state, 3);
    expectRefused("the SFP modules", board.sfp[48].isLinkUp, 2);
    expectRefused("the SFP modules", board.sfp[48].isHeld, 2);
    expectRefused("the SFP modules", board.sfp[48].microwatts, 6554);
    expectRefused("MDIO", board.mdio.state, 3);
    expectRefused("MDIO", board.mdio.busyPolls, 0);
    expectRefused("MDIO", board.mdio.busyPolls, kMany);
    expectRefused("MDIO", board.mdio.pollsLeft, kMany);
}

TEST_F(DamagedStateTest, ValuesOfThePoeControllerAreRefused) {
    constexpr char kPoe[] = "the PoE controller";
    vb::PoeController &poe = devices().poe;
    expectRefused(kPoe, poe.isFitted, 0);
    expectRefused(kPoe, poe.isHeldInReset, 2);
    expectRefused(kPoe, poe.hasSavedSettings, 2);
    expectRefused(kPoe, poe.mode, 3);
    expectRefused(kPoe, poe.chip, 1); // a controller that no model carries
    expectRefused(kPoe, poe.replyLength, 13);
    expectRefused(kPoe, poe.rtl8239.chipRegisters, 65);
    expectRefused(kPoe, poe.port[47].phase, 9);
    expectRefused(kPoe, poe.port[0].goal, 4);
    expectRefused(kPoe, poe.port[0].detection, 7);
    expectRefused(kPoe, poe.port[0].powerClass, 9);
    expectRefused(kPoe, poe.port[0].hasEvent, 2);
    expectRefused(kPoe, poe.device[47].isPlugged, 2);
    expectRefused(kPoe, poe.device[0].signature, 5);
    expectRefused(kPoe, poe.device[0].powerClass, 9);
    expectRefused(kPoe, poe.device[0].isOverCurrent, 2);
    expectRefused(kPoe, poe.device[0].drawnMw, 200001);
    expectRefused(kPoe, poe.device[0].requestedMw, UINT32_MAX);
    for (vb::PoeSettings *settings : {&poe.rtl8239.settings, &poe.rtl8239.saved}) {
        expectRefused(kPoe, settings->isEnabled, 2);
        expectRefused(kPoe, settings->isMappingEnabled, 2);
        expectRefused(kPoe, settings->portCount, 49);
        expectRefused(kPoe, settings->pmMode, 5);
        expectRefused(kPoe, settings->port[47].priority, 4);
        expectRefused(kPoe, settings->port[0].enable, 3);
        expectRefused(kPoe, settings->port[0].funcMode, 3);
        expectRefused(kPoe, settings->port[0].limitType, 3);
        expectRefused(kPoe, settings->port[0].isMapped, 2);
        expectRefused(kPoe, settings->port[0].isFourPair, 2);
    }
    expectRefused(kPoe, poe.image.isValid, 2);
    expectRefused(kPoe, poe.image.size, vb::kPoeImageSize + 1);
}

TEST_F(DamagedStateTest, RulesThatCannotBeFollowedAreRefused) {
    constexpr char kRules[] = "the fault rules";
    addFault(shortTransfer("/tmp/bsp/devId", vb::FaultOp::Read, 2));
    addFault(ioctlFails(vb::FaultDevice::Cpld, vb::FaultOp::Read, 5));
    vb::FaultRule &rule = board().faults.rule[0];
    expectRefused(kRules, rule.device, 7);
    expectRefused(kRules, rule.op, 12);
    expectRefused(kRules, rule.when, 3);
    expectRefused(kRules, rule.effect, 14);
    expectRefused(kRules, rule.hasAddress, 2);
    expectRefused(kRules, rule.hasOffset, 2);
    expectRefused(kRules, rule.nth, 0);
    expectRefused(kRules, rule.argument, -1);
    expectRefused(kRules, rule.argument, 4096);
    expectRefused(kRules, rule.mask, 0x100);
    expectRefused(kRules, rule.path[vb::kFaultPathSize - 1], 'x');
    expectRefused(kRules, rule.id, board().faults.rule[1].id);
    expectRefused(kRules, board().faults.rule[1].argument, 0); // an error that is none
    board().faults.rule[2].nth = 0; // a place without a rule holds anything
    EXPECT_EQ(refusal(), "");
}

TEST_F(DamagedStateTest, WhatAModelDoesNotHaveIsRefused) {
    useModel(0x0109); // without PoE, fans, plug-in supplies and a clock
    expectRefused("the PoE controller", devices().poe.isFitted, 1);
    expectRefused("the fans and the temperature", devices().climate.fans, 2);
    expectRefused("the supplies", devices().supply[0].eeprom.blocks, 1);
    expectRefused("the calendar clock", devices().clockChip.isFitted, 1);
    board().header.devId = 0x0110;
    board().header.check = vb::headerCheck(board().header);
    EXPECT_NE(refusal().find("impossible values (the model)"), std::string::npos);
}

TEST_F(DamagedStateTest, CountsAreMended) {
    addFault(openFails("/tmp/bsp/devId", 2));
    addFault(ioctlFails(vb::FaultDevice::Cpld, vb::FaultOp::Read, 5));
    board().faults.fileRules = 0;
    EXPECT_EQ(refusal(), "");
    EXPECT_EQ(board().faults.fileRules, 1u);
    EXPECT_TRUE(vb::removeFault(board().faults, 1));
    EXPECT_EQ(board().faults.fileRules, 0u);
}

TEST_F(DamagedStateTest, NumbersOfRulesStartOverWithoutAnyTwice) {
    board().faults.lastId = UINT32_MAX - 1;
    addFault(openFails("/tmp/bsp/a", 2));
    addFault(openFails("/tmp/bsp/b", 2));
    board().faults.lastId = 0;
    addFault(openFails("/tmp/bsp/c", 2));
    EXPECT_EQ(board().faults.rule[0].id, UINT32_MAX);
    EXPECT_EQ(board().faults.rule[1].id, 1u);
    EXPECT_EQ(board().faults.rule[2].id, 2u);
}

TEST_F(DamagedStateTest, ASystemClockIsJudgedByTheHostsTime) {
    vb::Clock clock = {};
    clock.pace = {};
    constexpr uint64_t kHostNs = 1800000000ull * 1000000000;
    constexpr int64_t kYear2232 = 8277292035ll * 1000000000; // the latest that the kernel takes
    clock.systemOffsetNs = kYear2232 - static_cast<int64_t>(kHostNs);
    EXPECT_TRUE(vb::clockIsConsistent(clock, kHostNs));
    clock.systemOffsetNs = INT64_MAX - static_cast<int64_t>(kHostNs) - 1;
    EXPECT_FALSE(vb::clockIsConsistent(clock, kHostNs));
    clock.systemOffsetNs = INT64_MIN;
    EXPECT_TRUE(vb::clockIsConsistent(clock, kHostNs));
    clock.systemOffsetNs = 1;
    EXPECT_FALSE(vb::clockIsConsistent(clock, UINT64_MAX));
}

// The trace

/** A ring of its own allocation, behind whose end a sanitizer sees every step. */
class DamagedTraceTest : public ::testing::Test {
  protected:
    /** What comes of a record whose every byte is overwritten, but for its kind. */
    vb::TraceRecord overwritten(uint8_t kind) const {
        std::memset(&ring_->record[0], 0xFF, sizeof(vb::TraceRecord));
        std::memcpy(&ring_->record[0].kind, &kind, 1);
        return vb::traceAt(*ring_, 0);
    }

    std::unique_ptr<vb::TraceRing> ring_ = std::make_unique<vb::TraceRing>();
};

TEST_F(DamagedTraceTest, EveryKindCanBeReadWhateverTheRestHolds) {
    for (unsigned kind = 0; kind <= UINT8_MAX; ++kind) {
        const vb::TraceRecord record = overwritten(static_cast<uint8_t>(kind));
        EXPECT_LE(record.kind, vb::TraceKind::Damaged);
        EXPECT_LE(record.stored, vb::kTraceDataSize);
        EXPECT_LT(language::traceText(record).size(), 400u);
        EXPECT_EQ(language::traceJson(record)["time_ns"], UINT64_MAX);
        if (kind >= static_cast<unsigned>(vb::TraceKind::Damaged)) {
            EXPECT_EQ(language::traceText(record), "damaged record");
            EXPECT_EQ(language::traceJson(record)["kind"], "damaged");
        }
    }
}

TEST_F(DamagedTraceTest, TextsEndAndDataIsNotReadBeyondTheRecord) {
    const std::string path(vb::kTraceDataSize - 1, '\xFF');
    EXPECT_EQ(language::traceJson(overwritten(static_cast<uint8_t>(vb::TraceKind::Open)))["path"],
              path);
    EXPECT_EQ(
        language::traceJson(overwritten(static_cast<uint8_t>(vb::TraceKind::CpldUpgrade)))["path"],
        path);
    vb::TraceRecord &record = ring_->record[0];
    record = {};
    record.kind = vb::TraceKind::I2cRead;
    record.stored = 1000;
    record.data[vb::kTraceDataSize - 1] = 0xAB;
    const std::string data = language::traceJson(vb::traceAt(*ring_, 0))["data"];
    EXPECT_EQ(data, std::string(2 * (vb::kTraceDataSize - 1), '0') + "ab");
    EXPECT_TRUE(language::traceText(vb::traceAt(*ring_, 0)).ends_with(" 00 AB"));
}

TEST_F(DamagedTraceTest, ANumberOfRecordsMayBeAnything) {
    for (const uint64_t total : {uint64_t{0}, uint64_t{1} << 63, UINT64_MAX}) {
        ring_->total = total;
        EXPECT_LE(ring_->total - vb::traceOldest(*ring_), vb::kTraceCapacity);
        vb::traceNext(*ring_, vb::TraceKind::Sleep, {1, 2}).sleepNs = 3;
        EXPECT_EQ(vb::traceAt(*ring_, total).sleepNs, 3u);
    }
    EXPECT_EQ(ring_->total, 0u); // it starts over
}

} // namespace
