// Names and values of properties as people write them, a line each: "fan.1.speed=2400". What is
// taken reads back as something that is taken, too.

#include "fuzz/board.h"
#include "virtual_board/words/values.h"
#include "virtual_board/words/world.h"

#include <nlohmann/json.hpp>

namespace {

/** Sets a property; whether it was taken. */
bool set(const vb::BoardFolder &folder, const std::string &name, const std::string &value) {
    try {
        vb::setProperty(folder, name, value);
        return true;
    } catch (const vb::Refused &) {
        return false;
    }
}

/** Bytes from an offset on are set alone: as many as there may be would be read. */
bool isReadable(const std::string &name) {
    return name.find('@') == std::string::npos || name.find('+') != std::string::npos;
}

vb::Property read(const vb::BoardFolder &folder, const std::string &name) {
    vb::Property property = vb::namedProperty(folder, name);
    language::valueJson(*property.type, property.content).dump();
    return property;
}

void useLine(const vb::BoardFolder &folder, const std::string &line) {
    const size_t equals = line.find('=');
    const std::string name = line.substr(0, equals);
    const bool isSet = equals != std::string::npos && set(folder, name, line.substr(equals + 1));
    if (!isReadable(name))
        return;
    try {
        const vb::Property property = read(folder, name);
        if (!isSet || property.type->given[0] != '\0') // what it takes is not what it holds
            return;
        fuzz::require(set(folder, name, property.value),
                      "a property does not take what it reads as");
        fuzz::require(read(folder, name).value == property.value, "and does not hold it");
    } catch (const vb::Refused &) { // no such name
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    constexpr int kMostLines = 8;
    fuzz::Input input(bytes, size);
    const fuzz::FactoryBoard &board = fuzz::anyBoard(input);
    for (int i = 0; i < kMostLines && !input.isEmpty(); ++i)
        useLine(board.folder(), input.line());
    board.putBack();
    return 0;
}
