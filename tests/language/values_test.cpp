// Numbers, bytes and times as people write them: which words are taken, and what is said of others.

#include "language/bytes.h"
#include "language/numbers.h"
#include "language/refused.h"
#include "language/texts.h"
#include "language/times.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace language;

/** What is said of a refused word; empty when it is taken. */
std::string refusalOf(const std::function<void()> &parse) {
    try {
        parse();
    } catch (const Refused &refusal) {
        return refusal.what();
    }
    return "";
}

TEST(ValuesTest, NumbersAreDecimalOrHexadecimal) {
    EXPECT_EQ(parseNumber<uint32_t>("010", 0, UINT32_MAX), 10u);
    EXPECT_EQ(parseNumber<uint32_t>("4294967295", 0, UINT32_MAX), UINT32_MAX);
    EXPECT_EQ(parseNumber<uint16_t>("0xfF", 0, 255), 255);
    EXPECT_EQ(parseNumber<uint8_t>("0X10", 0, 255), 16);
    EXPECT_EQ(parseNumber<int32_t>("-2147483648", INT32_MIN, INT32_MAX), INT32_MIN);
    EXPECT_EQ(parseNumber<int32_t>("-0x10", -16, 0), -16);
    EXPECT_EQ(readNumber<uint32_t>("7", 0, 7), 7u);
    for (const char *word : {"", "-", "0x", "x", "1x", "0x1g", "+1", " 1", "1 ", "--1", "1.0",
                             "4294967296", "0x100000000", "-1", "256"}) {
        EXPECT_EQ(readNumber<uint32_t>(word, 0, 255), std::nullopt) << word;
        EXPECT_EQ(refusalOf([&] { parseNumber<uint32_t>(word, 0, 255); }),
                  "'" + std::string(word) +
                      "' is not a number from 0 to 255 (decimal, or hexadecimal after 0x)");
    }
    EXPECT_EQ(refusalOf([] { parseNumber<uint32_t>("0", 1, 6); }),
              "'0' is not a number from 1 to 6 (decimal, or hexadecimal after 0x)");
}

TEST(ValuesTest, RangesAreOneNumberOrTwo) {
    using Range = std::pair<uint32_t, uint32_t>;
    EXPECT_EQ(parseRange("3", 1, 48, "ports"), Range(3, 3));
    EXPECT_EQ(parseRange("3-0x10", 1, 48, "ports"), Range(3, 16));
    EXPECT_EQ(parseRange("48-48", 1, 48, "ports"), Range(48, 48));
    for (const char *word : {"4-1", "1-2-3", "1--2"})
        EXPECT_EQ(refusalOf([&] { parseRange(word, 1, 48, "ports"); }),
                  "'" + std::string(word) + "' is no range of ports; give one as 1-8");
    for (const char *word : {"", "-3", "3-", "49-50"})
        EXPECT_NE(refusalOf([&] { parseRange(word, 1, 48, "ports"); }).find("number from 1 to 48"),
                  std::string::npos)
            << word;
}

TEST(ValuesTest, AChoiceIsOneOfItsWords) {
    constexpr const char *kChoices[] = {"good", "failing", "stuck"};
    EXPECT_EQ(parseChoice("good", kChoices), 0u);
    EXPECT_EQ(parseChoice("stuck", kChoices), 2u);
    for (const char *word : {"", "Good", "goo", "good "})
        EXPECT_EQ(refusalOf([&] { parseChoice(word, kChoices); }),
                  "'" + std::string(word) + "' is none of good|failing|stuck");
}

TEST(ValuesTest, BytesArePairsOfDigits) {
    EXPECT_EQ(parseBytes("00ff12"), (Bytes{0x00, 0xFF, 0x12}));
    EXPECT_EQ(parseBytes("0xABcd"), (Bytes{0xAB, 0xCD}));
    for (const char *word : {"", "0x", "0", "123", "0x1"})
        EXPECT_EQ(refusalOf([&] { parseBytes(word); }),
                  "'" + std::string(word) +
                      "' is not a row of bytes: give two hexadecimal digits for each");
    for (const char *word : {"0g", "+1", "1 ", "-1", "00 1"})
        EXPECT_EQ(refusalOf([&] { parseBytes(word); }),
                  "'" + std::string(word) + "' has other characters than hexadecimal digits");
    constexpr uint8_t kBytes[] = {0x00, 0xFF, 0x1A};
    EXPECT_EQ(hexText(kBytes), "00ff1a");
    EXPECT_EQ(hexText({}), "");
    EXPECT_EQ(capitalHexText(kBytes), "00FF1A");
    EXPECT_EQ(capitalHexText(kBytes, ":"), "00:FF:1A");
}

TEST(ValuesTest, AMacAddressHasSixBytes) {
    EXPECT_EQ(parseMac("02:00:5e:10:00:Ff"), (Mac{0x02, 0x00, 0x5E, 0x10, 0x00, 0xFF}));
    EXPECT_EQ(macText(parseMac("02:00:5E:10:00:FF")), "02:00:5e:10:00:ff");
    for (const char *word :
         {"", "02:00:5e:10:00", "02:00:5e:10:00:0g", "02-00-5e-10-00-00",
          "02:00:5e:10:00:00:", "02005e100000", "02:00:5e:10:00:+1", "02:00:5e:10:00:00:00"})
        EXPECT_EQ(refusalOf([&] { parseMac(word); }),
                  "'" + std::string(word) +
                      "' is not a MAC address: give six bytes as AA:BB:CC:DD:EE:FF");
}

TEST(ValuesTest, SecondsHaveUpToThreeDecimals) {
    EXPECT_EQ(parseSeconds("2", 100, 3600000), 2000u);
    EXPECT_EQ(parseSeconds("0.1", 100, 3600000), 100u);
    EXPECT_EQ(parseSeconds("1.234", 100, 3600000), 1234u);
    EXPECT_EQ(parseSeconds("3600", 100, 3600000), 3600000u);
    for (const char *word : {"", ".5", "1.", "1.2345", "0.099", "3600.001", "-1", "1e3", "0x10",
                             "1.2.3", "4294967296", "inf", "1,5"})
        EXPECT_EQ(refusalOf([&] { parseSeconds(word, 100, 3600000); }),
                  "'" + std::string(word) +
                      "' is not a number of seconds from 0.1 to 3600, with up to three decimals");
    EXPECT_EQ(secondsText(0), "0.000000000");
    EXPECT_EQ(secondsText(1234567890123456789), "1234567890.123456789");
}

TEST(ValuesTest, TimesOfACalendarAreThoseThatThereAre) {
    for (const char *word : {"2024-02-29T23:59:59", "2024-02-29 23:59:59"})
        EXPECT_EQ(calendarText(parseCalendarTime(word, 1900, 2059)), "2024-02-29 23:59:59");
    EXPECT_EQ(calendarText(parseCalendarTime("1900-01-01 00:00:00", 1900, 2059)),
              "1900-01-01 00:00:00");
    EXPECT_EQ(parseCalendarTime("2000-02-29 00:00:00", 1900, 2059).day, 29u);
    for (const char *word :
         {"", "2024-02-30 00:00:00", "2023-02-29 00:00:00", "1900-02-29 00:00:00",
          "2024-13-01 00:00:00", "2024-00-01 00:00:00", "2024-01-00 00:00:00",
          "2024-04-31 00:00:00", "1899-12-31 00:00:00", "2060-01-01 00:00:00",
          "2024-01-01 24:00:00", "2024-01-01 00:60:00", "2024-01-01 00:00:60",
          "2024-01-01 00:00:00x", "2024-01-01", "2024-1--1 00:00:00", "2024-01-01_00:00:00"})
        EXPECT_EQ(refusalOf([&] { parseCalendarTime(word, 1900, 2059); }),
                  "'" + std::string(word) +
                      "' is no time from 1900 to 2059: give one like 2026-11-21T12:34:56");
    EXPECT_EQ(refusalOf([] { parseCalendarTime("x", 1900, 2059, "'now', or "); }),
              "'x' is no time from 1900 to 2059: give 'now', or one like 2026-11-21T12:34:56");
}

TEST(ValuesTest, WordsInMessagesArePrintableAndShort) {
    EXPECT_EQ(quoted("\x1b[31m"), "'\\x1B[31m'");
    EXPECT_EQ(quoted(std::string(61, 'a')), "'" + std::string(57, 'a') + "...'");
    EXPECT_EQ(quoted(std::string(60, 'a')), "'" + std::string(60, 'a') + "'");
    EXPECT_EQ(printable("a\\b\n"), "a\\\\b\\x0A");
    EXPECT_EQ(refusalOf([] { about("LEVEL", [] { parseNumber<int>("\n", 1, 2); }); }),
              "LEVEL: '\\x0A' is not a number from 1 to 2 (decimal, or hexadecimal after 0x)");
    EXPECT_EQ(about("LEVEL", [] { return 7; }), 7);
}

TEST(ValuesTest, TextsHaveLines) {
    EXPECT_EQ(linesOf(""), std::vector<std::string>{});
    EXPECT_EQ(linesOf("\n"), std::vector<std::string>{""});
    EXPECT_EQ(linesOf("one\n\nthree\n"), (std::vector<std::string>{"one", "", "three"}));
    EXPECT_EQ(linesOf("one\nlast"), (std::vector<std::string>{"one", "last"}));
}

TEST(ValuesTest, NumbersAreWrittenAsTheyAreRead) {
    EXPECT_EQ(hex16Text(0x709), "0x0709");
    EXPECT_EQ(thousandths(54000), "54.000");
    EXPECT_EQ(thousandths(-1), "-0.001");
}

} // namespace
