#include "AnnotationJson.h"

#include "Base64.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>

namespace tosvar::AnnotationJson {

namespace {

// Where in a document a value sits, kept as a chain up to the root so that
// nothing is built unless a message needs it.
class Location {
public:
    Location() = default;

    Location key(std::string_view name) const { return Location(this, name, noIndex); }
    Location index(std::size_t i) const { return Location(this, {}, i); }

    // "style.strokeColor.red", "[3].geometry.path._0[12]"; empty at the root.
    std::string describe() const {
        std::string path = parent_ ? parent_->describe() : std::string();
        if (index_ != noIndex) {
            path += '[' + std::to_string(index_) + ']';
        } else if (!key_.empty()) {
            if (!path.empty()) path += '.';
            path += key_;
        }
        return path;
    }

private:
    static constexpr std::size_t noIndex = std::numeric_limits<std::size_t>::max();
    Location(const Location* parent, std::string_view key, std::size_t index)
        : parent_(parent), key_(key), index_(index) {}

    const Location* parent_ = nullptr;
    std::string_view key_;
    std::size_t index_ = noIndex;
};

// The case names of `Geometry`, in the order of its cases.
enum class GeometryCase { segment, rect, path, point };

} // namespace
} // namespace tosvar::AnnotationJson

template <>
struct tosvar::RawEnum<tosvar::AnnotationJson::GeometryCase> {
    using C = tosvar::AnnotationJson::GeometryCase;
    static constexpr std::array table{std::pair{C::segment, std::string_view("segment")},
                                      std::pair{C::rect, std::string_view("rect")},
                                      std::pair{C::path, std::string_view("path")},
                                      std::pair{C::point, std::string_view("point")}};
};

namespace tosvar::AnnotationJson {
namespace {

// Thrown inside this file only; every public function turns it into an Error.
struct Fault {
    std::string message;
};

[[noreturn]] void fail(const Location& at, const std::string& description) {
    const std::string path = at.describe();
    throw Fault{path.empty() ? description : path + ": " + description};
}

// Names from the input can be any length; a message quotes only their start.
std::string quote(std::string_view text) {
    constexpr std::size_t longest = 64;
    if (text.size() <= longest) return '"' + std::string(text) + '"';
    return '"' + std::string(text.substr(0, longest)) + "...\"";
}

template <typename T>
Expected<T> catchingFaults(auto&& work) {
    try {
        return work();
    } catch (const Fault& fault) {
        return Error{fault.message};
    }
}

// ---- Writing

Json number(double value, const Location& at) {
    if (!std::isfinite(value)) fail(at, "cannot write " + std::to_string(value) + ", only finite numbers");
    constexpr double int64Limit = 9223372036854775808.0; // 2^63
    if (std::trunc(value) == value && value >= -int64Limit && value < int64Limit)
        return Json(static_cast<std::int64_t>(value));
    return Json(value);
}

Json pair(double first, double second, const Location& at) {
    Json array = Json::array();
    array.push_back(number(first, at.index(0)));
    array.push_back(number(second, at.index(1)));
    return array;
}

Json point(Point p, const Location& at) { return pair(p.x, p.y, at); }
Json size(Size s, const Location& at) { return pair(s.width, s.height, at); }

Json rect(const Rect& r, const Location& at) {
    Json array = Json::array();
    array.push_back(point(r.origin, at.index(0)));
    array.push_back(size(r.size, at.index(1)));
    return array;
}

Json points(const std::vector<Point>& list, const Location& at) {
    Json array = Json::array();
    for (std::size_t i = 0; i < list.size(); ++i) array.push_back(point(list[i], at.index(i)));
    return array;
}

Json tagged(std::string_view name, Json body) {
    Json object = Json::object();
    object[std::string(name)] = std::move(body);
    return object;
}

Json payload(Json value) {
    Json object = Json::object();
    object["_0"] = std::move(value);
    return object;
}

Json color(const RGBAColor& c, const Location& at) {
    Json object = Json::object();
    object["red"] = number(c.red, at.key("red"));
    object["green"] = number(c.green, at.key("green"));
    object["blue"] = number(c.blue, at.key("blue"));
    object["alpha"] = number(c.alpha, at.key("alpha"));
    return object;
}

Json image(const AnnotationImage& picture, const Location& at) {
    Json object = Json::object();
    object["id"] = picture.id.string();
    object["data"] = Base64::encode(picture.data.span());
    object["pixelWidth"] = number(picture.pixelWidth, at.key("pixelWidth"));
    object["pixelHeight"] = number(picture.pixelHeight, at.key("pixelHeight"));
    return object;
}

Json block(const TranslatedBlock& b) {
    Json object = Json::object();
    object["source"] = b.source;
    object["target"] = b.target;
    if (b.sourceLanguage) object["sourceLanguage"] = *b.sourceLanguage;
    object["targetLanguage"] = b.targetLanguage;
    object["showsSource"] = b.showsSource;
    object["fontSizeLocked"] = b.fontSizeLocked;
    if (b.marker) object["marker"] = *b.marker;
    object["isHidden"] = b.isHidden;
    return object;
}

Json kind(const AnnotationKind& k, const Location& at) {
    const std::string_view name = rawValue(k.kindCase());
    const Location caseAt = at.key(name);
    const Location inner = caseAt.key("_0");
    if (const AnnotationImage* picture = k.imagePayload()) return tagged(name, payload(image(*picture, inner)));
    if (const TranslatedBlock* b = k.blockPayload()) return tagged(name, payload(block(*b)));
    switch (k.kindCase()) {
    case AnnotationKind::Case::text:
    case AnnotationKind::Case::stepBadge:
    case AnnotationKind::Case::watermark:
        return tagged(name, payload(k.textPayload()));
    default:
        return tagged(name, Json::object());
    }
}

Json geometry(const Geometry& g, const Location& at) {
    const auto geometryCase = static_cast<GeometryCase>(g.value.index());
    const std::string_view name = rawValue(geometryCase);
    const Location caseAt = at.key(name);
    const Location inner = caseAt.key("_0");
    if (const Geometry::Segment* s = g.asSegment()) {
        Json body = Json::object();
        body["from"] = point(s->from, caseAt.key("from"));
        body["to"] = point(s->to, caseAt.key("to"));
        return tagged(name, std::move(body));
    }
    if (const Rect* r = g.asRect()) return tagged(name, payload(rect(*r, inner)));
    if (const auto* list = g.asPath()) return tagged(name, payload(points(*list, inner)));
    return tagged(name, payload(point(*g.asPoint(), inner)));
}

Json style(const AnnotationStyle& s, const Location& at) {
    Json o = Json::object();
    const auto put = [&](const char* key, const auto& value, auto write) { o[key] = write(value, at.key(key)); };
    const auto putOptional = [&](const char* key, const auto& value, auto write) {
        if (value) o[key] = write(*value, at.key(key));
    };
    put("strokeColor", s.strokeColor, color);
    putOptional("fillColor", s.fillColor, color);
    put("lineWidth", s.lineWidth, number);
    put("opacity", s.opacity, number);
    put("cornerRadius", s.cornerRadius, number);
    o["arrowHead"] = tagged(rawValue(s.arrowHead), Json::object());
    put("fontSize", s.fontSize, number);
    put("mosaicBlockSize", s.mosaicBlockSize, number);
    put("blurRadius", s.blurRadius, number);
    putOptional("magnifierZoom", s.magnifierZoom, number);
    putOptional("magnifierOffset", s.magnifierOffset, size);
    o["dashed"] = s.dashed;
    o["shadow"] = s.shadow;
    o["outline"] = s.outline;
    putOptional("outlineWidth", s.outlineWidth, number);
    putOptional("shadowRadius", s.shadowRadius, number);
    putOptional("shadowOffset", s.shadowOffset, size);
    putOptional("dashLength", s.dashLength, number);
    put("curvature", s.curvature, number);
    o["textOutline"] = s.textOutline;
    put("watermarkAngle", s.watermarkAngle, number);
    put("watermarkSpacing", s.watermarkSpacing, number);
    put("watermarkOffset", s.watermarkOffset, size);
    putOptional("leaderTip", s.leaderTip, point);
    putOptional("leaderWidth", s.leaderWidth, number);
    putOptional("midPoints", s.midPoints, points);
    putOptional("rotation", s.rotation, number);
    return o;
}

Json element(const AnnotationElement& e, const Location& at) {
    Json object = Json::object();
    object["id"] = e.id.string();
    object["kind"] = kind(e.kind, at.key("kind"));
    object["geometry"] = geometry(e.geometry, at.key("geometry"));
    object["style"] = style(e.style, at.key("style"));
    return object;
}

Expected<std::string> text(const Json& json) {
    try {
        return json.dump();
    } catch (const nlohmann::json::exception& error) {
        return Error{std::string("cannot write text that is not valid UTF-8: ") + error.what()};
    }
}

// ---- Reading

void expectType(bool matches, const char* expected, const Json& json, const Location& at) {
    if (!matches) fail(at, std::string("expected ") + expected + ", found " + json.type_name());
}

double readNumber(const Json& json, const Location& at) {
    expectType(json.is_number(), "a number", json, at);
    const double value = json.get<double>();
    if (!std::isfinite(value)) fail(at, "number out of range");
    return value;
}

bool readBool(const Json& json, const Location& at) {
    expectType(json.is_boolean(), "a boolean", json, at);
    return json.get<bool>();
}

std::string readString(const Json& json, const Location& at) {
    expectType(json.is_string(), "a string", json, at);
    return json.get<std::string>();
}

Uuid readUuid(const Json& json, const Location& at) {
    expectType(json.is_string(), "a UUID string", json, at);
    const std::optional<Uuid> uuid = Uuid::parse(json.get_ref<const std::string&>());
    if (!uuid) fail(at, "not a UUID: " + quote(json.get_ref<const std::string&>()));
    return *uuid;
}

SharedBytes readBytes(const Json& json, const Location& at) {
    expectType(json.is_string(), "base64 text", json, at);
    Expected<std::vector<std::uint8_t>> bytes = Base64::decode(json.get_ref<const std::string&>());
    if (!bytes) fail(at, bytes.error().message);
    return SharedBytes(std::move(bytes).value());
}

std::pair<double, double> readPair(const Json& json, const Location& at) {
    expectType(json.is_array(), "an array of two numbers", json, at);
    if (json.size() != 2) fail(at, "expected an array of two numbers, found " + std::to_string(json.size()));
    return {readNumber(json[0], at.index(0)), readNumber(json[1], at.index(1))};
}

Point readPoint(const Json& json, const Location& at) {
    const auto [x, y] = readPair(json, at);
    return {x, y};
}

Size readSize(const Json& json, const Location& at) {
    const auto [width, height] = readPair(json, at);
    return {width, height};
}

Rect readRect(const Json& json, const Location& at) {
    expectType(json.is_array(), "an array of an origin and a size", json, at);
    if (json.size() != 2) fail(at, "expected an array of an origin and a size, found " + std::to_string(json.size()) + " items");
    return Rect(readPoint(json[0], at.index(0)), readSize(json[1], at.index(1)));
}

std::vector<Point> readPoints(const Json& json, const Location& at) {
    expectType(json.is_array(), "an array of points", json, at);
    std::vector<Point> list;
    list.reserve(json.size());
    for (std::size_t i = 0; i < json.size(); ++i) list.push_back(readPoint(json[i], at.index(i)));
    return list;
}

// The keys of one object, each read where it sits. The location is kept by
// value, so a Fields may be built from a temporary one.
class Fields {
public:
    Fields(const Json& json, const Location& at) : json_(json), at_(at) {
        expectType(json.is_object(), "an object", json, at);
    }

    template <typename Read>
    auto required(std::string_view key, Read read) const {
        const auto found = json_.find(key);
        if (found == json_.end()) fail(at_, "missing required key " + quote(key));
        return read(*found, at_.key(key));
    }

    // Absent or null reads as absent.
    template <typename Read>
    std::optional<std::invoke_result_t<Read, const Json&, const Location&>> optional(std::string_view key, Read read) const {
        const auto found = json_.find(key);
        if (found == json_.end() || found->is_null()) return std::nullopt;
        return read(*found, at_.key(key));
    }

private:
    const Json& json_;
    Location at_;
};

// A tagged case: an object with exactly one key, the case name.
std::pair<const std::string&, const Json&> readTagged(const Json& json, const Location& at) {
    expectType(json.is_object(), "an object", json, at);
    if (json.size() != 1) fail(at, "Invalid number of keys found, expected one.");
    return {json.begin().key(), json.begin().value()};
}

template <typename E>
E readCase(const std::string& name, const char* what, const Location& at) {
    const std::optional<E> value = enumFromRaw<E>(name);
    if (!value) fail(at, std::string("unknown ") + what + " " + quote(name));
    return *value;
}

RGBAColor readColor(const Json& json, const Location& at) {
    const Fields f(json, at);
    return {f.required("red", readNumber), f.required("green", readNumber), f.required("blue", readNumber),
            f.required("alpha", readNumber)};
}

ArrowHeadStyle readArrowHead(const Json& json, const Location& at) {
    const auto& [name, body] = readTagged(json, at);
    const ArrowHeadStyle head = readCase<ArrowHeadStyle>(name, "arrow head", at);
    expectType(body.is_object(), "an object", body, at.key(rawValue(head)));
    return head;
}

AnnotationImage readImage(const Json& json, const Location& at) {
    const Fields f(json, at);
    return {f.required("id", readUuid), f.required("data", readBytes), f.required("pixelWidth", readNumber),
            f.required("pixelHeight", readNumber)};
}

TranslatedBlock readBlock(const Json& json, const Location& at) {
    const Fields f(json, at);
    return {f.required("source", readString),         f.required("target", readString),
            f.optional("sourceLanguage", readString), f.required("targetLanguage", readString),
            f.required("showsSource", readBool),      f.required("fontSizeLocked", readBool),
            f.optional("marker", readString),         f.required("isHidden", readBool)};
}

AnnotationKind readKind(const Json& json, const Location& at) {
    using C = AnnotationKind::Case;
    const auto& [name, body] = readTagged(json, at);
    const C kindCase = readCase<C>(name, "kind", at);
    const Location inner = at.key(rawValue(kindCase));
    const Fields f(body, inner);
    switch (kindCase) {
    case C::text:
        return AnnotationKind::text(f.required("_0", readString));
    case C::stepBadge:
        return AnnotationKind::stepBadge(f.required("_0", readString));
    case C::watermark:
        return AnnotationKind::watermark(f.required("_0", readString));
    case C::image:
        return AnnotationKind::image(f.required("_0", readImage));
    case C::translatedText:
        return AnnotationKind::translatedText(f.required("_0", readBlock));
    default:
        return AnnotationKind(kindCase);
    }
}

Geometry readGeometry(const Json& json, const Location& at) {
    const auto& [name, body] = readTagged(json, at);
    const GeometryCase geometryCase = readCase<GeometryCase>(name, "geometry", at);
    const Fields f(body, at.key(rawValue(geometryCase)));
    switch (geometryCase) {
    case GeometryCase::segment:
        return Geometry::segment(f.required("from", readPoint), f.required("to", readPoint));
    case GeometryCase::rect:
        return Geometry::rect(f.required("_0", readRect));
    case GeometryCase::path:
        return Geometry::path(f.required("_0", readPoints));
    case GeometryCase::point:
        return Geometry::point(f.required("_0", readPoint));
    }
    fail(at, "unknown geometry " + quote(name));
}

AnnotationStyle readStyle(const Json& json, const Location& at) {
    const Fields f(json, at);
    AnnotationStyle s;
    s.strokeColor = f.required("strokeColor", readColor);
    s.fillColor = f.optional("fillColor", readColor);
    s.lineWidth = f.required("lineWidth", readNumber);
    s.opacity = f.required("opacity", readNumber);
    s.cornerRadius = f.required("cornerRadius", readNumber);
    s.arrowHead = f.required("arrowHead", readArrowHead);
    s.fontSize = f.required("fontSize", readNumber);
    s.mosaicBlockSize = f.required("mosaicBlockSize", readNumber);
    s.blurRadius = f.required("blurRadius", readNumber);
    s.magnifierZoom = f.optional("magnifierZoom", readNumber);
    s.magnifierOffset = f.optional("magnifierOffset", readSize);
    s.dashed = f.required("dashed", readBool);
    s.shadow = f.required("shadow", readBool);
    s.outline = f.required("outline", readBool);
    s.outlineWidth = f.optional("outlineWidth", readNumber);
    s.shadowRadius = f.optional("shadowRadius", readNumber);
    s.shadowOffset = f.optional("shadowOffset", readSize);
    s.dashLength = f.optional("dashLength", readNumber);
    s.curvature = f.required("curvature", readNumber);
    s.textOutline = f.required("textOutline", readBool);
    s.watermarkAngle = f.required("watermarkAngle", readNumber);
    s.watermarkSpacing = f.required("watermarkSpacing", readNumber);
    s.watermarkOffset = f.required("watermarkOffset", readSize);
    s.leaderTip = f.optional("leaderTip", readPoint);
    s.leaderWidth = f.optional("leaderWidth", readNumber);
    s.midPoints = f.optional("midPoints", readPoints);
    s.rotation = f.optional("rotation", readNumber);
    return s;
}

AnnotationElement readElement(const Json& json, const Location& at) {
    const Fields f(json, at);
    return {f.required("id", readUuid), f.required("kind", readKind), f.required("geometry", readGeometry),
            f.required("style", readStyle)};
}

Expected<Json> parse(std::string_view text) {
    try {
        return Json::parse(text);
    } catch (const nlohmann::json::exception& error) {
        return Error{std::string("not JSON: ") + error.what()};
    }
}

} // namespace

Expected<Json> toJson(const AnnotationElement& e) {
    return catchingFaults<Json>([&] { return element(e, Location()); });
}

Expected<AnnotationElement> elementFromJson(const Json& json) {
    return catchingFaults<AnnotationElement>([&] { return readElement(json, Location()); });
}

Expected<std::string> encodeElement(const AnnotationElement& e) {
    Expected<Json> json = toJson(e);
    if (!json) return json.error();
    return text(*json);
}

Expected<std::string> encodeElements(std::span<const AnnotationElement> elements) {
    Expected<Json> json = catchingFaults<Json>([&] {
        const Location root;
        Json array = Json::array();
        for (std::size_t i = 0; i < elements.size(); ++i) array.push_back(element(elements[i], root.index(i)));
        return array;
    });
    if (!json) return json.error();
    return text(*json);
}

Expected<AnnotationElement> decodeElement(std::string_view text) {
    Expected<Json> json = parse(text);
    if (!json) return json.error();
    return elementFromJson(*json);
}

Expected<std::vector<AnnotationElement>> decodeElements(std::string_view text) {
    Expected<Json> json = parse(text);
    if (!json) return json.error();
    return catchingFaults<std::vector<AnnotationElement>>([&] {
        const Location root;
        expectType(json->is_array(), "an array of elements", *json, root);
        std::vector<AnnotationElement> elements;
        elements.reserve(json->size());
        for (std::size_t i = 0; i < json->size(); ++i) elements.push_back(readElement((*json)[i], root.index(i)));
        return elements;
    });
}

ElementsReading decodeElementsLeniently(std::string_view text) {
    ElementsReading reading;
    Expected<Json> json = parse(text);
    if (!json) {
        reading.failure = json.error().message;
        return reading;
    }
    if (!json->is_array()) {
        reading.failure = std::string("expected an array of elements, found ") + json->type_name();
        return reading;
    }
    const Location root;
    for (std::size_t i = 0; i < json->size(); ++i) {
        Expected<AnnotationElement> element =
            catchingFaults<AnnotationElement>([&] { return readElement((*json)[i], root.index(i)); });
        if (element) {
            reading.elements.push_back(std::move(*element));
        } else {
            reading.rejected.push_back({i, element.error().message});
        }
    }
    return reading;
}

} // namespace tosvar::AnnotationJson
