// The boot settings on NAND. Its driver takes whole pages alone and refuses the settings' 256
// bytes, after the block was erased.

#include "bsp.h"
#include "tests/kernel_driver/chip.h"
#include "tests/kernel_driver/files.h"
#include "tests/kernel_driver/subjects.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr uint32_t kPartition = 4;
constexpr uint32_t kSettingsSize = 256;
constexpr int32_t kUntouched = 12345;

/** What the getters tell. */
struct Settings {
    uint32_t mode = kUntouched;
    int32_t flagStatus = kUntouched, flag = kUntouched;
    uint32_t rate = kUntouched, consolePassword = kUntouched, userPassword = kUntouched;
    std::string bootPassword;
};

Settings settingsTold() {
    Settings told;
    char password[kSettingsSize] = "";
    expectSame("bspBootModeGet answers 0", BSP_OK, bspBootModeGet(&told.mode));
    told.flagStatus = bspBootFlagGet(&told.flag);
    expectSame("bspBaudrateGet answers 0", BSP_OK, bspBaudrateGet(&told.rate));
    expectSame("bspConsolePwdValidGet answers 0", BSP_OK,
               bspConsolePwdValidGet(&told.consolePassword));
    expectSame("bspUserPwdValidGet answers 0", BSP_OK, bspUserPwdValidGet(&told.userPassword));
    expectSame("bspBootPwdGet answers 0", BSP_OK, bspBootPwdGet(password));
    told.bootPassword = password;
    return told;
}

void expectSettings(const Settings &expected) {
    const Settings told = settingsTold();
    expectSame("the boot mode", expected.mode, told.mode);
    expectSame("the status of the boot flag", expected.flagStatus, told.flagStatus);
    expectSame("the boot flag", expected.flag, told.flag);
    expectSame("the baud rate", expected.rate, told.rate);
    expectSame("the console password", expected.consolePassword, told.consolePassword);
    expectSame("the user password", expected.userPassword, told.userPassword);
    expectSame("the boot password", expected.bootPassword, told.bootPassword);
}

const Settings kDefaults = {0, BSP_E_FAILED, kUntouched, 115200, 0, 1, ""};
const Settings kStored = {1, BSP_OK, -7, 19200, 1, 0, "secret"};

void storeSettings() {
    expectSame("the block is erased", 0, eraseBlock(kPartition, 0));
    expectSame("settings are stored", 0, writeDevice(kPartition, 0, settingsPage()));
}

speed_t consoleSpeed() {
    const int console = open("/dev/ttyS0", O_RDWR | O_NOCTTY | O_NONBLOCK);
    termios attributes = {};
    tcgetattr(console, &attributes);
    close(console);
    return cfgetospeed(&attributes);
}

struct Setter {
    const char *call;
    int32_t (*set)();
};
constexpr Setter kSetters[] = {
    {"bspBootModeSet(1)", [] { return bspBootModeSet(1); }},
    {"bspBootFlagSet(-7)", [] { return bspBootFlagSet(-7); }},
    {"bspBaudrateSet(19200)", [] { return bspBaudrateSet(19200); }},
    {"bspConsolePwdValidSet(1)", [] { return bspConsolePwdValidSet(1); }},
    {"bspUserPwdValidSet(0)", [] { return bspUserPwdValidSet(0); }},
    {"bspBootPwdSet(\"secret\")", [] { return bspBootPwdSet("secret"); }},
};

void checkSetters() {
    const Chip chip;
    beginSection("boot settings: an erased block");
    expectSettings(kDefaults);
    beginSection("boot settings: what a boot loader stored is read");
    storeSettings();
    expectSettings(kStored);

    for (const Setter &setter : kSetters) {
        beginSection(std::string("boot settings: ") + setter.call + " loses them all");
        storeSettings();
        expectSilent(setter.call, BSP_OK, setter.set);
        expectSame("the block is erased and nothing written", erased(kBlockSize),
                   readCells(kPartition, 0, kBlockSize));
        expectSettings(kDefaults);
    }

    beginSection("boot settings: the console's speed");
    expectSame("is what bspBaudrateSet(19200) made it", B19200, consoleSpeed());
    expectSilent("bspBaudrateSet(115200)", BSP_OK, [] { return bspBaudrateSet(115200); });
    expectSame("it is switched back", B115200, consoleSpeed());

    beginSection("boot settings: what is refused touches nothing");
    storeSettings();
    expectPrinted(
        expectStatus("bspBaudrateSet(1200)", BSP_E_INVALID, [] { return bspBaudrateSet(1200); }),
        "Baudrate 1200 is not supported. i=5");
    expectSilent("bspBootPwdSet() of 41 characters", BSP_E_INVALID,
                 [] { return bspBootPwdSet(std::string(41, 'x').c_str()); });
    expectSettings(kStored);
}

void checkBlocksThatCannotBeErased() {
    {
        const Chip chip({badBlock(kPartition, 0)});
        beginSection("boot settings: a bad block keeps them");
        expectSame("settings are stored", 0, writeDevice(kPartition, 0, settingsPage()));
        expectSilent("bspBootModeSet(0)", BSP_OK, [] { return bspBootModeSet(0); });
        expectSettings(kStored);
    }
    {
        const Chip chip({weakBlock(kPartition, 0, 1)});
        beginSection("boot settings: a worn block loses them");
        storeSettings();
        expectSilent("bspBootModeSet(0)", BSP_OK, [] { return bspBootModeSet(0); });
        expectSettings(kDefaults); // the simulation erases before it fails
    }
    {
        const Chip chip({lostPage(kPartition, 0, 1)});
        beginSection("boot settings: an unreadable page reads as the defaults");
        storeSettings();
        expectSame("it can be read once", 0, errorsRead(kPartition, 0));
        expectSettings(kDefaults);
    }
}

} // namespace

void checkBootSettings() {
    checkSetters();
    checkBlocksThatCannotBeErased();
}
