#pragma once
// What is served: a board, or a folder with boards; and how much of what.

#include "virtual_board/calls/board.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace vboard::server {

class Site {
  public:
    /** Throws Refused for a folder that is none. */
    explicit Site(const std::string &folder);

    /** A board is served, and not a folder of them. */
    bool isSingle() const { return isSingle_; }
    const std::string &folder() const { return folder_; }
    /** What a board is called: its path below the folder; a single one by its own name. */
    std::string nameOf(const std::string &boardFolder) const;
    /** The folder of the board of a name; the name may be empty where a single one is served.
     * Throws Refusal for names that lead elsewhere. */
    std::string folderOf(const std::string &name) const;

    /** The server is about to end, so that nothing shall go on for long. */
    void end() { isEnding_ = true; }
    bool isEnding() const { return isEnding_; }

    /** Room for one more board, of those that may be made. It is given back unless it is taken. */
    class Place {
      public:
        Place(Site &site, uint32_t most);
        Place(const Place &) = delete;
        Place &operator=(const Place &) = delete;
        ~Place();

        void take() { isTaken_ = true; }

      private:
        Site &site_;
        bool isTaken_ = false;
    };

  private:
    std::string folder_; // absolute, free of links
    bool isSingle_ = false;
    std::atomic<bool> isEnding_ = false;
    std::atomic<uint32_t> boardsMade_ = 0;
};

} // namespace vboard::server
