#pragma once

#include <algorithm>

namespace tavrolin::platform {

// Lengths are in points, y grows downwards.

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    Point origin() const { return {x, y}; }
    Size size() const { return {width, height}; }
    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    bool isEmpty() const { return !(width > 0 && height > 0); }
    /// The left and the upper edge belong to it, the right and the lower one don't.
    bool contains(Point point) const {
        return point.x >= x && point.x < maxX() && point.y >= y && point.y < maxY();
    }
    Rect movedBy(double dx, double dy) const { return {x + dx, y + dy, width, height}; }
    Rect inset(double dx, double dy) const {
        return {x + dx, y + dy, std::max(0.0, width - 2 * dx), std::max(0.0, height - 2 * dy)};
    }
    /// Empty when they don't meet.
    Rect intersection(const Rect& other) const {
        const double left = std::max(x, other.x);
        const double top = std::max(y, other.y);
        return {left, top, std::max(0.0, std::min(maxX(), other.maxX()) - left),
                std::max(0.0, std::min(maxY(), other.maxY()) - top)};
    }
    /// The smallest that holds both; an empty one counts for nothing.
    Rect united(const Rect& other) const {
        if (isEmpty()) return other;
        if (other.isEmpty()) return *this;
        const double left = std::min(x, other.x);
        const double top = std::min(y, other.y);
        return {left, top, std::max(maxX(), other.maxX()) - left,
                std::max(maxY(), other.maxY()) - top};
    }
    bool operator==(const Rect&) const = default;
};

}  // namespace tavrolin::platform
