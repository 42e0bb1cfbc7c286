// iodbg poe init: the controller's initialisation, with what it has come to.

#include "bsp.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/held_signals.h"
#include "iodbg/core/progress.h"
#include "iodbg/poe/board.h"
#include "iodbg/poe/controller.h"
#include "iodbg/poe/guide.h"
#include "iodbg/poe/parts.h"
#include "iodbg/poe/wire.h"

#include <exception>
#include <string>

namespace iodbg {

namespace {

/** Follows the initialisation by its requests, and leaves it when a signal asks for it. */
class Follower {
  public:
    Follower(const Console &console, Progress &progress, const bsp::PoeGuide &guide, uint32_t ports)
        : echo_(guide), console_(console), progress_(progress), work_(guide.initialisation),
          ports_(ports), watch_([this](PoeDirection direction, ByteView frame) {
              if (direction == PoeDirection::ToController)
                  frameSent(frame);
              else if (echo_.isAnsweredBy(frame))
                  leaveIfAsked();
          }) {
        progress_.reach(0, 0);
    }

  private:
    /** Where the next request will be. */
    bsp::PoeWorkPlace next() const noexcept {
        return work_.placeOf(ports_, sent_, {}).value_or(bsp::PoeWorkPlace{});
    }
    bool isDone() const noexcept { return next().step >= work_.steps; }

    void frameSent(ByteView frame) noexcept {
        echo_.sent(frame);
        if (isDone())
            return;
        progress_.reach(next().step, next().ms);
        ++sent_;
    }

    /** Once a frame is answered: nothing is left half said to the controller then. */
    void leaveIfAsked() noexcept {
        const int signal = signals_.waiting();
        if (signal == 0 || isDone()) // the work is as good as done
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
        return "interrupted after " + std::to_string(next().step) + " of " +
               std::to_string(work_.steps) +
               " steps: the controller is set up in part, and no port has power; run 'iodbg poe "
               "init' again";
    }

    HeldSignals signals_;
    PoeEcho echo_;
    const Console &console_;
    Progress &progress_;
    const bsp::PoeWork &work_;
    uint32_t ports_;
    uint32_t sent_ = 0;
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

int32_t initialise(Console &console, const Model &model) {
    const bsp::PoeGuide &guide = poeGuide(model.poeChip);
    Progress progress(console, "poe init", stepsOf(guide.initialisation, model.poePorts));
    const Follower follower(console, progress, guide, model.poePorts);
    return ioPoeDeviceInit();
}

ExitCode init(Console &console) {
    console.beginLongWork();
    const Model model = requirePoe();
    requireUsableFirmware();
    require(initialise(console, model), "initialise the PoE controller");
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
