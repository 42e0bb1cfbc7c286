// The boot loader's settings in a block that holds anything. A setting that is stored is read
// again.

#include "language/formats/boot_settings.h"
#include "bsp.h"
#include "fuzz/hostile_system.h"

#include <iterator>

namespace {

using fuzz::require;

constexpr uint32_t kRates[] = {BSP_BAUDRATE_9600, BSP_BAUDRATE_19200, BSP_BAUDRATE_38400,
                               BSP_BAUDRATE_57600, BSP_BAUDRATE_115200};

void readAll() {
    uint32_t number = 0;
    int32_t flag = 0;
    char password[BSP_BOOT_PASSWORD_BUFFER];
    bspBootModeGet(&number);
    require(number <= 1, "a boot mode that is no switch");
    bspBootFlagGet(&flag);
    bspBaudrateGet(&number);
    bspConsolePwdValidGet(&number);
    bspUserPwdValidGet(&number);
    require(number <= 1, "a user password's state that is no switch");
    bspBootPwdGet(password);
    require(std::memchr(password, '\0', sizeof(password)) != nullptr, "a password without end");
}

/** One of those that the console has, or any other. */
uint32_t anyRate(fuzz::Input &input) {
    const uint32_t index = input.below(std::size(kRates) + 1);
    return index < std::size(kRates) ? kRates[index] : input.number<uint32_t>();
}

/** All are stored before the first is read, so that none of them costs another. */
void storeAndRead(fuzz::Input &input) {
    const auto flag = input.number<int32_t>();
    const auto mode = input.number<int32_t>();
    const auto console = input.number<int32_t>();
    const auto user = static_cast<int32_t>(input.quantity()); // of which 0 alone is another matter
    const uint32_t rate = anyRate(input);
    std::string password = input.line();
    password.resize(std::strlen(password.c_str()));

    bspBootFlagSet(flag);
    bspBootModeSet(mode);
    bspConsolePwdValidSet(console);
    bspUserPwdValidSet(user);
    const bool hasRate = bspBaudrateSet(rate) == BSP_OK;
    const bool hasPassword = bspBootPwdSet(password.c_str()) == BSP_OK;

    int32_t storedFlag = 0;
    require(bspBootFlagGet(&storedFlag) == BSP_OK && storedFlag == flag,
            "another boot flag is read");
    uint32_t stored = 0;
    require(bspBootModeGet(&stored) == BSP_OK && stored == (mode > 0 ? 1u : 0u),
            "another boot mode is read");
    require(bspConsolePwdValidGet(&stored) == BSP_OK && stored == (console > 0 ? 1u : 0u),
            "another state of the console's password is read");
    require(bspUserPwdValidGet(&stored) == BSP_OK && stored == (user != 0 ? 1u : 0u),
            "another state of the user password is read");
    require(hasRate == (std::find(std::begin(kRates), std::end(kRates), rate) != std::end(kRates)),
            "a rate that the console does not have, or one is missing");
    require(!hasRate || (bspBaudrateGet(&stored) == BSP_OK && stored == rate),
            "another rate is read");
    require(hasPassword == (password.size() <= BSP_BOOT_PASSWORD_MAX),
            "a password of the wrong length");
    char storedPassword[BSP_BOOT_PASSWORD_BUFFER];
    require(!hasPassword || (bspBootPwdGet(storedPassword) == BSP_OK && password == storedPassword),
            "another password is read");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::Input input(bytes, size);
    hostile::System system(input);
    system.canFail = false;
    system.geometry = bsp::FlashGeometry{};
    system.geometry->size = system.geometry->erasesize = 4096;
    system.flash = hostile::Bytes(4096, 0xFF);
    input.fill(system.flash->data(), formats::kBootBlockSize);
    readAll();
    storeAndRead(input);
    readAll();
    return 0;
}
