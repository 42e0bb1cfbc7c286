// The board catalogue, against the list of the family's models.

#include "identity/board_catalogue.h"
#include "virtual_board/board/models.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

// For the hardware reviewer: every row of the catalogue, and what an id without a row gets.
constexpr char kCatalogue[] = "0x0109   other, cages 25-30\n"
                              "0x0309   four fans, clock, cages 25-30\n"
                              "0x0409   four fans, cages 49-54\n"
                              "0x0509   four fans, clock, cages 1-24 33-38\n"
                              "0x0609   four fans, clock, cages 1-48 49-54\n"
                              "0x0709   two fans, clock, cages 49-54\n"
                              "0x0809   two fans, clock, cages 25-30\n"
                              "0x8209   other, cages 25-30\n"
                              "0x8309   four fans, cages 49-54\n"
                              "0x8409   four fans, clock, cages 25-30\n"
                              "0x8509   four fans, clock, cages 1-48 49-54\n"
                              "0x8609   four fans, clock, cages 1-24 33-38\n"
                              "0x8709   two fans, clock, cages 25-30\n"
                              "0x8809   two fans, clock, cages 49-54\n"
                              "unknown  other, cages 49-54\n";

const char *chassisText(uint32_t devId) {
    if (bspDevIsFourFanModel(devId) != 0)
        return "four fans";
    return bspDevIsTwoFanModel(devId) != 0 ? "two fans" : "other";
}

std::string cagesText(const bsp::CageRange &cages) {
    if (cages.ports == 0)
        return "";
    return " " + std::to_string(cages.firstPort) + "-" +
           std::to_string(cages.firstPort + cages.ports - 1);
}

std::string rowText(const bsp::BoardModel &model) {
    return chassisText(model.devId) + std::string(model.hasClock ? ", clock" : "") + ", cages" +
           cagesText(model.frontCages) + cagesText(model.uplinkCages) + "\n";
}

std::string catalogueText() {
    constexpr uint32_t kUnknown = 0xFFFFFFFF;
    std::string text;
    for (uint32_t devId = 1; devId <= 0xFFFF; ++devId) {
        const bsp::BoardModel &model = bsp::boardModel(devId);
        char id[16];
        std::snprintf(id, sizeof(id), "0x%04X", devId);
        if (model.devId == devId)
            text += std::string(id) + "   " + rowText(model);
    }
    return text + "unknown  " + rowText(bsp::boardModel(kUnknown));
}

TEST(BoardCatalogueTest, HoldsTheFamily) {
    const std::string text = catalogueText();
    std::fputs(text.c_str(), stdout);
    EXPECT_EQ(text, kCatalogue);
}

TEST(BoardCatalogueTest, PredicatesAnswerExactIds) {
    struct {
        uint32_t devId;
        int32_t isFourFan, isTwoFan;
    } cases[] = {
        {0x0109, 0, 0},     {0x0309, 1, 0},     {0x0409, 1, 0}, {0x0509, 1, 0}, {0x0609, 1, 0},
        {0x0709, 0, 1},     {0x0809, 0, 1},     {0x8209, 0, 0}, {0x8309, 1, 0}, {0x8409, 1, 0},
        {0x8509, 1, 0},     {0x8609, 1, 0},     {0x8709, 0, 1}, {0x8809, 0, 1}, {0, 0, 0},
        {0x0209, 0, 0},     {0x0909, 0, 0},     {0x8109, 0, 0}, {0xABCD, 0, 0}, {0x10309, 0, 0},
        {0x10709, 0, 0},    {0x80000309, 0, 0}, {0x0308, 0, 0}, {0x070A, 0, 0}, {0x80000709, 0, 0},
        {0xFFFFFFFF, 0, 0},
    };
    for (const auto &expected : cases) {
        EXPECT_EQ(bspDevIsFourFanModel(expected.devId), expected.isFourFan) << expected.devId;
        EXPECT_EQ(bspDevIsTwoFanModel(expected.devId), expected.isTwoFan) << expected.devId;
    }
}

TEST(BoardCatalogueTest, ExactlyTheClassesModelsAreInThem) {
    int fourFan = 0;
    int twoFan = 0;
    for (uint32_t devId = 0; devId <= 0x1FFFF; ++devId) {
        fourFan += bspDevIsFourFanModel(devId);
        twoFan += bspDevIsTwoFanModel(devId);
    }
    EXPECT_EQ(fourFan, 8);
    EXPECT_EQ(twoFan, 4);
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
