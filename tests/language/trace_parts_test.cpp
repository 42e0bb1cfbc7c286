#include "language/trace_names.h"
#include "language/trace_parts.h"

#include <gtest/gtest.h>
#include <initializer_list>

namespace {

using language::partOf;
using language::TraceKind;
using language::TraceRecord;

constexpr uint32_t kFirstUplink = 49;

TraceRecord onRegister(uint32_t reg) {
    TraceRecord record = {};
    record.kind = TraceKind::CpldWrite;
    record.offset = reg;
    return record;
}

TraceRecord onBus(uint8_t bus, uint8_t channel, uint8_t device,
                  std::initializer_list<uint8_t> data = {}) {
    TraceRecord record = {};
    record.kind = TraceKind::I2cRead;
    record.bus = bus;
    record.channel = channel;
    record.devAddr = device;
    for (const uint8_t byte : data)
        record.data[record.stored++] = byte;
    return record;
}

TraceRecord frame(std::initializer_list<uint8_t> data) {
    return onBus(16, 0, 0x20, data);
}

TEST(PartOfTest, RegistersAndLines) {
    const std::pair<uint32_t, const char *> kParts[] = {
        {1, ""},       {4, "watchdog"}, {6, "fan.1"},  {7, "lamp.system"},
        {8, ""},       {12, ""},        {13, "poe"},   {15, "poe"},
        {16, ""},      {28, "fan.1"},   {29, "fan.3"}, {30, "supply.1"},
        {31, "fan.1"}, {63, ""}};
    for (const auto &[reg, part] : kParts) {
        EXPECT_EQ(partOf(onRegister(reg), kFirstUplink), part) << reg;
        TraceRecord read = onRegister(reg);
        read.kind = TraceKind::CpldRead;
        EXPECT_EQ(partOf(read, kFirstUplink), part) << reg;
    }
    TraceRecord line = {};
    line.kind = TraceKind::GpioOutput;
    EXPECT_EQ(partOf(line, kFirstUplink), "watchdog");
    line.offset = 19;
    EXPECT_EQ(partOf(line, kFirstUplink), "poe");
    line.offset = 3;
    EXPECT_EQ(partOf(line, kFirstUplink), "");
}

TEST(PartOfTest, DevicesOfTheBuses) {
    EXPECT_EQ(partOf(onBus(0, 0, 0x50), kFirstUplink), ""); // the board's EEPROM
    EXPECT_EQ(partOf(onBus(0, 1, 0x4F), kFirstUplink), "temperature");
    EXPECT_EQ(partOf(onBus(0, 1, 0x51), kFirstUplink), "calendar");
    EXPECT_EQ(partOf(onBus(0, 1, 0x33), kFirstUplink), "");
    EXPECT_EQ(partOf(onBus(0, 2, 0x58), kFirstUplink), "supply.1");
    EXPECT_EQ(partOf(onBus(0, 3, 0x50), kFirstUplink), "supply.2");
    EXPECT_EQ(partOf(onBus(1, 0, 0x50), kFirstUplink), "sfp.49");
    EXPECT_EQ(partOf(onBus(1, 5, 0x51), kFirstUplink), "sfp.54");
    EXPECT_EQ(partOf(onBus(1, 8, 0x50), kFirstUplink), "sfp.1");
    EXPECT_EQ(partOf(onBus(1, 0, 0x50), 0), ""); // nobody knows which
    EXPECT_EQ(partOf(onBus(7, 0, 0x50), kFirstUplink), "");
}

TEST(PartOfTest, FramesOfThePoeController) {
    EXPECT_EQ(partOf(frame({0x42, 0x07, 0x02, 0xFF}), kFirstUplink), "port.3");
    EXPECT_EQ(partOf(frame({0x44, 0x00, 0x2F}), kFirstUplink), "port.48");
    // Settings of up to four ports
    EXPECT_EQ(partOf(frame({0x01, 0x00, 0x04, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0}),
                     kFirstUplink),
              "port.5");
    EXPECT_EQ(partOf(frame({0x01, 0x00, 0x04, 0x01, 0x05, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0}),
                     kFirstUplink),
              "poe");
    EXPECT_EQ(partOf(frame({0x40, 0x00, 0x02}), kFirstUplink), "poe"); // of the controller itself
    EXPECT_EQ(partOf(frame({0x42, 0x00, 0xFF}), kFirstUplink), "poe");
    EXPECT_EQ(partOf(frame({0x42, 0x00}), kFirstUplink), "poe");
    EXPECT_EQ(partOf(frame({}), kFirstUplink), "poe");
}

TEST(PartOfTest, WhatIsAboutNoPart) {
    for (int number = 0; number <= static_cast<int>(TraceKind::Damaged); ++number) {
        TraceRecord record = {};
        record.kind = static_cast<TraceKind>(number);
        record.offset = 1;
        record.bus = 9;
        EXPECT_EQ(partOf(record, kFirstUplink), "") << language::kindName(record.kind);
    }
}

} // namespace
