#include "virtual_board/drawing/page.h"

#include "virtual_board/drawing/markup.h"

namespace vboard::drawing {

namespace {

constexpr char kPageStyle[] = R"css(
:root { color-scheme: light dark; }
body { margin: 1rem; font-family: system-ui, 'DejaVu Sans', 'Segoe UI', Arial, sans-serif; }
.drawing { overflow-x: auto; }
.panel { min-width: 60rem; }
table { border-collapse: collapse; margin-top: 1rem; }
th, td { border: 1px solid; padding: 0.2rem 0.6rem; text-align: left; }
)css";

std::string rowOf(const Part &part) {
    return "<tr><th scope=\"row\">" + escaped(part.id) + "</th><td>" + escaped(part.label) +
           "</td></tr>\n";
}

} // namespace

std::string pageOf(const Readings &readings, const std::vector<Part> &parts,
                   const std::string &description) {
    const auto model = readings.find("model");
    const std::string title =
        escaped((model == readings.end() ? "" : model->second) + ", " + description);
    std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta http-equiv=\"Content-Security-Policy\" "
                       "content=\"default-src 'none'; style-src 'unsafe-inline'\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width\">\n<title>" +
                       title + "</title>\n<style>" + panelStyle() + kPageStyle +
                       "</style>\n</head>\n<body>\n<main>\n<h1>" + title +
                       "</h1>\n<div class=\"drawing\" role=\"region\" aria-label=\"drawing\" "
                       "tabindex=\"0\">\n" +
                       svgOf(readings, parts, Styled::Elsewhere) +
                       "</div>\n<table>\n<thead><tr><th scope=\"col\">part</th><th scope=\"col\">"
                       "state</th></tr></thead>\n<tbody>\n";
    for (const Part &part : parts)
        page += rowOf(part);
    return page + "</tbody>\n</table>\n</main>\n</body>\n</html>\n";
}

} // namespace vboard::drawing
