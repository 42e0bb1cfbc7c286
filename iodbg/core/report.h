#pragma once
// What a command answers, once for people and once for programs.

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace iodbg {

/** A value as programs get it; null when there is none. */
using Value = std::variant<std::nullptr_t, bool, int64_t, std::string, std::vector<int64_t>>;

/** A value as people read it, and as programs get it. */
struct Cell {
    std::string text;
    Value value;
};

Cell textCell(const std::string &text);
Cell numberCell(int64_t value);
/** A number that people read as hexadecimal digits. */
Cell hexCell(uint32_t value, int digits);
/** A yes or no, with the words for it. */
Cell flagCell(bool value, const std::string &ifTrue, const std::string &ifFalse);

/** Numbers in rising order, which people read as ranges: "1-16, 20". */
Cell listCell(const std::vector<int64_t> &numbers);

struct Field {
    std::string key;
    std::string label;
    Cell cell;
};

/** Values side by side with their labels; one object of the JSON. */
struct Section {
    std::string key; // empty: the fields belong to the whole answer
    std::string title;
    std::vector<Field> fields;

    void add(const std::string &fieldKey, const std::string &label, const Cell &cell) {
        fields.push_back({fieldKey, label, cell});
    }
    /** The path of one of its keys: "board.device_id". */
    std::string path(const std::string &fieldKey) const {
        return key.empty() ? fieldKey : key + "." + fieldKey;
    }
};

struct Column {
    std::string key;
    std::string label;
};

/** What becomes of a table that is wider than 80 columns. */
enum class TooWide {
    WrapCells,   // long texts go on below themselves
    MoveColumns, // the columns that have no room stand below the others, behind the first one again
};

/** Rows of the same shape; one array of the JSON. Without rows people see nothing of it. */
struct Table {
    std::string key;
    std::vector<Column> columns;
    std::vector<std::vector<Cell>> rows;
    TooWide tooWide = TooWide::WrapCells;
};

/** Something that could not be read, while the rest of the answer could. */
struct FailedItem {
    std::string item; // the path of its key: "board.device_id"
    int32_t status;
    std::string advice; // what to do about it
};

/** Who an answer is for. */
enum class AnswerForm {
    Text,      // people
    Json,      // programs: one object
    JsonLines, // programs, of work that takes long: an object a line, the last one with the result
};

struct Report {
    std::vector<std::variant<Section, Table>> parts;
    std::vector<FailedItem> failures;
    std::string event = "result"; // what it is among the lines of an answer in lines

    /**
     * The cell of an item that was tried to read: its value, or the failure, which is noted.
     * advice replaces the status's own.
     */
    Cell tried(const std::string &item, int32_t status, const Cell &cell,
               const std::string &advice = "");

    std::string toText() const;
    std::string toJson(AnswerForm form) const;
};

/** A section as a line of its own, for programs that follow long work. */
std::string toJsonLine(const Section &section);

class Failure;

/** What programs get instead of an answer. */
std::string failureToJson(const Failure &failure, AnswerForm form);

} // namespace iodbg
