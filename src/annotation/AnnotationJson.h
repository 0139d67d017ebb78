#pragma once

#include "AnnotationElement.h"
#include "Expected.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The one JSON form of annotation elements. Keys equal the field names and are
// written in declaration order; optional fields are left out when absent;
// tagged cases are objects with exactly one key. Whole numbers are written
// without a fraction, UUIDs in upper case, image bytes as base64.
//
// Reading is strict: a missing required key, a value of the wrong type, an
// unknown case or a number that is not finite fails the whole element (or
// list) with a message that names where it went wrong, e.g.
// "[2].style.lineWidth: expected a number, found string". Unknown keys are ignored.
// Writing fails only on a number that is not finite or, when making text, on
// a string that is not valid UTF-8.
namespace tosvar::AnnotationJson {

using Json = nlohmann::ordered_json;

Expected<Json> toJson(const AnnotationElement& element);
Expected<AnnotationElement> elementFromJson(const Json& json);

// Compact JSON text of one element, and of a list of elements as an array.
Expected<std::string> encodeElement(const AnnotationElement& element);
Expected<std::string> encodeElements(std::span<const AnnotationElement> elements);
Expected<AnnotationElement> decodeElement(std::string_view text);
Expected<std::vector<AnnotationElement>> decodeElements(std::string_view text);

// A list read element by element: every element that reads, and for each
// that does not, its index and why. `failure` says why nothing could be read
// at all (text that is not JSON, or not an array).
struct ElementsReading {
    struct Rejected {
        std::size_t index = 0;
        std::string reason;
    };
    std::vector<AnnotationElement> elements;
    std::vector<Rejected> rejected;
    std::optional<std::string> failure;
};
ElementsReading decodeElementsLeniently(std::string_view text);

} // namespace tosvar::AnnotationJson
