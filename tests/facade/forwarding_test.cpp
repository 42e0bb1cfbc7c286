// Every function of the facade, as the public header declares it, hands on its arguments and the
// answer. The functions behind it are the test's own.

#include "bsp.h"
#include "tests/support/recorder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

/** A call that reached the library behind the facade, or the system. */
struct Call {
    std::string name;
    std::vector<uint64_t> arguments;

    bool operator==(const Call &) const = default;
};
using Forwards = std::vector<Call>;

std::ostream &operator<<(std::ostream &stream, const Call &call) {
    stream << call.name;
    for (const uint64_t argument : call.arguments)
        stream << " 0x" << std::hex << argument << std::dec;
    return stream;
}

constexpr int32_t kAnswer = -0x12345678;
Forwards calls;

template <typename Type>
uint64_t numberOf(Type value) {
    if constexpr (std::is_pointer_v<Type>)
        return reinterpret_cast<uintptr_t>(value);
    else
        return static_cast<uint32_t>(value);
}

/** Takes the arguments of a call of this name. */
auto note(const char *name) {
    return [name](auto... arguments) {
        calls.push_back({name, {numberOf(arguments)...}});
        return kAnswer;
    };
}

} // namespace

// The linker leads the facade's calls here.
#define STAND_IN(symbol, parameters, arguments)                                                    \
    extern "C" int32_t standIn_##symbol parameters __asm__("__wrap_" #symbol);                     \
    int32_t standIn_##symbol parameters {                                                          \
        return note(#symbol) arguments;                                                            \
    }
#define FORWARDED(stem, parameters, arguments) STAND_IN(bsp##stem, parameters, arguments)
#define OTHER(name)
#include BSP_TEST_FORWARDERS
#undef FORWARDED
#undef OTHER

STAND_IN(bspUbootVersionGet, (char *version), (version))
STAND_IN(bspImageUpgrade, (int32_t kind, const char *file, int32_t bank), (kind, file, bank))
STAND_IN(bspHwReboot, (void), ())
STAND_IN(bspLaserQsfpRead, (uint32_t port, uint32_t offset, uint8_t *buf, uint32_t len),
         (port, offset, buf, len))
STAND_IN(bspLaserQsfpWrite, (uint32_t port, uint32_t offset, uint32_t value), (port, offset, value))

namespace {

/** Different for each place, and different in all bits of 32 and more. */
template <typename Type>
Type sample(uint32_t place) {
    const uint32_t number = 0x8765A3C1 + place * 0x11111111;
    if constexpr (std::is_pointer_v<Type>)
        return reinterpret_cast<Type>(static_cast<uintptr_t>(number));
    else
        return static_cast<Type>(number);
}

/** Calls with samples; which ones. */
template <typename... Parameters>
std::vector<uint64_t> callWithSamples(int32_t (*function)(Parameters...)) {
    calls.clear();
    std::vector<uint64_t> given;
    uint32_t place = 0;
    [[maybe_unused]] const auto next = [&]<typename Type>() {
        const Type value = sample<Type>(place++);
        given.push_back(numberOf(value));
        return value;
    };
    // Braces keep the order.
    const std::tuple<Parameters...> arguments{next.template operator()<Parameters>()...};
    EXPECT_EQ(std::apply(function, arguments), kAnswer);
    return given;
}

struct Forwarder {
    const char *stem;
    std::vector<uint64_t> (*call)();
};

const Forwarder kForwarders[] = {
#define FORWARDED(stem, parameters, arguments) {#stem, [] { return callWithSamples(io##stem); }},
#define OTHER(name)
#include BSP_TEST_FORWARDERS
#undef FORWARDED
#undef OTHER
};

TEST(ForwardingTest, EveryFunctionHandsItsArgumentsToTheFunctionOfItsStem) {
    for (const Forwarder &forwarder : kForwarders) {
        std::vector<uint64_t> expected = forwarder.call();
        if (std::string(forwarder.stem) == "LaserPhySet")
            expected.back() &= 0xFFFF; // a PHY register's width
        EXPECT_EQ(calls, (Forwards{{std::string("bsp") + forwarder.stem, expected}}));
    }
}

TEST(ForwardingTest, TheWholeFacadeIsForwardedButForTheseFunctions) {
    const std::set<std::string> others = {
#define FORWARDED(stem, parameters, arguments)
#define OTHER(name) #name,
#include BSP_TEST_FORWARDERS
#undef FORWARDED
#undef OTHER
    };
    EXPECT_EQ(others, (std::set<std::string>{"ioBiosUpgrade", "ioBiosVersionGet", "ioCardIdGet",
                                             "ioCardTypeGet", "ioCpldUpgrade", "ioFrameTypeGet",
                                             "ioImageUpgrade", "ioLaserQsfpGet", "ioLaserQsfpSet",
                                             "ioProductIdGet", "ioRebootEx", "ioSlotIdGet",
                                             "ioSlotTypeGet"}));
    EXPECT_EQ(std::size(kForwarders) + others.size(), 105u);
}

TEST(ForwardingTest, SomeFunctionsHaveTargetsOfTheirOwn) {
    char text[8] = "";
    uint8_t byte = 0;
    struct {
        int32_t (*call)(char *, uint8_t *);
        Call expected;
    } const cases[] = {
        {[](char *file, uint8_t *) { return ioBiosVersionGet(file); },
         {"bspUbootVersionGet", {numberOf(&text[0])}}},
        {[](char *file, uint8_t *) { return ioBiosUpgrade(file); },
         {"bspImageUpgrade", {2, numberOf(&text[0]), 0}}},
        {[](char *file, uint8_t *) { return ioCpldUpgrade(file); },
         {"bspImageUpgrade", {4, numberOf(&text[0]), 0}}},
        {[](char *file, uint8_t *) { return ioImageUpgrade(file, -7); },
         {"bspImageUpgrade", {1, numberOf(&text[0]), static_cast<uint32_t>(-7)}}},
        {[](char *, uint8_t *buf) { return ioLaserQsfpGet(0x11111111, 0x22222222, buf); },
         {"bspLaserQsfpRead", {0x11111111, 0x22222222, numberOf(&byte), 1}}},
        {[](char *, uint8_t *) { return ioLaserQsfpSet(0x11111111, 0x22222222, 0x1FF); },
         {"bspLaserQsfpWrite", {0x11111111, 0x22222222, 0xFF}}},
        {[](char *, uint8_t *) { return ioLaserPhySet(0x11111111, 0x22222222, 0x12345); },
         {"bspLaserPhySet", {0x11111111, 0x22222222, 0x2345}}},
    };
    for (const auto &row : cases) {
        calls.clear();
        EXPECT_EQ(row.call(text, &byte), kAnswer);
        EXPECT_EQ(calls, Forwards{row.expected});
    }
}

TEST(ForwardingTest, RebootStoresItsFlagWaitsAndResetsWhateverFails) {
    calls.clear();
    Recorder recorder;
    recorder.before = [](const SystemCall &call) {
        calls.push_back({call.text(), {}});
        return 0;
    };
    EXPECT_EQ(ioRebootEx(-3), BSP_OK);
    EXPECT_EQ(calls, (Forwards{{"bspBootFlagSet", {static_cast<uint32_t>(-3)}},
                               {"wait 1 s", {}},
                               {"bspHwReboot", {}}}));
}

} // namespace
