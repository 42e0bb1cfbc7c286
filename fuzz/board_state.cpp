// Boards whose state file holds anything: refused, or used without harm by the commands of vboard
// and the requests of programs.

#include "fuzz/board.h"
#include "tests/support/host_clock.h"
#include "tests/virtual_board/state_uses.h"
#include "virtual_board/words/values.h"

namespace {

using fuzz::FactoryBoard;
using fuzz::Input;

/** Where there is anything but bulk: in front of the firmware image, behind the flash, or anywhere.
 */
size_t anyPlace(Input &input) {
    constexpr size_t kFirst = offsetof(vb::Board, devices.poe.image.written);
    constexpr size_t kSecond = offsetof(vb::Board, devices.climate);
    const uint32_t part = input.below(8);
    const size_t at = input.number<uint32_t>();
    if (part < 3)
        return at % kFirst;
    return part < 7 ? kSecond + at % (FactoryBoard::kKept - kSecond) : at % FactoryBoard::kKept;
}

void damage(vb::Board &board, Input &input) {
    auto *state = reinterpret_cast<uint8_t *>(&board);
    const uint32_t changes = 1 + input.below(4);
    for (uint32_t i = 0; i < changes; ++i) {
        const size_t at = anyPlace(input);
        const size_t size = 1u << input.below(4);
        input.fill(state + at, std::min(size, FactoryBoard::kKept - at));
    }
    // A header whose check value is wrong hides all else, a power cut ends the process, and the
    // system clock is the fuzzer's as well.
    if (input.below(8) != 7)
        board.header.check = vb::headerCheck(board.header);
    setSystemOffset(board.clock, 0);
    for (vb::FaultRule &rule : board.faults.rule)
        if (rule.effect == vb::FaultEffect::PowerCut)
            rule.effect = vb::FaultEffect::Fails;
}

/** All uses but that of the system clock. */
const std::vector<StateUse> &uses() {
    static const auto some = [] {
        std::vector<StateUse> chosen = stateUses();
        std::erase_if(chosen, [](const StateUse &use) {
            return std::strcmp(use.name, "the system clock") == 0;
        });
        return chosen;
    }();
    return some;
}

bool canBeOpened(const std::string &path) {
    vb::BoardFolder folder;
    vb::FolderError error = {};
    return folder.open(path.c_str(), error);
}

void useOnce(const StateUse &use, const std::string &board, Random &random) {
    try {
        use.use(board, random);
    } catch (const vb::Refused &) { // a use before this one has made the board unusable for it
    }
}

/** Requests of all kinds in the trace of each board. */
FactoryBoard &preparedBoard(Input &input) {
    FactoryBoard &board = fuzz::anyBoard(input);
    if (board.state().trace.total != 0)
        return board;
    Random random(1);
    for (const StateUse &use : uses())
        useOnce(use, board.path(), random);
    vb::TraceRing &ring = board.state().trace;
    for (uint64_t i = 0; i < FactoryBoard::kRequests; ++i)
        ring.record[i] = ring.record[ring.total * i / FactoryBoard::kRequests];
    ring.total = FactoryBoard::kRequests;
    board.keep();
    return board;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    protectHostClock();
    silence();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    constexpr int kMostUses = 3;
    Input input(bytes, size);
    const FactoryBoard &board = preparedBoard(input);
    board.putBack();
    damage(board.state(), input);
    for (int i = 0; i < kMostUses && !input.isEmpty() && canBeOpened(board.path()); ++i) {
        const StateUse &use = uses()[input.below(static_cast<uint32_t>(uses().size()))];
        Random random(input.byte());
        useOnce(use, board.path(), random);
    }
    board.putBack();
    return 0;
}
