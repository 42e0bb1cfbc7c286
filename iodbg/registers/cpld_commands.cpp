// iodbg cpld: registers of the CPLD.

#include "bsp.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/registers/commands.h"

namespace iodbg {

namespace {

constexpr uint32_t kScannedRegisters = 64;
constexpr int kRegisterDigits = 4;

uint16_t readRegister(uint32_t reg) {
    uint16_t value = 0;
    requireInRange(bspCpldGet(reg, &value), "read " + registerName(reg));
    return value;
}

Table emptyTable() {
    return {"registers", {{"register", "REGISTER"}, {"value", "VALUE"}}, {}};
}

/** The given registers, those that fail included. */
Report readRegisters(const std::vector<uint32_t> &registers) {
    Report report;
    Table table = emptyTable();
    for (const uint32_t reg : registers) {
        uint16_t value = 0;
        const int32_t status = bspCpldGet(reg, &value);
        refuseOutOfRange(status, "read " + registerName(reg));
        table.rows.push_back({numberCell(reg), report.tried(registerName(reg), status,
                                                            hexCell(value, kRegisterDigits))});
    }
    report.parts.emplace_back(table);
    return report;
}

/** Whatever answers. A driver that cannot be reached is no register that is missing. */
Report scanRegisters() {
    Table table = emptyTable();
    int32_t lastFailure = BSP_OK;
    for (uint32_t reg = 0; reg < kScannedRegisters; ++reg) {
        uint16_t value = 0;
        const int32_t status = bspCpldGet(reg, &value);
        if (status == BSP_E_FAILED)
            throw Failure::board("read " + registerName(reg), status);
        if (status == BSP_OK)
            table.rows.push_back({numberCell(reg), hexCell(value, kRegisterDigits)});
        else
            lastFailure = status;
    }
    if (table.rows.empty())
        require(lastFailure, "read any CPLD register");
    return {{table}, {}};
}

ExitCode set(Console &console, uint32_t reg, uint16_t value) {
    const uint16_t before = readRegister(reg);
    require(bspCpldSet(reg, value), "write " + registerName(reg));
    const uint16_t after = readRegister(reg);

    Section section = {"", "", {}};
    section.add("register", "Register", numberCell(reg));
    section.add("before", "Before", hexCell(before, kRegisterDigits));
    section.add("written", "Written", hexCell(value, kRegisterDigits));
    section.add("after", "After", hexCell(after, kRegisterDigits));
    if (after != value)
        throw Failure(ExitCode::ReadBack,
                      registerName(reg) + " was " + hexNumber(before, kRegisterDigits) + ", " +
                          hexNumber(value, kRegisterDigits) + " was written, and it reads " +
                          hexNumber(after, kRegisterDigits) +
                          "; read-only and self-clearing bits do that");
    return console.print({{section}, {}});
}

void addGet(Command &cpld) {
    const auto registers = std::make_shared<std::vector<uint32_t>>();
    Command &get = cpld.command("get", "Read registers");
    get.optionalArguments(
        "REG", "Numbers of registers; without them those of 0-63 that answer",
        [registers](const std::string &word) { number(registers->emplace_back())(word); });
    get.example("iodbg cpld get").example("iodbg cpld get 1 2 0x1E");
    get.does([registers](Console &console) {
        return console.print(registers->empty() ? scanRegisters() : readRegisters(*registers));
    });
}

void addSet(Command &cpld) {
    struct Arguments {
        uint32_t reg = 0;
        uint32_t value = 0;
    };
    const auto arguments = std::make_shared<Arguments>();
    Command &setCommand = cpld.command("set", "Write a register and read it back");
    setCommand.argument("REG", "Number of the register", number(arguments->reg));
    setCommand.argument("VALUE", "Its new content, 0-0xFFFF", number(arguments->value, UINT16_MAX));
    setCommand.detail("Shows it before and after.");
    setCommand.example("iodbg cpld set 7 0x0002");
    setCommand.does([arguments](Console &console) {
        return set(console, arguments->reg, static_cast<uint16_t>(arguments->value));
    });
}

void defineCpld(Command &cpld) {
    addGet(cpld);
    addSet(cpld);
}

} // namespace

void addCpldCommands(Command &root) {
    root.group("cpld", "CPLD registers", defineCpld).onlyAfter(requireKernelModule);
}

} // namespace iodbg
