#include "AnnotationStyleStore.h"

#include "Log.h"
#include "RGBAColorJson.h"

#include <cmath>
#include <limits>
#include <type_traits>
#include <variant>

namespace tosvar {

namespace {

using Json = nlohmann::ordered_json;

// Thrown inside this file only; `decode` and `encode` turn it into an Error.
struct Fault {
    std::string message;
};

[[noreturn]] void fail(std::string message) { throw Fault{std::move(message)}; }

// ---- Writing

Json number(double value, std::string_view where) {
    if (!std::isfinite(value)) fail(std::string(where) + ": not a finite number");
    return Json(value);
}

Json entry(bool value, std::string_view) { return Json(value); }
Json entry(double value, std::string_view where) { return number(value, where); }
Json entry(Size value, std::string_view where) {
    return Json::array({number(value.width, where), number(value.height, where)});
}

template <typename V>
Json toolMap(const std::map<AnnotationTool, V>& map, std::string_view key) {
    Json object = Json::object();
    for (const auto& [tool, value] : map) {
        const std::string name(rawValue(tool));
        object[name] = entry(value, std::string(key) + "." + name);
    }
    return object;
}

// ---- Reading

double readNumber(const Json& json, std::string_view where) {
    if (!json.is_number()) fail(std::string(where) + ": expected a number");
    return json.get<double>();
}

template <typename V>
V readEntry(const Json& json, std::string_view where) {
    if constexpr (std::is_same_v<V, bool>) {
        if (!json.is_boolean()) fail(std::string(where) + ": expected a Boolean");
        return json.get<bool>();
    } else if constexpr (std::is_same_v<V, double>) {
        return readNumber(json, where);
    } else {
        static_assert(std::is_same_v<V, Size>);
        if (!json.is_array() || json.size() != 2) fail(std::string(where) + ": expected two numbers");
        return Size{readNumber(json[0], where), readNumber(json[1], where)};
    }
}

template <typename V>
std::map<AnnotationTool, V> readToolMap(const Json& json, std::string_view key) {
    if (!json.is_object()) fail(std::string(key) + ": expected an object keyed by tool");
    std::map<AnnotationTool, V> map;
    for (const auto& [name, value] : json.items()) {
        const std::string where = std::string(key) + "." + name;
        const V read = readEntry<V>(value, where); // a bad value fails even under an unknown key
        if (const std::optional<AnnotationTool> tool = enumFromRaw<AnnotationTool>(name)) map[*tool] = read;
    }
    return map;
}

// The keys of one record, required or optional.
class Reader {
public:
    explicit Reader(const Json& json) : json_(json) {}

    const Json& required(std::string_view key) const {
        const auto found = json_.find(key);
        if (found == json_.end()) fail("missing required key \"" + std::string(key) + "\"");
        return *found;
    }
    const Json* optional(std::string_view key) const {
        const auto found = json_.find(key);
        return found == json_.end() || found->is_null() ? nullptr : &*found;
    }

    template <typename V>
    void toolMap(std::string_view key, std::optional<std::map<AnnotationTool, V>>& field) const {
        if (const Json* value = optional(key)) field = readToolMap<V>(*value, key);
    }
    void number(std::string_view key, std::optional<double>& field) const {
        if (const Json* value = optional(key)) field = readNumber(*value, key);
    }

private:
    const Json& json_;
};

// An integer; a whole number written with a fraction reads too.
int readVersion(const Json& json) {
    const double value = readNumber(json, "version");
    if (std::trunc(value) != value || std::abs(value) > std::numeric_limits<int>::max())
        fail("version: expected an integer");
    return static_cast<int>(value);
}

} // namespace

AnnotationStyleStore AnnotationStyleStore::defaults() {
    AnnotationStyleStore store;
    store.strokeColor = RGBAColor::Palette::red;
    store.toolWidths = {{AnnotationTool::arrow, 12},      {AnnotationTool::line, 8},
                        {AnnotationTool::freehand, 8},    {AnnotationTool::highlighter, 8},
                        {AnnotationTool::rectangle, 8},   {AnnotationTool::ellipse, 8}};
    store.textFontSize = 40;
    store.mosaicBlockSize = 16;
    store.blurRadius = 12;
    store.magnifierZoom = 4;
    store.watermarkAngle = -45;
    store.watermarkOpacity = 0.25;
    store.watermarkSpacing = 1;
    store.spotlightVeilOpacity = 0.5;
    store.version = currentVersion;
    return store;
}

Expected<std::string> AnnotationStyleStore::encode() const {
    try {
        Json json = Json::object();
        Expected<Json> color = RGBAColorJson::toJson(strokeColor);
        if (!color) fail("strokeColor: " + color.error().message);
        json["strokeColor"] = std::move(color).value();
        json["toolWidths"] = toolMap(toolWidths, "toolWidths");
        const auto optionalMap = [&json](std::string_view key, const auto& field) {
            if (field) json[std::string(key)] = toolMap(*field, key);
        };
        const auto optionalNumber = [&json](std::string_view key, const std::optional<double>& field) {
            if (field) json[std::string(key)] = number(*field, key);
        };
        optionalMap("toolDashed", toolDashed);
        optionalMap("toolShadow", toolShadow);
        optionalMap("toolOutline", toolOutline);
        optionalMap("toolFill", toolFill);
        optionalMap("toolOutlineWidth", toolOutlineWidth);
        optionalMap("toolShadowRadius", toolShadowRadius);
        optionalMap("toolShadowOffset", toolShadowOffset);
        optionalMap("toolDashLength", toolDashLength);
        json["textFontSize"] = number(textFontSize, "textFontSize");
        json["mosaicBlockSize"] = number(mosaicBlockSize, "mosaicBlockSize");
        json["blurRadius"] = number(blurRadius, "blurRadius");
        optionalNumber("magnifierZoom", magnifierZoom);
        optionalNumber("watermarkAngle", watermarkAngle);
        optionalNumber("watermarkOpacity", watermarkOpacity);
        optionalNumber("watermarkSpacing", watermarkSpacing);
        optionalNumber("spotlightVeilOpacity", spotlightVeilOpacity);
        optionalMap("toolOpacity", toolOpacity);
        optionalMap("toolFillOpacity", toolFillOpacity);
        if (version) json["version"] = *version;
        return json.dump();
    } catch (const Fault& fault) {
        return Error{"cannot write the annotation style defaults: " + fault.message};
    }
}

Expected<AnnotationStyleStore> AnnotationStyleStore::decode(std::string_view text) {
    const Json json = Json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (json.is_discarded()) return Error{"the annotation style defaults are not JSON"};
    if (!json.is_object()) return Error{"the annotation style defaults are not a JSON object"};
    try {
        const Reader read(json);
        AnnotationStyleStore store;
        Expected<RGBAColor> color = RGBAColorJson::fromJson(read.required("strokeColor"));
        if (!color) fail("strokeColor: " + color.error().message);
        store.strokeColor = *color;
        store.toolWidths = readToolMap<double>(read.required("toolWidths"), "toolWidths");
        read.toolMap("toolDashed", store.toolDashed);
        read.toolMap("toolShadow", store.toolShadow);
        read.toolMap("toolOutline", store.toolOutline);
        read.toolMap("toolFill", store.toolFill);
        read.toolMap("toolOutlineWidth", store.toolOutlineWidth);
        read.toolMap("toolShadowRadius", store.toolShadowRadius);
        read.toolMap("toolShadowOffset", store.toolShadowOffset);
        read.toolMap("toolDashLength", store.toolDashLength);
        store.textFontSize = readNumber(read.required("textFontSize"), "textFontSize");
        store.mosaicBlockSize = readNumber(read.required("mosaicBlockSize"), "mosaicBlockSize");
        store.blurRadius = readNumber(read.required("blurRadius"), "blurRadius");
        read.number("magnifierZoom", store.magnifierZoom);
        read.number("watermarkAngle", store.watermarkAngle);
        read.number("watermarkOpacity", store.watermarkOpacity);
        read.number("watermarkSpacing", store.watermarkSpacing);
        read.number("spotlightVeilOpacity", store.spotlightVeilOpacity);
        read.toolMap("toolOpacity", store.toolOpacity);
        read.toolMap("toolFillOpacity", store.toolFillOpacity);
        if (const Json* version = read.optional("version")) store.version = readVersion(*version);
        return store;
    } catch (const Fault& fault) {
        return Error{"the annotation style defaults do not read: " + fault.message};
    }
}

AnnotationStyleStore AnnotationStyleStore::load(const DefaultsStore& store) {
    const std::optional<std::string> text = store.recordText(std::string(defaultsKey));
    if (!text) return defaults();
    Expected<AnnotationStyleStore> stored = decode(*text);
    if (!stored) return defaults();
    for (const auto& [tool, width] : defaults().toolWidths) stored->toolWidths.try_emplace(tool, width);
    return std::move(stored).value();
}

void AnnotationStyleStore::save(DefaultsStore& store) const {
    Expected<std::string> text = encode();
    if (!text) {
        logLine(text.error().message);
        return;
    }
    store.set(std::string(defaultsKey), std::move(text).value());
}

} // namespace tosvar
