#include "virtual_board/command/scenario.h"

#include "language/times.h"
#include "virtual_board/command/shell.h"

namespace vboard {

namespace {

std::string changesText(const Step &step) {
    std::string text;
    for (const PlacedChange &change : step.changes)
        text += (text.empty() ? "" : ", ") + change.name + " = " + change.value;
    return text;
}

std::string faultText(const FaultWords &fault) {
    const FaultWords usual;
    std::string text = fault.device;
    if (fault.op != usual.op)
        text += " " + fault.op;
    if (!fault.offset.empty())
        text += " at " + fault.offset;
    return text + " " + fault.effect;
}

/** A program as a command line. */
std::string lineText(const std::vector<std::string> &program) {
    constexpr size_t kWordsOfShell = 3;
    if (program.size() == kWordsOfShell && program[0] == "sh" && program[1] == "-c")
        return program[2];
    std::string text;
    for (const std::string &word : program)
        text += (text.empty() ? "" : " ") + shellWord(word);
    return text;
}

std::string programText(const Step &step) {
    std::string text = lineText(step.program);
    if (step.exitCode != 0)
        text += ", exit " + std::to_string(step.exitCode);
    if (step.expected.has_value())
        text += ", expect " + step.expected->text;
    return step.isInBackground ? text + ", in the background" : text;
}

std::string withinText(const Step &step) {
    return step.withinNs.has_value() ? ", within " + language::durationText(*step.withinNs) + " s"
                                     : "";
}

} // namespace

const char *wordOf(Deed deed) {
    switch (deed) {
    case Deed::Wait:
        break;
    case Deed::Set:
        return "set";
    case Deed::AddFault:
        return "fault";
    case Deed::ClearFaults:
        return "clear";
    case Deed::Advance:
        return "advance";
    case Deed::Run:
        return "run";
    case Deed::Stop:
        return "stop";
    case Deed::Expect:
        return "expect";
    }
    return "wait";
}

std::string deedText(const Step &step) {
    std::string word = wordOf(step.deed);
    const std::string within = step.when.has_value() ? "" : withinText(step);
    switch (step.deed) {
    case Deed::Wait:
        break;
    case Deed::Set:
        return word + " " + changesText(step);
    case Deed::AddFault:
        return word + " " + faultText(step.fault);
    case Deed::ClearFaults:
    case Deed::Stop:
        return word + " " + step.subject->text;
    case Deed::Advance:
        return word + " " + language::durationText(step.advanceNs) + " s";
    case Deed::Run:
        return word + " " + programText(step) + within;
    case Deed::Expect:
        return word + " " + step.expected->text +
               (step.subject.has_value() ? " from " + step.subject->text : "") + within;
    }
    return word;
}

std::string momentText(const Step &step) {
    if (step.atNs.has_value())
        return "at " + language::durationText(*step.atNs) + " s";
    if (step.afterNs.has_value())
        return "after " + language::durationText(*step.afterNs) + " s";
    return step.when.has_value() ? "when " + step.when->text + withinText(step) : "";
}

std::string stepText(const Step &step) {
    return step.deed == Deed::Wait ? momentText(step) : deedText(step);
}

std::string placeText(const Scenario &scenario, const Step &step) {
    return scenario.file + ":" + std::to_string(step.place.line);
}

} // namespace vboard
