#pragma once
// Virtual boards of the models that differ most, each in a folder that disappears with the program.

#include "fuzz/input.h"
#include "tests/support/files.h"
#include "virtual_board/board/create.h"

#include <filesystem>
#include <memory>
#include <string>

namespace fuzz {

/** A board as its factory delivers it. Its state is mapped, and can be put back. */
class FactoryBoard {
  public:
    explicit FactoryBoard(uint32_t devId)
        : parent_((std::filesystem::temp_directory_path() / "bsp-fuzz-XXXXXX").string()) {
        vb::BoardOptions options;
        options.devId = devId;
        options.pace = {vb::TimeMode::Virtual};
        vb::FolderError error = {};
        require(mkdtemp(parent_.data()) != nullptr, "no temporary folder");
        require(vb::createBoard(path(), options, error), error.text);
        require(folder_.open(path().c_str(), error), error.text);
        keep();
    }
    FactoryBoard(const FactoryBoard &) = delete;
    FactoryBoard &operator=(const FactoryBoard &) = delete;
    ~FactoryBoard() {
        folder_.close();
        removeFolder(parent_);
    }

    std::string path() const { return parent_ + "/board"; }
    const vb::BoardFolder &folder() const { return folder_; }
    vb::Board &state() const { return *folder_.board(); }

    /** What putBack() brings back: the state without most of the trace's room. */
    void keep() { std::memcpy(kept_.get(), &state(), kKept); }
    void putBack() const { std::memcpy(static_cast<void *>(&state()), kept_.get(), kKept); }

    static constexpr size_t kRequests = 40; // of the trace
    static constexpr size_t kKept =
        offsetof(vb::Board, trace.record) + kRequests * sizeof(vb::TraceRecord);

  private:
    std::string parent_;
    vb::BoardFolder folder_;
    std::unique_ptr<uint8_t[]> kept_ = std::make_unique<uint8_t[]>(kKept);
};

/** One of the boards, as an input says; made when it is asked for first. */
inline FactoryBoard &anyBoard(Input &input) {
    static constexpr uint32_t kModels[] = {0x0709, 0x0509, 0x0109};
    static std::unique_ptr<FactoryBoard> boards[std::size(kModels)];
    const uint32_t index = input.below(std::size(kModels));
    if (boards[index] == nullptr)
        boards[index] = std::make_unique<FactoryBoard>(kModels[index]);
    return *boards[index];
}

} // namespace fuzz
