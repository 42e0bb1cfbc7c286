#pragma once
// What a call of the library comes to: its status, and what it prints.

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>

struct Outcome {
    int32_t status = 0;
    std::string text; // on standard output, the source lines in its prefixes shown as #

    bool operator==(const Outcome &) const = default;
};

std::ostream &operator<<(std::ostream &stream, const Outcome &outcome);

/** Success without a word. */
inline const Outcome kSilentSuccess;

Outcome outcomeOf(const std::function<int32_t()> &call);

/** What a function prints on standard error. */
std::string complainedBy(const std::function<void()> &function);

/** Numbers, separated by blanks: "1 2 255". */
std::string listed(std::initializer_list<int64_t> numbers);
