#pragma once
// What a call answers: its status and its messages.

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <string>

/** What a function prints on standard output. */
std::string printedBy(const std::function<void()> &function);

/** A status and the text that was printed, with "#" for the line numbers of message prefixes. */
struct Answer {
    int32_t status;
    std::string printed{};

    bool operator==(const Answer &) const = default;
};
std::ostream &operator<<(std::ostream &stream, const Answer &answer);

Answer answerOf(const std::function<int32_t()> &call);

/** Success without a word. */
inline const Answer kSilentSuccess = {0};

/** What a function prints on standard error. */
std::string complainedBy(const std::function<void()> &function);

/** Numbers, separated by blanks: "1 2 255". */
std::string listed(std::initializer_list<int64_t> numbers);
