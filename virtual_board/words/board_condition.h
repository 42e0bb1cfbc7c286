#pragma once
// Conditions over the properties of one board.

#include "language/conditions.h"
#include "virtual_board/words/world.h"

#include <string>

namespace vb {

/** A condition that this board can fulfil; others throw Refused. The caller of all holds the lock.
 */
class BoardCondition {
  public:
    BoardCondition(const BoardFolder &folder, const std::string &text);

    bool holds() const;

    /** What it asks for, as it is: "fan.1.speed is 2400, supply.1.input is good". */
    std::string state() const;

  private:
    struct Term {
        std::string name;
        language::Relation relation;
        language::Value value;
    };
    using Terms = std::vector<Term>;

    const BoardFolder &folder_;
    std::vector<Terms> alternatives_;
};

} // namespace vb
