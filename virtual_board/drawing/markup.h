#pragma once
// SVG, piece by piece.

#include <string>

namespace vboard::drawing {

/** A text as it stands in markup, in attributes too. */
std::string escaped(const std::string &text);

struct Point {
    double x, y;
};
struct Size {
    double width, height;
};

// Elements with a class, whose looks are the style's.
std::string rectangle(const char *name, Point corner, Size size, double radius = 0);
std::string circle(const char *name, Point centre, double radius);
/** The path's points are its own. */
std::string path(const char *name, const std::string &points);
/** A text around a point, or from it on. */
std::string centred(const char *name, Point middle, const std::string &text);
std::string written(const char *name, Point start, const std::string &text);
/** Elements that are moved. */
std::string moved(Point by, const std::string &elements);

} // namespace vboard::drawing
