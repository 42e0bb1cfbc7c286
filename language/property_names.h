#pragma once
// Names of properties on a model: "fan.1.speed", "eeprom.board@0x100+16". Names that a model does
// not have throw Refused.

#include "language/properties.h"

#include <optional>
#include <string>
#include <vector>

namespace language {

/** What a model has: how many of each, counted from 1, or which. */
struct Equipment {
    std::string model; // as messages name it
    uint32_t supplies = 0;
    uint32_t plugInSupplies = 0;
    uint32_t poePorts = 0;
    uint32_t fans = 0;
    bool hasClock = false;
    std::vector<uint32_t> cages;
    std::vector<uint32_t> partitions;
};

/** What a name stands for. */
struct PropertyName {
    const Property *property;
    uint32_t number;                // 0 of one that has none
    uint32_t second;                // of one with two numbers
    std::optional<uint32_t> offset; // behind '@'
    std::optional<uint32_t> length; // behind '+'
};

/** What a name stands for on a model. */
PropertyName resolveName(const std::string &name, const Equipment &equipment);

/** The names of all properties of a model, in the order of the table; of a row, all numbers. */
std::vector<PropertyName> namesOn(const Equipment &equipment);

/** A name without its part: "cpld.5". */
std::string nameText(const PropertyName &name);

/** Whether a word is a pattern, as shells have them, rather than a name: "fan.*". */
bool isPattern(const std::string &word);

/** Whether a model has a property, or a row of them. */
bool isOn(const Equipment &equipment, Subject subject);

/** Which models those with a subject are: "with fans"; "all". */
const char *modelsText(Subject subject);

/** The numbers in a name of a row, whose '#' stand for them; nothing for another row's name. */
std::optional<std::vector<uint32_t>> numbersIn(const std::string &name, const char *row);

/** The row that a name is of, whatever the model; null when there is none. */
const Property *rowOf(const std::string &name);

} // namespace language
