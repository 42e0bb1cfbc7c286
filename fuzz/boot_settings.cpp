// The boot loader's settings in a block that holds anything. A setting that is stored is read
// again.

#include "language/formats/boot_settings.h"
#include "bsp.h"
#include "fuzz/hostile_system.h"

namespace {

using fuzz::require;

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

void storeAndRead(fuzz::Input &input) {
    const auto wanted = input.number<int32_t>();
    int32_t flag = 0;
    bspBootFlagSet(wanted);
    require(bspBootFlagGet(&flag) == BSP_OK && flag == wanted, "another boot flag is read");
    uint32_t mode = 0;
    bspBootModeSet(wanted);
    require(bspBootModeGet(&mode) == BSP_OK && mode == (wanted > 0 ? 1u : 0u),
            "another boot mode is read");
    bspConsolePwdValidSet(wanted);
    bspUserPwdValidSet(wanted);
    bspBaudrateSet(input.number<uint32_t>());

    std::string password = input.line();
    password.resize(std::strlen(password.c_str()));
    if (bspBootPwdSet(password.c_str()) != BSP_OK)
        return;
    char stored[BSP_BOOT_PASSWORD_BUFFER];
    require(bspBootPwdGet(stored) == BSP_OK && password == stored, "another password is read");
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
