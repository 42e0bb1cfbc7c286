// How close the PoE operations come to what the protocol's own waits make them take, on a virtual
// board: frames sent, the floor that the waits set, the board's time, their ratio, and the real
// time that the virtual board needs.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/devices/poe_ports.h"
#include "virtual_board/os/seam.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace {

// The waits, in microseconds.
constexpr uint64_t kSecond = 1000000;
constexpr uint64_t kExchange = 100000 + 100000; // settle, poll
constexpr uint64_t kLoaderExchange = 100000 + 25000;
constexpr uint64_t kEnableExtra = 1100000;
constexpr uint64_t kMappingExtra = 2100000;

/** What an operation cannot do without. */
struct Floor {
    uint64_t frames;
    uint64_t us;
};

constexpr Floor initialisationFloor(uint64_t ports) {
    constexpr uint64_t kRecords = 48; // of the port map, on every model
    constexpr uint64_t kDefaults = 6; // settings of all ports, four ports to a frame
    constexpr uint64_t kSingles = 2;  // settings that go port by port
    constexpr uint64_t kGlobals = 3;
    constexpr uint64_t kSwitches = 2; // each of all ports and of the mapping: off, on
    constexpr uint64_t kResets = 2;   // seconds: hold, release
    const uint64_t frames =
        2 * kSwitches + kRecords + kDefaults * ((ports + 3) / 4) + kGlobals + kSingles * ports;
    return {frames,
            kResets * kSecond + frames * kExchange + kSwitches * (kEnableExtra + kMappingExtra)};
}

constexpr Floor upgradeFloor(uint64_t size) {
    constexpr uint64_t kBlock = 32;
    constexpr uint64_t kRests = 1 + 10 + 1 + 1; // seconds around the jumps
    const uint64_t loaderFrames = (size + kBlock - 1) / kBlock + 2;
    return {1 + loaderFrames, kExchange + loaderFrames * kLoaderExchange + kRests * kSecond};
}

/** A new board of a model, which this process is attached to. */
class BenchBoard {
  public:
    explicit BenchBoard(uint32_t devId) {
        vb::BoardOptions options;
        options.devId = devId;
        options.pace = {vb::TimeMode::Virtual};
        vb::FolderError error = {};
        if (!vb::createBoard(path(), options, error) || !vb::attachBoard(path().c_str(), error))
            throw std::runtime_error(error.text);
        // A rule that never comes due, for its count of frames.
        vb::FaultRule counter{};
        counter.device = vb::FaultDevice::Poe;
        counter.op = vb::FaultOp::Write;
        counter.when = vb::FaultWhen::Once;
        counter.nth = UINT32_MAX;
        counter.effect = vb::FaultEffect::NoAnswer;
        vb::addFault(board().faults, counter);
    }
    BenchBoard(const BenchBoard &) = delete;
    BenchBoard &operator=(const BenchBoard &) = delete;
    ~BenchBoard() { vb::detachBoard(); }

    uint64_t frames() const { return board().faults.rule[0].matched; }
    uint64_t us() const { return board().clock.anchorNs / 1000; }

    /** A device at each port, which is powered before long. */
    void plugEverywhere() const {
        constexpr vb::PoweredDevice kDevice = {1, vb::PoeSignature::Good, 4, 0, 19000, 18000};
        for (uint32_t port = 0; port < BSP_POE_PORTS_MAX; ++port)
            vb::poeSetDevice(board().devices.poe, port, kDevice, board().clock.anchorNs);
        usleep(kSecond);
    }

    std::string imageFile(size_t size) const {
        std::string file = folder_.path() + "/image";
        std::ofstream(file, std::ios::binary) << std::string(size, '\x5A');
        return file;
    }

  private:
    std::string path() const { return folder_.path() + "/board"; }
    static vb::Board &board() { return *vb::attachedFolder()->board(); }

    TemporaryFolder folder_;
};

/** Measures an operation and prints its line; false when it fails. */
bool measure(const char *name, const BenchBoard &board, const Floor &floor,
             const std::function<int32_t()> &operation) {
    using Clock = std::chrono::steady_clock;
    const uint64_t framesBefore = board.frames();
    const uint64_t usBefore = board.us();
    const Clock::time_point start = Clock::now();
    const int32_t status = operation();
    const std::chrono::duration<double, std::milli> real = Clock::now() - start;
    const uint64_t frames = board.frames() - framesBefore;
    const auto us = static_cast<double>(board.us() - usBefore);
    const auto floorUs = static_cast<double>(floor.us);
    if (status != BSP_OK) {
        std::printf("%-32s failed with status %d\n", name, status);
        return false;
    }
    std::printf("%-32s %7llu %7llu %10.3f %10.3f %7.4f %9.1f\n", name,
                static_cast<unsigned long long>(frames),
                static_cast<unsigned long long>(floor.frames), floorUs / kSecond, us / kSecond,
                us / floorUs, real.count());
    return true;
}

bool measureExchange() {
    const BenchBoard board(0x0709);
    return measure("one exchange", board, {1, kExchange}, [] {
        uint32_t power = 0;
        return bspPoeGlobalPowerGet(&power);
    });
}

bool measureInitialisation(const char *name, uint32_t devId, uint64_t ports) {
    const BenchBoard board(devId);
    return measure(name, board, initialisationFloor(ports), bspPoeDeviceInit);
}

bool measureUpgrade(size_t size) {
    const BenchBoard board(0x0709);
    const std::string file = board.imageFile(size);
    const std::string name = "upgrade, " + std::to_string(size) + " bytes";
    return measure(name.c_str(), board, upgradeFloor(size),
                   [&file] { return bspPoeAppUpgradeSet(file.c_str()); });
}

/** A poll of ports by the functions of single values: what each of them costs. */
int32_t pollSingles(uint32_t ports) {
    constexpr int32_t (*kGets[])(uint32_t, uint32_t *) = {
        bspPoePortDetectionGet,  bspPoePortClassificationGet, bspPoePortFaultGet,
        bspPoePortDisconnectGet, bspPoePortVoltageGet,        bspPoePortCurrentGet,
        bspPoePortPowerGet,      bspPoePortModeGet,           bspPoePortMaxPowerGet,
        bspPoePortInrushModeGet};
    for (uint32_t port = 1; port <= ports; ++port) {
        for (const auto get : kGets) {
            uint32_t value = 0;
            if (const int32_t status = get(port, &value); status != BSP_OK)
                return status;
        }
    }
    return BSP_OK;
}

/** The same values by the functions of records; only a port that delivers is measured. */
int32_t pollRecords(uint32_t ports) {
    for (uint32_t port = 1; port <= ports; ++port) {
        BspPoePortState state{};
        if (const int32_t status = bspPoePortStateGet(port, &state); status != BSP_OK)
            return status;
        BspPoePortMeasurement measurement{};
        if (state.disconnect == BSP_POE_DELIVERING) {
            const int32_t status = bspPoePortMeasurementGet(port, &measurement);
            if (status != BSP_OK)
                return status;
        }
        BspPoePortSettings settings{};
        if (const int32_t status = bspPoePortSettingsGet(port, &settings); status != BSP_OK)
            return status;
    }
    return BSP_OK;
}

/** What a poll of so many ports needs: a frame for state, for mode, for limit, for power. */
constexpr Floor pollFloor(uint64_t ports, bool isDelivering) {
    const uint64_t frames = ports * (isDelivering ? 4 : 3);
    return {frames, frames * kExchange};
}

bool measurePolls(bool isDelivering) {
    const BenchBoard board(0x0709);
    if (bspPoeDeviceInit() != BSP_OK)
        return false;
    if (isDelivering)
        board.plugEverywhere();
    bool isGood = true;
    for (const uint32_t ports : {1u, 24u, 48u}) {
        const std::string name =
            std::to_string(ports) + (isDelivering ? " delivering, " : " idle, ");
        const Floor floor = pollFloor(ports, isDelivering);
        isGood &= measure((name + "single values").c_str(), board, floor,
                          [ports] { return pollSingles(ports); });
        isGood &= measure((name + "records").c_str(), board, floor,
                          [ports] { return pollRecords(ports); });
    }
    return isGood;
}

bool measureAll() {
    std::printf("%-32s %7s %7s %10s %10s %7s %9s\n", "", "frames", "needed", "floor s", "board s",
                "ratio", "real ms");
    bool isGood = measureExchange();
    isGood &= measureInitialisation("initialisation, 48 ports", 0x0709, 48);
    isGood &= measureInitialisation("initialisation, 24 ports", 0x0809, 24);
    for (const size_t size : {51200u, 51220u, 196608u})
        isGood &= measureUpgrade(size);
    for (const bool isDelivering : {false, true})
        isGood &= measurePolls(isDelivering);
    return isGood;
}

} // namespace

int main() {
    try {
        return measureAll() ? 0 : 1;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "poe_bench: %s\n", exception.what());
        return 1;
    }
}
