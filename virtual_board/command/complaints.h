#pragma once
// What is wrong with a scenario's file: all of it is told at once.

#include "language/refused.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/scenario.h"

#include <string>
#include <vector>

namespace vboard {

class Complaints {
  public:
    void add(const Place &place, const std::string &text) { found_.push_back({place, text}); }

    void add(const Complaints &others) {
        found_.insert(found_.end(), others.found_.begin(), others.found_.end());
    }
    bool isEmpty() const { return found_.empty(); }

    /** Does something; what is refused meanwhile is wrong with a place. Of a board only that it
     * refuses is the scenario's; what else can fail comes through. */
    template <typename Work>
    void about(const Place &place, Work work) {
        try {
            work();
        } catch (const CallFailed &failure) {
            if (failure.status() != VBOARD_E_REFUSED && failure.status() != VBOARD_E_FULL)
                throw;
            add(place, failure.what());
        } catch (const language::Refused &refusal) {
            add(place, refusal.what());
        }
    }

    /** Throws Refused with a line for each, "FILE:3:7: ...", in the order of the file. */
    void refuse(const std::string &file);

  private:
    struct Complaint {
        Place place;
        std::string text;
    };
    std::vector<Complaint> found_;
};

} // namespace vboard
