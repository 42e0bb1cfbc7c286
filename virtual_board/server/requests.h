#pragma once
// What becomes of a request: who may ask, which route it takes, and its answer.

#include "virtual_board/server/gate.h"
#include "virtual_board/server/message.h"
#include "virtual_board/server/routes.h"
#include "virtual_board/server/services.h"
#include "virtual_board/server/stream.h"

#include <memory>
#include <string>

namespace vboard::server {

class Requests {
  public:
    Requests(Gate gate, Services &services) : gate_(std::move(gate)), services_(services) {}

    /** What a request wants, once it is let in. */
    struct Wish {
        Target target;
        const Route *route = nullptr; // null: a file of the page
        size_t mostBody = 0;
        bool isStream = false;
    };

    /** Judges the head of a request, before anything else of it is read. Throws Refusal. */
    Wish judge(const Head &head) const;

    /** The answer; what fails is one, too. */
    Response answer(const Wish &wish, const std::string &body) const;

    /** Lets a stream follow what it asks for; what is told when it cannot. */
    std::optional<Response> follow(const Wish &wish,
                                   const std::shared_ptr<EventStream> &stream) const;

  private:
    Response answerOrThrow(const Wish &wish, const std::string &body) const;
    Response pageAnswer(const std::string &path) const;

    const Gate gate_;
    Services &services_;
};

/** What a failure is to who has asked. */
Response failureResponse(const std::exception &failure);

} // namespace vboard::server
