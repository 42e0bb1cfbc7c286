// iodbg cpld: registers of the CPLD.

#include "bsp.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/registers/commands.h"
#include "iodbg/registers/register_fields.h"
#include "language/refused.h"
#include "language/trace_names.h"

namespace iodbg {

namespace {

constexpr uint32_t kScannedRegisters = 64;
constexpr int kRegisterDigits = 4;

uint16_t readRegister(uint32_t reg) {
    uint16_t value = 0;
    requireInRange(bspCpldGet(reg, &value), "read " + registerName(reg));
    return value;
}

/** Registers, and what is known of their bits. */
struct RegisterTables {
    Table registers = {
        "registers", {{"register", "REGISTER"}, {"value", "VALUE"}, {"name", "NAME"}}, {}};
    Table fields = emptyFieldTable();

    void add(uint32_t reg, const Cell &value) {
        const char *name = language::registerName(reg);
        registers.rows.push_back(
            {numberCell(reg), value, name == nullptr ? Cell{"", nullptr} : textCell(name)});
    }
    void add(uint32_t reg, uint16_t value) {
        add(reg, hexCell(value, kRegisterDigits));
        addFields(fields, reg, value);
    }
};

/** The given registers, those that fail included. */
Report readRegisters(const std::vector<uint32_t> &registers) {
    Report report;
    RegisterTables tables;
    for (const uint32_t reg : registers) {
        uint16_t value = 0;
        const int32_t status = bspCpldGet(reg, &value);
        refuseOutOfRange(status, "read " + registerName(reg));
        if (status == BSP_OK)
            tables.add(reg, value);
        else
            tables.add(reg, report.tried(registerName(reg), status, {}));
    }
    report.parts = {tables.registers, tables.fields};
    return report;
}

/** Whatever answers. A driver that cannot be reached is no register that is missing. */
Report scanRegisters() {
    RegisterTables tables;
    int32_t lastFailure = BSP_OK;
    for (uint32_t reg = 0; reg < kScannedRegisters; ++reg) {
        uint16_t value = 0;
        const int32_t status = bspCpldGet(reg, &value);
        if (status == BSP_E_FAILED)
            throw Failure::board("read " + registerName(reg), status);
        if (status == BSP_OK)
            tables.add(reg, value);
        else
            lastFailure = status;
    }
    if (tables.registers.rows.empty())
        require(lastFailure, "read any CPLD register");
    return {{tables.registers, tables.fields}, {}};
}

/** Takes a register, or a range of those that a scan reads: "1-5". */
void addRegisters(std::vector<uint32_t> &registers, const std::string &word) {
    const size_t dash = word.find('-');
    uint32_t first = 0;
    if (dash == std::string::npos || dash == 0) {
        number(first)(word);
        registers.push_back(first);
        return;
    }
    uint32_t last = 0;
    number(first, kScannedRegisters - 1)(word.substr(0, dash));
    number(last, kScannedRegisters - 1)(word.substr(dash + 1));
    if (first > last)
        language::refuse(word, "is no range of registers; give one as 1-5");
    for (uint32_t reg = first; reg <= last; ++reg)
        registers.push_back(reg);
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
        "REG", "Numbers of registers, or ranges like 1-5; without them those of 0-63 that answer",
        [registers](const std::string &word) { addRegisters(*registers, word); });
    get.detail("What a bit is for holds for the family: a model without such a part leaves it "
               "unused.\n"
               "Reading changes none of the registers that have a name. Whether one without a name "
               "keeps something until it is read is not known, and a scan reads those, too.");
    get.example("iodbg cpld get").example("iodbg cpld get 1-5 0x1E");
    takesCapturedUnit(get);
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
