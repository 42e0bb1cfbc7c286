#include "iodbg/unit/capture.h"

#include "bsp.h"
#include "iodbg/chassis/calendar.h"
#include "iodbg/chassis/capture.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "iodbg/core/progress.h"
#include "iodbg/flash/capture.h"
#include "iodbg/identity/capture.h"
#include "iodbg/identity/items.h"
#include "iodbg/poe/capture.h"
#include "iodbg/registers/capture.h"
#include "iodbg/transceivers/capture.h"
#include "iodbg/unit/grounds.h"
#include "iodbg/unit/health.h"

#include <chrono>
#include <span>
#include <sys/utsname.h>
#include <unistd.h>

namespace iodbg {

using language::CapturedFinding;
using language::CapturedUnit;

namespace {

/** What a part is read through. */
enum class Through {
    Nothing,
    Module, // the kernel module's node
    Lines,  // the CPLD's lines as well, and the model
};

struct CapturePart {
    const char *name; // of the step
    Through through;
    std::span<const char *const> properties;
    void (*capture)(CaptureSheet &sheet, const Model &model);
    uint32_t (*leastMs)(const Model &model);
};

template <uint32_t Ms>
uint32_t always(const Model &) {
    return Ms;
}

uint32_t cagesMs(const Model &model) {
    constexpr uint32_t kCageMs = 10;
    return static_cast<uint32_t>(model.cages.size()) * kCageMs + 1;
}

constexpr const char *kOfIdentity[] = {"version.*", "identity.*", "eeprom.board"};
constexpr const char *kOfRegisters[] = {"cpld.*", "gpio.*", "watchdog.*"};
constexpr const char *kOfTemperature[] = {"temperature.*"};
constexpr const char *kOfSupplies[] = {"supply.*", "eeprom.supply*"};
constexpr const char *kOfFans[] = {"fan.*"};
constexpr const char *kOfClock[] = {"rtc.*"};
constexpr const char *kOfPoe[] = {"poe.*"};
constexpr const char *kOfCages[] = {"sfp.*"};
constexpr const char *kOfFlash[] = {"boot.*", "flash.*", "image.*"};

constexpr CapturePart kCaptureParts[] = {
    {"read versions and records", Through::Module, kOfIdentity, captureIdentity, always<200>},
    {"read registers and lines", Through::Module, kOfRegisters, captureRegisters, always<20>},
    {"read the temperature", Through::Module, kOfTemperature, captureTemperature, always<10>},
    {"ask the supplies", Through::Lines, kOfSupplies, captureSupplies, always<2000>},
    {"read the fans", Through::Lines, kOfFans, captureFans, always<10>},
    {"read the clock", Through::Lines, kOfClock, captureClock, always<20>},
    {"ask the PoE controller", Through::Lines, kOfPoe, capturePoe, capturePoeMs},
    {"read the SFP modules", Through::Lines, kOfCages, captureCages, cagesMs},
    {"read the flash", Through::Nothing, kOfFlash, captureFlash, always<5000>},
};

std::optional<Subject> causeAgainst(const CapturePart &part, const Grounds &grounds) {
    constexpr Unit kModule[] = {Unit::KernelModule};
    constexpr Unit kLines[] = {Unit::KernelModule, Unit::Cpld};
    constexpr Unit kModel[] = {Unit::Model};
    if (part.through == Through::Nothing)
        return {};
    if (part.through == Through::Module)
        return grounds.causeAmong(kModule);
    if (const auto cause = grounds.causeAmong(kLines))
        return cause;
    // A model that is not known is read all the same, as the library drives it.
    return grounds.modelStatus == BSP_OK ? std::nullopt : grounds.causeAmong(kModel);
}

std::string reasonOf(const Grounds &grounds, const Subject &cause) {
    std::string reason = "hangs on the " + cause.name();
    for (const Finding &finding : grounds.findings) {
        if (finding.subject == cause)
            return reason + ": " + finding.text;
    }
    return reason;
}

void captureParts(CaptureSheet &sheet, const Grounds &grounds, Progress *progress, size_t &step) {
    for (const CapturePart &part : kCaptureParts) {
        if (progress != nullptr)
            progress->reach(step, 0);
        const auto cause = causeAgainst(part, grounds);
        if (!cause)
            part.capture(sheet, grounds.model);
        for (const char *name : part.properties) {
            if (cause)
                sheet.leaveOut(name, reasonOf(grounds, *cause));
        }
        ++step;
    }
}

void captureModel(CaptureSheet &sheet, const Grounds &grounds) {
    constexpr Unit kModel[] = {Unit::Model};
    if (grounds.modelStatus)
        sheet.put("model", *grounds.modelStatus, language::hex16Text(grounds.model.id));
    else if (const auto cause = grounds.causeAmong(kModel))
        sheet.leaveOut("model", reasonOf(grounds, *cause));
}

/** What needs no device. */
void captureSystem(CaptureSheet &sheet) {
    constexpr char kCommandLine[] = "/proc/cmdline";
    constexpr size_t kLongest = 65536;
    sheet.put("system-time", BSP_OK, calendarText(systemTime()));
    try {
        const Bytes line = readHostFile(kCommandLine, kLongest);
        std::string text(line.begin(), line.end());
        text.erase(text.find_last_not_of('\n') + 1);
        sheet.putText("cmdline", BSP_OK, text);
    } catch (const Failure &failure) {
        sheet.putFailure("cmdline", failure);
    }
    Cell version;
    const int32_t status = readBootLoaderVersion(version);
    sheet.put("version.boot-loader", status, std::get<std::string>(version.value));
}

std::optional<std::string> textIn(const Cell &cell) {
    const auto *text = std::get_if<std::string>(&cell.value);
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

std::vector<CapturedFinding> capturedFindings(const Findings &findings) {
    std::vector<CapturedFinding> captured;
    const Table table = findingsTable(findings);
    for (const std::vector<Cell> &row : table.rows) {
        const auto *index = std::get_if<int64_t>(&row[6].value);
        captured.push_back(
            {textIn(row[0]).value_or(""), textIn(row[1]).value_or(""), textIn(row[2]).value_or(""),
             textIn(row[3]), textIn(row[4]).value_or(""), textIn(row[5]).value_or(""),
             index != nullptr ? std::optional(*index) : std::nullopt, textIn(row[7])});
    }
    return captured;
}

/** What the ports have answered, so that they are not asked again. */
PoePortFaults portFaults(const CapturedUnit &unit, const Model &model) {
    PoePortFaults faults;
    for (uint32_t port = 1; port <= model.poePorts; ++port) {
        const auto *reading = unit.find(numbered("poe.#.fault", port));
        if (reading != nullptr && reading->text() != nullptr)
            faults[port] = *reading->text() == "yes";
    }
    return faults;
}

std::string libraryVersion() {
    constexpr uint32_t kByte = 0xFF;
    const uint32_t version = bspLibraryVersion();
    return std::to_string(version >> 16) + "." + std::to_string(version >> 8 & kByte) + "." +
           std::to_string(version & kByte);
}

std::string kernelText() {
    utsname system = {};
    uname(&system);
    return std::string(system.sysname) + " " + system.release + " " + system.machine;
}

std::vector<WorkStep> stepsFor(const Model &model) {
    constexpr uint32_t kJudgementMs = 500;
    std::vector<WorkStep> steps;
    for (const CapturePart &part : kCaptureParts)
        steps.push_back({part.name, part.leastMs(model) + 1});
    steps.push_back({"judge the unit", kJudgementMs});
    return steps;
}

} // namespace

CapturedUnit captureUnit(Console &console, const CaptureWishes &wishes) {
    const auto start = std::chrono::steady_clock::now();
    const std::string began = utcText();
    const Grounds grounds = judgeGrounds();
    std::optional<Progress> progress;
    if (terminal::sizeOf(STDERR_FILENO).has_value())
        progress.emplace(console, "capture", stepsFor(grounds.model));
    size_t step = 0;
    const auto reached = [&](uint32_t ms) {
        if (progress)
            progress->reach(step, ms);
    };
    CaptureSheet sheet(wishes, reached);
    captureModel(sheet, grounds);
    captureSystem(sheet);
    captureParts(sheet, grounds, progress ? &*progress : nullptr, step);
    reached(0);
    CapturedUnit &unit = sheet.unit();
    unit.findings = capturedFindings(unitFindings(portFaults(unit, grounds.model)));
    unit.capture.tool = "iodbg " IODBG_VERSION;
    unit.capture.library = libraryVersion();
    unit.capture.kernel = printable(kernelText());
    unit.capture.began = began;
    unit.capture.tookMs =
        static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                  std::chrono::steady_clock::now() - start)
                                  .count());
    return unit;
}

} // namespace iodbg
