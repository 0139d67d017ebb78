#include "AnnotationJson.h"
#include "AnnotationSamples.h"

#include "FileContents.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace tosvar;
using AnnotationJson::Json;

namespace {

const std::vector<std::string> requiredStyleKeys{
    "strokeColor", "lineWidth", "opacity",  "cornerRadius", "arrowHead",   "fontSize",
    "mosaicBlockSize", "blurRadius", "dashed", "shadow", "outline", "curvature",
    "textOutline", "watermarkAngle", "watermarkSpacing", "watermarkOffset"};

const std::vector<std::string> allStyleKeysInOrder{
    "strokeColor", "fillColor", "lineWidth", "opacity", "cornerRadius", "arrowHead", "fontSize",
    "mosaicBlockSize", "blurRadius", "magnifierZoom", "magnifierOffset", "dashed", "shadow", "outline",
    "outlineWidth", "shadowRadius", "shadowOffset", "dashLength", "curvature", "textOutline", "watermarkAngle",
    "watermarkSpacing", "watermarkOffset", "leaderTip", "leaderWidth", "midPoints", "rotation"};

std::vector<std::string> keysOf(const Json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items()) keys.push_back(key);
    return keys;
}

bool holdsNull(const Json& json) {
    if (json.is_null()) return true;
    if (json.is_structured())
        for (const Json& child : json)
            if (holdsNull(child)) return true;
    return false;
}

AnnotationElement fixtureArrow() {
    return {*Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"), AnnotationKind(AnnotationKind::Case::arrow),
            Geometry::segment({12, 40}, {310.5, -7.25}), AnnotationStyle{}};
}

AnnotationElement fullArrow() {
    AnnotationElement arrow = fixtureArrow();
    arrow.style = samples::fullStyle();
    return arrow;
}

Json arrowJson() { return *AnnotationJson::toJson(fullArrow()); }

std::string decodeError(const Json& json) {
    const Expected<AnnotationElement> decoded = AnnotationJson::elementFromJson(json);
    return decoded ? std::string("(decoded)") : decoded.error().message;
}

} // namespace

TEST(AnnotationJson, EveryKindRoundTripsWithEveryOptionalKeyPresentOrAbsent) {
    for (const AnnotationStyle& style : {samples::fullStyle(), AnnotationStyle{}}) {
        for (const AnnotationElement& element : samples::oneOfEveryKind(style)) {
            const std::string kind(rawValue(element.kind.kindCase()));
            const Expected<std::string> text = AnnotationJson::encodeElement(element);
            ASSERT_TRUE(text) << kind << ": " << text.error().message;
            const Expected<AnnotationElement> decoded = AnnotationJson::decodeElement(*text);
            ASSERT_TRUE(decoded) << kind << ": " << decoded.error().message;
            EXPECT_EQ(*decoded, element) << kind;
            EXPECT_EQ(*AnnotationJson::encodeElement(*decoded), *text) << kind;
            if (const AnnotationImage* picture = element.kind.imagePayload()) {
                // Equality ignores the bytes, so they are compared on their own.
                const auto original = picture->data.span();
                const auto read = decoded->kind.imagePayload()->data.span();
                EXPECT_TRUE(std::equal(original.begin(), original.end(), read.begin(), read.end()));
            }
        }
    }
}

TEST(AnnotationJson, StyleKeysFollowTheFieldOrderAndAbsentOnesAreLeftOut) {
    const Json full = arrowJson()["style"];
    EXPECT_EQ(keysOf(full), allStyleKeysInOrder);

    const Json plain = (*AnnotationJson::toJson(fixtureArrow()))["style"];
    EXPECT_EQ(keysOf(plain), requiredStyleKeys);

    for (const AnnotationElement& element : samples::oneOfEveryKind(AnnotationStyle{}))
        EXPECT_FALSE(holdsNull(*AnnotationJson::toJson(element)));

    EXPECT_EQ(keysOf(*AnnotationJson::toJson(samples::oneOfEveryKind({}).front())),
              (std::vector<std::string>{"id", "kind", "geometry", "style"}));
}

TEST(AnnotationJson, PayloadsAndTranslatedBlockKeys) {
    const auto elements = samples::oneOfEveryKind(AnnotationStyle{});
    const auto json = [&](AnnotationKind::Case c) {
        return *AnnotationJson::toJson(elements[static_cast<std::size_t>(c)]);
    };
    using C = AnnotationKind::Case;
    EXPECT_EQ(json(C::line)["kind"].dump(), R"({"line":{}})");
    EXPECT_EQ(json(C::stepBadge)["kind"].dump(), R"({"stepBadge":{"_0":"12"}})");
    EXPECT_EQ(json(C::text)["geometry"].dump(), R"({"point":{"_0":[42,17.125]}})");
    EXPECT_EQ(json(C::rectangle)["geometry"].dump(), R"({"rect":{"_0":[[5,6],[120,-80]]}})");
    EXPECT_EQ(json(C::freehand)["geometry"].dump(), R"({"path":{"_0":[[0,0],[1.5,2],[3,5],[-7,1000000]]}})");
    EXPECT_EQ(keysOf(json(C::image)["kind"]["image"]["_0"]),
              (std::vector<std::string>{"id", "data", "pixelWidth", "pixelHeight"}));
    EXPECT_EQ(json(C::image)["kind"]["image"]["_0"]["id"], "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0");

    const Json block = json(C::translatedText)["kind"]["translatedText"]["_0"];
    EXPECT_EQ(keysOf(block), (std::vector<std::string>{"source", "target", "sourceLanguage", "targetLanguage",
                                                        "showsSource", "fontSizeLocked", "marker", "isHidden"}));
    TranslatedBlock bare = samples::fullBlock();
    bare.sourceLanguage.reset();
    bare.marker.reset();
    const AnnotationElement withBare{Uuid::random(), AnnotationKind::translatedText(bare), Geometry{}, {}};
    EXPECT_EQ(keysOf((*AnnotationJson::toJson(withBare))["kind"]["translatedText"]["_0"]),
              (std::vector<std::string>{"source", "target", "targetLanguage", "showsSource", "fontSizeLocked",
                                        "isHidden"}));
}

TEST(AnnotationJson, ArrowWithTheDefaultStyleMatchesTheFixtureByteForByte) {
    const Expected<std::string> fixture = readFileText(TOSVAR_TEST_DATA_DIR "/arrow-default-style.json");
    ASSERT_TRUE(fixture) << fixture.error().message;
    EXPECT_EQ(*AnnotationJson::encodeElement(fixtureArrow()), *fixture);

    const Expected<AnnotationElement> read = AnnotationJson::decodeElement(*fixture);
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(*read, fixtureArrow());
}

TEST(AnnotationJson, WholeNumbersHaveNoFractionAndOthersKeepTheirDigits) {
    AnnotationElement element = fixtureArrow();
    const auto written = [&](double value) {
        element.style.lineWidth = value;
        return (*AnnotationJson::toJson(element))["style"]["lineWidth"].dump();
    };
    EXPECT_EQ(written(4.0), "4");
    EXPECT_EQ(written(-45.0), "-45");
    EXPECT_EQ(written(-0.0), "0");
    EXPECT_EQ(written(0.1), "0.1");
    EXPECT_EQ(written(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(written(9007199254740993.0), "9007199254740992");
    EXPECT_EQ(written(1e20), "1e+20"); // beyond 64-bit integers: still exact, in exponent form
    EXPECT_EQ(written(-9223372036854775808.0), "-9223372036854775808");
}

TEST(AnnotationJson, UuidsAreReadInEitherCaseAndWrittenInUpperCase) {
    Json json = *AnnotationJson::toJson(fixtureArrow());
    json["id"] = "e621e1f8-c36c-495a-93fc-0c247a3e6e5f";
    const Expected<AnnotationElement> read = AnnotationJson::elementFromJson(json);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->id, fixtureArrow().id);
    EXPECT_EQ((*AnnotationJson::toJson(*read))["id"], "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
}

TEST(AnnotationJson, EveryMissingRequiredKeyFailsTheWholeElement) {
    std::vector<std::string> pointers{"/id", "/kind", "/geometry", "/style", "/geometry/segment/from",
                                      "/geometry/segment/to", "/style/fillColor/red", "/style/strokeColor/green",
                                      "/style/strokeColor/blue", "/style/strokeColor/alpha"};
    for (const std::string& key : requiredStyleKeys) pointers.push_back("/style/" + key);
    const Json arrow = arrowJson();

    const auto elements = samples::oneOfEveryKind(samples::fullStyle());
    const Json image = *AnnotationJson::toJson(elements[static_cast<std::size_t>(AnnotationKind::Case::image)]);
    const Json block = *AnnotationJson::toJson(elements[static_cast<std::size_t>(AnnotationKind::Case::translatedText)]);
    const Json text = *AnnotationJson::toJson(elements[static_cast<std::size_t>(AnnotationKind::Case::text)]);
    std::vector<std::pair<Json, std::string>> cases;
    for (const std::string& pointer : pointers) cases.emplace_back(arrow, pointer);
    for (const char* key : {"id", "data", "pixelWidth", "pixelHeight"})
        cases.emplace_back(image, std::string("/kind/image/_0/") + key);
    for (const char* key : {"source", "target", "targetLanguage", "showsSource", "fontSizeLocked", "isHidden"})
        cases.emplace_back(block, std::string("/kind/translatedText/_0/") + key);
    cases.emplace_back(text, "/kind/text/_0");
    cases.emplace_back(text, "/geometry/point/_0");
    cases.emplace_back(image, "/geometry/rect/_0");

    for (auto& [json, pointer] : cases) {
        const Json::json_pointer at(pointer);
        json.at(at.parent_pointer()).erase(at.back());
        std::string parentPath = at.parent_pointer().to_string();
        if (!parentPath.empty()) parentPath.erase(0, 1);
        std::replace(parentPath.begin(), parentPath.end(), '/', '.');
        const std::string expected =
            (parentPath.empty() ? "" : parentPath + ": ") + "missing required key \"" + at.back() + "\"";
        EXPECT_EQ(decodeError(json), expected) << pointer;
    }
}

TEST(AnnotationJson, OptionalKeysMayBeAbsentOrNull) {
    for (const char* key : {"fillColor", "magnifierZoom", "magnifierOffset", "outlineWidth", "shadowRadius",
                            "shadowOffset", "dashLength", "leaderTip", "leaderWidth", "midPoints", "rotation"}) {
        Json absent = arrowJson();
        absent["style"].erase(key);
        Json null = arrowJson();
        null["style"][key] = nullptr;
        const Expected<AnnotationElement> fromAbsent = AnnotationJson::elementFromJson(absent);
        const Expected<AnnotationElement> fromNull = AnnotationJson::elementFromJson(null);
        ASSERT_TRUE(fromAbsent) << key << ": " << fromAbsent.error().message;
        ASSERT_TRUE(fromNull) << key << ": " << fromNull.error().message;
        EXPECT_EQ(*fromAbsent, *fromNull) << key;
        EXPECT_NE(fromAbsent->style, samples::fullStyle()) << key;
    }
}

TEST(AnnotationJson, UnknownKeysAreIgnored) {
    Json json = arrowJson();
    json["comment"] = "added by hand";
    json["style"]["sparkle"] = true;
    json["style"]["strokeColor"]["space"] = "sRGB";
    const Expected<AnnotationElement> read = AnnotationJson::elementFromJson(json);
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(*read, fullArrow());
}

TEST(AnnotationJson, WrongTypesAndUnknownCasesNameWhereTheyAre) {
    struct Row {
        const char* name;
        const char* pointer;
        const char* replacement;
        const char* message;
    };
    const std::vector<Row> rows{
        {"number as text", "/style/lineWidth", R"("4")", "style.lineWidth: expected a number, found string"},
        {"number as bool", "/style/dashed", "1", "style.dashed: expected a boolean, found number"},
        {"required null", "/style/watermarkOffset", "null",
         "style.watermarkOffset: expected an array of two numbers, found null"},
        {"colour as array", "/style/strokeColor", "[1,0,0,1]", "style.strokeColor: expected an object, found array"},
        {"short point", "/geometry/segment/from", "[1]",
         "geometry.segment.from: expected an array of two numbers, found 1"},
        {"text coordinate", "/geometry/segment/to", R"([1,"2"])", "geometry.segment.to[1]: expected a number, found string"},
        {"bad mid point", "/style/midPoints", R"([[1,2],"x"])",
         "style.midPoints[1]: expected an array of two numbers, found string"},
        {"rect of three", "/geometry", R"({"rect":{"_0":[[0,0],[1,1],[2,2]]}})",
         "geometry.rect._0: expected an array of an origin and a size, found 3 items"},
        {"uuid text", "/id", R"("not-a-uuid")", R"(id: not a UUID: "not-a-uuid")"},
        {"uuid number", "/id", "17", "id: expected a UUID string, found number"},
        {"unknown kind", "/kind", R"({"banana":{}})", R"(kind: unknown kind "banana")"},
        {"kind body array", "/kind", R"({"arrow":[]})", "kind.arrow: expected an object, found array"},
        {"payload missing", "/kind", R"({"text":{}})", R"(kind.text: missing required key "_0")"},
        {"payload type", "/kind", R"({"watermark":{"_0":5}})", "kind.watermark._0: expected a string, found number"},
        {"unknown geometry", "/geometry", R"({"circle":{"_0":1}})", R"(geometry: unknown geometry "circle")"},
        {"unknown arrow head", "/style/arrowHead", R"({"sharp":{}})", R"(style.arrowHead: unknown arrow head "sharp")"},
        {"arrow head body", "/style/arrowHead", R"({"none":1})", "style.arrowHead.none: expected an object, found number"},
        {"bad base64", "/kind",
         R"({"image":{"_0":{"id":"0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0","data":"iVBO@@","pixelWidth":1,"pixelHeight":1}}})",
         "kind.image._0.data: base64: invalid character at offset 4"},
        {"two kinds", "/kind", R"({"arrow":{},"line":{}})", "kind: Invalid number of keys found, expected one."},
        {"no kind", "/kind", "{}", "kind: Invalid number of keys found, expected one."},
        {"two geometries", "/geometry", R"({"point":{"_0":[1,2]},"rect":{"_0":[[0,0],[1,1]]}})",
         "geometry: Invalid number of keys found, expected one."},
        {"no arrow head", "/style/arrowHead", "{}", "style.arrowHead: Invalid number of keys found, expected one."},
        {"element not an object", "", "[]", "expected an object, found array"},
    };
    for (const Row& row : rows) {
        Json json = arrowJson();
        json[Json::json_pointer(row.pointer)] = Json::parse(row.replacement);
        EXPECT_EQ(decodeError(json), row.message) << row.name;
    }
}

TEST(AnnotationJson, NonFiniteNumbersAreRefusedBothWays) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double inf = std::numeric_limits<double>::infinity();

    AnnotationElement element = fixtureArrow();
    element.style.lineWidth = nan;
    EXPECT_EQ(AnnotationJson::toJson(element).error().message, "style.lineWidth: cannot write nan, only finite numbers");

    element = fixtureArrow();
    element.geometry = Geometry::path({{0, 0}, {inf, 1}});
    EXPECT_EQ(AnnotationJson::encodeElement(element).error().message,
              "geometry.path._0[1][0]: cannot write inf, only finite numbers");

    element = fixtureArrow();
    element.style.midPoints = std::vector<Point>{{1, 2}, {3, -inf}};
    std::vector<AnnotationElement> list{fixtureArrow(), element};
    EXPECT_EQ(AnnotationJson::encodeElements(list).error().message,
              "[1].style.midPoints[1][1]: cannot write -inf, only finite numbers");

    AnnotationImage picture = samples::picture();
    picture.pixelHeight = nan;
    element = fixtureArrow();
    element.kind = AnnotationKind::image(picture);
    EXPECT_EQ(AnnotationJson::toJson(element).error().message,
              "kind.image._0.pixelHeight: cannot write nan, only finite numbers");

    Json json = arrowJson();
    json["style"]["opacity"] = nan;
    EXPECT_EQ(decodeError(json), "style.opacity: number out of range");
    json = arrowJson();
    json["geometry"]["segment"]["to"][0] = -inf;
    EXPECT_EQ(decodeError(json), "geometry.segment.to[0]: number out of range");

    std::string text = *AnnotationJson::encodeElement(fixtureArrow());
    text.replace(text.find("\"lineWidth\":4"), 13, "\"lineWidth\":1e999");
    const Expected<AnnotationElement> overflow = AnnotationJson::decodeElement(text);
    ASSERT_FALSE(overflow);
    EXPECT_NE(overflow.error().message.find("number overflow"), std::string::npos) << overflow.error().message;
}

TEST(AnnotationJson, MalformedTextIsAnErrorNeverACrash) {
    for (const char* text : {"", "{", "[1,2", "nul", "\"unterminated", "{\"id\":}", "\xff\xfe", "[{}]x", "{} {}"}) {
        EXPECT_FALSE(AnnotationJson::decodeElement(text)) << text;
        EXPECT_FALSE(AnnotationJson::decodeElements(text)) << text;
    }
    EXPECT_EQ(AnnotationJson::decodeElements("{}").error().message, "expected an array of elements, found object");
    EXPECT_EQ(AnnotationJson::decodeElement("null").error().message, "expected an object, found null");
    EXPECT_EQ(AnnotationJson::decodeElement("{}").error().message, "missing required key \"id\"");

    // A name from the input is quoted only in part.
    Json json = arrowJson();
    json["kind"] = Json::object({{std::string(10'000, 'k'), Json::object()}});
    EXPECT_EQ(decodeError(json), "kind: unknown kind \"" + std::string(64, 'k') + "...\"");
}

TEST(AnnotationJson, AbsurdSizesAndCoordinatesAreKeptAsValues) {
    AnnotationImage picture = samples::picture(0);
    picture.pixelWidth = 1e308;
    picture.pixelHeight = -4;
    AnnotationElement element{Uuid::random(), AnnotationKind::image(picture),
                              Geometry::rect(Rect(-1.7e308, 1e300, -1e-300, 5e-324)), samples::fullStyle()};
    element.style.lineWidth = -1;
    element.style.fontSize = 1e200;
    const Expected<AnnotationElement> read = AnnotationJson::decodeElement(*AnnotationJson::encodeElement(element));
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(*read, element);

    const Expected<AnnotationElement> huge = AnnotationJson::decodeElement(
        R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","kind":{"stepBadge":{"_0":""}},
            "geometry":{"point":{"_0":[123456789012345678901234567890,18446744073709551615]}},
            "style":)" + arrowJson()["style"].dump() + "}");
    ASSERT_TRUE(huge) << huge.error().message;
    EXPECT_EQ(*huge->geometry.asPoint(), (Point{1.2345678901234568e29, 18446744073709551615.0}));
}

TEST(AnnotationJson, ListsFailWholeAtTheFirstBadElement) {
    const auto elements = samples::oneOfEveryKind(samples::fullStyle());
    const Expected<std::string> text = AnnotationJson::encodeElements(elements);
    ASSERT_TRUE(text);
    const Expected<std::vector<AnnotationElement>> read = AnnotationJson::decodeElements(*text);
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(*read, elements);
    EXPECT_EQ(*AnnotationJson::encodeElements({}), "[]");

    Json json = Json::parse(*text);
    json[3]["style"].erase("outline");
    EXPECT_EQ(AnnotationJson::decodeElements(json.dump()).error().message,
              "[3].style: missing required key \"outline\"");
}

TEST(AnnotationJson, TextThatIsNotUtf8CannotBeWritten) {
    AnnotationElement element = fixtureArrow();
    element.kind = AnnotationKind::text("caf\xe9");
    const Expected<std::string> text = AnnotationJson::encodeElement(element);
    ASSERT_FALSE(text);
    EXPECT_EQ(text.error().message.rfind("cannot write text that is not valid UTF-8", 0), 0u) << text.error().message;
}
