#include "virtual_board/command/name_depth.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vboard {

namespace {

/** A walk through a file, past its strings and comments. */
class Walk {
  public:
    explicit Walk(const std::string &content) : content_(content) {}

    /** Where a name goes too deep. */
    std::optional<Place> tooDeep() {
        constexpr size_t kMostPoints = 32;
        size_t points = 0;
        while (next_ < content_.size() && points <= kMostPoints) {
            const char c = content_[next_];
            if (c == '"' || c == '\'')
                skipString(c);
            else if (c == '#')
                next_ = std::min(content_.find('\n', next_), content_.size());
            else {
                points = isEndOfName(c) ? 0 : points + (c == '.' ? 1 : 0);
                ++next_;
            }
        }
        return points > kMostPoints ? std::optional(here()) : std::nullopt;
    }

  private:
    static bool isEndOfName(char c) {
        return c == '\n' || c == '=' || c == ',' || c == '{' || c == '[';
    }

    /** A string ends with the mark that it begins with, or, a short one, with its line. */
    void skipString(char mark) {
        const std::string three(3, mark);
        const bool isLong = content_.compare(next_, three.size(), three) == 0;
        next_ += isLong ? three.size() : 1;
        while (next_ < content_.size()) {
            const char c = content_[next_];
            if (!isLong && c == '\n')
                return;
            if (c == mark && (!isLong || content_.compare(next_, three.size(), three) == 0)) {
                next_ += isLong ? three.size() : 1;
                // A long one can have two of the marks as its last characters.
                for (int i = 0; isLong && i < 2 && next_ < content_.size(); ++i)
                    next_ += content_[next_] == mark ? 1U : 0U;
                return;
            }
            next_ += mark == '"' && c == '\\' ? 2 : 1;
        }
    }

    Place here() const {
        const auto end =
            content_.begin() + static_cast<std::ptrdiff_t>(std::min(next_, content_.size()));
        const auto line = std::count(content_.begin(), end, '\n') + 1;
        const size_t begin = content_.rfind('\n', next_ - 1);
        const size_t column = begin == std::string::npos ? next_ : next_ - begin - 1;
        return {static_cast<uint32_t>(line), static_cast<uint32_t>(column)};
    }

    const std::string &content_;
    size_t next_ = 0;
};

} // namespace

std::optional<Place> tooDeepName(const std::string &content) {
    return Walk(content).tooDeep();
}

} // namespace vboard
