// The board catalogue, against the list of the family's models.

#include "identity/board_catalogue.h"
#include "tests/support/device_ids.h"
#include "virtual_board/board/models.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace {

// For the hardware reviewer: each row of the catalogue as a line, which is what the data sheet
// says.

std::string lineOf(uint32_t devId, const char *chassis, bool hasClock, uint32_t frontCages,
                   uint32_t firstUplink) {
    constexpr uint32_t kUplinks = 6;
    char line[80];
    std::snprintf(line, sizeof(line), "0x%04X   %s%s, cages", devId, chassis,
                  hasClock ? ", clock" : "");
    const std::string front = frontCages != 0 ? " 1-" + std::to_string(frontCages) : "";
    return line + front + " " + std::to_string(firstUplink) + "-" +
           std::to_string(firstUplink + kUplinks - 1) + "\n";
}

std::string lineOf(const DataSheet &sheet) {
    const char *chassis = sheet.chassis == Chassis::FourFan  ? "four fans"
                          : sheet.chassis == Chassis::TwoFan ? "two fans"
                                                             : "other";
    return lineOf(sheet.devId, chassis, sheet.hasClock, sheet.frontCages, sheet.firstUplink);
}

std::string lineOf(uint32_t devId, const bsp::BoardModel &model) {
    const char *chassis = bspDevIsFourFanModel(devId) != 0  ? "four fans"
                          : bspDevIsTwoFanModel(devId) != 0 ? "two fans"
                                                            : "other";
    EXPECT_EQ(model.frontCages.firstPort, model.frontCages.ports != 0 ? 1 : 0) << devId;
    EXPECT_EQ(model.uplinkCages.ports, 6) << devId;
    return lineOf(devId, chassis, model.hasClock, model.frontCages.ports,
                  model.uplinkCages.firstPort);
}

TEST(BoardCatalogueTest, HoldsTheFamilyAndNothingElse) {
    std::string catalogue;
    for (uint32_t devId = 1; devId <= 0xFFFF; ++devId) {
        const bsp::BoardModel &model = bsp::boardModel(devId);
        if (model.devId == devId)
            catalogue += lineOf(devId, model);
    }
    std::string family;
    for (const DataSheet &sheet : kDataSheets)
        family += lineOf(sheet);
    std::fputs(catalogue.c_str(), stdout);
    EXPECT_EQ(catalogue, family);
    for (const uint32_t devId : kUnknownIds)
        EXPECT_EQ(lineOf(devId, bsp::boardModel(devId)), lineOf(unknownSheet(devId)));
}

TEST(BoardCatalogueTest, PredicatesAnswerExactIds) {
    for (const DataSheet &sheet : kDataSheets) {
        EXPECT_EQ(bspDevIsFourFanModel(sheet.devId), sheet.chassis == Chassis::FourFan ? 1 : 0);
        EXPECT_EQ(bspDevIsTwoFanModel(sheet.devId), sheet.chassis == Chassis::TwoFan ? 1 : 0);
    }
    for (const uint32_t devId : {0x0000u, 0x0209u, 0x0909u, 0x8109u, 0xABCDu, 0x10309u, 0x10709u,
                                 0x80000309u, 0x0308u, 0x070Au, 0x80000709u, 0xFFFFFFFFu}) {
        EXPECT_EQ(bspDevIsFourFanModel(devId), 0) << devId;
        EXPECT_EQ(bspDevIsTwoFanModel(devId), 0) << devId;
    }
}

TEST(BoardCatalogueTest, ExactlyTheClassesModelsAreInThem) {
    DeviceIds fourFan;
    DeviceIds twoFan;
    for (uint32_t devId = 0; devId <= 0x1FFFF; ++devId) {
        if (bspDevIsFourFanModel(devId) != 0)
            fourFan.push_back(devId);
        if (bspDevIsTwoFanModel(devId) != 0)
            twoFan.push_back(devId);
    }
    EXPECT_EQ(fourFan, idsWith(Chassis::FourFan));
    EXPECT_EQ(twoFan, idsWith(Chassis::TwoFan));
}

/** The ids that bsp.h names between two texts of its section about models. */
DeviceIds idsInHeader(const std::string &from, const std::string &to) {
    std::ifstream file(BSP_TEST_HEADER);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const size_t start = text.find(from, text.find("@section models"));
    EXPECT_NE(start, std::string::npos) << from;
    const std::string part = text.substr(start, text.find(to, start) - start);
    DeviceIds ids;
    for (size_t at = part.find(" 0x"); at != std::string::npos; at = part.find(" 0x", at + 1)) {
        const auto id = static_cast<uint32_t>(std::stoul(part.substr(at), nullptr, 16));
        if (id != 0x8000) {
            ids.push_back(id);
            continue;
        }
        const DeviceIds same = ids; // "the same + 0x8000"
        for (const uint32_t variant : same)
            ids.push_back(variant + id);
    }
    return ids;
}

TEST(BoardCatalogueTest, TheHeaderTellsOfEachModel) {
    EXPECT_EQ(idsInHeader("| four-fan |", "\n"), idsWith(Chassis::FourFan));
    EXPECT_EQ(idsInHeader("| two-fan  |", "\n"), idsWith(Chassis::TwoFan));
    EXPECT_EQ(idsInHeader("| other    |", "\n"), idsWith(Chassis::Other));
    const auto withPoe = [](uint32_t ports) {
        return idsWhere([ports](const DataSheet &sheet) { return sheet.poePorts == ports; });
    };
    EXPECT_EQ(idsInHeader("48 PoE ports have", ", 24 have"), withPoe(48));
    EXPECT_EQ(idsInHeader("24 have", "."), withPoe(24));
    EXPECT_EQ(idsInHeader("The clock chip is in", "."),
              idsWhere([](const DataSheet &sheet) { return sheet.hasClock; }));
    const auto withCages = [](uint32_t frontCages, uint32_t firstUplink) {
        return idsWhere([=](const DataSheet &sheet) {
            return sheet.frontCages == frontCages && sheet.firstUplink == firstUplink;
        });
    };
    EXPECT_EQ(idsInHeader("| 25-30          |", "\n"), withCages(0, 25));
    EXPECT_EQ(idsInHeader("| 1-24 and 33-38 |", "\n"), withCages(24, 33));
    EXPECT_EQ(idsInHeader("| 1-54           |", "\n"), withCages(48, 49));
}

// The virtual board's models come from circuit diagrams of their own.
TEST(BoardCatalogueTest, AgreesWithTheHardwareOnSupplyRecords) {
    for (const vb::Model &model : vb::kModels)
        EXPECT_EQ(bspDevIsTwoFanModel(model.devId) != 0, model.supplies.haveBus) << model.devId;
}

TEST(BoardCatalogueTest, AgreesWithTheHardwareOnWhatThereIs) {
    for (const vb::Model &model : vb::kModels) {
        const bsp::BoardModel &row = bsp::boardModel(model.devId);
        EXPECT_EQ(row.devId, model.devId);
        EXPECT_EQ(row.poePorts, model.poePorts) << model.devId;
        EXPECT_EQ(row.hasPoe(), model.poePorts != 0) << model.devId;
        if (row.hasPoe()) {
            EXPECT_EQ(row.poeChip == bsp::PoeChip::Rtl8239, model.poeChip == vb::PoeChip::Rtl8239)
                << model.devId;
        }
        EXPECT_EQ(row.hasClock, model.hasClock) << model.devId;
        EXPECT_EQ(row.supplies.count, model.supplies.count) << model.devId;
        EXPECT_EQ(row.supplies.haveBus, model.supplies.haveBus) << model.devId;
    }
}

// Boards that have no fans of their own are taken to have two unseen ones.
TEST(BoardCatalogueTest, AgreesWithTheHardwareOnFans) {
    for (const vb::Model &model : vb::kModels) {
        const bsp::BoardModel &row = bsp::boardModel(model.devId);
        EXPECT_EQ(row.fans.presenceRegister != 0, model.fans.count != 0) << model.devId;
        if (model.fans.count == 0)
            continue;
        EXPECT_EQ(row.fans.count, model.fans.count) << model.devId;
        EXPECT_EQ(row.fans.haveOwnTachometers, model.fans.haveOwnTachometers) << model.devId;
        EXPECT_EQ(row.fans.presenceRegister, model.fans.presence.reg) << model.devId;
        EXPECT_EQ(row.fans.presenceBit, model.fans.presence.bit) << model.devId;
    }
}

TEST(BoardCatalogueTest, AgreesWithTheHardwareOnCages) {
    for (const vb::Model &model : vb::kModels) {
        const bsp::BoardModel &row = bsp::boardModel(model.devId);
        EXPECT_EQ(row.frontCages.ports, model.sfpPorts) << model.devId;
        EXPECT_EQ(row.uplinkCages.ports, model.uplinks) << model.devId;
        EXPECT_EQ(row.uplinkCages.firstPort, model.copperPorts + model.sfpPorts + 1) << model.devId;
        EXPECT_EQ(row.haveUplinkStatusLines, model.haveUplinkStatusLines) << model.devId;
    }
}

} // namespace
