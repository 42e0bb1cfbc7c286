#include "iodbg/unit/metrics_text.h"

#include "iodbg/unit/metric_table.h"
#include "language/texts.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace iodbg {

namespace {

/** A section, or a row of a table: its cells by their keys. */
using Sample = std::map<std::string, Cell>;

/** "4.321" of 4321 thousandths, as exact as the reading is. */
std::string decimalText(int64_t value, int decimals) {
    const auto places = static_cast<size_t>(decimals);
    std::string digits = std::to_string(value < 0 ? -value : value);
    if (digits.size() <= places)
        digits.insert(0, places + 1 - digits.size(), '0');
    std::string fraction = digits.substr(digits.size() - places);
    fraction.erase(fraction.find_last_not_of('0') + 1);
    return (value < 0 ? "-" : "") + digits.substr(0, digits.size() - places) +
           (fraction.empty() ? "" : "." + fraction);
}

/** None of what is no number. */
std::optional<std::string> metricValue(const Cell &cell, int decimals) {
    if (const auto *flag = std::get_if<bool>(&cell.value))
        return *flag ? "1" : "0";
    if (const auto *number = std::get_if<int64_t>(&cell.value))
        return decimalText(*number, decimals);
    if (const auto *list = std::get_if<std::vector<int64_t>>(&cell.value))
        return std::to_string(list->size());
    return {};
}

/** Memories hold anything: what is no printable ASCII is shown as a question mark. */
std::string escaped(const std::string &text) {
    std::string safe;
    for (const char letter : text) {
        if (letter == '\\' || letter == '"')
            safe += '\\';
        safe += letter >= ' ' && letter <= '~' ? letter : '?';
    }
    return safe;
}

std::string labelValue(const Cell &cell) {
    if (const auto *text = std::get_if<std::string>(&cell.value))
        return *text;
    return std::holds_alternative<std::nullptr_t>(cell.value) ? "" : cell.text;
}

std::vector<std::string> labelsOf(const Metric &metric) {
    std::vector<std::string> labels;
    const std::string all = metric.labels;
    for (size_t at = 0; at < all.size();) {
        const size_t end = std::min(all.find(',', at), all.size());
        labels.push_back(all.substr(at, end - at));
        at = end + 1;
    }
    return labels;
}

Cell cellAt(const Sample &sample, const std::string &key) {
    const auto found = sample.find(key);
    return found == sample.end() ? Cell{"", nullptr} : found->second;
}

/** isKnown: whether anything is of what it tells. */
std::string labelText(const Metric &metric, const Sample &sample, bool &isKnown) {
    std::string text;
    const std::vector<std::string> labels = labelsOf(metric);
    isKnown = false;
    for (size_t i = 0; i < labels.size(); ++i) {
        const size_t own = labels[i].find('=');
        const std::string name = labels[i].substr(0, own);
        const std::string value =
            own == std::string::npos ? labelValue(cellAt(sample, name)) : labels[i].substr(own + 1);
        // The first tells which of several it is.
        isKnown = isKnown || (!value.empty() && (i > 0 || labels.size() == 1));
        text += (text.empty() ? "" : ",") + name + "=\"" + escaped(value) + "\"";
    }
    return text.empty() ? "" : "{" + text + "}";
}

/** Whether a part's key is a metric's, and the number in it: "supply2" is number 2 of "supply#". */
bool isPartOf(const Metric &metric, const std::string &key, std::string &number) {
    const std::string pattern = metric.part;
    const size_t place = pattern.find('#');
    if (place == std::string::npos)
        return key == pattern;
    number = key.size() > place ? key.substr(place) : "";
    return key.compare(0, place, pattern, 0, place) == 0 && !number.empty() &&
           std::all_of(number.begin(), number.end(),
                       [](unsigned char c) { return std::isdigit(c) != 0; });
}

std::vector<Sample> samplesOf(const Section &section) {
    Sample sample;
    for (const Field &field : section.fields)
        sample[field.key] = field.cell;
    return {sample};
}

std::vector<Sample> samplesOf(const Table &table) {
    std::vector<Sample> samples;
    for (const std::vector<Cell> &row : table.rows) {
        Sample sample;
        for (size_t i = 0; i < std::min(row.size(), table.columns.size()); ++i)
            sample[table.columns[i].key] = row[i];
        samples.push_back(sample);
    }
    return samples;
}

std::string lineOf(const Metric &metric, const Sample &sample) {
    bool isKnown = false;
    const std::string labels = labelText(metric, sample, isKnown);
    std::optional<std::string> value;
    if (*metric.key != '\0')
        value = metricValue(cellAt(sample, metric.key), metric.decimals);
    else if (isKnown)
        value = "1";
    return value ? kMetricPrefix + std::string(metric.name) + labels + " " + *value + "\n" : "";
}

std::string linesOfMetric(const Metric &metric, const Report &readings) {
    std::string lines;
    for (const auto &part : readings.parts) {
        std::string number;
        if (!std::visit([&](const auto &any) { return isPartOf(metric, any.key, number); }, part))
            continue;
        for (Sample &sample : std::visit([](const auto &any) { return samplesOf(any); }, part)) {
            if (!number.empty())
                sample[labelsOf(metric).front()] = textCell(number);
            lines += lineOf(metric, sample);
        }
    }
    return lines;
}

std::string headOf(const Metric &metric) {
    const std::string name = kMetricPrefix + std::string(metric.name);
    const std::string unit = metric.unit;
    return "# HELP " + name + " " + metric.help + ".\n# TYPE " + name + " gauge\n" +
           (unit.empty() ? "" : "# UNIT " + name + " " + unit + "\n");
}

bool isNamedAs(const Metric &metric, const Metric &other) {
    return std::strcmp(metric.name, other.name) == 0;
}

} // namespace

std::string metricsText(const Report &readings) {
    std::string text;
    for (const Metric *metric = std::begin(kMetrics); metric != std::end(kMetrics);) {
        const Metric &first = *metric;
        std::string lines;
        for (; metric != std::end(kMetrics) && isNamedAs(*metric, first); ++metric)
            lines += linesOfMetric(*metric, readings);
        if (!lines.empty())
            text += headOf(first) + lines;
    }
    return text + "# EOF\n";
}

size_t countOfSamples(const std::string &text) {
    const std::vector<std::string> lines = language::linesOf(text);
    return static_cast<size_t>(
        std::count_if(lines.begin(), lines.end(), [](const std::string &line) {
            return !line.empty() && line.front() != '#';
        }));
}

} // namespace iodbg
