// The port maps, and the initialisation frame by frame.

#include "bsp.h"
#include "poe/rtl8239/bus.h"
#include "tests/poe/poe_board.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

#include <cstdarg>
#include <cstdio>

namespace {

using Lines = std::vector<std::string>;

struct Variant {
    uint32_t devId;
    int ports;
};
constexpr Variant kVariants[] = {{0x0709, 48}, {0x8809, 48}, {0x0809, 24}, {0x8709, 24}};

__attribute__((format(printf, 1, 2))) std::string text(const char *format, ...) {
    char line[80];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof(line), format, arguments);
    va_end(arguments);
    return line;
}

/** Frames that give the same value to the ports from 0 on, four at a time. */
void addRange(Lines &lines, const char *command, int ports, const char *value) {
    for (int port = 0; port < ports; port += 4)
        lines.push_back(text("%s: %02X %s %02X %s %02X %s %02X %s", command, port, value, port + 1,
                             value, port + 2, value, port + 3, value));
}

/** All that the controller is sent, in order. */
Lines initialisation(int ports) {
    Lines lines = {"00: 00", "05: 00 30"};
    for (int port = 0; port < 48; ++port) {
        const int channel = port % 4 * 2;
        lines.push_back(text("06: %02X 01 %02X %02X %02X", port, port / 4, channel, channel + 1));
        if (port < ports)
            lines.back() += text(" FF FF FF %02X", 0x20 + port / 4 * 2);
    }
    addRange(lines, "15", ports, "00");
    addRange(lines, "08", ports, "00");
    addRange(lines, "12", ports, "01");
    addRange(lines, "09", ports, "00");
    addRange(lines, "0D", ports, "00");
    addRange(lines, "0F", ports, "02");
    lines.insert(lines.end(), {"0E: 00 FF F9", "04: 00 75 30 00 00", "10: 02"});
    lines.push_back(text("05: 01 %02X", ports));
    for (int port = 0; port < ports; ++port) {
        lines.push_back(text("0C: %02X 06", port));
        lines.push_back(text("14: %02X E1", port));
    }
    lines.push_back("00: 01");
    return lines;
}

class DeviceInitTest : public PoeTest {
  protected:
    Answer initialise() { return answerOf(bspPoeRtl8239DeviceInit); }
};

TEST_F(DeviceInitTest, PortMapDescribesEveryPort) {
    for (const Variant &variant : kVariants) {
        SCOPED_TRACE(variant.devId);
        usePoeModel(variant.devId);
        const BspPoePortMap *map = bspPoeRtl8239PortMapGet();
        ASSERT_NE(map, nullptr);
        for (int port = 0; port < 48; ++port) {
            const BspPoePort &record = map->port[port];
            EXPECT_EQ(listed({record.deviceIndex, record.chipAddress, record.primaryChannel,
                              record.secondaryChannel, record.pairType, record.maxPower}),
                      listed({port / 4, port < variant.ports ? 0x20 + port / 4 * 2 : 0xFF,
                              port % 4 * 2, port % 4 * 2 + 1, 2, 90000}));
        }
        EXPECT_EQ(listed({map->recordCount, map->portCount, map->powerBank, map->totalPower}),
                  listed({48, variant.ports, 0, 3000000}));
    }
}

TEST_F(DeviceInitTest, PortMapNeedsAControllerThatIsThere) {
    for (const vb::Model &model : vb::kModels) {
        usePoeModel(model.devId);
        EXPECT_EQ(bspPoeRtl8239PortMapGet() != nullptr, model.poePorts != 0) << model.devId;
        unplugController();
        EXPECT_EQ(bspPoeRtl8239PortMapGet(), nullptr) << model.devId;
    }
    usePoeModel(0x0709);
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Read, 5));
    EXPECT_EQ(answerOf([] { return bspPoeRtl8239PortMapGet() == nullptr ? 0 : 1; }),
              (Answer{0, "bspPoeOnlineGet-#: bspCpldGet error. ret=5 \n"}));
}

TEST_F(DeviceInitTest, SendsTheWholeSequence) {
    for (const Variant &variant : kVariants) {
        SCOPED_TRACE(variant.devId);
        usePoeModel(variant.devId);
        EXPECT_EQ(initialise(), kSilentSuccess);
        const Lines expected = initialisation(variant.ports);
        EXPECT_EQ(expected.size(), variant.ports == 48 ? 223u : 139u);
        EXPECT_EQ(controller.requests(), expected);
        // Two resets of a second; 200 ms a frame, two of them 1.1 s longer and two 2.1 s.
        EXPECT_EQ(elapsed(), 2000000u + 200000u * expected.size() + 2 * 1100000u + 2 * 2100000u);
    }
}

TEST_F(DeviceInitTest, ResetsTheControllerFirst) {
    controller.answer({"01"});
    EXPECT_EQ(initialise().status, BSP_E_POE_STATUS);
    Lines steps;
    for (const std::string &line : trace()) {
        if (line.starts_with("GPIO") || line.starts_with("sleep"))
            steps.push_back(line);
    }
    EXPECT_EQ(steps, (Lines{"GPIO output line 19 = 0", "sleep 1000000 us",
                            "GPIO output line 19 = 1", "sleep 1000000 us", "sleep 100000 us",
                            "sleep 1100000 us", "sleep 100000 us"}));
}

TEST_F(DeviceInitTest, StopsAtEachStepThatFails) {
    const Lines expected = initialisation(24);
    usePoeModel(0x0809);
    for (size_t step = 0; step < expected.size(); ++step) {
        SCOPED_TRACE(expected[step]);
        controller.answer({"", Spoil::Write}, step);
        EXPECT_EQ(initialise().status, BSP_E_POE_WRITE);
        EXPECT_EQ(controller.exchanges().size(), step + 1);
    }
}

TEST_F(DeviceInitTest, StopsWhenTheResetLineFails) {
    for (const uint32_t nth : {1u, 2u}) {
        clearFaults();
        elapsed();
        addFault(refuse(vb::FaultDevice::Gpio, vb::FaultOp::Write, 9, nth));
        EXPECT_EQ(initialise(), (Answer{9, ""}));
        EXPECT_TRUE(controller.exchanges().empty());
        EXPECT_EQ(elapsed(), 1000000u * (nth - 1));
    }
}

TEST_F(DeviceInitTest, RefusesABoardWithoutAController) {
    unplugController();
    writeBoardFile(kStatusFile, "\x01");
    EXPECT_EQ(initialise(), (Answer{BSP_E_POE_UNAVAILABLE, ""}));
    EXPECT_EQ(readBoardFile(kStatusFile), "\x01") << "the map is asked for first";
    EXPECT_EQ(elapsed(), 0u);
}

TEST_F(DeviceInitTest, RefusesAControllerWhoseUpgradeFailed) {
    writeBoardFile(kStatusFile, "\x02");
    EXPECT_EQ(initialise(), (Answer{BSP_E_POE_UNAVAILABLE, ""}));
    EXPECT_EQ(readBoardFile(kStatusFile), "\x02");
    for (const std::string &line : trace())
        EXPECT_FALSE(line.starts_with("GPIO")) << line;
    EXPECT_TRUE(controller.exchanges().empty());
    EXPECT_EQ(elapsed(), 0u);
}

TEST_F(DeviceInitTest, ForgetsAnUpgradeThatWasInterrupted) {
    const std::string zero(1, '\0');
    for (const auto &[before, after] : {std::pair<std::string, std::string>{"\x01", zero},
                                        {zero, zero},
                                        {"", ""},
                                        {"\x03", "\x03"}}) {
        writeBoardFile(kStatusFile, before);
        controller.answer({"01"});
        EXPECT_EQ(initialise().status, BSP_E_POE_STATUS) << "the controller was not reached";
        EXPECT_EQ(controller.exchanges().size(), 1u);
        EXPECT_EQ(readBoardFile(kStatusFile), after);
    }
}

TEST_F(DeviceInitTest, StopsWhenTheApplicationStatusCannotBeRead) {
    addFault(openFails(kStatusFile, EACCES));
    EXPECT_EQ(initialise(),
              (Answer{BSP_E_POE_OPEN, "bspPoeRtl8239AppStatusGet-#: open /tmp/bsp/poeApp file "
                                      "filed, " +
                                          std::to_string(EACCES) + " \n"}));
    EXPECT_EQ(elapsed(), 0u);
}

} // namespace
