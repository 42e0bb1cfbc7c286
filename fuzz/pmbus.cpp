// Words of PMBus supplies: as the library reads any, and as it reads what the virtual supply makes
// of a reading.

#include "bsp.h"
#include "chassis/linear.h"
#include "fuzz/hostile_system.h"
#include "virtual_board/devices/pmbus_supply.h"

#include <cmath>
#include <iterator>

namespace {

using fuzz::require;

/** LINEAR11 by its definition, within what the library's type holds. */
double valueOf(uint16_t word) {
    const int exponent = static_cast<int16_t>(word) >> 11;
    const int mantissa = static_cast<int16_t>(static_cast<uint16_t>(word << 5)) / 32;
    const double value = std::trunc(mantissa * 1000.0 * std::pow(2.0, exponent));
    return std::fmin(std::fmax(value, INT32_MIN), INT32_MAX);
}

void judgeWord(uint16_t word) {
    require(bsp::linear11ToThousandths(word) == static_cast<int32_t>(valueOf(word)),
            "LINEAR11 is not its value");
    for (int exponent = -16; exponent < 16; ++exponent)
        require(bsp::linear16ToThousandths(word, exponent) >= 0, "LINEAR16 is negative");
}

/** A mantissa of 10 bits is right to a 512th of the value, and a unit where digits are cut off. */
void judgeReading(int32_t thousandths) {
    const int32_t read = bsp::linear11ToThousandths(vb::toLinear11(thousandths));
    require(std::abs(static_cast<double>(read) - thousandths) <=
                std::abs(static_cast<double>(thousandths)) / 512 + 1,
            "a reading comes back as another one");
}

void askSupply(fuzz::Input &input) {
    hostile::System system(input);
    system.canFail = input.below(2) == 0;
    system.devId = 0x0709; // whose supplies tell readings
    for (int32_t index = 1; index <= 2; ++index) {
        BspPowerInfo info{};
        ioPowerInfoGet(index, &info);
    }
}

void askVirtualSupply(fuzz::Input &input) {
    // A supply whose numbers were all the input's would hardly ever be one that can be.
    uint32_t numbers[sizeof(vb::PmbusSupply) / sizeof(uint32_t)];
    vb::PmbusSupply supply = {};
    vb::pmbusBuild(supply);
    std::memcpy(numbers, &supply, sizeof(supply));
    for (uint32_t changes = input.below(5); changes != 0; --changes)
        numbers[input.below(std::size(numbers))] = input.number<uint32_t>();
    std::memcpy(&supply, numbers, sizeof(supply));
    if (!vb::pmbusIsConsistent(supply))
        return;
    for (uint32_t command = 0; command <= UINT8_MAX; ++command) {
        uint8_t data[40];
        vb::pmbusRead(supply, static_cast<uint8_t>(command), data, 1 + input.below(sizeof(data)));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::Input input(bytes, size);
    judgeWord(input.number<uint16_t>());
    const auto most = static_cast<int32_t>(vb::kPmbusMost);
    judgeReading(input.number<int32_t>() % (most + 1));
    askVirtualSupply(input);
    askSupply(input);
    return 0;
}
