#pragma once
// The files of the page, compiled in.

#include <span>
#include <string_view>

namespace vboard::server {

struct PageFile {
    std::string_view name;        // "index.html"
    std::string_view contentType; // "text/html; charset=utf-8"
    std::string_view bytes;
};

std::span<const PageFile> pageFiles();

} // namespace vboard::server
