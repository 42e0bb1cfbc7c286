// iodbg mdio: registers of the PHYs.

#include "bsp.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/registers/commands.h"

namespace iodbg {

namespace {

constexpr char kRegisterDevice[] = "/dev/mem";
/** The two address fields, as the command register has them. */
struct MdioPlace {
    uint32_t a = 0;
    uint32_t b = 0;

    std::string text() const {
        return "MDIO register " + std::to_string(a) + "." + std::to_string(b);
    }
};

/** Throws unless a call succeeded; one that could not reach the registers names their device. */
void requireMdio(int32_t status, const std::string &what) {
    if (status == BSP_E_OPEN)
        throw Failure::board(what, status, tryNode(kRegisterDevice).hint());
    require(status, what);
}

uint32_t readRegister(const MdioPlace &place) {
    uint32_t value = 0;
    requireMdio(bsp_smi_read(0, place.a, 0, place.b, &value), "read " + place.text());
    return value;
}

void addPlace(Section &section, const MdioPlace &place) {
    section.add("a", "Address A", numberCell(place.a));
    section.add("b", "Address B", numberCell(place.b));
}

ExitCode read(Console &console, const MdioPlace &place) {
    const uint32_t value = readRegister(place);
    Section section = {"", "", {}};
    addPlace(section, place);
    section.add("value", "Value", hexCell(value, 4));
    return console.print({{section}, {}});
}

ExitCode write(Console &console, const MdioPlace &place, uint32_t value) {
    const uint32_t before = readRegister(place);
    requireMdio(bsp_smi_write(0, place.a, 0, place.b, value), "write " + place.text());
    const uint32_t after = readRegister(place);
    Section section = {"", "", {}};
    addPlace(section, place);
    section.add("before", "Before", hexCell(before, 4));
    section.add("written", "Written", hexCell(value, 4));
    section.add("after", "After", hexCell(after, 4));
    return console.print({{section}, {}});
}

void addPlaceArguments(Command &command, MdioPlace &place) {
    command.argument("A", "Field in bits 2-6 of the MDIO command, 0-31",
                     number(place.a, BSP_MDIO_ADDRESS_MAX));
    command.argument("B", "Field in bits 7-11 of the MDIO command, 0-31",
                     number(place.b, BSP_MDIO_ADDRESS_MAX));
}

void defineMdio(Command &mdio) {
    const auto place = std::make_shared<MdioPlace>();
    Command &readCommand = mdio.command("read", "Read a register");
    addPlaceArguments(readCommand, *place);
    readCommand.example("iodbg mdio read 3 5");
    readCommand.does([place](Console &console) { return read(console, *place); });

    const auto value = std::make_shared<uint32_t>(0);
    Command &writeCommand =
        mdio.command("write", "Write a register, and show it before and after.\nMany registers "
                              "have bits that change by themselves, so nothing is compared");
    addPlaceArguments(writeCommand, *place);
    writeCommand.argument("VALUE", "0-0xFFFF", number(*value, BSP_MDIO_VALUE_MAX));
    writeCommand.example("iodbg mdio write 3 5 0xABCD");
    writeCommand.does([place, value](Console &console) { return write(console, *place, *value); });
}

} // namespace

void addMdioCommands(Command &root) {
    root.group("mdio", "Registers of the PHYs, over MDIO", defineMdio);
}

} // namespace iodbg
