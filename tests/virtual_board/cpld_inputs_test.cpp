// Lines into the CPLD: what drives them, and that programs do not; what a reset leaves.

#include "bsp.h"
#include "tests/support/device_ids.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"
#include "virtual_board/board/models.h"
#include "virtual_board/words/panel_text.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <unistd.h>

namespace {

using world::get;
using world::refusal;
using world::set;

using Registers = std::array<uint16_t, vb::kCpldRegisters>;

constexpr uint32_t kResetRegister = 5;

class CpldInputsTest : public VirtualBoardTest {
  protected:
    static uint16_t reg(uint32_t number) {
        uint16_t value = 0;
        EXPECT_EQ(bspCpldGet(number, &value), BSP_OK);
        return value;
    }

    Registers registers() const {
        reg(1); // the board catches up
        Registers all;
        std::copy(std::begin(devices().cpld.reg), std::end(devices().cpld.reg), all.begin());
        return all;
    }

    Registers inputs() const {
        Registers all = registers();
        for (uint32_t number = 0; number < all.size(); ++number)
            all[number] &= vb::cpldInputs(number);
        return all;
    }

    /** Sets a property that the model has. */
    static void change(const std::string &name, const std::string &value) {
        if (refusal(name).starts_with("accepted"))
            set(name, value);
    }

    const vb::Model &model() const { return *vb::findModel(board().header.devId); }

    /** The ports that have a cage, by name. */
    static std::vector<std::string> cages() {
        std::vector<std::string> names;
        for (uint32_t port = 1; port <= vb::kMostPorts; ++port) {
            const std::string name = "sfp." + std::to_string(port);
            if (refusal(name + ".module").starts_with("accepted"))
                names.push_back(name);
        }
        return names;
    }

    /** Everything that can be plugged, pulled or broken; calls back after each. */
    template <typename Look>
    static void useAllDevices(Look look) {
        const auto step = [&](const std::string &name, const std::string &value) {
            change(name, value);
            look(name + " " + value);
        };
        for (const std::string &cage : cages()) {
            step(cage + ".module", "sr");
            step(cage + ".link", "up");
            step(cage + ".state", "tx-fault");
        }
        for (uint32_t fan = 1; fan <= vb::kMaxFans; ++fan) {
            step("fan." + std::to_string(fan) + ".present", "no");
            step("fan." + std::to_string(fan) + ".present", "yes");
            sleep(60);
            look("the fans turn");
        }
        step("poe.controller", "missing");
        for (const std::string supply : {"supply.1", "supply.2"}) {
            step(supply + ".output", "failed");
            step(supply + ".input", "failed");
            step(supply + ".present", "no");
        }
    }

    /** A hand puts every input of the CPLD, but for its identity, to the other level. */
    static void turnInputsOver() {
        for (uint32_t number = 3; number < vb::kCpldRegisters; ++number) {
            if (vb::cpldInputs(number) != 0)
                set("cpld." + std::to_string(number),
                    std::to_string(reg(number) ^ vb::cpldInputs(number)));
        }
    }
};

TEST_F(CpldInputsTest, EveryBitThatADeviceDrivesIsAnInput) {
    for (const uint32_t devId : kKnownIds) {
        SCOPED_TRACE(testing::Message() << std::hex << devId);
        useModel(devId);
        Registers before = registers();
        Registers driven = {};
        useAllDevices([&](const std::string &what) {
            const Registers now = registers();
            for (uint32_t number = 0; number < now.size(); ++number) {
                const auto changed = static_cast<uint16_t>(before[number] ^ now[number]);
                EXPECT_EQ(changed & ~vb::cpldInputs(number), 0) << number << ": " << what;
                driven[number] |= changed;
            }
            before = now;
        });
        // All that the model has was seen at work.
        const bool hasUplinkLosses = model().sfpPorts == 0 || model().copperPorts == 0;
        EXPECT_EQ(driven[6], model().poePorts != 0 ? 0x4000 : 0);
        EXPECT_EQ(driven[8], hasUplinkLosses ? 0x0FFF : 0x0FC0);
        EXPECT_EQ(driven[12], hasUplinkLosses ? 0x003F : 0);
        for (const uint32_t first : {16u, 19u, 22u}) {
            EXPECT_EQ(driven[first], model().sfpPorts != 0 ? 0xFFFF : 0) << first;
            EXPECT_EQ(driven[first + 1], model().sfpPorts == 48   ? 0xFFFF
                                         : model().sfpPorts == 24 ? 0x00FF
                                                                  : 0);
            EXPECT_EQ(driven[first + 2], model().sfpPorts == 48 ? 0xFFFF : 0);
        }
        EXPECT_EQ(driven[28] != 0, model().fans.count != 0);
        EXPECT_EQ(driven[29] != 0, model().fans.count == 4);
        // The first status line tells of an unplugged supply on models with four fans alone.
        EXPECT_EQ(driven[30], model().fans.count == 4   ? 0x03FF
                              : model().fans.count == 2 ? 0x03CF
                                                        : 0);
        EXPECT_EQ(driven[31], model().fans.count == 2 ? 0x0100 : 0);
    }
}

TEST_F(CpldInputsTest, AProgramChangesOutputsAlone) {
    for (const uint32_t devId : kKnownIds) {
        SCOPED_TRACE(testing::Message() << std::hex << devId);
        useModel(devId);
        useAllDevices([](const std::string &) {});
        for (const std::string &cage : cages())
            set(cage + ".state", "good"); // or a transmitter that is switched off ends its fault
        for (uint32_t number = 0; number < vb::kCpldRegisters; ++number) {
            const uint16_t before = reg(number);
            const auto outputs = static_cast<uint16_t>(~vb::cpldInputs(number));
            EXPECT_EQ(bspCpldSet(number, static_cast<uint16_t>(~before)), BSP_OK);
            EXPECT_EQ(reg(number), before ^ outputs) << number;
        }
    }
}

TEST_F(CpldInputsTest, TheTraceShowsWhatAProgramSentAndWhatWasInVain) {
    trace();
    EXPECT_EQ(bspCpldSet(30, 0x03CC), BSP_OK); // what it holds
    EXPECT_EQ(bspCpldSet(30, 0xFFFF), BSP_OK);
    EXPECT_EQ(bspCpldSet(6, 0xC000), BSP_OK);
    EXPECT_EQ(bspCpldSet(2, 0x0012), BSP_OK);
    EXPECT_EQ(trace(),
              (Lines{"CPLD write reg 30 (supplies) = 0x03CC",
                     "CPLD write reg 30 (supplies) = 0xFFFF (no effect on input bits 0xFC33)",
                     "CPLD write reg 6 (control) = 0xC000 (no effect on input bits 0x4000)",
                     "CPLD write reg 2 (version) = 0x0012 (no effect on input bits 0x1300)"}));
    EXPECT_EQ(reg(6), 0x8000);
}

TEST_F(CpldInputsTest, AResetDrivesTheInputsAnew) {
    const std::pair<const char *, void (*)()> resets[] = {
        {"power-on", [] { set("power", "cycle"); }},
        {"register", [] { bspCpldSet(kResetRegister, 0); }},
        {"watchdog", [] {
             bspWatchdogPeriodSet(1);
             sleep(1);
         }}};
    for (const uint32_t devId : {0x0109u, 0x0509u, 0x0609u, 0x0709u}) { // one of each kind
        for (const auto &[reason, reset] : resets) {
            SCOPED_TRACE(testing::Message() << std::hex << devId << " " << reason);
            useModel(devId);
            const Registers first = registers();
            turnInputsOver();
            EXPECT_NE(registers(), first);
            reset();
            EXPECT_EQ(get("reset.reason"), reason);
            EXPECT_EQ(registers(), first); // outputs as well

            useAllDevices([](const std::string &) {});
            sleep(60);
            const Registers driven = inputs();
            turnInputsOver();
            reset();
            EXPECT_EQ(inputs(), driven);
        }
    }
}

TEST_F(CpldInputsTest, IdentityOutlivesTheResetAsAHandHasSetIt) {
    set("cpld.1", "0x1234");
    set("cpld.2", "0x5678");
    set("power", "cycle");
    EXPECT_EQ(reg(1), 0x1234);
    EXPECT_EQ(reg(2), 0x5678);
}

TEST_F(CpldInputsTest, AControllerThatIsMissingIsStillMissingAfterPowerOn) {
    set("poe.controller", "missing");
    set("power", "cycle");
    EXPECT_EQ(get("poe.controller"), "missing");
    EXPECT_EQ(reg(6), 0x4000);
    set("poe.controller", "present");
    EXPECT_EQ(reg(6), 0);
    set("cpld.6", "0x4000"); // the line alone
    EXPECT_EQ(get("poe.controller"), "missing");
    set("power", "cycle");
    EXPECT_NE(get("poe.controller"), "missing");
}

// Lines that several things share

/** The lines that tell whether something is present, each as a register and a bit. */
Lines presenceLines(const std::string &name) {
    const auto content = [](uint32_t number) {
        uint16_t value = 0;
        EXPECT_EQ(bspCpldGet(number, &value), BSP_OK);
        return value;
    };
    Lines lines;
    for (const uint32_t number : {30u, 31u}) {
        set("cpld." + std::to_string(number), "0");
        set(name, "no");
        const uint16_t first = content(number);
        set(name, "yes");
        const auto changed = static_cast<uint16_t>(first ^ content(number));
        for (uint32_t bit = 0; bit < 16; ++bit) {
            if ((changed >> bit & 1) != 0)
                lines.push_back(std::to_string(number) + "." + std::to_string(bit));
        }
    }
    return lines;
}

/** Whether two things have a line in common. */
bool share(const std::string &one, const std::string &other) {
    for (const std::string &line : presenceLines(one)) {
        const Lines others = presenceLines(other);
        if (std::find(others.begin(), others.end(), line) != others.end())
            return true;
    }
    return false;
}

TEST_F(CpldInputsTest, LinesThatFansShareWithSuppliesAreToldAsSuch) {
    for (const uint32_t devId : kKnownIds) {
        SCOPED_TRACE(testing::Message() << std::hex << devId);
        useModel(devId);
        const auto note = [](const std::string &name) {
            return vb::namedProperty(*vb::attachedFolder(), name).note;
        };
        const bool isTold = !note("cpld.30").empty();
        EXPECT_EQ(isTold, model().fans.count == 4);
        if (model().fans.count == 0)
            continue;
        for (uint32_t fan = 1; fan <= model().fans.count; ++fan) {
            for (uint32_t supply = 1; supply <= 2; ++supply) {
                const std::string fanName = "fan." + std::to_string(fan) + ".present";
                const std::string supplyName = "supply." + std::to_string(supply) + ".present";
                const bool areOne = share(fanName, supplyName);
                const std::string number = std::to_string(supply);
                EXPECT_EQ(note(fanName).find("supply " + number) != std::string::npos, areOne);
                for (const std::string &told :
                     {note(supplyName), note("supply." + number + ".line.presence")}) {
                    EXPECT_EQ(told.find(std::to_string(fan)) != std::string::npos, areOne)
                        << supplyName << ": " << told;
                }
            }
        }
        for (const auto &[fan, other] :
             {std::pair{"fan.1.present", "fan 2"}, {"fan.2.present", "fan 1"}})
            EXPECT_NE(note(fan).find(std::string("one line with ") + other), std::string::npos);
        EXPECT_TRUE(share("fan.1.present", "fan.2.present"));
        const std::string panel = vb::panelText(board(), now(), false);
        EXPECT_EQ(panel.find("\npresence [") != std::string::npos, isTold);
    }
}

/** 24 front cages take the lines that the uplinks' loss and fault would need. */
const DeviceIds kWithoutUplinkStatus =
    idsWhere([](const DataSheet &sheet) { return sheet.frontCages == 24; });

TEST_F(CpldInputsTest, UplinksWithoutWiresForLossAndFaultAreToldAsSuch) {
    for (const uint32_t devId : kKnownIds) {
        SCOPED_TRACE(testing::Message() << std::hex << devId);
        useModel(devId);
        const bool isTold = isOneOf(devId, kWithoutUplinkStatus);
        for (const std::string &cage : cages()) {
            const auto port = static_cast<uint32_t>(std::stoul(cage.substr(4)));
            set(cage + ".module", "sr");
            set(cage + ".link", "up");
            uint32_t isPresent = 7;
            uint32_t isLost = 7;
            EXPECT_EQ(bspLaserPresentGet(port, &isPresent), BSP_OK);
            EXPECT_EQ(bspLaserRxLosGet(port, &isLost), BSP_OK);
            EXPECT_EQ(isPresent, 1u);
            const std::string note =
                vb::namedProperty(*vb::attachedFolder(), cage + ".module").note;
            EXPECT_EQ(isLost, note.empty() ? 0u : 1u) << cage; // light arrives
            EXPECT_EQ(!note.empty(), isTold && port > 32) << cage;
        }
        for (const char *name : {"cpld.8", "cpld.12"})
            EXPECT_EQ(!vb::namedProperty(*vb::attachedFolder(), name).note.empty(), isTold) << name;
    }
}

// The LEDs of the ports

TEST_F(CpldInputsTest, TheLedsOfPoePortsAreDarkUntilAProgramLightsThem) {
    constexpr uint32_t kPoePortLed = 9;
    for (const uint32_t devId : kKnownIds) {
        SCOPED_TRACE(testing::Message() << std::hex << devId);
        useModel(devId);
        const uint32_t ports = model().poePorts;
        const auto lit = [&] {
            const std::string panel = vb::panelText(board(), now(), false);
            return std::count(panel.begin(), panel.end(), 'o') -
                   std::count(std::string_view(model().description).begin(),
                              std::string_view(model().description).end(), 'o');
        };
        const Lines lamps = {get("cpld.13"), get("cpld.14"), get("cpld.15")};
        EXPECT_EQ(lamps, ports == 48   ? (Lines{"0xFFFF", "0xFFFF", "0xFFFF"})
                         : ports == 24 ? (Lines{"0xFFFF", "0x00FF", "0x0000"})
                                       : (Lines{"0x0000", "0x0000", "0x0000"}));
        const auto none = lit();
        for (uint32_t port = 1; port <= ports; ++port) {
            EXPECT_EQ(bspLedStateSet(1, port, kPoePortLed, 0, 0), BSP_OK);
            EXPECT_EQ(lit(), none + static_cast<long>(port));
        }
        EXPECT_EQ(bspHwReboot(), BSP_OK);
        EXPECT_EQ(lit(), none);
    }
}

} // namespace
