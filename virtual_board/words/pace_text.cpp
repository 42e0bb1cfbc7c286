#include "virtual_board/words/pace_text.h"

#include "language/property_names.h"
#include "language/property_table.h"
#include "language/property_values.h"
#include "language/times.h"

#include <algorithm>

namespace vb {

namespace {

const language::Property &timeProperty() {
    return language::propertyOf("time");
}
static_assert(language::wordCount("time") == static_cast<uint32_t>(TimeMode::Scaled));

} // namespace

std::string paceText(const Pace &pace) {
    return pace.mode == TimeMode::Scaled
               ? language::rateText(pace.rate)
               : language::wordOf(timeProperty(), static_cast<int64_t>(pace.mode));
}

Pace parsePace(const std::string &text) {
    parseValue(timeProperty(), text); // others are refused
    if (const auto rate = language::readRate(text); rate.has_value())
        return {TimeMode::Scaled, *rate};
    const std::vector<std::string> words = language::wordsOf(timeProperty().words);
    const auto word = std::find(words.begin(), words.end(), text) - words.begin();
    return {static_cast<TimeMode>(word), kHostRate};
}

} // namespace vb
