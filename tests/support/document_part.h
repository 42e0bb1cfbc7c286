#pragma once
// Parts of documents that are written from tables of the code.

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

/** Where such a part is: between two lines of a file. */
struct DocumentPart {
    std::string file;
    std::string start, end;
};

/** Expects a part to be what the tables make of it; scripts/document-tables has it renewed. */
inline void expectPart(const DocumentPart &part, const std::string &wanted) {
    std::stringstream read;
    read << std::ifstream(part.file).rdbuf();
    const std::string page = read.str();
    const size_t from = page.find(part.start);
    const size_t to = page.find(part.end);
    ASSERT_NE(from, std::string::npos) << part.file << " lacks the line " << part.start;
    ASSERT_NE(to, std::string::npos) << part.file << " lacks the line " << part.end;
    const size_t first = from + part.start.size();
    if (std::getenv("BSP_RENEW_TABLES") != nullptr)
        std::ofstream(part.file) << page.substr(0, first) + wanted + page.substr(to);
    else
        EXPECT_TRUE(page.substr(first, to - first) == wanted)
            << part.file << " has something else behind the line " << part.start
            << "; renew it with scripts/document-tables";
}
