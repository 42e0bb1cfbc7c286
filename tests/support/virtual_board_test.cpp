#include "tests/support/virtual_board_test.h"

#include "language/trace_text.h"
#include "tests/support/files.h"
#include "tests/support/host_clock.h"
#include "virtual_board/os/seam.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <unistd.h>

namespace {

int countOpenDescriptors() {
    int count = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

} // namespace

TemporaryFolder::TemporaryFolder()
    : path_((std::filesystem::temp_directory_path() / "bsp-test-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr)
        throw std::runtime_error("no temporary folder: " + std::string(std::strerror(errno)));
}

TemporaryFolder::~TemporaryFolder() {
    removeFolder(path_);
}

void forgetTime(vb::Devices &devices) {
    devices.climate = {};
    devices.clockChip = {};
}

VirtualBoardTest::VirtualBoardTest(uint32_t devId) : devId_(devId) {
    protectHostClock();
}

VirtualBoardTest::~VirtualBoardTest() {
    vb::detachBoard();
}

void VirtualBoardTest::SetUp() {
    useModel(devId_);
    openDescriptors_ = countOpenDescriptors();
}

void VirtualBoardTest::TearDown() {
    EXPECT_EQ(countOpenDescriptors(), openDescriptors_) << "descriptors were left open or closed";
}

void VirtualBoardTest::useModel(uint32_t devId) {
    vb::detachBoard();
    removeFolder(boardFolder());
    vb::BoardOptions options;
    options.devId = devId;
    options.pace = {vb::TimeMode::Virtual};
    vb::FolderError error = {};
    ASSERT_TRUE(vb::createBoard(boardFolder(), options, error)) << error.text;
    ASSERT_TRUE(vb::attachBoard(boardFolder().c_str(), error)) << error.text;
    traced_ = 0;
}

vb::Board &VirtualBoardTest::board() const {
    return *vb::attachedFolder()->board();
}

std::string VirtualBoardTest::boardFile(const std::string &pathOnBoard) const {
    return vb::attachedFolder()->hostPath(pathOnBoard.c_str()).text;
}

std::vector<std::string> VirtualBoardTest::trace() {
    std::vector<std::string> lines;
    for (; traced_ < board().trace.total; ++traced_)
        lines.push_back(language::traceText(vb::traceAt(board().trace, traced_)));
    return lines;
}

std::vector<std::string> withoutData(std::vector<std::string> lines) {
    for (std::string &line : lines)
        line.resize(std::min(line.size(), line.find(':')));
    return lines;
}

std::vector<std::string> VirtualBoardTest::requests() {
    std::vector<std::string> lines;
    for (; traced_ < board().trace.total; ++traced_) {
        const vb::TraceRecord &record = vb::traceAt(board().trace, traced_);
        if (record.kind != vb::TraceKind::Open && record.kind != vb::TraceKind::Sleep)
            lines.push_back(language::traceText(record));
    }
    return lines;
}

std::string VirtualBoardTest::readBoardFile(const std::string &pathOnBoard) const {
    std::ifstream file(boardFile(pathOnBoard), std::ios::binary);
    EXPECT_TRUE(file.is_open()) << pathOnBoard;
    return {std::istreambuf_iterator<char>(file), {}};
}

void VirtualBoardTest::writeBoardFile(const std::string &pathOnBoard,
                                      const std::string &content) const {
    std::ofstream file(boardFile(pathOnBoard), std::ios::binary);
    file << content;
    ASSERT_TRUE(file.flush().good()) << pathOnBoard;
}

void VirtualBoardTest::pretendDeviceId(uint32_t devId) const {
    writeBoardFile("/tmp/bsp/devId",
                   std::string(reinterpret_cast<const char *>(&devId), sizeof(devId)));
}

void VirtualBoardTest::addFault(const vb::FaultRule &rule) {
    ASSERT_NE(vb::addFault(board().faults, rule), 0u);
}

void VirtualBoardTest::clearFaults() {
    board().faults = vb::FaultTable{};
}

vb::FaultRule VirtualBoardTest::refuse(vb::FaultDevice device, vb::FaultOp op, int32_t result,
                                       uint32_t nth) const {
    vb::FaultRule rule{};
    rule.device = device;
    rule.op = op;
    rule.when = vb::FaultWhen::FromOn;
    rule.nth = nth;
    rule.effect = vb::FaultEffect::Refuse;
    rule.argument = result;
    return rule;
}

vb::FaultRule VirtualBoardTest::ioctlFails(vb::FaultDevice device, vb::FaultOp op, int errnoValue,
                                           uint32_t nth) const {
    vb::FaultRule rule = refuse(device, op, errnoValue, nth);
    rule.effect = vb::FaultEffect::IoctlFails;
    return rule;
}

vb::FaultRule VirtualBoardTest::openFails(const char *path, int errnoValue) const {
    vb::FaultRule rule{};
    rule.device = vb::FaultDevice::File;
    rule.op = vb::FaultOp::Open;
    rule.when = vb::FaultWhen::FromOn;
    rule.nth = 1;
    rule.effect = vb::FaultEffect::OpenFails;
    rule.argument = errnoValue;
    std::strncpy(rule.path, path, sizeof(rule.path) - 1);
    return rule;
}

vb::FaultRule VirtualBoardTest::shortTransfer(const char *path, vb::FaultOp op,
                                              int32_t bytes) const {
    vb::FaultRule rule = openFails(path, bytes);
    rule.op = op;
    rule.effect = vb::FaultEffect::Short;
    return rule;
}
