#include "language/property_names.h"

#include "language/numbers.h"
#include "language/property_table.h"
#include "language/refused.h"
#include "language/texts.h"

#include <algorithm>
#include <numeric>

namespace language {

namespace {

using Numbers = std::vector<uint32_t>;

Numbers countedFrom(uint32_t first, uint32_t count) {
    Numbers numbers(count);
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

/** The numbers of a subject's things; of one that has no numbers 0 alone. Empty: there is none. */
Numbers numbersOf(Subject subject, const Equipment &equipment) {
    switch (subject) {
    case Subject::Board:
        break;
    case Subject::Register:
        return countedFrom(0, kRegisters);
    case Subject::Line:
        return countedFrom(0, kLines);
    case Subject::MdioRegister:
        return countedFrom(0, kMdioAddresses);
    case Subject::Supply:
        return countedFrom(1, equipment.supplies);
    case Subject::PlugInSupply:
        return countedFrom(1, equipment.plugInSupplies);
    case Subject::PoeController:
        return countedFrom(0, equipment.poePorts != 0 ? 1 : 0);
    case Subject::PoePort:
        return countedFrom(1, equipment.poePorts);
    case Subject::Fan:
        return countedFrom(1, equipment.fans);
    case Subject::ClockChip:
        return countedFrom(0, equipment.hasClock ? 1 : 0);
    case Subject::Cage:
        return equipment.cages;
    case Subject::Partition:
        return equipment.partitions;
    }
    return {0};
}

uint32_t secondNumbersOf(Subject subject) {
    return subject == Subject::MdioRegister ? kMdioAddresses : 1;
}

const char *absenceReason(Subject subject) {
    switch (subject) {
    case Subject::PoeController:
    case Subject::PoePort:
        return "it has no PoE";
    case Subject::Fan:
        return "it has no fans";
    case Subject::ClockChip:
        return "it has no clock";
    default:
        return "its supplies are built in";
    }
}

/** "1-24, 33-38". */
std::string rangesText(const Numbers &numbers) {
    std::string text;
    for (size_t i = 0; i < numbers.size();) {
        const size_t first = i;
        while (++i < numbers.size() && numbers[i] == numbers[i - 1] + 1) {
        }
        text += (text.empty() ? "" : ", ") + std::to_string(numbers[first]);
        if (i - first > 1)
            text += "-" + std::to_string(numbers[i - 1]);
    }
    return text;
}

/** "0, 4, 12 and 14". */
std::string listText(const Numbers &numbers) {
    std::vector<std::string> words;
    for (const auto number : numbers)
        words.push_back(std::to_string(number));
    return listed(words, "and");
}

/** Which numbers there are. */
std::string numbersText(Subject subject, const Numbers &numbers) {
    if (subject == Subject::Cage)
        return "the cages are " + rangesText(numbers);
    if (subject == Subject::Partition)
        return "the numbers are " + listText(numbers);
    return "the numbers are " + std::to_string(numbers.front()) + " to " +
           std::to_string(numbers.back());
}

/** Whether a name is of a row; takes its numbers out of it. Names are compared with hundreds of
 * rows, one after the other. */
bool takeNumbers(const char *name, const char *end, const char *row, Numbers &numbers) {
    for (; *row != '\0'; ++row) {
        if (*row != '#') {
            if (name == end || *name++ != *row)
                return false;
            continue;
        }
        const std::string word(name, std::find(name, end, '.'));
        const auto number = readNumber<uint32_t>(word, 0, UINT32_MAX);
        if (!number.has_value() || word.front() == '-')
            return false;
        numbers.push_back(*number);
        name += word.size();
    }
    return name == end;
}

struct Found {
    const Property *property;
    Numbers numbers;
};

Found findRow(const std::string &name) {
    for (const Property &property : kProperties) {
        if (const auto numbers = numbersIn(name, property.name))
            return {&property, *numbers};
    }
    return {nullptr, {}};
}

uint32_t parsePlace(const std::string &text) {
    const auto number = readNumber<uint32_t>(text, 0, UINT32_MAX);
    if (!number.has_value())
        throw Refused("'" + text +
                      "' is not a number; a part of an EEPROM or of flash is @OFFSET+LENGTH");
    return *number;
}

/** Takes the part that a name asks for, from its '@' on. */
void takePart(PropertyName &found, const std::string &part) {
    const size_t plus = part.find('+');
    found.offset = parsePlace(part.substr(1, plus - 1));
    if (plus != std::string::npos)
        found.length = parsePlace(part.substr(plus + 1));
}

} // namespace

PropertyName resolveName(const std::string &name, const Equipment &equipment) {
    const size_t at = std::min(name.find('@'), name.size());
    const std::string whole = name.substr(0, at);
    const auto [property, given] = findRow(whole);
    if (property == nullptr)
        throw Refused("there is no property '" + whole + "'; 'vboard get DIR' lists them");
    const Numbers numbers = numbersOf(property->subject, equipment);
    if (numbers.empty())
        throw Refused("there is no " + whole + " on model " + equipment.model + ": " +
                      absenceReason(property->subject));
    const uint32_t number = given.empty() ? 0 : given[0];
    const uint32_t second = given.size() < 2 ? 0 : given[1];
    if (std::find(numbers.begin(), numbers.end(), number) == numbers.end() ||
        second >= secondNumbersOf(property->subject))
        throw Refused("there is no " + whole + "; " + numbersText(property->subject, numbers));
    PropertyName found = {property, number, second, {}, {}};
    if (at == name.size())
        return found;
    if (property->type != Type::ByteRow)
        throw Refused(whole + " has no parts; leave out '" + name.substr(at) + "'");
    takePart(found, name.substr(at));
    return found;
}

std::vector<PropertyName> namesOn(const Equipment &equipment) {
    std::vector<PropertyName> names;
    for (const Property &property : kProperties) {
        for (const uint32_t number : numbersOf(property.subject, equipment)) {
            for (uint32_t second = 0; second < secondNumbersOf(property.subject); ++second)
                names.push_back({&property, number, second, {}, {}});
        }
    }
    return names;
}

std::string nameText(const PropertyName &name) {
    std::string text = name.property->name;
    for (const uint32_t number : {name.number, name.second}) {
        if (const size_t place = text.find('#'); place != std::string::npos)
            text.replace(place, 1, std::to_string(number));
    }
    return text;
}

bool isOn(const Equipment &equipment, Subject subject) {
    return !numbersOf(subject, equipment).empty();
}

const char *modelsText(Subject subject) {
    switch (subject) {
    case Subject::Supply:
        return "with supply lines";
    case Subject::PlugInSupply:
        return "with plug-in supplies";
    case Subject::PoeController:
    case Subject::PoePort:
        return "with PoE";
    case Subject::Fan:
        return "with fans";
    case Subject::ClockChip:
        return "with a clock chip";
    default:
        return "all";
    }
}

std::optional<std::vector<uint32_t>> numbersIn(const std::string &name, const char *row) {
    const char *const letters = name.c_str();
    if (*letters != *row) // which ends it most times
        return std::nullopt;
    Numbers numbers;
    return takeNumbers(letters, letters + name.size(), row, numbers) ? std::optional(numbers)
                                                                     : std::nullopt;
}

const Property *rowOf(const std::string &name) {
    return findRow(name.substr(0, name.find('@'))).property;
}

bool isPattern(const std::string &word) {
    return word.find_first_of("*?[") != std::string::npos;
}

} // namespace language
