// How answers of a trace that is sent once more differ, and what cannot be sent.

#include "language/trace_replay.h"

#include "language/trace_names.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

namespace {

using language::Difference;
using language::NotSent;
using language::TraceKind;
using language::TraceRecord;
using language::Variation;

TraceRecord ofKind(TraceKind kind, uint32_t offset = 0, uint32_t value = 0) {
    TraceRecord record = {};
    record.kind = kind;
    record.offset = offset;
    record.value = value;
    return record;
}

struct Place {
    uint8_t bus, channel, device;
};

TraceRecord i2cRead(const Place &place, uint32_t offset, std::initializer_list<uint8_t> data) {
    TraceRecord record = ofKind(TraceKind::I2cRead, offset);
    record.bus = place.bus;
    record.channel = place.channel;
    record.devAddr = place.device;
    record.length = record.stored = static_cast<uint32_t>(data.size());
    std::copy(data.begin(), data.end(), record.data);
    return record;
}

TraceRecord failed(TraceRecord record, int error, int result) {
    record.error = error;
    record.result = result;
    record.stored = 0;
    return record;
}

/** How a transfer varies in which the last of some bytes differs. */
Variation variationAt(const Place &place, uint32_t offset, std::initializer_list<uint8_t> data) {
    const TraceRecord recorded = i2cRead(place, offset, data);
    TraceRecord answered = recorded;
    answered.data[answered.stored - 1] ^= 0xFF;
    const Difference found = language::difference(recorded, answered);
    EXPECT_EQ(found.words.size(), 1u);
    return found.variation;
}

using Texts = std::vector<std::string>;

TEST(TraceReplay, TheSameAnswerDoesNotDiffer) {
    const TraceRecord record = i2cRead({0, 0, 0x50}, 0, {1, 2});
    EXPECT_EQ(language::difference(record, record).words, Texts());
    TraceRecord later = record;
    later.timeNs = 1;
    later.pid = 2;
    EXPECT_EQ(language::difference(record, later).words, Texts());
}

TEST(TraceReplay, TellsWhatDiffers) {
    const TraceRecord read = i2cRead({0, 0, 0x50}, 0, {1, 2, 3});
    EXPECT_EQ(language::difference(read, i2cRead({0, 0, 0x50}, 0, {1, 0xFF, 4})).words,
              Texts({"byte 1 is 0xFF, recorded is 0x02", "byte 2 is 0x04, recorded is 0x03"}));
    EXPECT_EQ(language::difference(read, i2cRead({0, 0, 0x50}, 0, {1, 2})).words,
              Texts({"2 bytes, recorded are 3"}));
    EXPECT_EQ(language::difference(read, failed(read, 0, -ENXIO)).words,
              Texts({"it ends with result -6 (No such device or address), recorded is success"}));
    EXPECT_EQ(language::difference(failed(read, ENOTTY, 0), read).words,
              Texts({"it ends with success, recorded is errno 25 (Inappropriate ioctl for "
                     "device)"}));
    EXPECT_EQ(language::difference(ofKind(TraceKind::CpldRead, 2, 0x1312),
                                   ofKind(TraceKind::CpldRead, 2, 0x1321))
                  .words,
              Texts({"it is 0x1321, recorded is 0x1312: bits 0 set, 1 clear, 4 clear, 5 set"}));
    EXPECT_EQ(
        language::difference(ofKind(TraceKind::MdioRead, 2, 1), ofKind(TraceKind::MdioRead, 2, 0))
            .words,
        Texts({"it is 0x0000, recorded is 0x0001: bits 0 clear"}));
    EXPECT_EQ(
        language::difference(ofKind(TraceKind::GpioRead, 0, 1), ofKind(TraceKind::GpioRead, 0, 0))
            .words,
        Texts({"the level is 0, recorded is 1"}));
    EXPECT_EQ(
        language::difference(ofKind(TraceKind::MtdRead, 0, 16), ofKind(TraceKind::MtdRead, 0, 8))
            .words,
        Texts({"0x8 bytes are done, recorded are 0x10"}));
    EXPECT_EQ(
        language::difference(ofKind(TraceKind::MtdIsBad, 0, 1), ofKind(TraceKind::MtdIsBad, 0, 0))
            .words,
        Texts({"the block is good, recorded as bad"}));
    TraceRecord cut = ofKind(TraceKind::MtdErase, 0, 0x100);
    cut.result = language::kPowerCutResult;
    EXPECT_EQ(language::difference(ofKind(TraceKind::MtdErase, 0, 0x200), cut).words,
              Texts({"it ends with a power cut behind 0x100, recorded is success"}));
}

TEST(TraceReplay, WhatAWriteIsAskedIsNoAnswer) {
    TraceRecord write = ofKind(TraceKind::CpldWrite, 6, 1);
    TraceRecord other = write;
    other.length = 0xFF; // inputs, which only boards know
    EXPECT_EQ(language::difference(write, other).words, Texts());
}

TEST(TraceReplay, MeasurementsAndTimeVary) {
    const Place clock = {0, 1, 0x51}, sensor = {0, 1, 0x4F}, supply = {0, 3, 0x58};
    const Place module = {1, 8, 0x51}, poe = {16, 0, 0x20}, eeprom = {0, 0, 0x50};
    EXPECT_EQ(variationAt(clock, 2, {0}), Variation::Time);
    EXPECT_EQ(variationAt(sensor, 0, {0}), Variation::Measured);
    EXPECT_EQ(variationAt(supply, 0x88, {0, 0}), Variation::Measured);
    EXPECT_EQ(variationAt(supply, 0x97, {0, 0}), Variation::Measured);
    EXPECT_EQ(variationAt(supply, 0x20, {0}), Variation::None); // VOUT_MODE
    EXPECT_EQ(variationAt(module, 96, {0}), Variation::Measured);
    EXPECT_EQ(variationAt(module, 90, {0, 0, 0, 0, 0, 0, 0}), Variation::Measured);
    EXPECT_EQ(variationAt(module, 95, {0}), Variation::None);
    EXPECT_EQ(variationAt({1, 8, 0x50}, 96, {0}), Variation::None); // the other page
    EXPECT_EQ(variationAt(poe, 0, {0x44, 1, 2}), Variation::Measured);
    EXPECT_EQ(variationAt(poe, 0, {0x45, 1, 2}), Variation::Time);
    EXPECT_EQ(variationAt(poe, 0, {0x42, 1, 2}), Variation::None);
    EXPECT_EQ(variationAt(eeprom, 96, {0}), Variation::None);
    EXPECT_EQ(
        language::difference(ofKind(TraceKind::CpldRead, 28, 1), ofKind(TraceKind::CpldRead, 28, 2))
            .variation,
        Variation::Measured);
    EXPECT_EQ(
        language::difference(ofKind(TraceKind::CpldRead, 30, 1), ofKind(TraceKind::CpldRead, 30, 2))
            .variation,
        Variation::None);
}

TEST(TraceReplay, OneSteadyByteMakesADifference) {
    const TraceRecord recorded = i2cRead({1, 8, 0x51}, 95, {1, 2});
    const TraceRecord answered = i2cRead({1, 8, 0x51}, 95, {3, 4});
    EXPECT_EQ(language::difference(recorded, answered).variation, Variation::None);
    const TraceRecord other = i2cRead({1, 8, 0x51}, 119, {1, 2});
    EXPECT_EQ(language::difference(other, i2cRead({1, 8, 0x51}, 119, {3, 4})).variation,
              Variation::None);
}

TEST(TraceReplay, AMeasurementThatFailsIsADifference) {
    const TraceRecord read = i2cRead({0, 1, 0x4F}, 0, {30});
    EXPECT_EQ(language::difference(read, failed(read, 0, -ENXIO)).variation, Variation::None);
}

TEST(TraceReplay, VirtualBoardsDoNotHaveEverything) {
    const auto variationOf = [](const TraceRecord &recorded) {
        return language::difference(recorded, failed(recorded, 0, -EINVAL)).variation;
    };
    EXPECT_EQ(variationOf(ofKind(TraceKind::CpldRead, 3, 1)), Variation::Unknown);
    EXPECT_EQ(variationOf(ofKind(TraceKind::CpldRead, 2, 1)), Variation::None);
    EXPECT_EQ(variationOf(i2cRead({5, 0, 0x50}, 0, {1})), Variation::Unknown);
    EXPECT_EQ(variationOf(ofKind(TraceKind::OtherRequest, 0x1234)), Variation::Unknown);
    EXPECT_EQ(variationOf(ofKind(TraceKind::MtdOther, 0x1234)), Variation::Unknown);
    EXPECT_EQ(variationOf(ofKind(TraceKind::GpioRead, 19, 1)), Variation::None);
}

TEST(TraceReplay, WhatATraceDoesNotHoldIsNotSent) {
    const struct {
        TraceKind kind;
        NotSent reason;
    } kRows[] = {
        {TraceKind::CpldRead, NotSent::Sent},     {TraceKind::CpldWrite, NotSent::Sent},
        {TraceKind::I2cRead, NotSent::Sent},      {TraceKind::I2cWrite, NotSent::Sent},
        {TraceKind::GpioInput, NotSent::Sent},    {TraceKind::GpioOutput, NotSent::Sent},
        {TraceKind::GpioRead, NotSent::Sent},     {TraceKind::CpldUpgrade, NotSent::Content},
        {TraceKind::OtherRequest, NotSent::Sent}, {TraceKind::Open, NotSent::File},
        {TraceKind::Sleep, NotSent::Waits},       {TraceKind::MtdRead, NotSent::Sent},
        {TraceKind::MtdWrite, NotSent::Content},  {TraceKind::MtdErase, NotSent::Sent},
        {TraceKind::MtdInfo, NotSent::Sent},      {TraceKind::MtdIsBad, NotSent::Sent},
        {TraceKind::MtdMarkBad, NotSent::Sent},   {TraceKind::MtdOther, NotSent::Sent},
        {TraceKind::Console, NotSent::File},      {TraceKind::MdioRead, NotSent::Sent},
        {TraceKind::MdioWrite, NotSent::Sent},    {TraceKind::Step, NotSent::Waits},
        {TraceKind::Map, NotSent::Mapping},       {TraceKind::Damaged, NotSent::Damaged},
    };
    EXPECT_EQ(std::size(kRows), static_cast<size_t>(TraceKind::Damaged) + 1);
    for (const auto &row : kRows)
        EXPECT_EQ(language::notSent(ofKind(row.kind)), row.reason) << language::kindName(row.kind);
    TraceRecord write = ofKind(TraceKind::I2cWrite);
    write.length = write.stored = language::kTraceDataSize;
    EXPECT_EQ(language::notSent(write), NotSent::Sent);
    ++write.length;
    EXPECT_EQ(language::notSent(write), NotSent::Content);
    TraceRecord read = write;
    read.kind = TraceKind::I2cRead; // the first bytes of the answer are compared
    EXPECT_EQ(language::notSent(read), NotSent::Sent);
    EXPECT_EQ(language::notSent(failed(ofKind(TraceKind::MtdErase), EPERM, 0)), NotSent::Rights);
    EXPECT_EQ(language::notSent(failed(ofKind(TraceKind::MtdErase), EIO, 0)), NotSent::Sent);
}

} // namespace
