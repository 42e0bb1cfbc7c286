// Commands of the PoE controller, as the virtual one takes them apart: frames of any bytes, mostly
// with the right checksum, with faults, time and devices between them.

#include "fuzz/input.h"
#include "virtual_board/devices/poe_controller.h"
#include "virtual_board/devices/rtl8239/frame.h"

#include <memory>

namespace {

void writeFrame(vb::PoeController &poe, fuzz::Input &input, uint64_t now) {
    uint8_t frame[40];
    const uint8_t form = input.byte();
    uint32_t length = vb::kPoeFrameSize;
    if (form % 8 == 7)
        length = 1 + input.below(sizeof(frame));
    input.fill(frame, length);
    if (form % 8 < 6) {
        uint8_t sum = 0;
        for (uint32_t i = 0; i + 1 < vb::kPoeFrameSize; ++i)
            sum = static_cast<uint8_t>(sum + frame[i]);
        frame[vb::kPoeFrameSize - 1] = sum;
    }
    vb::PoeFrameFault fault;
    if (form >= 0xF0) {
        const uint8_t what = input.byte();
        fault.isIgnored = what % 8 == 0;
        fault.hasWrongEcho = what % 8 == 1;
        fault.hasWrongChecksum = what % 8 == 2;
        fault.hasPowerLoss = what % 8 == 3;
        fault.hasNoEffect = what % 8 == 4;
        fault.latePolls = what % 8 == 5 ? what : uint8_t{0};
        fault.badPort = what % 8 == 6 ? what % vb::kPoePorts : vb::kPoePorts;
    }
    vb::poeWrite(poe, frame, length, fault, now);
}

void plugDevice(vb::PoeController &poe, fuzz::Input &input) {
    vb::PoweredDevice device = {};
    device.isPlugged = static_cast<uint8_t>(input.below(2));
    device.signature = static_cast<vb::PoeSignature>(input.below(5));
    device.powerClass = static_cast<uint8_t>(input.below(vb::kPoeHighestClass + 1));
    device.isOverCurrent = static_cast<uint8_t>(input.below(2));
    device.requestedMw = input.below(vb::kPoeMostMilliwatts + 1);
    device.drawnMw = input.below(vb::kPoeMostMilliwatts + 1);
    poe.device[input.below(vb::kPoePorts)] = device;
}

/** As the factory delivers it. To make one takes longer than most inputs. */
const vb::PoeController &newController() {
    static const auto made = [] {
        auto poe = std::make_unique<vb::PoeController>();
        vb::poeBuild(*poe, vb::PoeChip::Rtl8239);
        return poe;
    }();
    return *made;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::Input input(bytes, size);
    static const auto poe = std::make_unique<vb::PoeController>();
    std::memcpy(static_cast<void *>(poe.get()), &newController(), sizeof(*poe));
    uint64_t now = 1000000000;
    while (!input.isEmpty()) {
        uint8_t reply[40];
        switch (input.below(8)) {
        case 0:
            now += uint64_t{input.number<uint32_t>()} * 1000;
            vb::poeAdvance(*poe, now);
            break;
        case 1:
            plugDevice(*poe, input);
            break;
        case 2:
            vb::poeSetReset(*poe, input.below(2) == 0, input.below(8) == 7, now);
            break;
        case 3:
            vb::poeRead(*poe, reply, 1 + input.below(sizeof(reply)), now);
            break;
        default: // most of them: a command, and its answer
            writeFrame(*poe, input, now);
            now += 5000000;
            vb::poeRead(*poe, reply, vb::kPoeFrameSize, now);
        }
    }
    fuzz::require(vb::poeIsConsistent(*poe), "a controller that cannot be");
    return 0;
}
