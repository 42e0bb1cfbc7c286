// Chooses the PoE driver at every call, and what of it an operation number stands for.

#include "bsp.h"
#include "poe/controllers.h"
#include "poe/presence.h"

#include <cstdint>

namespace {

/** What an operation's slot is called with. */
enum class Shape : uint8_t {
    Nothing,
    Value,
    Output,
    Text,
    File,
    Port,
    PortAndValue,
    PortAndOutput,
    Words, // of a debug command, and how many there are
    Row,   // of the table of debug commands
};

/** An operation: its slot, whose type tells what it is called with. */
struct Operation {
    using Nothing = int32_t (*BspPoeDriver::*)();
    using Value = int32_t (*BspPoeDriver::*)(uint32_t);
    using Output = int32_t (*BspPoeDriver::*)(uint32_t *);
    using Text = int32_t (*BspPoeDriver::*)(char *);
    using File = int32_t (*BspPoeDriver::*)(const char *);
    using PortAndValue = int32_t (*BspPoeDriver::*)(uint32_t, uint32_t);
    using PortAndOutput = int32_t (*BspPoeDriver::*)(uint32_t, uint32_t *);
    using Words = int32_t (*BspPoeDriver::*)(uint32_t, int32_t, char **);
    using Row = int32_t (*BspPoeDriver::*)(int32_t);

    constexpr Operation(Nothing slot) : shape(Shape::Nothing), nothing(slot) {}
    constexpr Operation(Value slot, Shape as = Shape::Value) : shape(as), value(slot) {}
    constexpr Operation(Output slot) : shape(Shape::Output), output(slot) {}
    constexpr Operation(Text slot) : shape(Shape::Text), text(slot) {}
    constexpr Operation(File slot) : shape(Shape::File), file(slot) {}
    constexpr Operation(PortAndValue slot) : shape(Shape::PortAndValue), portAndValue(slot) {}
    constexpr Operation(PortAndOutput slot) : shape(Shape::PortAndOutput), portAndOutput(slot) {}
    constexpr Operation(Words slot) : shape(Shape::Words), words(slot) {}
    constexpr Operation(Row slot) : shape(Shape::Row), row(slot) {}

    Shape shape;
    union {
        Nothing nothing;
        Value value; // of the port, too
        Output output;
        Text text;
        File file;
        PortAndValue portAndValue;
        PortAndOutput portAndOutput;
        Words words;
        Row row;
    };
};

// By operation number: settings, readings, firmware, debugging.
constexpr Operation kOperations[] = {
    &BspPoeDriver::deviceInit,
    &BspPoeDriver::globalMaxPowerSet,
    &BspPoeDriver::initStatusSet,
    &BspPoeDriver::initStatusGet,
    &BspPoeDriver::portModeSet,
    &BspPoeDriver::portPowerOnSet,
    {&BspPoeDriver::portDetectionSet, Shape::Port},
    {&BspPoeDriver::portClassificationSet, Shape::Port},
    &BspPoeDriver::portPrioritySet,
    &BspPoeDriver::portMaxPowerSet,
    &BspPoeDriver::portLegacyEnableSet,
    &BspPoeDriver::portInrushModeSet,
    &BspPoeDriver::portForceInrushSet,
    &BspPoeDriver::portMaxPowerTypeSet,
    &BspPoeDriver::globalMaxPowerGet,
    &BspPoeDriver::globalPowerGet,
    &BspPoeDriver::portModeGet,
    &BspPoeDriver::portCurrentGet,
    &BspPoeDriver::portVoltageGet,
    &BspPoeDriver::portPowerGet,
    &BspPoeDriver::portMaxPowerGet,
    &BspPoeDriver::portFaultGet,
    &BspPoeDriver::portDetectionGet,
    &BspPoeDriver::portClassificationGet,
    &BspPoeDriver::portDisconnectGet,
    &BspPoeDriver::portInrushModeGet,
    &BspPoeDriver::appStatusGet,
    &BspPoeDriver::appUpgrade,
    &BspPoeDriver::appVersionGet,
    &BspPoeDriver::debugAllInfoGet,
    {&BspPoeDriver::debugPortInfoGet, Shape::Port},
    &BspPoeDriver::debugSwVersionGet,
    &BspPoeDriver::debugDispatch,
    &BspPoeDriver::debugDispatchHelp,
};
constexpr uint32_t kOperationCount = sizeof(kOperations) / sizeof(kOperations[0]);
static_assert(kOperationCount == BSP_POE_OPERATIONS);

/** Whether an operation takes a value that must be there. The driver judges what it stores itself.
 */
bool lacksArgument(Shape shape, const uint32_t *portRef, const void *argument) {
    if (shape == Shape::Value || shape == Shape::PortAndValue)
        return argument == nullptr;
    return (shape == Shape::Words || shape == Shape::Row) && portRef == nullptr;
}

/** An empty slot is an operation that the driver does not have. */
template <typename Slot, typename... Arguments>
int32_t callSlot(Slot slot, Arguments... arguments) {
    return slot != nullptr ? slot(arguments...) : int32_t{BSP_E_POE_UNAVAILABLE};
}

int32_t callDriver(const BspPoeDriver &driver, const Operation &operation, const uint32_t *portRef,
                   void *argument) {
    const uint32_t number = portRef != nullptr ? *portRef : 0;
    const uint32_t port = number - 1; // drivers count from 0
    auto *const output = static_cast<uint32_t *>(argument);
    switch (operation.shape) {
    case Shape::Nothing:
        return callSlot(driver.*operation.nothing);
    case Shape::Value:
        return callSlot(driver.*operation.value, *output);
    case Shape::Output:
        return callSlot(driver.*operation.output, output);
    case Shape::Text:
        return callSlot(driver.*operation.text, static_cast<char *>(argument));
    case Shape::File:
        return callSlot(driver.*operation.file, static_cast<const char *>(argument));
    case Shape::Port:
        return callSlot(driver.*operation.value, port);
    case Shape::PortAndValue:
        return callSlot(driver.*operation.portAndValue, port, *output);
    case Shape::PortAndOutput:
        return callSlot(driver.*operation.portAndOutput, port, output);
    // Debug operations count words and rows instead of ports: their number travels as it is.
    case Shape::Words:
        return callSlot(driver.*operation.words, 0u, static_cast<int32_t>(number),
                        static_cast<char **>(argument));
    case Shape::Row:
        return callSlot(driver.*operation.row, static_cast<int32_t>(number));
    }
    return BSP_E_POE_UNAVAILABLE;
}

} // namespace

const bsp::PoeDriver *bsp::poeDriver() {
    const BoardModel *model = poeModel();
    if (model == nullptr)
        return nullptr;
    for (const PoeController &controller : kPoeControllers) {
        if (controller.chip == model->poeChip)
            return &controller.driver;
    }
    return nullptr;
}

const BspPoeDriver *bspPoeDriverGet(void) {
    const bsp::PoeDriver *driver = bsp::poeDriver();
    return driver != nullptr ? &driver->slots : nullptr;
}

int32_t bspPoeOptDriver(const uint32_t *portRef, uint32_t op, void *arg) {
    const BspPoeDriver *driver = bspPoeDriverGet();
    if (driver == nullptr || op >= kOperationCount)
        return BSP_E_POE_UNAVAILABLE;
    const Operation &operation = kOperations[op];
    if (lacksArgument(operation.shape, portRef, arg))
        return BSP_E_POE_NULL;
    return callDriver(*driver, operation, portRef, arg);
}
