// Power supplies: count, presence, type, status, live readings.

#include "bsp.h"
#include "chassis/linear.h"
#include "chassis/pmbus.h"
#include "tests/chassis/chassis_models.h"
#include "tests/support/answer.h"
#include "tests/support/device_ids.h"
#include "tests/support/i2c_device.h"
#include "tests/support/virtual_board_test.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>

namespace {

using Bytes = std::vector<uint8_t>;

const DeviceIds kOther = idsWith(Chassis::Other);

/** A PMBus supply: each read takes the next answer to its command; the last one stays. */
class ScriptedSupply : public I2cDevice {
  public:
    explicit ScriptedSupply(uint32_t number) : I2cDevice(0, number + 1, 0x58) {}

    int32_t write(const I2cRequest &) override { return -5; }
    int32_t read(const I2cRequest &request) override {
        commands.push_back(request.offset);
        EXPECT_EQ(request.offsetLen, 1u);
        std::deque<Bytes> &script = answers[request.offset];
        if (script.empty())
            return -5;
        const Bytes answer = script.front();
        if (script.size() > 1)
            script.pop_front();
        if (answer.empty())
            return -5;
        std::copy_n(answer.begin(), std::min(answer.size(), static_cast<size_t>(request.length)),
                    request.data);
        return 0;
    }

    std::map<uint32_t, std::deque<Bytes>> answers; // an empty answer is a failed read
    std::vector<uint32_t> commands;
};

class PowerSupplyTest : public VirtualBoardTest {
  protected:
    void setLines(unsigned lines) { devices().cpld.reg[30] = static_cast<uint16_t>(lines); }

    void storeSupplies(uint8_t count, const Bytes &types) {
        BspDevinfo record{};
        ASSERT_EQ(bspDevinfoGet(BSP_DEVINFO_BOARD, &record), BSP_OK);
        record.supplyCount = count;
        std::copy(types.begin(), types.end(), record.supplyType);
        ASSERT_EQ(bspDevinfoSet(BSP_DEVINFO_BOARD, &record), BSP_OK);
    }

    /** No read of a register or record succeeds any more. */
    void refuseEverything() {
        addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Read, 5));
        addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Read, 6));
    }

    void cacheDeviceId() {
        uint32_t devId = 0;
        ASSERT_EQ(bspDevIdGet(&devId), BSP_OK);
    }

    uint64_t elapsed() {
        const uint64_t last = last_;
        last_ = now();
        return (last_ - last) / 1000;
    }

  private:
    uint64_t last_ = 0;
};

/** A function that stores one number, and its name. */
struct Question {
    const char *name;
    int32_t (*get)(int32_t index, int32_t *out);
};
constexpr Question kQuestions[] = {
    {"bspPowerNumGet", [](int32_t, int32_t *out) { return bspPowerNumGet(out); }},
    {"bspPowerPresentGet", bspPowerPresentGet},
    {"bspPowerTypeGet", bspPowerTypeGet},
    {"bspPowerStatusGet", bspPowerStatusGet},
};

TEST_F(PowerSupplyTest, WithoutADeviceIdNothingIsKnown) {
    addFault(openFails("/tmp/bsp/devId", EACCES));
    for (const Question &question : kQuestions) {
        int32_t out = kMark;
        EXPECT_EQ(answerOf([&] { return question.get(1, &out); }),
                  (Answer{BSP_E_OPEN, question.name + std::string("-#: get devId failed\n")}));
        EXPECT_EQ(out, kMark);
    }
}

TEST_F(PowerSupplyTest, FixedSuppliesAreTwo) {
    const auto expectTwo = [&](uint32_t devId) {
        useModel(devId);
        cacheDeviceId();
        refuseEverything();
        int32_t count = kMark;
        EXPECT_EQ(bspPowerNumGet(&count), BSP_OK) << devId;
        EXPECT_EQ(count, 2);
    };
    for (const uint32_t devId : kFourFan)
        expectTwo(devId);
    for (const uint32_t devId : kTwoFan)
        expectTwo(devId);
}

TEST_F(PowerSupplyTest, OtherModelsCountInTheBoardsRecord) {
    for (const uint32_t devId : kOther) {
        useModel(devId);
        for (const uint8_t count : Bytes{0, 1, 6}) {
            storeSupplies(count, {});
            int32_t out = kMark;
            EXPECT_EQ(answerOf([&] { return bspPowerNumGet(&out); }), kSilentSuccess);
            EXPECT_EQ(out, count);
        }
        for (const uint8_t count : Bytes{7, 255}) {
            storeSupplies(count, {});
            int32_t out = kMark;
            EXPECT_EQ(answerOf([&] { return bspPowerNumGet(&out); }),
                      (Answer{BSP_E_INVALID, "bspPowerNumGet-#: power num " +
                                                 std::to_string(count) + " > max 6\n"}));
            EXPECT_EQ(out, count) << "the bad count is shown beside the error";
        }
        devices().eeprom.bytes[256] = 'X';
        int32_t out = kMark;
        EXPECT_EQ(answerOf([&] { return bspPowerNumGet(&out); }),
                  (Answer{BSP_E_NO_RECORD, "bspPowerNumGet-#: devinfo get failed\n"}));
        EXPECT_EQ(answerOf([&] { return bspPowerTypeGet(1, &out); }),
                  (Answer{BSP_E_NO_RECORD, "bspPowerTypeGet-#: devinfo get failed\n"}));
        EXPECT_EQ(answerOf([&] { return bspPowerStatusGet(1, &out); }),
                  (Answer{BSP_E_NO_RECORD, "bspPowerNumGet-#: devinfo get failed\n"}));
        EXPECT_EQ(out, kMark);
    }
}

/** What a function answers for an index with certain lines. */
struct LinesCase {
    unsigned lines;
    int32_t index;
    int32_t status;
    int32_t value;
};

TEST_F(PowerSupplyTest, PresenceIsARegisterBit) {
    constexpr LinesCase kFixed[] = {
        {0x0001, 1, BSP_OK, 1},        {0xFFFE, 1, BSP_OK, 0},       {0x0002, 2, BSP_OK, 1},
        {0xFFFD, 2, BSP_OK, 0},        {0, 0, BSP_E_INVALID, kMark}, {0, 3, BSP_E_INVALID, kMark},
        {0, -1, BSP_E_INVALID, kMark},
    };
    for (const uint32_t devId : {0x0309u, 0x8609u, 0x0709u, 0x8809u}) {
        useModel(devId);
        devices().cpld.reg[6] = 0;
        for (const LinesCase &row : kFixed) {
            setLines(row.lines);
            int32_t out = kMark;
            EXPECT_EQ(bspPowerPresentGet(row.index, &out), row.status) << row.index;
            EXPECT_EQ(out, row.value) << row.index;
        }
    }
    constexpr LinesCase kActiveLow[] = {
        {0x0200, 1, BSP_OK, 0}, {0xFDFF, 1, BSP_OK, 1},       {0x0400, 2, BSP_OK, 0},
        {0xFBFF, 2, BSP_OK, 1}, {0, 3, BSP_E_INVALID, kMark}, {0, 0, BSP_E_INVALID, kMark},
    };
    for (const uint32_t devId : kOther) {
        useModel(devId);
        for (const LinesCase &row : kActiveLow) {
            devices().cpld.reg[6] = static_cast<uint16_t>(row.lines);
            int32_t out = kMark;
            EXPECT_EQ(bspPowerPresentGet(row.index, &out), row.status) << row.index;
            EXPECT_EQ(out, row.value) << row.index;
        }
    }
}

TEST_F(PowerSupplyTest, TypeOfAFixedSupplyIsALine) {
    constexpr LinesCase kCases[] =
        {
            {0x0004, 1, BSP_OK, 1},           {0xFFFA, 1, BSP_OK, 2},
            {0x0008, 2, BSP_OK, 1},           {0xFFF5, 2, BSP_OK, 2},
            {0x0005, 1, BSP_E_FAILED, kMark},                         // the presence line hides it
            {0x000A, 2, BSP_E_FAILED, kMark}, {0x0010, 3, BSP_OK, 1}, // the index is not checked
            {0x0001, 0, BSP_OK, 2},           {0x0002, 0, BSP_OK, 1},
            {0xFFFF, 17, BSP_OK, 2},          {0xFFFF, INT32_MIN, BSP_OK, 2},
            {0xFFFF, INT32_MAX, BSP_OK, 2},
        };
    for (const uint32_t devId : {0x0309u, 0x0709u}) {
        useModel(devId);
        for (const LinesCase &row : kCases) {
            setLines(row.lines);
            int32_t type = kMark;
            EXPECT_EQ(answerOf([&] { return bspPowerTypeGet(row.index, &type); }),
                      (Answer{row.status, ""}))
                << row.index;
            EXPECT_EQ(type, row.value) << row.index;
        }
        EXPECT_EQ(bspPowerTypeGet(1, nullptr), BSP_E_NULL);
    }
}

TEST_F(PowerSupplyTest, TypeOnOtherModelsIsInTheBoardsRecord) {
    struct Case {
        uint8_t count;
        int32_t index, type; // 0: refused
    };
    constexpr Case kCases[] = {
        {3, 1, 11}, {3, 3, 13}, {3, 4, 0}, {3, 0, 0}, {3, -1, 0},
        {6, 6, 16}, {9, 6, 16}, {9, 7, 0}, {0, 1, 0},
    };
    useModel(0x0109);
    for (const Case &row : kCases) {
        storeSupplies(row.count, {11, 12, 13, 14, 15, 16});
        int32_t type = kMark;
        const Answer refused = {BSP_E_INVALID, "bspPowerTypeGet-#: power index " +
                                                   std::to_string(row.index) + " > powerNum " +
                                                   std::to_string(row.count) + "\n"};
        EXPECT_EQ(answerOf([&] { return bspPowerTypeGet(row.index, &type); }),
                  row.type != 0 ? kSilentSuccess : refused);
        EXPECT_EQ(type, row.type != 0 ? row.type : kMark);
    }
}

TEST_F(PowerSupplyTest, StatusOfFixedSuppliesFollowsTheLines) {
    // Lines of supply 1; those of supply 2 lie one bit higher.
    constexpr unsigned kType = 1u << 2, kA = 1u << 4, kB = 1u << 6, kC = 1u << 8;
    struct Case {
        uint32_t devId;
        unsigned lines;
        int32_t status;
    };
    constexpr Case kCases[] = {
        {0x0309, kA | kB | kType | kC, 3},
        {0x0309, kA, 3},
        {0x0309, kB | kType | kC, 1},
        {0x0309, kB | kType, 1},
        {0x0309, kB, 2},
        {0x0309, kType, 2},
        {0x0309, 0, 2},
        {0x0309, kC, 0},
        {0x0309, kB | kC, 0},
        {0x0309, kType | kC, 0},
        {0x0709, 0, 1},
        {0x0709, kA | kB | kType, 1},
        {0x0709, kC, 4},
        {0x0709, kA | kC, 4},
        {0x0709, kC | kType, 4},
        {0x0709, kB | kC, 0},
        {0x0709, kA | kB | kC, 0},
    };
    for (const Case &row : kCases) {
        useModel(row.devId);
        SCOPED_TRACE(row.lines);
        for (const int32_t index : {1, 2}) {
            int32_t status = kMark;
            setLines(row.lines << (index - 1));
            EXPECT_EQ(bspPowerStatusGet(index, &status), BSP_OK);
            EXPECT_EQ(status, row.status) << "supply " << index;
        }
        int32_t status = kMark;
        EXPECT_EQ(bspPowerStatusGet(0, &status), BSP_E_INVALID);
        EXPECT_EQ(bspPowerStatusGet(3, &status), BSP_E_INVALID);
        EXPECT_EQ(status, kMark);
    }
}

TEST_F(PowerSupplyTest, StatusOnOtherModelsIsZeroForEachCountedSupply) {
    useModel(0x8209);
    storeSupplies(4, {});
    setLines(0x0010);
    for (const int32_t index : {1, 4}) {
        int32_t status = kMark;
        EXPECT_EQ(bspPowerStatusGet(index, &status), BSP_OK);
        EXPECT_EQ(status, 0);
    }
    for (const int32_t index : {0, 5}) {
        int32_t status = kMark;
        EXPECT_EQ(bspPowerStatusGet(index, &status), BSP_E_INVALID);
        EXPECT_EQ(status, kMark);
    }
}

TEST_F(PowerSupplyTest, ARegisterThatCannotBeReadLeavesTheOutputAlone) {
    for (const uint32_t devId : {0x0309u, 0x0709u}) {
        useModel(devId);
        cacheDeviceId();
        addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Read, 5));
        for (const auto get : {bspPowerPresentGet, bspPowerTypeGet, bspPowerStatusGet}) {
            int32_t out = kMark;
            EXPECT_EQ(get(1, &out), 5);
            EXPECT_EQ(out, kMark);
        }
    }
    useModel(0x0109);
    cacheDeviceId();
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Read, 5));
    int32_t out = kMark;
    EXPECT_EQ(bspPowerPresentGet(1, &out), 5);
    EXPECT_EQ(out, kMark);
}

TEST_F(PowerSupplyTest, Linear11HasASignedMantissaAndExponent) {
    for (const auto &[word, thousandths] : {std::pair{0xD3E8, 15625},
                                            {0x07FF, -1000},
                                            {0x0400, -1024000},
                                            {0x03FF, 1023000},
                                            {0x0019, 25000},
                                            {0x8001, 0}, // 1/65536
                                            {0xF801, 500},
                                            {0xFFFF, -500},
                                            {0xF003, 750},
                                            {0xD7FF, -15}, // -15.6, toward zero
                                            {0x7BFF, INT32_MAX},
                                            {0x7C00, INT32_MIN}}) {
        EXPECT_EQ(bsp::linear11ToThousandths(static_cast<uint16_t>(word)), thousandths)
            << std::hex << word;
    }
    for (const auto &[word, thousandths] :
         {std::pair{0x1800, 12000}, {0x0001, 1}, {0x8000, 64000}, {0xFFFF, 127998}, {0, 0}})
        EXPECT_EQ(bsp::linear16ToThousandths(static_cast<uint16_t>(word), -9), thousandths);
}

TEST_F(PowerSupplyTest, PmbusReadStoresShortRepliesAsTheyAre) {
    ScriptedSupply supply(2);
    supply.answers[0x88] = {{0x12, 0x34}};
    Bytes buffer(4, 0xEE);
    EXPECT_EQ(bsp_power_info_read(2, 0x88, 2, buffer.data()), BSP_OK);
    EXPECT_EQ(buffer, (Bytes{0x12, 0x34, 0xEE, 0xEE}));
    EXPECT_EQ(bsp_power_info_read(2, 0x88, 1, buffer.data()), BSP_OK);
    EXPECT_EQ(supply.commands, (std::vector<uint32_t>{0x88, 0x88}));
    EXPECT_EQ(elapsed(), 200000u);
}

TEST_F(PowerSupplyTest, PmbusReadTakesABlockApart) {
    ScriptedSupply supply(1);
    Bytes block(32, 0x77);
    block[0] = 31;
    supply.answers[0x99] = {{4, 1, 2, 3, 4}, block, {2, 9, 8}};
    Bytes buffer(33, 0xEE);
    EXPECT_EQ(bsp_power_info_read(1, 0x99, 5, buffer.data()), BSP_OK);
    EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + 5), (Bytes{1, 2, 3, 4, 0xEE}));
    EXPECT_EQ(bsp_power_info_read(1, 0x99, 32, buffer.data()), BSP_OK);
    EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + 31), Bytes(31, 0x77));
    EXPECT_EQ(buffer[31], 0xEE);
    EXPECT_EQ(bsp_power_info_read(1, 0x99, 3, buffer.data()), BSP_OK);
    EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + 3), (Bytes{9, 8, 0x77}));
    EXPECT_EQ(elapsed(), 300000u);
}

TEST_F(PowerSupplyTest, PmbusReadRefusesABlockOfAnotherLength) {
    ScriptedSupply supply(1);
    supply.answers[0x99] = {{18, 1, 2, 3}};
    Bytes buffer(4, 0xEE);
    EXPECT_EQ(answerOf([&] { return bsp_power_info_read(1, 0x99, 4, buffer.data()); }),
              (Answer{BSP_E_FAILED, "bsp_power_info_read-#: get data len error,4(0x12) \n"}));
    EXPECT_EQ(buffer, Bytes(4, 0xEE));
    EXPECT_EQ(elapsed(), 0u);
}

TEST_F(PowerSupplyTest, PmbusReadOfAnotherSupplyOrASilentOneFails) {
    ScriptedSupply supply(1);
    Bytes buffer(40, 0xEE);
    for (const int32_t index : {-1, 0, 3})
        EXPECT_EQ(bsp_power_info_read(index, 0x88, 2, buffer.data()), BSP_E_INVALID);
    for (const int32_t length : {-1, 0, 33}) // beyond the transfer buffer
        EXPECT_EQ(bsp_power_info_read(1, 0x88, length, buffer.data()), BSP_E_INVALID);
    EXPECT_TRUE(supply.commands.empty());
    EXPECT_EQ(bsp_power_info_read(1, 0x88, 2, buffer.data()), BSP_E_FAILED);
    EXPECT_EQ(buffer, Bytes(40, 0xEE));
    EXPECT_EQ(elapsed(), 0u) << "only a successful read is followed by the pause";
}

/** Live readings of a supply whose words are all different. */
class LiveReadingsTest : public PowerSupplyTest {
  protected:
    void SetUp() override {
        PowerSupplyTest::SetUp();
        supply.answers = {
            {0x88, {{0xE6, 0x00}}}, // 230
            {0x89, {{0x03, 0xF0}}}, // 3 / 4
            {0x97, {{0xAC, 0x00}}}, // 172
            {0x8B, {{0x00, 0x6C}}}, // 27648 / 512
            {0x8C, {{0x05, 0xF8}}}, // 5 / 2
            {0x96, {{0x87, 0x00}}}, // 135
            {0x8D, {{0x19, 0x00}}}, // 25
            {0x8E, {{0xFB, 0x07}}}, // -5
            {0x8F, {{0x55, 0xF8}}}, // 85 / 2
        };
        setLines(0x0008);
        elapsed();
    }

    Answer read() {
        std::memset(static_cast<void *>(&info), 0xA5, sizeof(info));
        return answerOf([&] { return bspPowerInfoGet(2, &info); });
    }
    std::string fields() const {
        return listed({info.type, info.inputVoltage, info.inputCurrent, info.inputPower,
                       info.outputVoltage, info.outputCurrent, info.outputPower, info.reserved,
                       info.temperature1, info.temperature2, info.temperature3});
    }

    ScriptedSupply supply{2};
    BspPowerInfo info{};
};

TEST_F(LiveReadingsTest, FillTheRecordInOrder) {
    EXPECT_EQ(read(), kSilentSuccess);
    EXPECT_EQ(fields(), "1 230000 750 172000 54000 2500 135000 0 25 -5 42");
    EXPECT_EQ(supply.commands,
              (std::vector<uint32_t>{0x88, 0x89, 0x97, 0x8B, 0x8C, 0x96, 0x8D, 0x8E, 0x8F}));
    EXPECT_EQ(elapsed(), 900000u);
    EXPECT_EQ(sizeof(BspPowerInfo), 11u * 4);
}

TEST_F(LiveReadingsTest, TryABusySupplyThreeTimes) {
    const Bytes busy = {0x11, 0xFF}, good = {0x05, 0x00}, failed = {};
    struct Case {
        std::deque<Bytes> answers; // to the input current
        int32_t status;
        int32_t value;
        unsigned reads;
        unsigned time; // beyond the other readings' own
    };
    const Case cases[] = {
        {{good}, BSP_OK, 5000, 1, 100000},
        {{busy, good}, BSP_OK, 5000, 2, 205000},
        {{busy, busy, good}, BSP_OK, 5000, 3, 310000},
        {{busy}, BSP_OK, 0, 3, 315000},
        {{failed, good}, BSP_OK, 5000, 2, 105000},
        {{failed, failed, good}, BSP_OK, 5000, 3, 110000},
        {{failed, failed, busy}, BSP_OK, 0, 3, 115000},
        {{failed}, BSP_E_FAILED, 0, 3, 10000},
        {{good, failed}, BSP_OK, 5000, 1, 100000},
        {{busy, failed}, BSP_E_FAILED, 0, 3, 110000},
        {{busy, busy, failed}, BSP_E_FAILED, 0, 3, 210000},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(&row - cases);
        supply.answers[0x89] = row.answers;
        supply.commands.clear();
        elapsed();
        EXPECT_EQ(read(), (Answer{row.status, ""}));
        EXPECT_EQ(info.inputVoltage, 230000) << "what was read before stays";
        EXPECT_EQ(info.inputCurrent, row.value);
        EXPECT_EQ(info.inputPower, row.status == BSP_OK ? 172000 : 0);
        EXPECT_EQ(std::count(supply.commands.begin(), supply.commands.end(), 0x89u), row.reads);
        EXPECT_EQ(elapsed(), row.time + (row.status == BSP_OK ? 800000 : 100000));
    }
}

TEST_F(LiveReadingsTest, NeedTheType) {
    setLines(0x0002);
    EXPECT_EQ(read(), (Answer{BSP_E_FAILED, "bspPowerInfoGet-#: get power type failed, ret=-1\n"}));
    EXPECT_EQ(fields(), "0 0 0 0 0 0 0 0 0 0 0");
    EXPECT_TRUE(supply.commands.empty());
    addFault(openFails("/tmp/bsp/devId", EACCES));
    EXPECT_EQ(read(), (Answer{BSP_E_OPEN, "bspPowerTypeGet-#: get devId failed\n"
                                          "bspPowerInfoGet-#: get power type failed, ret=1010\n"}));
}

TEST_F(LiveReadingsTest, AreOfTwoFanModelsOnly) {
    for (const uint32_t devId : {0x0309u, 0x8609u, 0x0109u, 0x8209u}) {
        useModel(devId);
        setLines(0);
        EXPECT_EQ(read(), kSilentSuccess);
        EXPECT_TRUE(supply.commands.empty());
        EXPECT_EQ(fields(), (devId == 0x0309 || devId == 0x8609) ? "2 0 0 0 0 0 0 0 0 0 0"
                                                                 : "1 0 0 0 0 0 0 0 0 0 0");
    }
}

TEST_F(LiveReadingsTest, OfASupplyThatDoesNotExistFail) {
    EXPECT_EQ(answerOf([&] { return bspPowerInfoGet(3, &info); }), (Answer{BSP_E_FAILED, ""}));
    EXPECT_EQ(info.type, 2);
    EXPECT_EQ(elapsed(), 10000u);
}

} // namespace
