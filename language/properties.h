#pragma once
// What boards have: each property, or row of numbered ones, with its type, its unit, its range and
// the models that it is on. Whatever reads and sets boards by name takes its knowledge from here.

#include <cstdint>
#include <span>

namespace language {

/** Whose property it is. That decides on which models it exists, and which numbers there are. */
enum class Subject {
    Board,
    Register,
    Line,
    MdioRegister, // has two numbers
    Supply,
    PlugInSupply, // has an EEPROM and PMBus
    PoeController,
    PoePort,
    Fan,
    ClockChip,
    Cage,
    Partition
};

enum class Type {
    Number,
    Register, // a number of 16 bits, written in hexadecimal digits
    Decimal,  // a number with a point
    Word,
    Text,
    MacAddress,
    Time,   // of the calendar clock
    Pace,   // of time: a word, or a rate
    ByteRow // hexadecimal digits; can be asked for a part
};

struct Property {
    const char *name; // '#' stands for a number
    Subject subject;
    Type type;
    const char *sentence;
    const char *unit = "";
    bool isSettable = false;
    int64_t lowest = 0;
    int64_t highest = 0;
    const char *words = ""; // "good|stuck": all words; of other types what it can be besides
    const char *given = ""; // the words, or the numbers, that it is set to, where they are others
    const char *form = "";  // of texts: how one looks
    const char *idle = nullptr; // what an untouched one holds, when that is not worth showing
    bool isLong = false;        // too much to be shown unless it is asked for
};

/** The whole table. */
std::span<const Property> properties();

} // namespace language
