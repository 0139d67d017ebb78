#pragma once

#include <string>
#include <vector>

namespace tosvar {

// Records of the sibling clipboard product. This product never reads them; it
// keeps them so that saving its settings does not lose the sibling's.

struct BlockedAppEntry {
    std::string bundleID;
    std::string name;
    friend bool operator==(const BlockedAppEntry&, const BlockedAppEntry&) = default;
};

struct FilterCategory {
    std::string id;
    std::string name;
    std::vector<std::string> kinds; // item kinds the category shows
    friend bool operator==(const FilterCategory&, const FilterCategory&) = default;

    static std::vector<FilterCategory> builtinDefaults();
};

} // namespace tosvar
