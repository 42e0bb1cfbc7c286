#pragma once
// Checks that tell what they found: "ok" or "FAIL" and a text, with what was expected and seen.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

/** What a function of the library answered. */
struct Answer {
    int32_t status;
    std::string printed; // by the library and by the tools that it ran
};

/** Headline of the checks that follow. */
void beginSection(const std::string &title);

void expectSame(const std::string &what, int64_t expected, int64_t seen);
void expectSame(const std::string &what, const std::string &expected, const std::string &seen);
void expectSame(const std::string &what, const Bytes &expected, const Bytes &seen);

/** Calls the library, checks its status, and shows what was printed meanwhile. */
Answer expectStatus(const std::string &what, int32_t expected,
                    const std::function<int32_t()> &call);
/** The same for a call that says nothing. */
void expectSilent(const std::string &what, int32_t expected, const std::function<int32_t()> &call);
/** Whether a text was printed. */
void expectPrinted(const Answer &answer, const std::string &text);

int checksMade();
int checksFailed();
