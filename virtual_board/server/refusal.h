#pragma once
// Why a request is refused: what is told in place of an answer.

#include "virtual_board/include/vboard.h"

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace vboard::server {

/** Statuses of HTTP that the server answers with. */
enum Status : unsigned {
    kOk = 200,
    kCreated = 201,
    kMovedPermanently = 301,
    kBadRequest = 400,
    kUnauthorized = 401,
    kForbidden = 403,
    kNotFound = 404,
    kNoSuchMethod = 405,
    kConflict = 409,
    kTooLarge = 413,
    kNoSuchMediaType = 415,
    kMisdirected = 421,
    kTooMany = 429,
    kHeadTooLarge = 431,
    kInternalError = 500,
};

class Refusal : public std::exception {
  public:
    Refusal(Status status, int32_t reason, std::string text)
        : status_(status), reason_(reason), text_(std::move(text)) {}

    Status status() const { return status_; }
    /** One of ::VBoardStatus. */
    int32_t reason() const { return reason_; }
    const char *what() const noexcept override { return text_.c_str(); }

  private:
    Status status_;
    int32_t reason_;
    std::string text_;
};

} // namespace vboard::server
