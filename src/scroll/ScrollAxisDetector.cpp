#include "ScrollAxisDetector.h"

namespace tosvar {

std::optional<ScrollAxis> ScrollAxisDetector::observe(ScrollResultKind vertical, ScrollResultKind horizontal) {
    if (decided) return decided;
    if (vertical.addedRows()) {
        decided = ScrollAxis::vertical;
    } else if (horizontal.addedRows()) {
        if (++horizontalStreak >= 2) decided = ScrollAxis::horizontal;
    } else {
        horizontalStreak = 0;
    }
    return decided;
}

} // namespace tosvar
