#include "iodbg/poe/capture.h"

#include "bsp.h"
#include "iodbg/poe/guide.h"
#include "iodbg/poe/wire.h"

#include <algorithm>
#include <array>

namespace iodbg {

namespace {

// The questions about a port, by the codes of the RTL8239.
constexpr uint8_t kStatusQuestion = 0x42, kMeasurementQuestion = 0x44, kModeQuestion = 0x48,
                  kPowerQuestion = 0x49;
constexpr uint8_t kVersionQuestion = 0x40, kTotalsQuestion = 0x41, kSourceQuestion = 0x4B;

/** The answers of the controller as long as it lives. */
class PoeAnswers {
  public:
    explicit PoeAnswers(const bsp::PoeGuide &guide)
        : guide_(guide), echo_(guide), watch_([this](PoeDirection direction, ByteView frame) {
              if (direction == PoeDirection::ToController)
                  echo_.sent(frame);
              else if (echo_.isAnsweredBy(frame))
                  answers_.emplace_back(frame.begin(), frame.end());
          }) {}

    /** The latest answer to a question behind its sequence number, which is another each time. */
    std::optional<Bytes> rawOf(uint8_t question) const {
        constexpr size_t kFirst = 2; // behind the question's code and the sequence number
        const auto found =
            std::find_if(answers_.rbegin(), answers_.rend(), [question](const Bytes &answer) {
                return answer.size() == BSP_POE_FRAME_SIZE && answer.front() == question;
            });
        if (found == answers_.rend())
            return {};
        return Bytes(found->begin() + kFirst, found->end() - 1);
    }

    /** The priority that an answer tells of a port. */
    std::optional<uint32_t> priorityOf(uint32_t port) const {
        std::optional<uint32_t> priority;
        for (const Bytes &answer : answers_) {
            if (guide_.priorityIn != nullptr && !priority)
                priority = guide_.priorityIn(answer, port);
        }
        return priority;
    }

  private:
    const bsp::PoeGuide &guide_;
    PoeEcho echo_;
    std::vector<Bytes> answers_;
    PoeWatch watch_;
};

/** Whether a status says that the controller could not be asked at all. */
bool isUnanswered(int32_t status) {
    return status == BSP_E_POE_WRITE || status == BSP_E_POE_READ || status == BSP_E_POE_FRAME ||
           status == BSP_E_POE_LOCK || status == BSP_E_POE_UNAVAILABLE;
}

/** False when it does not answer. */
bool captureController(CaptureSheet &sheet, const bsp::PoeGuide &guide) {
    const PoeAnswers answers(guide);
    uint32_t firmware = 0;
    int32_t status = ioPoeAppStatusGet(&firmware);
    sheet.putNumber("poe.firmware", status, firmware);
    std::array<char, BSP_POE_APP_VERSION_SIZE + 1> version{};
    const int32_t versionStatus = ioPoeAppVersionGet(version.data());
    sheet.putText("poe.version", versionStatus, version.data(), answers.rawOf(kVersionQuestion));
    constexpr uint32_t kNoAnswer = 2; // which it stays without being a failure
    uint32_t isInitialised = kNoAnswer;
    status = ioPoeInitStatusGet(&isInitialised);
    if (isInitialised == kNoAnswer)
        sheet.put("poe.initialised", status, "no-answer");
    else
        sheet.putFlag("poe.initialised", status, isInitialised == BSP_POE_INITIALISED);
    uint32_t budget = 0, drawn = 0;
    const int32_t budgetStatus = ioPoeGlobalMaxPowerGet(&budget);
    sheet.putNumber("poe.budget", budgetStatus, budget, answers.rawOf(kSourceQuestion));
    const int32_t drawnStatus = ioPoeGlobalPowerGet(&drawn);
    sheet.putNumber("poe.drawn", drawnStatus, drawn, answers.rawOf(kTotalsQuestion));
    return !isUnanswered(versionStatus) || !isUnanswered(budgetStatus) ||
           !isUnanswered(drawnStatus);
}

/** Answers whether the port delivers power. */
bool captureState(CaptureSheet &sheet, const PoeAnswers &answers, uint32_t port, int32_t &status) {
    BspPoePortState state{};
    status = ioPoePortStateGet(port, &state);
    sheet.putNumber(numbered("poe.#.detection", port), status, state.detection,
                    answers.rawOf(kStatusQuestion));
    sheet.putNumber(numbered("poe.#.class", port), status, state.classification);
    sheet.putFlag(numbered("poe.#.fault", port), status, state.fault == BSP_POE_FAULT);
    const bool isDelivering = state.disconnect == BSP_POE_DELIVERING;
    sheet.putFlag(numbered("poe.#.delivering", port), status, isDelivering);
    return status == BSP_OK && isDelivering;
}

void captureMeasurement(CaptureSheet &sheet, const PoeAnswers &answers, uint32_t port) {
    BspPoePortMeasurement measurement{};
    const int32_t status = ioPoePortMeasurementGet(port, &measurement);
    sheet.putNumber(numbered("poe.#.voltage", port), status, measurement.voltageMv,
                    answers.rawOf(kMeasurementQuestion));
    sheet.putNumber(numbered("poe.#.current", port), status, measurement.currentMa);
    sheet.putNumber(numbered("poe.#.power", port), status, measurement.powerMw);
    if (status != BSP_OK || measurement.temperature != BSP_POE_TEMPERATURE_UNKNOWN)
        sheet.putNumber(numbered("poe.#.temperature", port), status, measurement.temperature);
}

void captureSettings(CaptureSheet &sheet, const PoeAnswers &answers, uint32_t port) {
    BspPoePortSettings settings{};
    const int32_t status = ioPoePortSettingsGet(port, &settings);
    const int32_t modeStatus = status == BSP_OK ? settings.modeStatus : status;
    const int32_t powerStatus = status == BSP_OK ? settings.powerStatus : status;
    sheet.putNumber(numbered("poe.#.mode", port), modeStatus, settings.mode,
                    answers.rawOf(kModeQuestion));
    sheet.putNumber(numbered("poe.#.limit", port), powerStatus, settings.powerLimitMw,
                    answers.rawOf(kPowerQuestion));
    if (powerStatus != BSP_OK || settings.inrushMode != UINT32_MAX)
        sheet.putNumber(numbered("poe.#.inrush-mode", port), powerStatus, settings.inrushMode);
    if (const auto priority = answers.priorityOf(port))
        sheet.putNumber(numbered("poe.#.priority", port), BSP_OK, *priority);
}

/** False when the controller did not answer at all. */
bool capturePort(CaptureSheet &sheet, const bsp::PoeGuide &guide, uint32_t port) {
    const PoeAnswers answers(guide);
    int32_t status = BSP_OK;
    if (captureState(sheet, answers, port, status))
        captureMeasurement(sheet, answers, port);
    if (isUnanswered(status)) {
        sheet.leaveOut(numbered("poe.#.*", port), "the controller did not answer");
        return false;
    }
    captureSettings(sheet, answers, port);
    return true;
}

void capturePorts(CaptureSheet &sheet, const Model &model, const bsp::PoeGuide &guide) {
    constexpr uint32_t kTolerableSilences = 3; // a question can be lost now and then
    uint32_t silences = 0;
    for (uint32_t port = 1; port <= model.poePorts; ++port) {
        if (silences == kTolerableSilences) {
            sheet.leaveOut("poe.*.*", "from port " + std::to_string(port) +
                                          " on: the controller has fallen silent");
            return;
        }
        silences = capturePort(sheet, guide, port) ? 0 : silences + 1;
        sheet.reach(port * capturePoeMs(model) / model.poePorts);
    }
}

} // namespace

uint32_t capturePoeMs(const Model &model) {
    constexpr uint32_t kExchanges = 3; // and one more of a port that delivers
    constexpr uint32_t kExchangeMs = 200;
    return model.poePorts * kExchanges * kExchangeMs;
}

void capturePoe(CaptureSheet &sheet, const Model &model) {
    if (model.poePorts == 0)
        return;
    uint32_t presence = BSP_POE_CONTROLLER_PRESENT;
    const int32_t status = bspPoeOnlineGet(&presence);
    const bool isMissing = presence != BSP_POE_CONTROLLER_PRESENT;
    sheet.put("poe.presence", status, isMissing ? "missing" : "present");
    if (status == BSP_OK && isMissing)
        return;
    const bsp::PoeGuide &guide = poeGuide(model.poeChip);
    if (captureController(sheet, guide))
        capturePorts(sheet, model, guide);
    else
        sheet.leaveOut("poe.*.*", "the controller does not answer");
}

} // namespace iodbg
