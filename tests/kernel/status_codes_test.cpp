// The numbers behind the names of status and request codes: programs compare them as numbers.

#include "bsp.h"
#include "tests/support/patterns.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

/** What bsp.h says of the status codes, between the braces of the enumeration. */
std::string documentedStatuses() {
    std::ifstream file(BSP_TEST_HEADER);
    const std::string header{std::istreambuf_iterator<char>(file), {}};
    const size_t start = header.find("enum BspStatus {");
    if (start == std::string::npos)
        return "";
    return header.substr(start, header.find("};", start) - start);
}

/** Everything between single spaces. */
std::string unwrapped(const std::string &text) {
    return replaced(text, "[ \n*]+", " ");
}

TEST(StatusCodesTest, HaveTheirNumbers) {
    const struct {
        int name, number;
    } codes[] = {
        {BSP_OK, 0},
        {BSP_E_NOT_SUPPORTED, 1000},
        {BSP_E_NULL, 1001},
        {BSP_E_INVALID, 1002},
        {BSP_E_TIMEOUT, 1003},
        {BSP_E_NO_MEMORY, 1004},
        {BSP_E_LOCK, 1009},
        {BSP_E_OPEN, 1010},
        {BSP_E_SHORT_READ, 1011},
        {BSP_E_ERASE, 1013},
        {BSP_E_WRITE, 1014},
        {BSP_E_MAP, 1015},
        {BSP_E_NO_RECORD, 1017},
        {BSP_E_FAILED, -1},
        {BSP_E_EEPROM_SPAN, -1002},
        {BSP_E_POE_UNAVAILABLE, -1100},
        {BSP_E_POE_NULL, -1101},
        {BSP_E_POE_INVALID, -1102},
        {BSP_E_POE_WRITE, -1103},
        {BSP_E_POE_READ, -1104},
        {BSP_E_POE_FRAME, -1105},
        {BSP_E_POE_STATUS, -1106},
        {BSP_E_POE_CONTENT, -1107},
        {BSP_E_POE_LOCK, -1108},
        {BSP_E_POE_NO_MEMORY, -1110},
        {BSP_E_POE_OPEN, -1111},
        {BSP_E_POE_SHORT_READ, -1112},
    };
    for (const auto &code : codes)
        EXPECT_EQ(code.name, code.number);
}

TEST(StatusCodesTest, AreInWordsWhatTheHeaderSays) {
    const std::string statuses = documentedStatuses();
    const char *line = R"((BSP_\w+) =\s+(-?\d+),?\s+/\*\*<([^/]+)\*/)";
    int documented = 0;
    for (const std::vector<std::string> &match : matchesIn(statuses, line)) {
        SCOPED_TRACE(match[1]);
        const BspStatusText *text = bspStatusText(std::stoi(match[2]));
        EXPECT_EQ(text->name, match[1]);
        EXPECT_EQ(" " + std::string(text->meaning) + " ", unwrapped(match[3]));
        ++documented;
    }
    EXPECT_EQ(documented, 27);
}

TEST(StatusCodesTest, AForeignCodeHasNoName) {
    for (const int32_t status : {1, 1005, -2, -5, -1003, -1109, -1113, INT32_MIN, INT32_MAX}) {
        SCOPED_TRACE(status);
        EXPECT_STREQ(bspStatusText(status)->name, "");
        EXPECT_STREQ(bspStatusText(status)->meaning,
                     "an answer of the kernel module or the operating system");
    }
}

TEST(VersionTest, TheLibraryHasThatOfItsHeader) {
    EXPECT_EQ(bspLibraryVersion(), uint32_t{BSP_VERSION});
    EXPECT_EQ(BSP_VERSION_NUMBER(1, 2, 3), 0x010203);
    EXPECT_LT(BSP_VERSION_NUMBER(1, 0, 9), BSP_VERSION);
}

TEST(StatusCodesTest, RequestCodesHaveTheirNumbers) {
    EXPECT_EQ(BSP_REQ_CPLD_READ, 0x1001);
    EXPECT_EQ(BSP_REQ_CPLD_WRITE, 0x1002);
    EXPECT_EQ(BSP_REQ_I2C_READ, 0x1003);
    EXPECT_EQ(BSP_REQ_I2C_WRITE, 0x1004);
    EXPECT_EQ(BSP_REQ_SPI_XFER, 0x1004);
    EXPECT_EQ(BSP_REQ_GPIO_INPUT, 0x1006);
    EXPECT_EQ(BSP_REQ_GPIO_OUTPUT, 0x1007);
    EXPECT_EQ(BSP_REQ_GPIO_READ, 0x1008);
    EXPECT_EQ(BSP_REQ_CPLD_UPGRADE, 0x1009);
}

// The answer to a null pointer differs by function.
TEST(StatusCodesTest, OnlyTheBootVersionAnswersANullBufferWithAGenericFailure) {
    EXPECT_EQ(bspUbootVersionGet(nullptr), -1);
    EXPECT_EQ(bspMacAddrGet(0, nullptr), 1001);
}

} // namespace
