#include "language/json_limits.h"

#include "language/refused.h"
#include "language/texts.h"

#include <nlohmann/json.hpp>
#include <set>
#include <vector>

namespace language {

namespace {

using nlohmann::json;

class LimitsWatch : public json::json_sax_t {
  public:
    explicit LimitsWatch(const JsonLimits &limits) : limits_(limits) {}

    bool null() override { return value(); }
    bool boolean(bool) override { return value(); }
    bool number_integer(number_integer_t) override { return value(); }
    bool number_unsigned(number_unsigned_t) override { return value(); }
    bool number_float(number_float_t, const string_t &) override { return value(); }
    bool string(string_t &) override { return value(); }
    bool binary(binary_t &) override { return value(); }
    bool start_object(std::size_t) override { return begin(); }
    bool start_array(std::size_t) override { return begin(); }
    bool end_object() override { return end(); }
    bool end_array() override { return end(); }
    bool key(string_t &name) override {
        std::set<std::string> &names = names_.back();
        if (!names.insert(name).second)
            refuse(shortened(printable(name), 60), "stands there twice");
        if (names.size() > limits_.keys)
            throw Refused("an object has more than " + std::to_string(limits_.keys) + " keys");
        return true;
    }
    bool parse_error(std::size_t, const std::string &, const json::exception &) override {
        return false;
    }

  private:
    bool value() {
        if (++values_ > limits_.values)
            throw Refused("it has more than " + std::to_string(limits_.values) + " values");
        return true;
    }
    bool begin() {
        if (names_.size() == limits_.levels)
            throw Refused("it is more than " + std::to_string(limits_.levels) + " levels deep");
        names_.emplace_back();
        return value();
    }
    bool end() {
        names_.pop_back();
        return true;
    }

    const JsonLimits limits_;
    size_t values_ = 0;
    std::vector<std::set<std::string>> names_; // of the objects and lists that are open
};

} // namespace

void requireWithin(const JsonLimits &limits, const std::string &text) {
    LimitsWatch watch(limits);
    json::sax_parse(text, &watch);
}

} // namespace language
