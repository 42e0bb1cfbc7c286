// iodbg poe init: the controller's initialisation, with what it has come to.

#include "bsp.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/held_signals.h"
#include "iodbg/core/progress.h"
#include "iodbg/poe/board.h"
#include "iodbg/poe/controller.h"
#include "iodbg/poe/parts.h"
#include "iodbg/poe/wire.h"

#include <exception>
#include <span>

namespace iodbg {

namespace {

constexpr uint32_t kFrameMs = 200; // a rest before each frame and one before its answer
constexpr uint32_t kPortsPerFrame = 4;

/** A part of the initialisation: its frames, and what each takes at least. */
struct Phase {
    const char *name;
    uint32_t frames;
    uint32_t frameMs;
};

/** What the library sends to a controller of so many ports, in its order. */
std::vector<Phase> phasesFor(uint32_t ports) {
    constexpr uint32_t kSwitchMs = 1300;  // all ports on or off
    constexpr uint32_t kMappingMs = 2300; // the mapping on or off
    const uint32_t perSetting = (ports + kPortsPerFrame - 1) / kPortsPerFrame;
    return {{"switch all ports off", 1, kSwitchMs},
            {"forget the port mapping", 1, kMappingMs},
            {"map the ports", BSP_POE_PORTS_MAX, kFrameMs},
            {"set priorities", perSetting, kFrameMs},
            {"set modes", perSetting, kFrameMs},
            {"set kinds of power limit", perSetting, kFrameMs},
            {"set kinds of detection", perSetting, kFrameMs},
            {"set forced inrush", perSetting, kFrameMs},
            {"set kinds of disconnection", perSetting, kFrameMs},
            {"set voltages and the power budget", 3, kFrameMs},
            {"use the port mapping", 1, kMappingMs},
            {"set the ports' limits", 2 * ports, kFrameMs},
            {"switch all ports on", 1, kSwitchMs}};
}

constexpr uint32_t kResetMs = 2000; // comes before the first frame

std::vector<WorkStep> stepsOf(std::span<const Phase> phases) {
    std::vector<WorkStep> steps = {{"reset the controller", kResetMs}};
    for (const Phase &phase : phases)
        steps.push_back({phase.name, phase.frames * phase.frameMs});
    return steps;
}

/** Follows the initialisation by counting its frames, and leaves it when a signal asks for it. */
class Follower {
  public:
    Follower(const Console &console, Progress &progress, std::vector<Phase> phases)
        : console_(console), progress_(progress), phases_(std::move(phases)),
          watch_([this](PoeDirection direction, ByteView frame) {
              if (direction == PoeDirection::ToController)
                  frameSent(frame);
              else if (echo_.isAnsweredBy(frame))
                  leaveIfAsked();
          }) {
        progress_.reach(0, 0);
    }

  private:
    void frameSent(ByteView frame) noexcept {
        echo_.sent(frame);
        if (phase_ == phases_.size())
            return;
        progress_.reach(phase_ + 1, frame_ * phases_[phase_].frameMs); // the reset is step 0
        if (++frame_ == phases_[phase_].frames) {
            ++phase_;
            frame_ = 0;
        }
    }

    /** Once a frame is answered: nothing is left half said to the controller then. */
    void leaveIfAsked() noexcept {
        const int signal = signals_.waiting();
        if (signal == 0 || phase_ == phases_.size()) // the work is as good as done
            return;
        progress_.hide();
        try {
            console_.print(Failure(ExitCode::Board, leftText()));
        } catch (const std::exception &) {
            // Nobody reads it.
        }
        HeldSignals::endBy(signal);
    }

    /** What state the controller is left in. All ports are off from the reset to the last step. */
    std::string leftText() const {
        return "interrupted after " + std::to_string(phase_ + 1) + " of " +
               std::to_string(phases_.size() + 1) +
               " steps: the controller is set up in part, and no port has power; run 'iodbg poe "
               "init' again";
    }

    HeldSignals signals_;
    PoeEcho echo_;
    const Console &console_;
    Progress &progress_;
    std::vector<Phase> phases_;
    size_t phase_ = 0;
    uint32_t frame_ = 0;
    PoeWatch watch_;
};

void requireUsableFirmware() {
    uint32_t status = BSP_POE_APP_USABLE;
    require(ioPoeAppStatusGet(&status), "read what the last firmware upgrade left");
    if (status == BSP_POE_APP_UPGRADE_FAILED)
        throw Failure::board("initialise the PoE controller", BSP_E_POE_UNAVAILABLE,
                             "its last firmware upgrade failed; repeat it with 'iodbg poe upgrade "
                             "FILE'");
}

int32_t initialise(Console &console, uint32_t ports) {
    const std::vector<Phase> phases = phasesFor(ports);
    Progress progress(console, "poe init", stepsOf(phases));
    const Follower follower(console, progress, phases);
    return ioPoeDeviceInit();
}

ExitCode init(Console &console) {
    console.beginLongWork();
    const uint32_t ports = requirePoe();
    requireUsableFirmware();
    require(initialise(console, ports), "initialise the PoE controller");
    Report report;
    addPoeController(report);
    return console.print(report);
}

} // namespace

void addPoeInitCommand(Command &poe) {
    poe.command("init", "Initialise the controller: resets it, all ports lose their power; takes "
                        "most of a minute")
        .detail("Interrupted, it says what it leaves, and has to be run again.")
        .example("iodbg poe init")
        .does(init);
}

} // namespace iodbg
