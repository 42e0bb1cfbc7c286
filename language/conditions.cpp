#include "language/conditions.h"

#include "language/bytes.h"
#include "language/numbers.h"
#include "language/refused.h"
#include "language/texts.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace language {

namespace {

constexpr char kForm[] =
    "is no condition; one is 'fan.1.speed == 0', with == != < <= > >=, 'and' and 'or'";

struct RelationWord {
    const char *text;
    Relation relation;
};

// Of those that begin alike the longer ones stand first.
constexpr RelationWord kRelations[] = {
    {"==", Relation::Equal},          {"!=", Relation::NotEqual}, {"<=", Relation::LessOrEqual},
    {">=", Relation::GreaterOrEqual}, {"<", Relation::Less},      {">", Relation::Greater},
};

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

bool isQuote(char c) {
    return c == '\'' || c == '"';
}

/** Takes a condition apart from its beginning on. */
class Reader {
  public:
    explicit Reader(const std::string &text) : text_(text) {}

    bool isAtEnd() {
        skipBlanks();
        return next_ == text_.size();
    }

    std::string name() {
        skipBlanks();
        const size_t begin = next_;
        while (next_ < text_.size() && !isBlank(text_[next_]) && relationHere() == nullptr)
            ++next_;
        return taken(begin);
    }

    Relation relation() {
        skipBlanks();
        const RelationWord *word = relationHere();
        if (word == nullptr)
            refuse(text_, kForm);
        next_ += std::char_traits<char>::length(word->text);
        return word->relation;
    }

    std::string value() {
        skipBlanks();
        if (next_ < text_.size() && isQuote(text_[next_]))
            return quotedValue();
        return word();
    }

    /** "and", "or" */
    std::string word() {
        skipBlanks();
        const size_t begin = next_;
        while (next_ < text_.size() && !isBlank(text_[next_]))
            ++next_;
        return taken(begin);
    }

  private:
    void skipBlanks() {
        while (next_ < text_.size() && isBlank(text_[next_]))
            ++next_;
    }

    const RelationWord *relationHere() const {
        const auto *found = std::find_if(
            std::begin(kRelations), std::end(kRelations), [this](const RelationWord &word) {
                return text_.compare(next_, std::char_traits<char>::length(word.text), word.text) ==
                       0;
            });
        return found != std::end(kRelations) ? found : nullptr;
    }

    std::string quotedValue() {
        const size_t begin = next_ + 1;
        const size_t end = text_.find(text_[next_], begin);
        if (end == std::string::npos)
            refuse(text_, "has a quote that does not end");
        next_ = end + 1;
        return text_.substr(begin, end - begin);
    }

    std::string taken(size_t begin) const {
        if (next_ == begin)
            refuse(text_, kForm);
        return text_.substr(begin, next_ - begin);
    }

    const std::string &text_;
    size_t next_ = 0;
};

bool hasOrder(Type type) {
    return type == Type::Number || type == Type::Register || type == Type::Decimal ||
           type == Type::Time;
}

bool isWordOf(const char *list, const std::string &text) {
    const std::vector<std::string> words = wordsOf(list);
    return std::find(words.begin(), words.end(), text) != words.end();
}

int64_t parseWhole(const std::string &text) {
    const auto value = readNumber<int64_t>(text, INT64_MIN, INT64_MAX);
    if (!value.has_value())
        refuse(text, "is not a whole number");
    return *value;
}

void judgeDecimal(const std::string &text) {
    char *end = nullptr;
    std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0')
        refuse(text, "is not a number");
}

/** Smaller, equal or greater: -1, 0 or 1. */
template <typename Content>
int order(const Content &a, const Content &b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}

int order(const Property &property, const Value &a, const Value &b) {
    if (a.isNumber() && b.isNumber())
        return order(a.as<int64_t>(), b.as<int64_t>());
    const std::string left = valueText(property, a);
    const std::string right = valueText(property, b);
    const bool isOther = isWordOf(property.words, left) || isWordOf(property.words, right);
    if (property.type == Type::Decimal && !isOther)
        return order(std::strtod(left.c_str(), nullptr), std::strtod(right.c_str(), nullptr));
    return order(left, right);
}

} // namespace

Condition parseCondition(const std::string &text) {
    Reader reader(text);
    Condition condition(1);
    for (;;) {
        Comparison comparison;
        comparison.name = reader.name();
        comparison.relation = reader.relation();
        comparison.value = reader.value();
        condition.back().push_back(comparison);
        if (reader.isAtEnd())
            return condition;
        const std::string joint = reader.word();
        if (joint == "or")
            condition.emplace_back();
        else if (joint != "and")
            refuse(joint, "does not join two comparisons; 'and' and 'or' do");
    }
}

Value comparedValue(const Property &property, const Comparison &comparison) {
    const std::string &text = comparison.value;
    return about(comparison.name, [&]() -> Value {
        const bool isEquality =
            comparison.relation == Relation::Equal || comparison.relation == Relation::NotEqual;
        if (!isEquality && (!hasOrder(property.type) || isWordOf(property.words, text)))
            throw Refused("what it holds has no order; compare with == or !=");
        switch (property.type) {
        case Type::Word: {
            const std::vector<std::string> words = wordsOf(property.words);
            const auto place = std::find(words.begin(), words.end(), text);
            if (place == words.end())
                refuse(text, "is none of its words: " + listed(words, "or"));
            return place - words.begin();
        }
        case Type::Number:
        case Type::Register:
            return isWordOf(property.words, text) ? Value(text) : Value(parseWhole(text));
        case Type::Decimal:
            if (!isWordOf(property.words, text))
                judgeDecimal(text);
            return text;
        case Type::MacAddress:
            return macText(parseMac(text));
        case Type::ByteRow:
            return hexText(parseBytes(text));
        case Type::Text:
        case Type::Time:
        case Type::Pace:
            break;
        }
        return text;
    });
}

bool holds(const Property &property, const Value &found, Relation relation, const Value &value) {
    const bool isWord =
        found.isNumber() != value.isNumber() ||
        (!found.isNumber() && hasOrder(property.type) && isWordOf(property.words, found.text()));
    const int compared = order(property, found, value);
    switch (relation) {
    case Relation::Equal:
        return compared == 0;
    case Relation::NotEqual:
        return compared != 0;
    case Relation::Less:
        return !isWord && compared < 0;
    case Relation::LessOrEqual:
        return !isWord && compared <= 0;
    case Relation::Greater:
        return !isWord && compared > 0;
    case Relation::GreaterOrEqual:
        return !isWord && compared >= 0;
    }
    return false;
}

} // namespace language
