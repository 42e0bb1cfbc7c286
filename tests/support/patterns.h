#pragma once
// Regular expressions on texts, in the grammar of ECMAScript. They take seconds to compile into a
// source, so they are in one.

#include <string>
#include <vector>

/** Whether the whole text is as the pattern says. */
bool matches(const std::string &text, const std::string &pattern);

/** Whether a part of the text is. */
bool hasMatch(const std::string &text, const std::string &pattern);

/** The text with all parts that are replaced; "$1" stands for the first group of such a part. */
std::string replaced(const std::string &text, const std::string &pattern, const std::string &by);

/** The parts of the text that are, each with its groups behind it. */
std::vector<std::vector<std::string>> matchesIn(const std::string &text,
                                                const std::string &pattern);
