#include "virtual_board/words/poe_text.h"

#include "language/property_table.h"
#include "language/property_values.h"
#include "virtual_board/words/values.h"

#include <sstream>

namespace vb {

namespace {

constexpr const char *kSignatures[] = {"good", "bad", "legacy", "short", "open"};

uint32_t numberOf(const std::string &name, const std::string &text, uint32_t max) {
    return language::about(name, [&] { return language::parseNumber<uint32_t>(text, 0, max); });
}

PoeSignature signatureOf(const std::string &text) {
    return language::about("signature", [&] {
        return static_cast<PoeSignature>(language::parseChoice(text, kSignatures));
    });
}

void setPart(PoweredDevice &device, const std::string &word) {
    const size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : word.substr(equals + 1);
    if (word == "over-current")
        device.isOverCurrent = 1;
    else if (name == "class")
        device.powerClass = static_cast<uint8_t>(numberOf(name, value, kPoeHighestClass));
    else if (name == "signature")
        device.signature = signatureOf(value);
    else if (name == "requests")
        device.requestedMw = numberOf(name, value, kPoeMostMilliwatts);
    else if (name == "draws")
        device.drawnMw = numberOf(name, value, kPoeMostMilliwatts);
    else
        throw Refused("'" + word +
                      "' is no part of a device: give 'none' or class=N signature=good "
                      "requests=MILLIWATTS draws=MILLIWATTS over-current");
}

} // namespace

std::string deviceText(const PoweredDevice &device) {
    if (device.isPlugged == 0)
        return "none";
    return "class=" + std::to_string(device.powerClass) +
           " signature=" + kSignatures[static_cast<size_t>(device.signature)] +
           " requests=" + std::to_string(device.requestedMw) +
           " draws=" + std::to_string(device.drawnMw) +
           (device.isOverCurrent != 0 ? " over-current" : "");
}

PoweredDevice parseDevice(const std::string &text) {
    if (text == "none")
        return PoweredDevice{};
    PoweredDevice device = {1, PoeSignature::Good, 4, 0, 25500, 18000};
    std::istringstream words(text);
    std::string word;
    if (!(words >> word))
        throw Refused("a device is 'none' or its parts, as in 'class=4 draws=18000'");
    do
        setPart(device, word);
    while (words >> word);
    return device;
}

std::string phaseText(PoePhase phase) {
    return language::wordOf(language::propertyOf("poe.#.state"), static_cast<int64_t>(phase));
}

} // namespace vb
