#pragma once
// Files that are compiled in.

#include <span>
#include <string_view>

namespace vboard::server {

struct PageFile {
    std::string_view name;        // "index.html"
    std::string_view contentType; // "text/html; charset=utf-8"
    std::string_view bytes;
};

/** Those of the page. */
std::span<const PageFile> pageFiles();
/** What bodies and answers look like: one file of JSON schemas. */
std::span<const PageFile> schemaFiles();

} // namespace vboard::server
