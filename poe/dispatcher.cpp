// Chooses the PoE driver at every call, and what of it an operation number stands for.

#include "bsp.h"
#include "identity/board_catalogue.h"

#include <cstdint>

namespace {

constexpr uint32_t kNoPort = UINT32_MAX;

uint32_t valueOf(const void *argument) {
    return *static_cast<const uint32_t *>(argument);
}
uint32_t *outputOf(void *argument) {
    return static_cast<uint32_t *>(argument);
}

/** One call of the dispatcher on its way to the driver's slot. */
struct Call {
    const BspPoeDriver &driver;
    const uint32_t *portRef;
    void *argument;

    /** The driver counts ports from 0. */
    uint32_t port() const { return portRef != nullptr ? *portRef - 1 : kNoPort; }
};

using Operation = int32_t (*)(const Call &call);

// What a slot is called with. An empty slot is an operation that the driver does not have.

template <auto Slot, typename... Arguments>
int32_t callSlot(const Call &call, Arguments... arguments) {
    const auto operation = call.driver.*Slot;
    return operation != nullptr ? operation(arguments...) : int32_t{BSP_E_POE_UNAVAILABLE};
}

template <auto Slot>
int32_t withNothing(const Call &call) {
    return callSlot<Slot>(call);
}
template <auto Slot>
int32_t withValue(const Call &call) {
    if (call.argument == nullptr)
        return BSP_E_POE_NULL;
    return callSlot<Slot>(call, valueOf(call.argument));
}
template <auto Slot>
int32_t withOutput(const Call &call) {
    return callSlot<Slot>(call, outputOf(call.argument));
}
template <auto Slot>
int32_t withText(const Call &call) {
    return callSlot<Slot>(call, static_cast<char *>(call.argument));
}
template <auto Slot>
int32_t withPort(const Call &call) {
    return callSlot<Slot>(call, call.port());
}
template <auto Slot>
int32_t withPortAndValue(const Call &call) {
    if (call.argument == nullptr)
        return BSP_E_POE_NULL;
    return callSlot<Slot>(call, call.port(), valueOf(call.argument));
}
template <auto Slot>
int32_t withPortAndOutput(const Call &call) {
    return callSlot<Slot>(call, call.port(), outputOf(call.argument));
}

// The debug operations count words instead of ports: their number travels as it is.

int32_t dispatchDebug(const Call &call) {
    if (call.portRef == nullptr)
        return BSP_E_POE_NULL;
    return callSlot<&BspPoeDriver::debugDispatch>(call, 0u, static_cast<int32_t>(*call.portRef),
                                                  static_cast<char **>(call.argument));
}

int32_t helpDebug(const Call &call) {
    if (call.portRef == nullptr)
        return BSP_E_POE_NULL;
    return callSlot<&BspPoeDriver::debugDispatchHelp>(call, static_cast<int32_t>(*call.portRef));
}

// By operation number: settings, readings, firmware, debugging.
constexpr Operation kOperations[] = {
    withNothing<&BspPoeDriver::deviceInit>,
    withValue<&BspPoeDriver::globalMaxPowerSet>,
    withValue<&BspPoeDriver::initStatusSet>,
    withOutput<&BspPoeDriver::initStatusGet>,
    withPortAndValue<&BspPoeDriver::portModeSet>,
    withPortAndValue<&BspPoeDriver::portPowerOnSet>,
    withPort<&BspPoeDriver::portDetectionSet>,
    withPort<&BspPoeDriver::portClassificationSet>,
    withPortAndValue<&BspPoeDriver::portPrioritySet>,
    withPortAndValue<&BspPoeDriver::portMaxPowerSet>,
    withPortAndValue<&BspPoeDriver::portLegacyEnableSet>,
    withPortAndValue<&BspPoeDriver::portInrushModeSet>,
    withPortAndValue<&BspPoeDriver::portForceInrushSet>,
    withPortAndValue<&BspPoeDriver::portMaxPowerTypeSet>,
    withOutput<&BspPoeDriver::globalMaxPowerGet>,
    withOutput<&BspPoeDriver::globalPowerGet>,
    withPortAndOutput<&BspPoeDriver::portModeGet>,
    withPortAndOutput<&BspPoeDriver::portCurrentGet>,
    withPortAndOutput<&BspPoeDriver::portVoltageGet>,
    withPortAndOutput<&BspPoeDriver::portPowerGet>,
    withPortAndOutput<&BspPoeDriver::portMaxPowerGet>,
    withPortAndOutput<&BspPoeDriver::portFaultGet>,
    withPortAndOutput<&BspPoeDriver::portDetectionGet>,
    withPortAndOutput<&BspPoeDriver::portClassificationGet>,
    withPortAndOutput<&BspPoeDriver::portDisconnectGet>,
    withPortAndOutput<&BspPoeDriver::portInrushModeGet>,
    withOutput<&BspPoeDriver::appStatusGet>,
    withText<&BspPoeDriver::appUpgrade>,
    withText<&BspPoeDriver::appVersionGet>,
    withNothing<&BspPoeDriver::debugAllInfoGet>,
    withPort<&BspPoeDriver::debugPortInfoGet>,
    withNothing<&BspPoeDriver::debugSwVersionGet>,
    dispatchDebug,
    helpDebug,
};
constexpr uint32_t kOperationCount = sizeof(kOperations) / sizeof(kOperations[0]);
static_assert(kOperationCount == BSP_POE_OPERATIONS);

} // namespace

const BspPoeDriver *bspPoeDriverGet(void) {
    uint32_t devId = 0;
    // An id that cannot be read stays 0, which has no controller.
    if (bspDevIdGet(&devId) != BSP_OK || !bsp::boardModel(devId).hasPoe())
        return nullptr;
    uint32_t presence = BSP_POE_CONTROLLER_MISSING;
    if (bspPoeOnlineGet(&presence) != BSP_OK || presence != BSP_POE_CONTROLLER_PRESENT)
        return nullptr;
    return &bspPoeRtl8239Driver;
}

int32_t bspPoeOptDriver(const uint32_t *portRef, uint32_t op, void *arg) {
    const BspPoeDriver *driver = bspPoeDriverGet();
    if (driver == nullptr || op >= kOperationCount)
        return BSP_E_POE_UNAVAILABLE;
    return kOperations[op]({*driver, portRef, arg});
}
