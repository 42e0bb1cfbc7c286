// What the guide says of the driver's long work, against what the driver does.

#include "bsp.h"
#include "poe/rtl8239/guide.h"
#include "tests/support/answer.h"
#include "tests/support/firmware.h"
#include "tests/support/scripted_controller.h"

#include <array>
#include <fstream>
#include <set>

namespace {

using bsp::PoeWork;
using bsp::PoeWorkPlace;
using bsp::rtl8239::kGuide;

uint64_t millisecondsOf(const PoeWork &work, uint32_t amount) {
    uint64_t sum = 0;
    for (uint32_t step = 0; step < work.steps; ++step)
        sum += work.step(amount, step).leastMs;
    return sum;
}

/** Where each request is; places only go on, and never beyond what their step takes. */
std::vector<PoeWorkPlace> placesOf(const PoeWork &work, uint32_t amount,
                                   const std::vector<Exchange> &exchanges) {
    std::vector<PoeWorkPlace> places;
    for (const Exchange &exchange : exchanges) {
        const auto number = static_cast<uint32_t>(places.size());
        const auto place = work.placeOf(amount, number, exchange.request);
        EXPECT_TRUE(place.has_value()) << requestText(exchange.request);
        if (!place)
            break;
        EXPECT_LT(place->step, work.steps);
        EXPECT_LT(place->ms, work.step(amount, place->step).leastMs);
        if (!places.empty()) {
            const PoeWorkPlace &last = places.back();
            EXPECT_TRUE(place->step > last.step ||
                        (place->step == last.step && place->ms > last.ms));
        }
        places.push_back(*place);
    }
    return places;
}

class GuideTest : public PoeTest {};

TEST_F(GuideTest, KnowsTheCourseOfTheInitialisation) {
    const PoeWork &work = kGuide.initialisation;
    for (const auto &[devId, ports] : {std::pair{0x0709u, 48u}, {0x0809u, 24u}}) {
        usePoeModel(devId);
        elapsed();
        ASSERT_EQ(answerOf(bspPoeRtl8239DeviceInit), kSilentSuccess);
        EXPECT_EQ(elapsed() / 1000, millisecondsOf(work, ports));
        const std::vector<Exchange> exchanges = controller.exchanges();
        const std::vector<PoeWorkPlace> places = placesOf(work, ports, exchanges);
        ASSERT_EQ(places.size(), exchanges.size());
        const auto behind = work.placeOf(ports, static_cast<uint32_t>(places.size()), {});
        EXPECT_EQ(behind->step, work.steps) << "there is no request more";

        std::vector<std::set<int>> commands(work.steps);
        for (size_t i = 0; i < places.size(); ++i)
            commands[places[i].step].insert(exchanges[i].request[0]);
        EXPECT_EQ(commands, (std::vector<std::set<int>>{{},
                                                        {0x00},
                                                        {0x05},
                                                        {0x06},
                                                        {0x15},
                                                        {0x08},
                                                        {0x12},
                                                        {0x09},
                                                        {0x0D},
                                                        {0x0F},
                                                        {0x0E, 0x04, 0x10},
                                                        {0x05},
                                                        {0x0C, 0x14},
                                                        {0x00}}));
    }
}

TEST_F(GuideTest, KnowsTheCourseOfAnUpgrade) {
    const PoeWork &work = kGuide.upgrade;
    constexpr uint32_t kSize = 65568; // a block of it is in the second bank
    const std::string path = boardFile("/tmp/image");
    std::ofstream(path, std::ios::binary) << firmwareImage(kSize);
    elapsed();
    ASSERT_EQ(answerOf([&] { return bspPoeRtl8239McuUpgrade(path.c_str()); }), kSilentSuccess);
    EXPECT_EQ(elapsed() / 1000, millisecondsOf(work, kSize));
    const std::vector<Exchange> exchanges = controller.exchanges();
    const std::vector<PoeWorkPlace> places = placesOf(work, kSize, exchanges);
    ASSERT_EQ(places.size(), 2 + kSize / 32 + 1);
    EXPECT_EQ(listed({places[0].step, places[0].ms}), "0 0");
    EXPECT_EQ(listed({places[1].step, places[1].ms}), "1 1000");
    EXPECT_EQ(listed({places[2].step, places[2].ms}), "2 0");
    EXPECT_EQ(listed({places[2050].step, places[2050].ms}), "2 256000") << "position 65536";
    EXPECT_EQ(listed({places.back().step, places.back().ms}), "3 1000");
    const std::array<uint8_t, 4> other = {0xC0, 0x41, 0, 0};
    EXPECT_FALSE(work.placeOf(kSize, 0, bsp::PoeBytes(other)).has_value());
    EXPECT_FALSE(work.placeOf(kSize, 0, bsp::PoeBytes(other).first(3)).has_value());
}

TEST_F(GuideTest, KnowsTheSizesOfImages) {
    controller.answerAlways({"", Spoil::Read}); // an image that is taken ends at its first block
    const auto isTaken = [&](uint32_t size) {
        const std::string path = boardFile("/tmp/image");
        std::ofstream(path, std::ios::binary) << firmwareImage(size);
        const int32_t status =
            answerOf([&] { return bspPoeRtl8239McuUpgrade(path.c_str()); }).status;
        return status != BSP_E_POE_INVALID;
    };
    const auto &[smallest, largest, step] = kGuide.image;
    EXPECT_TRUE(isTaken(smallest));
    EXPECT_TRUE(isTaken(largest));
    EXPECT_FALSE(isTaken(smallest - step));
    EXPECT_FALSE(isTaken(largest + step));
    EXPECT_FALSE(isTaken(smallest + step - 1));
}

TEST_F(GuideTest, KnowsTheDriversWords) {
    ASSERT_FALSE(kGuide.debugWords.empty());
    for (const char *word : kGuide.debugWords) {
        char *words[] = {nullptr, nullptr, const_cast<char *>(word)};
        EXPECT_EQ(answerOf([&] { return bspPoeDebugChipDispatch(0, 3, words); }).status,
                  BSP_E_FAILED)
            << "it wants arguments";
    }
}

TEST_F(GuideTest, FindsPrioritiesInAnswers) {
    const auto priorityIn = [](std::initializer_list<uint8_t> start, uint32_t port) {
        std::vector<uint8_t> reply(start);
        reply.resize(12, 0xFF);
        return kGuide.priorityIn(reply, port);
    };
    EXPECT_EQ(priorityIn({0x49, 1, 4, 6, 1, 0, 0}, 5), 3u);
    EXPECT_EQ(priorityIn({0x49, 1, 4, 6, 1, 0, 2}, 5), 1u);
    EXPECT_EQ(priorityIn({0x49, 1, 4, 6, 1, 0, 3}, 5), 0u);
    EXPECT_FALSE(priorityIn({0x49, 1, 4, 6, 1, 0, 4}, 5).has_value());
    EXPECT_FALSE(priorityIn({0x49, 1, 4, 6, 1, 0, 0}, 4).has_value()) << "another port's";
    EXPECT_FALSE(priorityIn({0x48, 1, 4, 6, 1, 0, 0}, 5).has_value()) << "another answer";
    EXPECT_FALSE(kGuide.priorityIn({}, 5).has_value());
}

} // namespace
