#include "SiblingRecords.h"

namespace tosvar {

std::vector<FilterCategory> FilterCategory::builtinDefaults() {
    return {
        {"all", "All", {}},
        {"text", "Text", {"text", "richText"}},
        {"images", "Images", {"image"}},
        {"links", "Links", {"link"}},
        {"files", "Files", {"file"}},
        {"colors", "Colors", {"color"}},
    };
}

} // namespace tosvar
