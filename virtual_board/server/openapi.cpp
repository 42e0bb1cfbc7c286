// What can be asked, described for programs: made of the table of routes.

#include "virtual_board/server/answers.h"
#include "virtual_board/server/asked.h"
#include "virtual_board/server/page_files.h"

#include <cctype>
#include <string>

namespace vboard::server {

namespace {

std::string inLowerCaseName(const char *method) {
    std::string name;
    for (const char *at = method; *at != '\0'; ++at)
        name += static_cast<char>(std::tolower(static_cast<unsigned char>(*at)));
    return name;
}

Json contentOf(const char *type, const char *schema) {
    return {{type, {{"schema", {{"$ref", std::string("#/components/schemas/") + schema}}}}}};
}

Json parametersOf(const Route &route) {
    Json array = Json::array();
    for (const Parameter &one : route.parameters) {
        if (one.name == nullptr)
            continue;
        const Json text = {{"type", "string"}};
        array.push_back(
            {{"name", one.name},
             {"in", "query"},
             {"description", one.description},
             {"required", one.isRequired},
             {"schema", one.isRepeated ? Json{{"type", "array"}, {"items", text}} : text}});
    }
    return array;
}

Json answerOf(const Route &route) {
    Json answer = {{"description", route.summary}};
    if (route.answerSchema != nullptr)
        answer["content"] = contentOf(kJsonType, route.answerSchema);
    else if (route.answer != nullptr)
        answer["content"] = {{"image/svg+xml", Json::object()}};
    else
        answer["content"] = contentOf(kEventType, "Event");
    return answer;
}

Json operationOf(const Route &route) {
    Json operation = {{"summary", route.summary},
                      {"parameters", parametersOf(route)},
                      {"responses",
                       {{std::to_string(route.success), answerOf(route)},
                        {"default",
                         {{"description", "It was refused, and nothing has changed"},
                          {"content", contentOf(kJsonType, "Error")}}}}}};
    if (route.bodySchema != nullptr)
        operation["requestBody"] = {{"required", true},
                                    {"content", contentOf(kJsonType, route.bodySchema)}};
    return operation;
}

} // namespace

Response describeInterface(Services &, const Asked &) {
    Json paths = Json::object();
    for (const Route &route : routes())
        paths[route.path][inLowerCaseName(route.method)] = operationOf(route);
    const Json security = {{"token", Json::array()}};
    return jsonResponse(
        {{"openapi", "3.1.0"},
         {"info",
          {{"title", "Virtual boards"},
           {"version", VBOARD_VERSION},
           {"description", "What 'vboard serve' answers. Every request needs the token: in the "
                           "path, as in the URL "
                           "that it prints, or as a bearer."}}},
         {"servers", {{{"url", "."}}}},
         {"security", {security}},
         {"paths", paths},
         {"components",
          {{"securitySchemes", {{"token", {{"type", "http"}, {"scheme", "bearer"}}}}},
           {"schemas", Json::parse(schemaFiles().front().bytes)}}}});
}

} // namespace vboard::server
