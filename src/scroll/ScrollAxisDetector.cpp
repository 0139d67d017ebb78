#include "ScrollAxisDetector.h"

namespace tosvar {

const char* ScrollResultKind::name() const {
    switch (tag) {
    case Tag::appended: return "appended";
    case Tag::prepended: return "prepended";
    case Tag::first: return "first";
    case Tag::noChange: return "noChange";
    case Tag::lowConfidence: return "lowConfidence";
    }
    return "lowConfidence";
}

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
