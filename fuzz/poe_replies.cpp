// Replies of the PoE controller, as the driver takes them apart: frames with the right echo and
// checksum whose payload is anything, and now and then any bytes.

#include "bsp.h"
#include "fuzz/hostile_system.h"

#include <iterator>
#include <memory>

namespace {

constexpr uint32_t kPort = 3;

/** Room of exactly the size that an operation stores. */
template <typename Record>
class Output {
  public:
    Output() : record_(std::make_unique<Record>()) {}
    operator Record *() const { return record_.get(); }
    Record *operator->() const { return record_.get(); }

  private:
    std::unique_ptr<Record> record_;
};
using Number = Output<uint32_t>;
struct Version {
    char text[BSP_POE_APP_VERSION_SIZE];
};

constexpr void (*kUses[])(uint32_t value) = {
    [](uint32_t) { bspPoeDeviceInit(); },
    [](uint32_t) { bspPoeGlobalMaxPowerGet(Number()); },
    [](uint32_t) { bspPoeGlobalPowerGet(Number()); },
    [](uint32_t) { bspPoePortModeGet(kPort, Number()); },
    [](uint32_t) { bspPoePortVoltageGet(kPort, Number()); },
    [](uint32_t) { bspPoePortCurrentGet(kPort, Number()); },
    [](uint32_t) { bspPoePortPowerGet(kPort, Number()); },
    [](uint32_t) { bspPoePortMaxPowerGet(kPort, Number()); },
    [](uint32_t) { bspPoePortFaultGet(kPort, Number()); },
    [](uint32_t) { bspPoePortDetectionGet(kPort, Number()); },
    [](uint32_t) { bspPoePortClassificationGet(kPort, Number()); },
    [](uint32_t) { bspPoePortDisconnectGet(kPort, Number()); },
    [](uint32_t) { bspPoePortInrushModeGet(kPort, Number()); },
    [](uint32_t) { bspPoePortStateGet(kPort, Output<BspPoePortState>()); },
    [](uint32_t) { bspPoePortMeasurementGet(kPort, Output<BspPoePortMeasurement>()); },
    [](uint32_t) { bspPoePortSettingsGet(kPort, Output<BspPoePortSettings>()); },
    [](uint32_t) { bspPoeAppStatusGet(Number()); },
    [](uint32_t) { bspPoeAppVersionGet(Output<Version>()->text); },
    [](uint32_t value) { bspPoeGlobalMaxPowerSet(value); },
    [](uint32_t value) { bspPoePortModeSet(kPort, value); },
    [](uint32_t value) { bspPoePortPowerOnSet(kPort, value); },
    [](uint32_t value) { bspPoePortDetectionSet(value); },
    [](uint32_t value) { bspPoePortClassificationSet(value); },
    [](uint32_t value) { bspPoePortPrioritySet(kPort, value); },
    [](uint32_t value) { bspPoePortMaxPowerSet(kPort, value); },
    [](uint32_t value) { bspPoePortLegacyEnableSet(value, 1); },
    [](uint32_t value) { bspPoePortInrushModeSet(kPort, value); },
    [](uint32_t value) { bspPoePortForceInrushSet(kPort, value); },
    [](uint32_t value) { bspPoePortMaxPowerTypeSet(kPort, value); },
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::Input input(bytes, size);
    hostile::System system(input);
    system.devId = 0x0709; // which has the controller
    system.canFail = input.below(2) == 0;
    while (!input.isEmpty()) {
        const uint32_t use = input.below(std::size(kUses));
        kUses[use](input.quantity());
    }
    return 0;
}
