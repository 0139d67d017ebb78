#include "RGBAColorJson.h"

#include <array>
#include <cmath>
#include <string_view>

namespace tosvar::RGBAColorJson {

namespace {

constexpr std::array<std::string_view, 4> channelNames{"red", "green", "blue", "alpha"};

std::array<double RGBAColor::*, 4> channels() {
    return {&RGBAColor::red, &RGBAColor::green, &RGBAColor::blue, &RGBAColor::alpha};
}

} // namespace

Expected<nlohmann::ordered_json> toJson(const RGBAColor& color) {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for (std::size_t i = 0; i < channelNames.size(); ++i) {
        const double value = color.*channels()[i];
        if (!std::isfinite(value))
            return Error{"colour channel " + std::string(channelNames[i]) + " is not a finite number"};
        object[std::string(channelNames[i])] = value;
    }
    return object;
}

Expected<RGBAColor> fromJson(const nlohmann::ordered_json& json) {
    if (!json.is_object()) return Error{"a colour must be an object"};
    RGBAColor color;
    for (std::size_t i = 0; i < channelNames.size(); ++i) {
        const auto found = json.find(channelNames[i]);
        if (found == json.end()) return Error{"colour without " + std::string(channelNames[i])};
        if (!found->is_number()) return Error{"colour channel " + std::string(channelNames[i]) + " is not a number"};
        color.*channels()[i] = found->get<double>();
    }
    return color;
}

} // namespace tosvar::RGBAColorJson
