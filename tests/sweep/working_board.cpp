#include "tests/sweep/working_board.h"

#include "bsp.h"
#include "tests/support/boot_loader_file.h"
#include "tests/support/world.h"

#include <cstdio>
#include <fcntl.h>
#include <fstream>

namespace sweep {

Silence::Silence() {
    std::fflush(stdout);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
}

Silence::~Silence() {
    std::fflush(stdout);
    dup2(savedOut_, STDOUT_FILENO);
    dup2(savedErr_, STDERR_FILENO);
    close(savedOut_);
    close(savedErr_);
}

void WorkingBoardTest::SetUp() {
    VirtualBoardTest::SetUp();
    const auto file = [this](const char *name, const std::string &content) {
        std::ofstream(boardFolder() + "/" + name, std::ios::binary) << content;
        return boardFolder() + "/" + name;
    };
    const boot_loader_file::Bytes boot =
        boot_loader_file::of(boot_loader_file::Bytes(3000, uint8_t{'x'}));
    files_ = {file("os", std::string(4096, 'x')), file("boot", {boot.begin(), boot.end()}),
              file("firmware", std::string(51200, 'x')), "/tmp/bsp/output"};
    std::ofstream(boardFile("/tmp/bspPoeLockFile"), std::ios::binary) << '\x10';
    printedBy([this] {
        ASSERT_EQ(bspPoeDeviceInit(), BSP_OK);
        ASSERT_EQ(bspPoePortModeSet(2, 1), BSP_OK);
        ASSERT_EQ(bspBootFlagSet(1), BSP_OK);
        ASSERT_EQ(bsp_mtd_write_from_file(files_.bootLoader.c_str(), "/dev/mtd0", 1), BSP_OK);
    });
    world::set("sfp.49.module", "sr");
    world::set("sfp.49.link", "up");
    world::set("sfp.50.module", "copper-mode4");
}

} // namespace sweep
