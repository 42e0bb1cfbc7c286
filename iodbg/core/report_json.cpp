// Answers as JSON. The only file that needs the JSON library.

#include "iodbg/core/failure.h"
#include "iodbg/core/report.h"
#include "iodbg/core/status_table.h"

#include <nlohmann/json.hpp>

namespace iodbg {

namespace {

using Json = nlohmann::ordered_json; // keys in the order in which people read them

Json toJson(const Value &value) {
    return std::visit([](const auto &content) { return Json(content); }, value);
}

void addPart(Json &answer, const Section &section) {
    Json &object = section.key.empty() ? answer : answer[section.key];
    for (const Field &field : section.fields)
        object[field.key] = toJson(field.cell.value);
}

void addPart(Json &answer, const Table &table) {
    Json &array = answer[table.key] = Json::array();
    for (const std::vector<Cell> &row : table.rows) {
        Json object = Json::object();
        for (size_t i = 0; i < row.size(); ++i)
            object[table.columns[i].key] = toJson(row[i].value);
        array.push_back(object);
    }
}

void addStatus(Json &object, int32_t status, const std::string &advice = "") {
    const StatusText text = explain(status);
    object["status"] = status;
    object["status_name"] = text.name.empty() ? Json(nullptr) : Json(text.name);
    object["meaning"] = text.meaning;
    object["next"] = advice.empty() ? text.next : advice;
}

/** Lines tell what they are, since several kinds come. */
Json beginAnswer(AnswerForm form, const std::string &event) {
    Json answer = Json::object();
    if (form == AnswerForm::JsonLines)
        answer["event"] = event;
    return answer;
}

std::string written(const Json &answer, AnswerForm form) {
    return answer.dump(form == AnswerForm::JsonLines ? -1 : 2) + "\n";
}

} // namespace

std::string toJsonLine(const Section &section) {
    Json line = Json::object();
    addPart(line, section);
    return written(line, AnswerForm::JsonLines);
}

std::string Report::toJson(AnswerForm form) const {
    Json answer = beginAnswer(form, event);
    for (const auto &part : parts)
        std::visit([&](const auto &content) { addPart(answer, content); }, part);
    answer["failures"] = Json::array();
    for (const FailedItem &failed : failures) {
        Json object = {{"item", failed.item}};
        addStatus(object, failed.status, failed.advice);
        answer["failures"].push_back(object);
    }
    return written(answer, form);
}

std::string failureToJson(const Failure &failure, AnswerForm form) {
    Json answer = beginAnswer(form, "error");
    Json error = {{"exit_code", static_cast<int>(failure.code())}, {"message", failure.what()}};
    if (failure.status())
        addStatus(error, *failure.status());
    answer["error"] = error;
    return written(answer, form);
}

} // namespace iodbg
