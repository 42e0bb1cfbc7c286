// Several processes that talk to the controller at once.

#include "poe/rtl8239/commands.h"
#include "tests/poe/shared_controller_test.h"
#include "tests/support/sudden_death.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

constexpr uint32_t kProcesses = 8;
constexpr uint32_t kRounds = 44;          // of each process: the board's trace holds them all
constexpr uint32_t kExchangesOfRound = 6; // one by one in goRound()
constexpr uint32_t kExchanges = kRounds * kExchangesOfRound;
constexpr uint32_t kUnit = 400; // milliwatts, of a port's limit

/** Sets a port of its own and asks for that and for what all have in common. */
bool goRound(uint32_t port, uint32_t round) {
    const uint32_t limit = kUnit * (1 + (port + round * kProcesses) % 250);
    uint32_t answeredLimit = 0, drawn = 1;
    char version[32] = "";
    Rtl8239PowerSource bank{};
    Rtl8239PortConfig config{};
    return bspPoeRtl8239PortMaxPowerSet(port, limit) == BSP_OK &&
           rtl8239CmdGlobalPowerSourceGet(static_cast<int32_t>(port), &bank) == BSP_OK &&
           bspPoeRtl8239AppVersionGet(version) == BSP_OK && std::strcmp(version, "V1.0.0.0") == 0 &&
           bspPoeRtl8239PortMaxPowerGet(port, &answeredLimit) == BSP_OK && answeredLimit == limit &&
           bspPoeRtl8239GlobalPowerGet(&drawn) == BSP_OK && drawn == 0 &&
           rtl8239CmdQuery48Get(static_cast<int32_t>(port), &config) == BSP_OK;
}

bool goRounds(uint32_t port) {
    for (uint32_t round = 0; round < kRounds; ++round) {
        if (!goRound(port, round))
            return false;
    }
    return true;
}

/** One frame on the bus, and the reads until the next. */
struct BusExchange {
    vb::TraceRecord request;
    std::vector<vb::TraceRecord> reads;

    bool isNumbered() const { return request.data[0] != 0x4B; } // there it is a bank's number
};

class PoeProcessesTest : public SharedControllerTest {
  protected:
    std::vector<BusExchange> exchanges() const {
        std::vector<BusExchange> found;
        EXPECT_EQ(vb::traceOldest(board().trace), 0u) << "the trace has lost requests";
        for (uint64_t i = 0; i < board().trace.total; ++i) {
            const vb::TraceRecord &record = vb::traceAt(board().trace, i);
            if (record.kind == vb::TraceKind::I2cWrite)
                found.push_back({record, {}});
            else if (record.kind == vb::TraceKind::I2cRead && !found.empty())
                found.back().reads.push_back(record);
        }
        return found;
    }

    /** An exchange that nobody came between: one read, by the process that wrote, of its answer. */
    static void expectWhole(const BusExchange &exchange) {
        ASSERT_EQ(exchange.reads.size(), 1u);
        const vb::TraceRecord &reply = exchange.reads.front();
        EXPECT_EQ(reply.pid, exchange.request.pid);
        EXPECT_EQ(reply.data[0], exchange.request.data[0]);
        EXPECT_EQ(reply.data[1], exchange.request.data[1]);
    }

    /** Each number is its predecessor's successor, so 256 in a row are all different. */
    void expectConsecutiveNumbers(const std::vector<BusExchange> &all) {
        uint8_t last = kSeed;
        for (const BusExchange &exchange : all) {
            if (!exchange.isNumbered())
                continue;
            ASSERT_EQ(exchange.request.data[1], static_cast<uint8_t>(last + 1));
            last = exchange.request.data[1];
        }
        EXPECT_EQ(readBoardFile(kLockFile), std::string(1, static_cast<char>(last)));
    }
};

TEST_F(PoeProcessesTest, FramesOfManyProcessesNeverInterleave) {
    std::vector<pid_t> children;
    for (uint32_t port = 0; port < kProcesses; ++port)
        children.push_back(start([port] { return goRounds(port); }));
    for (const pid_t child : children)
        EXPECT_EQ(endOf(child), 0) << "an exchange failed, or its answer was another's";

    const std::vector<BusExchange> all = exchanges();
    EXPECT_EQ(all.size(), kProcesses * kExchanges);
    size_t changes = 0;
    for (size_t i = 0; i < all.size(); ++i) {
        ASSERT_NO_FATAL_FAILURE(expectWhole(all[i])) << "exchange " << i;
        if (i > 0 && all[i].request.pid != all[i - 1].request.pid)
            ++changes;
    }
    EXPECT_GT(changes, kProcesses) << "the processes ran one after the other";
    expectConsecutiveNumbers(all);
    EXPECT_TRUE(isPoeLockFree());
}

TEST_F(PoeProcessesTest, AKilledProcessDisturbsNoOther) {
    constexpr uint32_t kLastExchange = 100; // is sent, and its answer never fetched
    const pid_t victim = start([] {
        uint32_t fetches = 0;
        watchCalls([&fetches](LibraryCall call) {
            return call == LibraryCall::Fetch && ++fetches == kLastExchange;
        });
        return goRounds(0);
    });
    std::vector<pid_t> others;
    for (uint32_t port = 1; port < kProcesses; ++port)
        others.push_back(start([port] { return goRounds(port); }));
    EXPECT_TRUE(wasKilled(endOf(victim)));
    for (const pid_t child : others)
        EXPECT_EQ(endOf(child), 0) << "an exchange failed, or its answer was the victim's";

    const std::vector<BusExchange> all = exchanges();
    EXPECT_EQ(all.size(), (kProcesses - 1) * kExchanges + kLastExchange);
    std::vector<size_t> cutOff;
    for (size_t i = 0; i < all.size(); ++i) {
        if (all[i].reads.empty())
            cutOff.push_back(i);
        else
            ASSERT_NO_FATAL_FAILURE(expectWhole(all[i])) << "exchange " << i;
    }
    ASSERT_EQ(cutOff.size(), 1u);
    EXPECT_EQ(all[cutOff.front()].request.pid, victim);
    EXPECT_LT(cutOff.front(), all.size() - 1) << "nobody talked to the controller afterwards";
    expectConsecutiveNumbers(all);
    EXPECT_TRUE(isPoeLockFree());
}

} // namespace
