#pragma once
// The board that a command works on, through the library that everybody has.

#include "language/refused.h"
#include "virtual_board/include/vboard.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vboard {

/** A call that has failed. */
class CallFailed : public language::Refused {
  public:
    explicit CallFailed(const VBoardError &error) : CallFailed(error.status, error.text) {}
    CallFailed(int32_t status, const std::string &reason) : Refused(reason), status_(status) {}

    int32_t status() const { return status_; }

  private:
    int32_t status_;
};

/** Makes a call, whose last argument is where it tells why it fails. */
template <typename Call>
void call(Call make) {
    VBoardError error = {};
    if (make(&error) != VBOARD_OK)
        throw CallFailed(error);
}

/** A list that was given away. */
template <typename Row>
class List {
  public:
    /** What a call gives, which takes the places of the list and its length. */
    template <typename Call>
    explicit List(Call make) {
        call([&](VBoardError *error) { return make(&rows_, &count_, error); });
    }
    List(const List &) = delete;
    List &operator=(const List &) = delete;
    ~List() { vboardFree(rows_); }

    const Row *begin() const { return rows_; }
    const Row *end() const { return rows_ + count_; }

  private:
    Row *rows_ = nullptr;
    uint32_t count_ = 0;
};

/** A text that a call gives. */
template <typename Call>
std::string textOf(Call make) {
    char *given = nullptr;
    call([&](VBoardError *error) { return make(&given, error); });
    std::string text = given;
    vboardFree(given);
    return text;
}

/** A board that is held open. */
class Board {
  public:
    explicit Board(const std::string &folder) {
        call([&](VBoardError *error) { return vboardOpen(folder.c_str(), &board_, error); });
    }
    Board(const Board &) = delete;
    Board &operator=(const Board &) = delete;
    ~Board() { vboardClose(board_); }

    operator VBoard *() const { return board_; }

    using Properties = List<VBoardProperty>;

    /** Those of names and patterns; without one, all. */
    Properties properties(const std::vector<std::string> &names) const {
        std::vector<const char *> words;
        words.reserve(names.size());
        for (const std::string &name : names)
            words.push_back(name.c_str());
        return Properties([&](VBoardProperty **list, uint32_t *count, VBoardError *error) {
            return vboardGet(board_, words.data(), static_cast<uint32_t>(words.size()), list, count,
                             error);
        });
    }

  private:
    VBoard *board_ = nullptr;
};

} // namespace vboard
