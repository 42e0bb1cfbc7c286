#include "iodbg/poe/debug.h"

#include "bsp.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "poe/guide.h"

#include <algorithm>
#include <string>
#include <vector>

namespace iodbg {

namespace {

constexpr int kGroupWord = 1;
constexpr int kCommandWord = 2;

bool asksForHelp(const std::string &word) {
    return word == "-h" || word == "?";
}

/** Whether a driver knows a word, whichever the board's is: that one says what is wrong. */
bool isDriverWord(const std::string &word) {
    const auto isKnown = [&word](const bsp::PoeGuideRow &row) {
        const auto &words = row.guide.debugWords;
        return std::find(words.begin(), words.end(), word) != words.end();
    };
    return std::any_of(bsp::kPoeGuides.begin(), bsp::kPoeGuides.end(), isKnown);
}

/** The driver takes words that it may write to. */
int32_t dispatch(int argc, const char *const *argv) {
    std::vector<std::string> words(argv, argv + argc);
    std::vector<char *> pointers(words.size() + 1, nullptr);
    for (size_t i = 0; i < words.size(); ++i)
        pointers[i] = words[i].data();
    return bspPoeDebugChipDispatch(0, argc, pointers.data());
}

} // namespace

bool isPoeDebug(int argc, const char *const *argv) {
    if (argc <= kCommandWord || argv[kGroupWord] != std::string("poe"))
        return false;
    const std::string word = argv[kCommandWord];
    return asksForHelp(word) || isDriverWord(word);
}

ExitCode runPoeDebug(Console &console, int argc, const char *const *argv) {
    const std::string word = argv[kCommandWord];
    if (asksForHelp(word)) {
        require(console.printedByLibrary([] { return bspPoeDebugChipDispatchHelp(-1); }),
                "list the debug commands of the PoE controller");
        return ExitCode::Ok;
    }
    const int32_t status = console.printedByLibrary([&] { return dispatch(argc, argv); });
    // The driver has said what was wrong with the words.
    if (status == BSP_E_FAILED)
        return ExitCode::Usage;
    require(status, "exchange the frame");
    return ExitCode::Ok;
}

} // namespace iodbg
