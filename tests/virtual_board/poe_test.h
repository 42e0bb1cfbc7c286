#pragma once
// A board with a PoE controller, whose frames a test sends itself.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/devices/poe_ports.h"

#include <array>
#include <initializer_list>
#include <unistd.h>

using PoeBytes = std::array<uint8_t, 12>;

class PoeTest : public VirtualBoardTest {
  protected:
    using VirtualBoardTest::VirtualBoardTest;

    static void sleepMs(unsigned ms) { usleep(ms * 1000); }

    static uint8_t sum(const PoeBytes &frame) {
        unsigned total = 0;
        for (size_t i = 0; i < 11; ++i)
            total += frame[i];
        return static_cast<uint8_t>(total);
    }

    /** A frame with unused bytes and its checksum. */
    static PoeBytes frame(std::initializer_list<uint8_t> start) {
        PoeBytes bytes;
        bytes.fill(0xFF);
        std::copy(start.begin(), start.end(), bytes.begin());
        bytes[11] = sum(bytes);
        return bytes;
    }

    static int32_t write(const PoeBytes &bytes) {
        return bspI2cWrite(16, 0, 0x20, 0, 0, bytes.data(), 12);
    }
    static PoeBytes read() {
        PoeBytes bytes{};
        EXPECT_EQ(bspI2cRead(16, 0, 0x20, 0, 0, bytes.data(), 12), BSP_OK);
        return bytes;
    }
    static PoeBytes silence() {
        PoeBytes bytes;
        bytes.fill(0xFF);
        return bytes;
    }

    /** The answer to a frame after the time that its command takes at most. */
    static PoeBytes ask(std::initializer_list<uint8_t> start, unsigned ms = 10) {
        EXPECT_EQ(write(frame(start)), BSP_OK);
        sleepMs(ms);
        return read();
    }

    vb::PoeController &poe() const { return devices().poe; }

    void plug(uint32_t port, const vb::PoweredDevice &device) {
        vb::poeSetDevice(poe(), port, device, now());
    }
    static vb::PoweredDevice good(uint8_t powerClass, uint32_t requested, uint32_t drawn) {
        return {1, vb::PoeSignature::Good, powerClass, 0, requested, drawn};
    }

    /** Status byte and byte behind it of a port. */
    static std::pair<int, int> status(uint8_t port) {
        const PoeBytes answer = ask({0x42, 1, port});
        EXPECT_EQ(answer[2], port);
        return {answer[3], answer[4]};
    }

    /** Maps all ports and powers them, with a budget in milliwatts. */
    void bringUp(uint32_t budgetMw) {
        for (uint8_t port = 0; port < 48; ++port) {
            const auto chip = static_cast<uint8_t>(port / 4);
            EXPECT_EQ(ask({0x06, 1, port, 1, chip, 0, 1, 0xFF, 0xFF, 0xFF, 0x20})[3], 0);
        }
        EXPECT_EQ(ask({0x05, 1, 1, 48}, 2100)[3], 0);
        const uint32_t code = budgetMw / 100;
        EXPECT_EQ(
            ask({0x04, 1, 0, static_cast<uint8_t>(code >> 8), static_cast<uint8_t>(code), 0, 0})[3],
            0);
        EXPECT_EQ(ask({0x00, 1, 1}, 1100)[2], 0);
    }
};
