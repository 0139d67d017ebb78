#include "LastRegion.h"

#include <algorithm>
#include <cstdio>

namespace tosvar::LastRegion {

std::string text(const Rect& r) {
    char buffer[160];
    std::snprintf(buffer, sizeof buffer, "{{%g, %g}, {%g, %g}}", r.minX(), r.minY(), r.width(), r.height());
    return buffer;
}

std::optional<Rect> parse(std::string_view text) {
    double x = 0, y = 0, w = 0, h = 0;
    char end = 0;
    const std::string copy(text);
    if (std::sscanf(copy.c_str(), " {{%lf ,%lf }, {%lf ,%lf }%c", &x, &y, &w, &h, &end) != 5 || end != '}') return std::nullopt;
    return Rect(x, y, w, h);
}

std::optional<Rect> inView(std::string_view stored, const Rect& screen) {
    const std::optional<Rect> rect = parse(stored);
    if (!rect || rect->width() < minimumSide || rect->height() < minimumSide || !rect->intersects(screen)) return std::nullopt;
    const double w = std::min(rect->width(), screen.width()), h = std::min(rect->height(), screen.height());
    // From screen points (y up) to the view (y down from the display's top).
    double x = rect->minX() - screen.minX();
    double y = screen.maxY() - rect->maxY();
    x = std::clamp(x, 0.0, screen.width() - w);
    y = std::clamp(y, 0.0, screen.height() - h);
    return Rect(x, y, w, h);
}

} // namespace tosvar::LastRegion
