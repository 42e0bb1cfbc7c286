#include "virtual_board/drawing/markup.h"

#include <cmath>

namespace vboard::drawing {

namespace {

/** A number with at most one digit behind its point, the same in all places of the world. */
std::string digits(double number) {
    const auto tenths = static_cast<long>(std::lround(number * 10));
    const long rest = std::labs(tenths) % 10;
    return (tenths < 0 ? "-" : "") + std::to_string(std::labs(tenths) / 10) +
           (rest == 0 ? "" : "." + std::to_string(rest));
}

std::string attribute(const char *name, double value) {
    return " " + std::string(name) + "=\"" + digits(value) + "\"";
}

std::string opened(const char *element, const char *name) {
    return "<" + std::string(element) + " class=\"" + name + "\"";
}

std::string textAt(const char *name, Point place, const char *more, const std::string &text) {
    return opened("text", name) + attribute("x", place.x) + attribute("y", place.y) + more + ">" +
           escaped(text) + "</text>";
}

} // namespace

std::string escaped(const std::string &text) {
    std::string all;
    for (const char character : text) {
        switch (character) {
        case '&':
            all += "&amp;";
            break;
        case '<':
            all += "&lt;";
            break;
        case '>':
            all += "&gt;";
            break;
        case '"':
            all += "&quot;";
            break;
        default:
            if (static_cast<unsigned char>(character) >= ' ') // others are not allowed there
                all += character;
        }
    }
    return all;
}

std::string rectangle(const char *name, Point corner, Size size, double radius) {
    return opened("rect", name) + attribute("x", corner.x) + attribute("y", corner.y) +
           attribute("width", size.width) + attribute("height", size.height) +
           (radius > 0 ? attribute("rx", radius) : "") + "/>";
}

std::string circle(const char *name, Point centre, double radius) {
    return opened("circle", name) + attribute("cx", centre.x) + attribute("cy", centre.y) +
           attribute("r", radius) + "/>";
}

std::string path(const char *name, const std::string &points) {
    return opened("path", name) + " d=\"" + points + "\"/>";
}

std::string centred(const char *name, Point middle, const std::string &text) {
    return textAt(name, middle, " text-anchor=\"middle\"", text);
}

std::string written(const char *name, Point start, const std::string &text) {
    return textAt(name, start, "", text);
}

std::string moved(Point by, const std::string &elements) {
    return "<g transform=\"translate(" + digits(by.x) + " " + digits(by.y) + ")\">" + elements +
           "</g>";
}

} // namespace vboard::drawing
