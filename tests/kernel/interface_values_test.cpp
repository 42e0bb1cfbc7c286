// The numbers behind the names of values: programs are compiled with them, and the hardware, flash
// and files hold them.

#include "bsp.h"
#include "tests/support/patterns.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace {

std::string contentOf(const std::string &path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/** Names of numbers in bsp.h: enumerators, and macros that begin with one; not of its version. */
std::set<std::string> numberNames() {
    const std::string header = contentOf(BSP_TEST_HEADER);
    std::set<std::string> names;
    for (const char *pattern :
         {"\n    (BSP_\\w+)( =[ \n]|,| +/\\*\\*<)", "#define (BSP_(?!VERSION)\\w+) +[-(0-9I]"}) {
        for (const std::vector<std::string> &match : matchesIn(header, pattern))
            names.insert(match[1]);
    }
    return names;
}

TEST(InterfaceValuesTest, AreWhatTheBoardHas) {
    const struct {
        int64_t name, number;
    } values[] = {
        {BSP_GPIO_WATCHDOG, 0},
        {BSP_GPIO_POE_RESET, 19},
        {BSP_GPIO_LOW, 0},
        {BSP_GPIO_HIGH, 1},
        {BSP_CPLD_VALUE_MAX, 65535},
        {BSP_REQ_SLOTS, 8},
        {BSP_EEPROM_SIZE, 1024},
        {BSP_EEPROM_BLOCK_SIZE, 256},
        {BSP_EEPROM_PAGE_SIZE, 16},
        {BSP_EEPROM_BUS, 0},
        {BSP_EEPROM_BOARD_CHANNEL, 0},
        {BSP_EEPROM_SUPPLY_1_CHANNEL, 2},
        {BSP_EEPROM_ADDRESS, 0x50},
        {BSP_DEVINFO_OFFSET, 256},
        {BSP_SUPPLY_RECORD_OFFSET, 176},
        {BSP_DEVINFO_BOARD, 0},
        {BSP_DEVINFO_SUPPLY_1, 0x50},
        {BSP_DEVINFO_SUPPLY_2, 0x51},
        {BSP_FIXED_SUPPLIES, 2},
        {BSP_SUPPLIES_MAX, 6},
        {BSP_SUPPLY_LINE_LOW, 0},
        {BSP_SUPPLY_LINE_HIGH, 1},
        {BSP_SUPPLY_MISSING, 0},
        {BSP_SUPPLY_PRESENT, 1},
        {BSP_SUPPLY_TYPE_1, 1},
        {BSP_SUPPLY_TYPE_2, 2},
        {BSP_SUPPLY_STATUS_0, 0},
        {BSP_SUPPLY_STATUS_1, 1},
        {BSP_SUPPLY_STATUS_2, 2},
        {BSP_SUPPLY_STATUS_3, 3},
        {BSP_SUPPLY_STATUS_4, 4},
        {BSP_LED_SYSTEM, 1},
        {BSP_LED_4, 4},
        {BSP_LED_5, 5},
        {BSP_LED_INDEXED, 7},
        {BSP_LED_POE_PORT, 9},
        {BSP_LED_INDEXED_MAX, 10},
        {BSP_LED_STATE_0, 0},
        {BSP_LED_STATE_1, 1},
        {BSP_LED_STATE_2, 2},
        {BSP_LED_STATE_3, 3},
        {BSP_WATCHDOG_OFF, 0},
        {BSP_WATCHDOG_PERIOD_MAX, 63},
        {BSP_TEMPERATURE_MIN_CELSIUS, -128},
        {BSP_TEMPERATURE_MAX_CELSIUS, 127},
        {BSP_FAN_LEVEL_MIN, 1},
        {BSP_FAN_LEVEL_MAX, 10},
        {BSP_FAN_STEP_RPM, 120},
        {BSP_FAN_MAX_RPM, 30600},
        {BSP_FAN_MISSING, 0},
        {BSP_FAN_PRESENT, 1},
        {BSP_MDIO_ADDRESS_MAX, 31},
        {BSP_MDIO_VALUE_MAX, 65535},
    };
    for (const auto &value : values)
        EXPECT_EQ(value.name, value.number) << "row " << &value - values;
}

TEST(InterfaceValuesTest, OfIdentityAndSettingsAreWhatIsStored) {
    const struct {
        int64_t name, number;
    } values[] = {
        {BSP_PRODUCT_ID, 1},
        {BSP_SLOT_ID, 1},
        {BSP_CARD_ID, 0},
        {BSP_FRAME_TYPE, 1},
        {BSP_SLOT_TYPE, 1},
        {BSP_CARD_TYPE, 1},
        {BSP_BOARD_SLOT_ID, 0},
        {BSP_HW_VERSION_SIZE, sizeof("O.15")},
        {BSP_CPLD_VERSION_SIZE, sizeof("V15.15")},
        {BSP_FPGA_VERSION_SIZE, sizeof("---")},
        {BSP_BOOT_VERSION_LENGTH, 6},
        {BSP_MAC_LENGTH, 6},
        {BSP_MAC_ABOVE_BASE, 0},
        {BSP_MAC_BASE, 1},
        {BSP_SERIAL_NUMBER_MIN, 1},
        {BSP_SERIAL_NUMBER_MAX, 31},
        {BSP_SERIAL_NUMBER_BUFFER, sizeof(BspDevinfo) - offsetof(BspDevinfo, serial)},
        {BSP_BOOT_MODE_0, 0},
        {BSP_BOOT_MODE_1, 1},
        {BSP_BAUDRATE_9600, 9600},
        {BSP_BAUDRATE_19200, 19200},
        {BSP_BAUDRATE_38400, 38400},
        {BSP_BAUDRATE_57600, 57600},
        {BSP_BAUDRATE_115200, 115200},
        {BSP_BAUDRATE_DEFAULT, 115200},
        {BSP_PASSWORD_UNUSED, 0},
        {BSP_PASSWORD_IN_FORCE, 1},
        {BSP_BOOT_PASSWORD_MAX, 40},
        {BSP_BOOT_PASSWORD_BUFFER, 56},
        {BSP_CALENDAR_FIRST_YEAR, 1900},
        {BSP_CLOCK_SECOND_MAX, 79},
        {BSP_CLOCK_MINUTE_MAX, 79},
        {BSP_CLOCK_HOUR_MAX, 39},
        {BSP_CLOCK_DAY_MAX, 39},
        {BSP_CLOCK_MONTH_MAX, 19},
        {BSP_CLOCK_YEAR_MAX, 159},
    };
    for (const auto &value : values)
        EXPECT_EQ(value.name, value.number) << "row " << &value - values;
    EXPECT_EQ(std::string(BSP_DEVINFO_MAGIC), "DEVINFO");
    EXPECT_EQ(std::string(BSP_FPGA_VERSION_NONE), "---");
}

TEST(InterfaceValuesTest, OfTransceiversAndImagesAreTheirFormats) {
    const struct {
        int64_t name, number;
    } values[] = {
        {BSP_SFP_IDENTIFICATION, 0x50},
        {BSP_SFP_DIAGNOSTICS, 0x51},
        {BSP_SFP_PHY, 0x56},
        {BSP_SFP_MEMORY_SIZE, 256},
        {BSP_SFP_PHY_REGISTER_MAX, 254},
        {BSP_SFP_CONNECTOR_OFFSET, 2},
        {BSP_SFP_CONNECTOR_RJ45, 0x22},
        {BSP_SFP_PHY_MODE_REGISTER, 27},
        {BSP_SFP_PHY_MODE_MASK, 15},
        {BSP_COPPER_NONE, 0},
        {BSP_COPPER_MODE_4, 1},
        {BSP_COPPER_MODE_12, 2},
        {BSP_COPPER_OTHER_MODE, 3},
        {BSP_LASER_ON, 1},
        {BSP_LASER_OFF, 2},
        {BSP_LASER_MISSING, 0},
        {BSP_LASER_PRESENT, 1},
        {BSP_LASER_SIGNAL_GOOD, 0},
        {BSP_LASER_SIGNAL_LOST, 1},
        {BSP_LASER_FAULT_NONE, 0},
        {BSP_LASER_FAULT, 1},
        {BSP_MTD_WITHOUT_HEADER, 0},
        {BSP_MTD_WITH_HEADER, 1},
        {BSP_MTD_HEADER_SIZE, 8},
        {BSP_MTD_HEADER_MARKER, 0xA102A304},
        {BSP_IMAGE_OS, 1},
        {BSP_IMAGE_BOOT, 2},
        {BSP_IMAGE_CPLD, 4},
        {BSP_OS_BANK_0, 0},
        {BSP_OS_BANK_1, 1},
        {BSP_OS_BANKS, 2},
        {BSP_OS_HEADER_SIZE, 512},
        {BSP_OS_IMAGE_MIN, 512},
        {BSP_OS_IMAGE_MAX, 40894464},
        {BSP_OS_HEADER_PLACE, 0x2700000},
        {BSP_COMMAND_LINE_MAX, 127},
        {BSP_BOOT_FILE_MAX, 1048576},
        {BSP_BOOT_MAGIC, 0x424F4F54},
    };
    for (const auto &value : values)
        EXPECT_EQ(value.name, value.number) << "row " << &value - values;
    EXPECT_EQ(std::string(BSP_BOOT_BOARD_NAME), "ZENTRAV48_BOOT");
    EXPECT_EQ(std::string(BSP_MTD_BOOT_LOADER), "/dev/mtd0");
    EXPECT_EQ(std::string(BSP_MTD_BOOT_SETTINGS), "/dev/mtd4");
    EXPECT_EQ(std::string(BSP_MTD_OS_BANK_0), "/dev/mtd12");
    EXPECT_EQ(std::string(BSP_MTD_OS_BANK_1), "/dev/mtd14");
}

TEST(InterfaceValuesTest, TheTrailerOfABootLoaderFileHasItsFieldsInTheirPlaces) {
    EXPECT_EQ(sizeof(BspBootTrailer), 80u);
    EXPECT_EQ(offsetof(BspBootTrailer, magic), 0u);
    EXPECT_EQ(offsetof(BspBootTrailer, length), 8u);
    EXPECT_EQ(offsetof(BspBootTrailer, trailerCrc), 12u);
    EXPECT_EQ(offsetof(BspBootTrailer, imageCrc), 20u);
    EXPECT_EQ(offsetof(BspBootTrailer, boardName), 32u);
}

TEST(InterfaceValuesTest, OfPoeAreWhatTheControllerTakes) {
    const struct {
        int64_t name, number;
    } values[] = {
        {BSP_POE_PORTS_MAX, 48},
        {BSP_POE_CONTROLLER_PRESENT, 0},
        {BSP_POE_CONTROLLER_MISSING, 1},
        {BSP_POE_NOT_INITIALISED, 0},
        {BSP_POE_INITIALISED, 1},
        {BSP_POE_APP_USABLE, 0},
        {BSP_POE_APP_UPGRADE_STARTED, 1},
        {BSP_POE_APP_UPGRADE_FAILED, 2},
        {BSP_POE_MODE_0, 0},
        {BSP_POE_MODE_1, 1},
        {BSP_POE_MODE_2, 2},
        {BSP_POE_MODE_DISABLED, 5},
        {BSP_POE_ON, 1},
        {BSP_POE_OFF, 2},
        {BSP_POE_FAULT, 1},
        {BSP_POE_FAULT_NONE, 2},
        {BSP_POE_DISCONNECTED, 1},
        {BSP_POE_DELIVERING, 2},
        {BSP_POE_DETECTION_NONE, 0},
        {BSP_POE_DETECTION_MAX, 7},
        {BSP_POE_CLASS_NONE, 0},
        {BSP_POE_CLASS_MAX, 8},
        {BSP_POE_CLASS_0_OR_12, 9},
        {BSP_POE_LED_OFF, 0},
        {BSP_POE_LED_ON, 1},
        {BSP_POE_PRIORITY_MIN, 1},
        {BSP_POE_PRIORITY_MAX, 3},
        {BSP_POE_INRUSH_MODE_MAX, 8},
        {BSP_POE_LIMIT_TYPE_MIN, 1},
        {BSP_POE_LIMIT_TYPE_MAX, 2},
        {BSP_POE_PORT_LIMIT_MAX_MW, 102000},
        {BSP_POE_PORT_LIMIT_STEP_MW, 400},
        {BSP_POE_BUDGET_MAX_MW, 6553500},
        {BSP_POE_BUDGET_STEP_MW, 100},
        {BSP_POE_RATED_POWER_MW, 1440000},
        {BSP_POE_APP_VERSION_SIZE, sizeof("V15.15.15.15")},
        {BSP_POE_FIRMWARE_MIN, 51200},
        {BSP_POE_FIRMWARE_MAX, 196608},
        {BSP_POE_FIRMWARE_STEP, 4},
        {BSP_POE_FRAME_SIZE, 12},
        {BSP_POE_DEBUG_HELP_LIST, -1},
        {BSP_POE_OPERATIONS, 34},
        {BSP_POE_TEMPERATURE_UNKNOWN, INT32_MIN},
    };
    for (const auto &value : values)
        EXPECT_EQ(value.name, value.number) << "row " << &value - values;
}

// Settings, readings, firmware, debugging: programs call the dispatcher with these numbers.
TEST(InterfaceValuesTest, PoeOperationsHaveTheirNumbers) {
    const int operations[] = {BSP_POE_DEVICE_INIT,
                              BSP_POE_GLOBAL_MAX_POWER_SET,
                              BSP_POE_INIT_STATUS_SET,
                              BSP_POE_INIT_STATUS_GET,
                              BSP_POE_PORT_MODE_SET,
                              BSP_POE_PORT_POWER_ON_SET,
                              BSP_POE_PORT_DETECTION_SET,
                              BSP_POE_PORT_CLASSIFICATION_SET,
                              BSP_POE_PORT_PRIORITY_SET,
                              BSP_POE_PORT_MAX_POWER_SET,
                              BSP_POE_PORT_LEGACY_ENABLE_SET,
                              BSP_POE_PORT_INRUSH_MODE_SET,
                              BSP_POE_PORT_FORCE_INRUSH_SET,
                              BSP_POE_PORT_MAX_POWER_TYPE_SET,
                              BSP_POE_GLOBAL_MAX_POWER_GET,
                              BSP_POE_GLOBAL_POWER_GET,
                              BSP_POE_PORT_MODE_GET,
                              BSP_POE_PORT_CURRENT_GET,
                              BSP_POE_PORT_VOLTAGE_GET,
                              BSP_POE_PORT_POWER_GET,
                              BSP_POE_PORT_MAX_POWER_GET,
                              BSP_POE_PORT_FAULT_GET,
                              BSP_POE_PORT_DETECTION_GET,
                              BSP_POE_PORT_CLASSIFICATION_GET,
                              BSP_POE_PORT_DISCONNECT_GET,
                              BSP_POE_PORT_INRUSH_MODE_GET,
                              BSP_POE_APP_STATUS_GET,
                              BSP_POE_APP_UPGRADE,
                              BSP_POE_APP_VERSION_GET,
                              BSP_POE_DEBUG_ALL_INFO,
                              BSP_POE_DEBUG_PORT_INFO,
                              BSP_POE_DEBUG_SW_VERSION,
                              BSP_POE_DEBUG_DISPATCH,
                              BSP_POE_DEBUG_DISPATCH_HELP};
    ASSERT_EQ(std::size(operations), size_t{BSP_POE_OPERATIONS});
    for (int number = 0; number < BSP_POE_OPERATIONS; ++number)
        EXPECT_EQ(operations[number], number);
}

// A name that is pinned nowhere could change its number unnoticed.
TEST(InterfaceValuesTest, EachNameIsPinnedByATest) {
    const std::string tests = contentOf(BSP_TEST_SOURCES "/kernel/interface_values_test.cpp") +
                              contentOf(BSP_TEST_SOURCES "/kernel/status_codes_test.cpp");
    std::set<std::string> pinned;
    for (const std::vector<std::string> &match : matchesIn(tests, "\\bBSP_\\w+"))
        pinned.insert(match[0]);
    const std::set<std::string> names = numberNames();
    EXPECT_GT(names.size(), 200u);
    for (const std::string &name : names)
        EXPECT_TRUE(pinned.contains(name)) << name;
}

} // namespace
