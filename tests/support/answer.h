#pragma once
// What a call answers: its status and its messages.

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>

/** What a function prints on standard output. */
std::string printedBy(const std::function<void()> &function);

/** A status and the text that was printed, with "#" for the line numbers of message prefixes. */
struct Answer {
    int32_t status;
    std::string printed = "";

    bool operator==(const Answer &) const = default;
};
std::ostream &operator<<(std::ostream &stream, const Answer &answer);

Answer answerOf(const std::function<int32_t()> &call);
