// Hand-made frames from the diagnostic shell: "iodbg poe poeCommand CMD SEQ DATA ...".

#include "bsp.h"
#include "poe/rtl8239/debug_words.h"
#include "poe/rtl8239/exchange.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using namespace bsp::rtl8239;

// Word 0 and word 1 are the shell command and "poe".
constexpr int32_t kCommandWord = 2;
constexpr int32_t kFirstArgument = 3;

struct DebugCommand {
    const char *name;
    const char *help;
    int32_t (*handler)(int32_t row, int32_t argc, char **argv);
};

constexpr DebugCommand kCommands[] = {
    {kPoeCommandWord, "CMD SEQ DATA ...", bspPoeRtl8239DbgPoeCommand},
};
constexpr int32_t kCommandCount = sizeof(kCommands) / sizeof(kCommands[0]);

void printUsage(const DebugCommand &debugCommand) {
    if (debugCommand.help != nullptr)
        std::printf("  iodbg poe %-30s %s \n", debugCommand.name, debugCommand.help);
    else
        std::printf("  iodbg poe %s \n", debugCommand.name);
}

void dump(const char *title, const Frame &frame) {
    std::printf("\n%s\n", title);
    for (const uint8_t byte : frame)
        std::printf("%02X ", byte);
}

} // namespace

int32_t bspPoeRtl8239DbgUdfCmd(const uint8_t *data, int32_t count) {
    if (data == nullptr || count < 1)
        return BSP_E_POE_INVALID;
    Frame request = blankFrame();
    Frame reply = blankFrame();
    std::copy(data, data + std::min(count, int32_t{kFrameSize}), request.begin());
    const int32_t status = exchange(request, reply);
    dump("Send Data:", request);
    dump("Recv Data:", reply);
    std::printf("\n");
    return status;
}

int32_t bspPoeRtl8239DbgPoeCommand(int32_t row, int32_t argc, char **argv) {
    if (argv == nullptr)
        return BSP_E_POE_NULL;
    if (argc <= kFirstArgument) {
        bspPoeRtl8239DebugDispatchHelp(row);
        return BSP_E_FAILED;
    }
    Frame bytes = blankFrame();
    const int32_t count = std::min(argc - kFirstArgument, int32_t{kFrameSize});
    for (int32_t i = 0; i < count; ++i)
        bytes[static_cast<size_t>(i)] =
            static_cast<uint8_t>(std::strtoul(argv[kFirstArgument + i], nullptr, 16));
    return bspPoeRtl8239DbgUdfCmd(bytes.data(), count);
}

int32_t bspPoeRtl8239DebugDispatch(uint32_t, int32_t argc, char **argv) {
    if (argv == nullptr)
        return BSP_E_POE_NULL;
    const char *word = argc > kCommandWord ? argv[kCommandWord] : "";
    for (int32_t row = 0; row < kCommandCount; ++row) {
        if (std::strcmp(word, kCommands[row].name) == 0)
            return kCommands[row].handler(row, argc, argv);
    }
    std::printf("***Error! \"%s\" is an invalid io command!\n", word);
    std::printf("Please use \"iodbg poe -h\" or \"iodbg poe ?\" for help!\n");
    return BSP_OK;
}

int32_t bspPoeRtl8239DebugDispatchHelp(int32_t index) {
    if (index < 0) {
        std::printf("\nSupported poe chip iodbg: \n");
        for (const DebugCommand &debugCommand : kCommands)
            printUsage(debugCommand);
    } else if (index == 0) {
        std::printf("Caution, command should be: \n");
        printUsage(kCommands[0]);
    }
    return BSP_OK;
}
