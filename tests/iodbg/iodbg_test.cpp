#include "tests/iodbg/iodbg_test.h"

#include "tests/support/files.h"
#include "tests/support/forked_program.h"

#include <nlohmann/json.hpp>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

namespace {

using Json = nlohmann::ordered_json;

Json parsed(const std::string &text, const std::string &pointer) {
    return Json::parse(text).at(Json::json_pointer(pointer));
}

Words commandLine(const Words &arguments) {
    Words argv = {builtProgram("iodbg")};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return argv;
}

} // namespace

Words wordsOf(const std::string &line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

FileSizeLimit::FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit = {bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    handler_ = std::signal(SIGXFSZ, SIG_IGN); // the write fails instead
}

FileSizeLimit::~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
}

std::string jsonAt(const std::string &text, const std::string &pointer) {
    return parsed(text, pointer).dump();
}

Words jsonKeys(const std::string &text, const std::string &pointer) {
    Words keys;
    const Json value = parsed(text, pointer);
    for (const auto &entry : value.items())
        keys.push_back(entry.key());
    return keys;
}

std::string readFile(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

IodbgTest::IodbgTest() {
    prepareForked(builtProgram("iodbg"), true); // before the test's descriptors are counted
}

const Environment &IodbgTest::environment() const {
    if (environment_.empty())
        environment_ = boardEnvironment(boardFolder());
    return environment_;
}

FileSizeLimit IodbgTest::limitFiles(rlim_t bytes) const {
    environment();
    return FileSizeLimit(bytes);
}

ProcessResult IodbgTest::iodbg(const Words &arguments, const std::string &input) const {
    return runForked(commandLine(arguments), environment(), input);
}

Process IodbgTest::start(const Words &arguments) const {
    return Process(commandLine(arguments), environment());
}

std::string IodbgTest::iodbgOnTerminal(const Words &arguments, const Typing &typing,
                                       const TerminalKind &kind, TerminalEnd *end) const {
    return runOnTerminal(commandLine(arguments), environment(), typing, kind, end);
}

vb::FaultRule IodbgTest::at(vb::FaultRule rule, uint32_t offset) {
    rule.hasOffset = 1;
    rule.offset = offset;
    return rule;
}

std::string IodbgTest::json(const Words &arguments, int exitCode) const {
    Words words = arguments;
    words.emplace_back("--json");
    const ProcessResult result = iodbg(words);
    EXPECT_EQ(result.exitCode, exitCode) << result.err;
    EXPECT_TRUE(Json::accept(result.out)) << result.out;
    return result.out;
}

ProcessResult IodbgTest::expectFailure(const Words &arguments, int exitCode,
                                       const Words &texts) const {
    const std::string command = ::testing::PrintToString(arguments);
    ProcessResult result = iodbg(arguments);
    EXPECT_EQ(result.exitCode, exitCode) << command << result.err;
    EXPECT_EQ(result.out, "") << command;
    const Words lines = linesOf(result.err);
    const std::string last = lines.empty() ? "" : lines.back();
    EXPECT_EQ(last.substr(0, 7), "iodbg: ") << command;
    for (const std::string &text : texts)
        EXPECT_NE(last.find(text), std::string::npos) << "'" << text << "' is not in: " << last;
    return result;
}

void IodbgTest::expectRefusal(const Words &arguments, int exitCode, const std::string &text) const {
    const BoardContent before = content();
    const ProcessResult result = expectFailure(arguments, exitCode, {text});
    EXPECT_EQ(linesOf(result.err).size(), 1u) << result.err;
    EXPECT_TRUE(content() == before) << ::testing::PrintToString(arguments);
}

/** Files that are made for whoever asks first: device id, locks and PoE status. */
bool IodbgTest::isMadeInPassing(const std::string &path) const {
    return path == boardFile("/tmp/bsp/devId") || path == boardFile("/tmp/bspPoeLockFile") ||
           path == boardFile("/tmp/bspFlashLockFile") || path == boardFile("/tmp/bsp/iodbg.lock") ||
           (path == boardFile("/tmp/bsp/poeApp") && readFile(path).empty());
}

/** A file that stands for a flash partition or for memory: this test, which is on the board, would
 * read what it stands for. */
static bool isPlaceholder(const std::filesystem::directory_entry &entry) {
    const std::string name = entry.path().filename();
    return name.starts_with("mtd") || name == "mem";
}

BoardContent IodbgTest::content() const {
    BoardContent content;
    const auto copy = std::make_unique<vb::Devices>(devices());
    forgetTime(*copy);
    // The supplies' models count how often they are read, the PoE controller keeps its last answer,
    // and the MDIO bus knows how long its last command took.
    for (vb::Supply &supply : copy->supply)
        supply.pmbus.reads = 0;
    copy->mdio.pollsLeft = 0;
    copy->poe.replyReadyNs = 0;
    copy->poe.replyLength = 0;
    std::fill(std::begin(copy->poe.reply), std::end(copy->poe.reply), uint8_t{0});
    content.devices.assign(reinterpret_cast<const char *>(copy.get()), sizeof(*copy));
    namespace fs = std::filesystem;
    for (const auto &entry : fs::recursive_directory_iterator(boardFolder() + "/root")) {
        if (entry.is_regular_file() && !isMadeInPassing(entry.path()) && !isPlaceholder(entry))
            content.files[entry.path()] = readFile(entry.path());
    }
    // Flash is large, but whatever changes it is seen by the time of its last change.
    for (const auto &entry : fs::directory_iterator(boardFolder() + "/flash"))
        content.files[entry.path()] =
            std::to_string(entry.last_write_time().time_since_epoch().count());
    return content;
}

std::string IodbgTest::makeFile(const std::string &name, const std::string &bytes) const {
    std::ofstream(hostFile(name), std::ios::binary) << bytes;
    return hostFile(name);
}

vb::FaultRule IodbgTest::corrupt(vb::FaultDevice device, vb::FaultOp op, int32_t byte,
                                 uint32_t nth) const {
    vb::FaultRule rule = refuse(device, op, byte, nth);
    rule.when = vb::FaultWhen::Once;
    rule.effect = vb::FaultEffect::Corrupt;
    rule.mask = 0x01;
    return rule;
}

vb::FaultRule IodbgTest::silence(vb::FaultDevice device, vb::FaultOp op) const {
    vb::FaultRule rule = refuse(device, op, 0);
    rule.effect = vb::FaultEffect::NoAnswer;
    return rule;
}
