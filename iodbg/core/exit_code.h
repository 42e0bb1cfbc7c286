#pragma once
// What iodbg tells the program that started it. All codes are below 126, where shells begin with
// codes of their own.

namespace iodbg {

enum class ExitCode {
    Ok = 0,        // done
    Board = 1,     // the board or the library answered a failure
    Usage = 2,     // wrong usage, or not confirmed; nothing was changed on the board
    ReadBack = 3,  // written, but what reads back differs
    Host = 4,      // a problem on this host: a file, standard output, memory
    Faulty = 5,    // 'check' found a fault of the unit
    Different = 6, // 'diff' found two units different
};

/** The same for people. */
constexpr char kExitCodeHelp[] =
    "Exit codes:\n"
    "  0  done\n"
    "  1  the board or the library answered a failure\n"
    "  2  wrong usage, also a number that this board does not have, or not confirmed;\n"
    "     nothing was changed on the board\n"
    "  3  written, but what reads back differs; also a PoE port that was switched on\n"
    "     and stays off\n"
    "  4  a problem on this host: a file, standard output, memory\n"
    "  5  'check' found a fault of the unit\n"
    "  6  'diff' found two units different\n"
    "'trace' ends with the program's own exit code; 125: it was not started.\n";

} // namespace iodbg
