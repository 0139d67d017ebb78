#pragma once

#include "Expected.h"
#include "RGBAColor.h"

#include <nlohmann/json.hpp>

// Colours in stored settings take the same form as in annotation documents:
// an object with the numbers "red", "green", "blue" and "alpha".
namespace tosvar::RGBAColorJson {

// Fails on a channel that is not a finite number, which JSON cannot hold.
Expected<nlohmann::ordered_json> toJson(const RGBAColor& color);
// Every channel is required and must be a number; other keys are ignored.
Expected<RGBAColor> fromJson(const nlohmann::ordered_json& json);

} // namespace tosvar::RGBAColorJson
