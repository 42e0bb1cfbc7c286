#include "tests/second_controller/virtual_board/kind.h"

#include "virtual_board/devices/byte_order.h"
#include "virtual_board/devices/poe_budget.h"
#include "virtual_board/devices/poe_measurements.h"
#include "virtual_board/devices/poe_ports.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace vb {

namespace {

static_assert(sizeof(QuillMemory) <= sizeof(PoeController::memory) &&
              alignof(QuillMemory) <= alignof(Rtl8239Memory));

constexpr uint8_t kVersion[] = {2, 7};
constexpr uint8_t kOnCommand = 2;
constexpr uint32_t kMostMilliwatts = 200000;

constexpr uint8_t kDone = 0;
constexpr uint8_t kRefused = 1;

// Phases of a port as it tells them.
constexpr uint8_t kIdle = 0;
constexpr uint8_t kDelivering = 1;
constexpr uint8_t kFaulty = 2;

const QuillMemory &memoryOf(const PoeController &poe) {
    const void *own = poe.memory;
    return *static_cast<const QuillMemory *>(own);
}

/** One remainder at a time, as its makers' table says: of x^8 + x^5 + x^4 + 1. */
uint8_t remainder(const uint8_t *data, uint32_t length) {
    uint8_t rest = 0;
    for (uint32_t i = 0; i < length * 8; ++i) {
        const bool bit = (data[i / 8] >> (7 - i % 8) & 1) != 0;
        const bool carry = (rest & 0x80) != 0;
        rest = static_cast<uint8_t>(rest << 1);
        if (bit != carry)
            rest ^= 0x31;
    }
    return rest;
}

/** A request taken apart, and the answer to it. */
struct Exchange {
    PoeController &poe;
    uint8_t index;
    const uint8_t *sent;
    uint32_t length;
    uint64_t nowNs;
    uint8_t *answer; // data alone

    QuillMemory &memory() const { return quillMemory(poe); }
    QuillPort &port() const { return memory().port[index]; }
};

uint8_t phaseOf(const PoePort &port) {
    if (port.phase == PoePhase::Fault)
        return kFaulty;
    return port.phase == PoePhase::Delivering ? kDelivering : kIdle;
}

void readState(const Exchange &exchange) {
    const PoePort &port = exchange.poe.port[exchange.index];
    exchange.answer[0] = phaseOf(port);
    exchange.answer[1] = port.detection;
    exchange.answer[2] = port.powerClass == kPoeNotClassified ? uint8_t{0xFF} : port.powerClass;
}

void readMeasured(const Exchange &exchange) {
    const PoeMeasurement measured = poeMeasure(exchange.poe, exchange.index, exchange.nowNs);
    storeBe16(exchange.answer, static_cast<uint16_t>(measured.microvolts / 1000));
    storeBe16(exchange.answer + 2, static_cast<uint16_t>(measured.milliamperes));
    storeBe32(exchange.answer + 4, measured.milliwatts);
}

// Writes; false when the value is refused.

bool writeRun(const Exchange &exchange) {
    if (exchange.sent[0] > 1)
        return false;
    exchange.memory().isRunning = exchange.sent[0];
    poeRefreshPorts(exchange.poe, exchange.nowNs);
    return true;
}

bool writeBudget(const Exchange &exchange) {
    exchange.memory().budgetMw = loadBe32(exchange.sent);
    poeBalance(exchange.poe, exchange.nowNs);
    return true;
}

bool writeMode(const Exchange &exchange) {
    if (exchange.sent[0] > kOnCommand)
        return false;
    exchange.port().mode = exchange.sent[0];
    exchange.port().isOn = 0;
    poeRestartPort(exchange.poe, exchange.index, exchange.nowNs);
    return true;
}

bool writeSwitch(const Exchange &exchange) {
    if (exchange.sent[0] > 1 || exchange.port().mode != kOnCommand)
        return false;
    exchange.port().isOn = exchange.sent[0];
    if (exchange.sent[0] == 0)
        poeRestartPort(exchange.poe, exchange.index, exchange.nowNs);
    else
        poeRefreshPort(exchange.poe, exchange.index, exchange.nowNs);
    return true;
}

bool writeLimit(const Exchange &exchange) {
    const uint32_t limit = loadBe32(exchange.sent);
    if (limit > kMostMilliwatts)
        return false;
    exchange.port().limitMw = limit;
    poeRefreshPort(exchange.poe, exchange.index, exchange.nowNs);
    return true;
}

struct Register {
    uint8_t number;
    uint8_t size;
    void (*read)(const Exchange &exchange);  // null: it cannot be read
    bool (*write)(const Exchange &exchange); // null: it cannot be written
};

constexpr Register kRegisters[] = {
    {0x00, 2, [](const Exchange &e) { std::memcpy(e.answer, kVersion, sizeof(kVersion)); },
     nullptr},
    {0x01, 1, [](const Exchange &e) { e.answer[0] = e.memory().isRunning; }, writeRun},
    {0x02, 4, [](const Exchange &e) { storeBe32(e.answer, e.memory().budgetMw); }, writeBudget},
    {0x03, 4, [](const Exchange &e) { storeBe32(e.answer, poeTotalDrawn(e.poe)); }, nullptr},
    {0x10, 1, [](const Exchange &e) { e.answer[0] = e.port().mode; }, writeMode},
    {0x11, 1, nullptr, writeSwitch},
    {0x12, 4, [](const Exchange &e) { storeBe32(e.answer, e.port().limitMw); }, writeLimit},
    {0x13, 3, readState, nullptr},
    {0x14, 8, readMeasured, nullptr},
};

/** Carries out a request; its result. The size of the answer's data, which a refusal has too, is
 * stored. */
uint8_t carryOut(const Exchange &exchange, uint8_t code, uint32_t badPort, uint32_t *size) {
    constexpr uint8_t kWrite = 0x80;
    const bool isWrite = (code & kWrite) != 0;
    const auto *place = std::find_if(
        std::begin(kRegisters), std::end(kRegisters),
        [code](const Register &candidate) { return candidate.number == (code & ~kWrite); });
    if (place == std::end(kRegisters))
        return kRefused;
    *size = isWrite ? 0 : place->size;
    if (exchange.index >= kPoePorts || exchange.index == badPort)
        return kRefused;
    if (isWrite) {
        const bool isTaken = place->write != nullptr && exchange.length == place->size;
        return isTaken && place->write(exchange) ? kDone : kRefused;
    }
    if (place->read == nullptr || exchange.length != 0)
        return kRefused;
    place->read(exchange);
    return kDone;
}

void serve(PoeController &poe, const uint8_t *data, uint32_t length, const PoeFrameFault &fault,
           uint64_t nowNs) {
    constexpr uint32_t kHeader = 3, kAnswerHeader = 2;
    const bool isWhole = length > kHeader && length == kHeader + data[2] + 1u &&
                         data[length - 1] == remainder(data, length - 1);
    if (!isWhole)
        return; // which it leaves unanswered
    const QuillMemory before = memoryOf(poe);
    uint8_t *answer = poe.reply;
    std::memset(answer, 0, sizeof(poe.reply));
    answer[0] = data[0];
    uint32_t size = 0;
    const Exchange exchange = {poe,     data[1], data + kHeader,
                               data[2], nowNs,   answer + kAnswerHeader};
    answer[1] = carryOut(exchange, data[0], fault.badPort, &size);
    if (fault.hasNoEffect)
        quillMemory(poe) = before;
    if (fault.hasWrongEcho)
        answer[0] = static_cast<uint8_t>(~answer[0]);
    const uint32_t end = kAnswerHeader + size;
    answer[end] = remainder(answer, end);
    if (fault.hasWrongChecksum)
        answer[end] = static_cast<uint8_t>(~answer[end]);
    poe.replyLength = static_cast<uint8_t>(end + 1);
}

void build(PoeController &) {}

void begin(PoeController &poe) {
    quillMemory(poe) = QuillMemory{};
}

PoeMode firstMode(const PoeController &) {
    return PoeMode::Application;
}

uint64_t workTime(const PoeController &, uint8_t) {
    return kPoeMs;
}

PoePortRules portRules(const PoeController &poe, uint32_t port) {
    const QuillPort &own = memoryOf(poe).port[port];
    const bool getsPower = own.mode != kOnCommand || own.isOn != 0;
    return {.isInService = memoryOf(poe).isRunning != 0 && own.mode != 0,
            .goal = getsPower ? PoeGoal::Power : PoeGoal::Classify,
            .powersLegacy = false,
            .noticesDisconnect = true,
            .isLimitFixed = true,
            .limitMw = own.limitMw,
            .priority = 0};
}

PoeBudget budget(const PoeController &poe) {
    return {.isKept = true,
            .powerMw = memoryOf(poe).budgetMw,
            .reserveMw = 0,
            .countsDrawn = false,
            .servesByPriority = false};
}

bool isConsistent(const PoeController &poe) {
    const QuillMemory &memory = memoryOf(poe);
    return memory.isRunning <= 1 &&
           std::all_of(std::begin(memory.port), std::end(memory.port), [](const QuillPort &port) {
               return port.mode <= kOnCommand && port.isOn <= 1 && port.limitMw <= kMostMilliwatts;
           });
}

} // namespace

QuillMemory &quillMemory(PoeController &poe) {
    void *own = poe.memory;
    return *static_cast<QuillMemory *>(own);
}

constexpr PoeKind kQuillKind = {.build = build,
                                .begin = begin,
                                .firstMode = firstMode,
                                .workTime = workTime,
                                .serve = serve,
                                .portRules = portRules,
                                .budget = budget,
                                .isConsistent = isConsistent};

} // namespace vb
