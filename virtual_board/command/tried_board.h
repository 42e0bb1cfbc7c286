#pragma once
// A copy of a board, to try something with that the board itself shall not notice.

#include "command_line/blocked_signals.h"
#include "virtual_board/calls/board.h"

#include <memory>
#include <string>

namespace vboard {

/** A folder that is removed when it is empty. */
class TemporaryFolder {
  public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    ~TemporaryFolder();

    const std::string &path() const { return path_; }

  private:
    std::string path_;
};

/** A copy of a board that is there as long as this is. Signals that end programs wait for that. */
class TriedBoard {
  public:
    explicit TriedBoard(const std::string &folder);
    TriedBoard(const TriedBoard &) = delete;
    TriedBoard &operator=(const TriedBoard &) = delete;
    ~TriedBoard();

    const Board &get() const { return *board_; }

  private:
    const command_line::BlockedSignals held_{command_line::kEndingSignals};
    const TemporaryFolder place_;
    const std::string copy_;
    std::unique_ptr<Board> board_;
};

/** The path of a program that can be executed in one of the folders of PATH; empty: none. */
std::string findInPath(const std::string &name);

} // namespace vboard
