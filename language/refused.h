#pragma once
// Why a word is refused, and the word in the sentence that says so.

#include <stdexcept>
#include <string>

namespace language {

/** One line that says what is wrong with a name or a value, and what would be right. */
class Refused : public std::invalid_argument {
    using std::invalid_argument::invalid_argument;
};

/** Refuses a word: "'11' is not a number from 1 to 10". */
[[noreturn]] void refuse(const std::string &word, const std::string &reason);

/** Does something; what is refused meanwhile is said to be about a name: "LEVEL: '11' is ...". */
template <typename Work>
auto about(const std::string &name, Work work) {
    try {
        return work();
    } catch (const Refused &refusal) {
        throw Refused(name + ": " + refusal.what());
    }
}

} // namespace language
