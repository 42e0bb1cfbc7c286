// What the page of metrics and the rules for alerts have from the tables of iodbg.

#include "iodbg/core/finding_codes.h"
#include "iodbg/unit/metric_table.h"
#include "tests/support/document_part.h"

#include <cctype>
#include <cstring>
#include <set>

namespace {

using iodbg::CodeRow;
using iodbg::Metric;
using iodbg::Severity;

constexpr char kRulesFolder[] = BSP_TEST_MONITORING;

std::string labelsText(const Metric &metric) {
    std::string text;
    for (const char letter : std::string(metric.labels))
        text += letter == ',' ? "`, `" : std::string(1, letter);
    return text.empty() ? "" : "`" + text + "`";
}

/** Where `show`, `check` and their like have it in their JSON. */
std::string sourceText(const Metric &metric) {
    const std::string part = metric.part;
    return "`" + (*metric.key == '\0' ? part : part + "." + metric.key) + "`";
}

std::string tableOfMetrics() {
    std::string text =
        "| metric | unit | labels | reading | what it tells |\n|---|---|---|---|---|\n";
    const char *help = "";
    for (const Metric &metric : iodbg::kMetrics) {
        if (*metric.help != '\0')
            help = metric.help;
        text += std::string("| `") + iodbg::kMetricPrefix + metric.name + "` | " + metric.unit +
                " | " + labelsText(metric) + " | " + sourceText(metric) + " | " + help + " |\n";
    }
    return text;
}

/** "SwitchFanStandsStill" */
std::string alertName(const char *code) {
    std::string name = "Switch";
    bool isStart = true;
    for (const char *letter = code; *letter != '\0'; ++letter) {
        if (*letter != '-')
            name += static_cast<char>(isStart ? std::toupper(*letter) : *letter);
        isStart = *letter == '-';
    }
    return name;
}

std::string inYaml(const std::string &text) {
    std::string quoted = "'";
    for (const char letter : text)
        quoted += letter == '\'' ? "''" : std::string(1, letter);
    return quoted + "'";
}

/** What is to be done for some codes depends on what was found. */
std::string adviceOf(const CodeRow &code) {
    return *code.advice != '\0' ? code.advice : "'iodbg check' tells what to do";
}

std::string rulesOfCodes() {
    std::string text;
    for (const CodeRow &code : iodbg::kCodes) {
        if (code.severity != Severity::Fault)
            continue;
        text += "      - alert: " + alertName(code.key) + "\n";
        text += std::string("        expr: switch_finding{code=\"") + code.key + "\"} > 0\n";
        text += "        for: 1m\n"
                "        labels:\n"
                "          severity: critical\n"
                "        annotations:\n";
        text += std::string("          summary: '{{ $labels.instance }}: {{ $labels.unit }} "
                            "{{ $labels.index }}: ") +
                code.key + "'\n";
        text += "          description: " + inYaml(adviceOf(code)) + "\n";
    }
    return text;
}

/** A case for each code: it is found for three minutes. */
std::string testsOfCodes() {
    std::string text;
    for (const CodeRow &code : iodbg::kCodes) {
        if (code.severity != Severity::Fault)
            continue;
        const std::string key = code.key;
        text += "  - interval: 1m\n"
                "    input_series:\n"
                "      - series: 'switch_finding{code=\"" +
                key +
                "\",severity=\"fault\",unit=\"part\",index=\"1\",instance=\"unit\"}'\n"
                "        values: '1 1 1 _x6'\n"
                "    alert_rule_test:\n"
                "      - eval_time: 0m\n"
                "        alertname: " +
                alertName(code.key) +
                "\n"
                "        exp_alerts: []\n"
                "      - eval_time: 2m\n"
                "        alertname: " +
                alertName(code.key) +
                "\n"
                "        exp_alerts:\n"
                "          - exp_labels: {severity: critical, code: " +
                key +
                ", unit: part, index: '1', instance: unit}\n"
                "            exp_annotations:\n"
                "              summary: 'unit: part 1: " +
                key +
                "'\n"
                "              description: " +
                inYaml(adviceOf(code)) + "\n";
    }
    return text;
}

TEST(MetricTablesTest, AreWhatTheDocumentHas) {
    expectPart(
        {BSP_TEST_DOCUMENTS "/metrics.md", "<!-- metrics -->\n", "<!-- end of metrics -->\n"},
        tableOfMetrics());
}

TEST(MetricTablesTest, HasARuleForEachFault) {
    expectPart({std::string(kRulesFolder) + "/switch.rules.yml", "      # one for each fault\n",
                "      # end of those\n"},
               rulesOfCodes());
    expectPart({std::string(kRulesFolder) + "/switch.rules_test.yml", "  # one for each fault\n",
                "  # end of those\n"},
               testsOfCodes());
}

TEST(MetricTablesTest, NamesEndInTheirUnits) {
    for (const Metric &metric : iodbg::kMetrics) {
        const std::string name = metric.name;
        const std::string unit = metric.unit;
        if (!unit.empty()) {
            EXPECT_TRUE(name.ends_with("_" + unit)) << name;
        }
        EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz_"), std::string::npos) << name;
    }
}

TEST(MetricTablesTest, HaveRowsOfOneNameTogether) {
    std::set<std::string> seen;
    std::string last;
    for (const Metric &metric : iodbg::kMetrics) {
        if (metric.name != last) {
            EXPECT_TRUE(seen.insert(metric.name).second) << metric.name;
            EXPECT_STRNE(metric.help, "") << metric.name;
        }
        last = metric.name;
    }
}

} // namespace
