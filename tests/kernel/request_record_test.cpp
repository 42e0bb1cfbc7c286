// The request record of every builder, slot by slot.

#include "tests/kernel/request_test.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace {

// The kernel module is built apart from the library: the layout is what both agree on.
static_assert(sizeof(BspIoctlRecord) == kRecordSize);
static_assert(offsetof(BspIoctlRecord, slot) == 0);
static_assert(sizeof(BspIoctlRecord::slot) == 64 && sizeof(BspIoctlRecord{}.slot[0]) == 8);
static_assert(offsetof(BspIoctlRecord, result) == 64 && sizeof(BspIoctlRecord::result) == 4);
static_assert(offsetof(BspIoctlRecord, reserved) == 68 && sizeof(BspIoctlRecord::reserved) == 4);

constexpr char kPath[] = "/tmp/cpld.img";

template <typename Type = void>
Type *at(uintptr_t address) {
    return reinterpret_cast<Type *>(address); // NOLINT: never dereferenced
}

/** The slot of an address that the test does not choose. */
uint64_t slotOf(const void *address) {
    const uint64_t whole = reinterpret_cast<uintptr_t>(address);
    return (whole >> 31) == 1 ? whole | 0xFFFFFFFF00000000 : whole;
}

struct RecordCase {
    const char *description;
    std::function<int32_t()> call;
    uint32_t code;
    std::array<uint64_t, 6> slots;
};

// Arguments with bit 31 set show how each is widened, plain ones show where it goes.
const std::vector<RecordCase> kCases = {
    {"CPLD read",
     [] { return bspFpgaGet_handle(0x1E, at<uint32_t>(0x1000)); },
     0x1001,
     {0x1E, 0x1000}},
    {"CPLD read, high bits",
     [] { return bspFpgaGet_handle(0x80000002, at<uint32_t>(0x80001000)); },
     0x1001,
     {0x80000002, 0xFFFFFFFF80001000}},
    {"CPLD write", [] { return bspFpgaSet_handle(6, 0x2345); }, 0x1002, {6, 0x2345}},
    {"CPLD write, high bits",
     [] { return bspFpgaSet_handle(0x80000001, 0x80000002); },
     0x1002,
     {0x80000001, 0x80000002}},
    {"I2C read",
     [] { return bspI2cRead_handle(0x0203, 0x50, 0x10, 1, at(0x1000), 8); },
     0x1003,
     {0x0203, 0x50, 0x10, 1, 0x1000, 8}},
    {"I2C read, high bits",
     [] {
         return bspI2cRead_handle(0x80000001, 0x80000002, 0x80000003, 0x80000004, at(0x80001000),
                                  -6);
     },
     0x1003,
     {0xFFFFFFFF80000001, 0x80000002, 0x80000003, 0xFFFFFFFF80000004, 0xFFFFFFFF80001000,
      0xFFFFFFFFFFFFFFFA}},
    {"I2C write",
     [] { return bspI2cWrite_handle(0x0203, 0x50, 0x10, 1, at(0x1000), 8); },
     0x1004,
     {0x0203, 0x50, 0x10, 1, 0x1000, 8}},
    {"I2C write, high bits",
     [] {
         return bspI2cWrite_handle(0x80000001, 0x80000002, 0x80000003, 0x80000004, at(0x80001000),
                                   -6);
     },
     0x1004,
     {0xFFFFFFFF80000001, 0x80000002, 0x80000003, 0xFFFFFFFF80000004, 0xFFFFFFFF80001000,
      0xFFFFFFFFFFFFFFFA}},
    {"SPI transfer",
     [] { return bspSpiXfer_handle(1, 2, 3, 4, 5, 6); },
     0x1004,
     {1, 2, 3, 4, 5, 6}},
    {"SPI transfer, high bits",
     [] {
         return bspSpiXfer_handle(0x80000001, 0x80000002, 0x80000003, 0x80000004, 0x80000005,
                                  0x80000006);
     },
     0x1004,
     {0xFFFFFFFF80000001, 0xFFFFFFFF80000002, 0xFFFFFFFF80000003, 0x80000004, 0xFFFFFFFF80000005,
      0x80000006}},
    {"GPIO input", [] { return bspGpioDirectionInput_handle(19); }, 0x1006, {19}},
    {"GPIO input, high bits",
     [] { return bspGpioDirectionInput_handle(0x80000001); },
     0x1006,
     {0x80000001}},
    {"GPIO output", [] { return bspGpioDirectionOutput_handle(19, 1); }, 0x1007, {19, 1}},
    {"GPIO output, high bits",
     [] { return bspGpioDirectionOutput_handle(0x80000001, -2); },
     0x1007,
     {0x80000001, 0xFFFFFFFFFFFFFFFE}},
    {"GPIO read",
     [] { return bspGpioGetValue_handle(19, at<uint32_t>(0x1000)); },
     0x1008,
     {19, 0x1000}},
    {"GPIO read, high bits",
     [] { return bspGpioGetValue_handle(0x80000001, at<uint32_t>(0x80001000)); },
     0x1008,
     {0x80000001, 0xFFFFFFFF80001000}},
    {"CPLD upgrade",
     [] { return bspCpldUpgrade_handle(at(0x1000), kPath); },
     0x1009,
     {0x1000, slotOf(kPath), 13}},
    {"CPLD upgrade, high bits",
     [] { return bspCpldUpgrade_handle(at(0x80001000), ""); },
     0x1009,
     {0xFFFFFFFF80001000, slotOf(""), 0}},
    {"I2C read without a buffer",
     [] { return bspI2cRead_handle(1, 2, 3, 4, nullptr, 0); },
     0x1003,
     {1, 2, 3, 4, 0, 0}},
    {"I2C write without a buffer",
     [] { return bspI2cWrite_handle(1, 2, 3, 4, nullptr, 0); },
     0x1004,
     {1, 2, 3, 4, 0, 0}},
    {"highest address without bit 31",
     [] { return bspFpgaGet_handle(1, at<uint32_t>(0x7FFFFFFC)); },
     0x1001,
     {1, 0x7FFFFFFC}},
};

std::string codeText(uint32_t code) {
    char text[16];
    std::snprintf(text, sizeof(text), "%#x", code);
    return text;
}

class RequestRecordTest : public RequestTest {
  protected:
    void expectRecord(const RecordCase &expected) {
        SCOPED_TRACE(expected.description);
        EXPECT_EQ(ask(expected.call), Answer{BSP_OK});
        EXPECT_EQ(recorder.calls, requestOf(codeText(expected.code)));
        for (size_t slot = 0; slot < expected.slots.size(); ++slot)
            EXPECT_EQ(unit(8 * slot), expected.slots[slot]) << "slot " << slot;
        EXPECT_EQ(unit(48), 0u) << "slot 6";
        EXPECT_EQ(unit(56), 0u) << "slot 7";
        EXPECT_EQ(unit(64), 0u) << "result and reserved word";
    }
};

TEST_F(RequestRecordTest, EveryBuilderFillsItsSlots) {
    for (const RecordCase &expected : kCases)
        expectRecord(expected);
}

#if UINTPTR_MAX > UINT32_MAX
TEST_F(RequestRecordTest, AnAddressAbove32BitsTravelsWhole) {
    constexpr uintptr_t kHigh = 0x00007FFE80001000;
    const std::vector<RecordCase> cases = {
        {"CPLD read", [] { return bspFpgaGet_handle(1, at<uint32_t>(kHigh)); }, 0x1001, {1, kHigh}},
        {"I2C read",
         [] { return bspI2cRead_handle(0, 0, 0, 0, at(kHigh), 1); },
         0x1003,
         {0, 0, 0, 0, kHigh, 1}},
        {"I2C write",
         [] { return bspI2cWrite_handle(0, 0, 0, 0, at(kHigh), 1); },
         0x1004,
         {0, 0, 0, 0, kHigh, 1}},
        {"GPIO read",
         [] { return bspGpioGetValue_handle(1, at<uint32_t>(kHigh)); },
         0x1008,
         {1, kHigh}},
        {"CPLD upgrade",
         [] { return bspCpldUpgrade_handle(at(kHigh), kPath); },
         0x1009,
         {kHigh, slotOf(kPath), 13}},
        {"just above",
         [] { return bspFpgaGet_handle(1, at<uint32_t>(0x100000000)); },
         0x1001,
         {1, 0x100000000}},
    };
    for (const RecordCase &expected : cases)
        expectRecord(expected);
}
#endif

// The module reads the words in the machine's own byte order: on the target the most significant
// byte of each slot comes first.
TEST_F(RequestRecordTest, IsInTheMachinesByteOrder) {
    EXPECT_EQ(ask([] { return bspGpioDirectionOutput_handle(0x12345678, -2); }), Answer{BSP_OK});
    std::array<uint8_t, kRecordSize> expected = {
        0x00, 0x00, 0x00, 0x00, 0x12, 0x34, 0x56, 0x78, // line
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, // level
    };
    if constexpr (std::endian::native == std::endian::little) {
        std::reverse(expected.begin(), expected.begin() + 8);
        std::reverse(expected.begin() + 8, expected.begin() + 16);
    }
    EXPECT_EQ(record, expected);
}

TEST_F(RequestRecordTest, TheDriversResultWordIsTheAnswer) {
    for (const RecordCase &builder : kCases) {
        SCOPED_TRACE(builder.description);
        for (const int32_t result : {1, 1002, -1, -22, INT32_MIN}) {
            driver = [result](BspIoctlRecord &arrived) {
                const std::array<int32_t, 2> end = {result, -1};
                std::memcpy(&arrived.result, end.data(), sizeof(end));
            };
            EXPECT_EQ(ask(builder.call), Answer{result});
        }
    }
}

TEST_F(RequestRecordTest, AFailureToReachTheDriverOutweighsTheResultWord) {
    for (const RecordCase &builder : kCases) {
        SCOPED_TRACE(builder.description);
        recorder.clearFailures();
        driver = [](BspIoctlRecord &arrived) { arrived.result = 5; };
        ioctlResult = -3;
        EXPECT_EQ(ask(builder.call).status, -3);

        recorder.fail("open", 1, -2);
        EXPECT_EQ(ask(builder.call), (Answer{-2, "open file /dev/bspHandle fail\n"}));
    }
}

TEST_F(RequestRecordTest, ANullOutputIsRefusedBeforeAnythingIsDone) {
    const std::vector<std::function<int32_t()>> calls = {
        [] { return bspFpgaGet_handle(1, nullptr); },
        [] { return bspGpioGetValue_handle(1, nullptr); },
        [] { return bspCpldUpgrade_handle(nullptr, kPath); },
        [] { return bspCpldUpgrade_handle(kPath, nullptr); },
    };
    for (const auto &call : calls) {
        EXPECT_EQ(ask(call), Answer{BSP_E_NULL});
        EXPECT_EQ(recorder.calls, Calls{});
    }
}

} // namespace
