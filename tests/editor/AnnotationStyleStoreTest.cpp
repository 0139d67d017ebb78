#include "AnnotationStyleStore.h"

#include "InMemoryDefaultsStore.h"
#include "Log.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace tosvar;
using T = AnnotationTool;

namespace {

const std::string key = "annotationStyleDefaults";

// Every field present and away from its default.
AnnotationStyleStore everyFieldSet() {
    AnnotationStyleStore s = AnnotationStyleStore::defaults();
    s.strokeColor = RGBAColor{0.1, 0.25, 0.5, 0.75};
    s.toolWidths = {{T::arrow, 3.5}, {T::line, 2}, {T::freehand, 8}, {T::highlighter, 30},
                    {T::rectangle, 1}, {T::ellipse, 9}, {T::text, 6}};
    s.toolDashed = std::map<T, bool>{{T::line, true}, {T::rectangle, false}};
    s.toolShadow = std::map<T, bool>{{T::magnifier, false}};
    s.toolOutline = std::map<T, bool>{{T::stepBadge, true}};
    s.toolFill = std::map<T, bool>{{T::ellipse, true}};
    s.toolOutlineWidth = std::map<T, double>{{T::arrow, 2.25}};
    s.toolShadowRadius = std::map<T, double>{{T::text, 7}};
    s.toolShadowOffset = std::map<T, Size>{{T::text, {1, -2.5}}, {T::arrow, {0, 3}}};
    s.toolDashLength = std::map<T, double>{{T::freehand, 22}};
    s.textFontSize = 31.5;
    s.mosaicBlockSize = 24;
    s.blurRadius = 3;
    s.magnifierZoom = 2.5;
    s.watermarkAngle = 30;
    s.watermarkOpacity = 0.4;
    s.watermarkSpacing = 1.75;
    s.spotlightVeilOpacity = 0.8;
    s.toolOpacity = std::map<T, double>{{T::highlighter, 0.35}};
    s.toolFillOpacity = std::map<T, double>{{T::rectangle, 0.2}};
    s.version = 4;
    return s;
}

// A record as a build from before per-tool opacity wrote it.
const char* const olderRecord = R"({
    "strokeColor": {"red": 0, "green": 0.48, "blue": 1, "alpha": 1},
    "toolWidths": {"arrow": 20, "line": 8, "freehand": 8, "highlighter": 8, "rectangle": 8, "ellipse": 8},
    "toolDashed": {"arrow": true},
    "textFontSize": 28, "mosaicBlockSize": 16, "blurRadius": 12,
    "magnifierZoom": null,
    "version": 3
})";

} // namespace

TEST(AnnotationStyleStore, SaveAndLoadKeepEveryFieldUnderRawToolNames) {
    InMemoryDefaultsStore store;
    const AnnotationStyleStore written = everyFieldSet();
    written.save(store);
    EXPECT_EQ(AnnotationStyleStore::load(store), written);

    const std::optional<DefaultsValue> value = store.value(key);
    ASSERT_TRUE(value && std::holds_alternative<std::string>(*value));
    const auto json = nlohmann::json::parse(std::get<std::string>(*value));
    EXPECT_EQ(json["strokeColor"], nlohmann::json::parse(R"({"red":0.1,"green":0.25,"blue":0.5,"alpha":0.75})"));
    EXPECT_EQ(json["toolWidths"]["highlighter"], 30);
    EXPECT_EQ(json["toolOutline"]["stepBadge"], true);
    EXPECT_EQ(json["toolShadowOffset"]["text"], nlohmann::json::parse("[1, -2.5]"));
    EXPECT_EQ(json["version"], 4);
    EXPECT_TRUE(json["version"].is_number_integer());

    // The defaults themselves survive too, absent maps staying absent.
    AnnotationStyleStore::defaults().save(store);
    EXPECT_EQ(AnnotationStyleStore::load(store), AnnotationStyleStore::defaults());
    EXPECT_FALSE(nlohmann::json::parse(*store.string(key)).contains("toolOpacity"));
}

TEST(AnnotationStyleStore, AnOlderRecordLoadsWithTheNewerFieldsAbsent) {
    InMemoryDefaultsStore store;
    store.set(key, std::string(olderRecord));
    const AnnotationStyleStore loaded = AnnotationStyleStore::load(store);
    EXPECT_EQ(loaded.strokeColor, RGBAColor::Palette::blue);
    EXPECT_EQ(loaded.toolWidths.at(T::arrow), 20);
    EXPECT_EQ(loaded.toolDashed, (std::map<T, bool>{{T::arrow, true}}));
    EXPECT_EQ(loaded.textFontSize, 28);
    EXPECT_EQ(loaded.version, 3);
    EXPECT_FALSE(loaded.toolOpacity);
    EXPECT_FALSE(loaded.toolFillOpacity);
    EXPECT_FALSE(loaded.spotlightVeilOpacity);
    EXPECT_FALSE(loaded.magnifierZoom); // null reads as absent
}

TEST(AnnotationStyleStore, StoredWidthsGainTheMissingDefaultToolsAndLoseUnknownNames) {
    InMemoryDefaultsStore store;
    store.set(key, std::string(R"({"strokeColor": {"red": 1, "green": 1, "blue": 1, "alpha": 1},
        "toolWidths": {"arrow": 5, "line": 2.5, "text": 6, "laserPointer": 9},
        "toolOpacity": {"highlighter": 0.5, "sparkles": 1},
        "textFontSize": 40, "mosaicBlockSize": 16, "blurRadius": 12})"));
    const AnnotationStyleStore loaded = AnnotationStyleStore::load(store);
    const std::map<T, double> expected{{T::arrow, 5},     {T::line, 2.5},      {T::text, 6},
                                       {T::freehand, 8},  {T::highlighter, 8}, {T::rectangle, 8},
                                       {T::ellipse, 8}};
    EXPECT_EQ(loaded.toolWidths, expected);
    EXPECT_EQ(loaded.toolOpacity, (std::map<T, double>{{T::highlighter, 0.5}}));
    EXPECT_FALSE(loaded.toolShadow); // only the widths are filled in
}

TEST(AnnotationStyleStore, AnUnreadableRecordGivesTheDefaultsAndLeavesTheStoreAlone) {
    const std::string good = R"("strokeColor": {"red": 1, "green": 0, "blue": 0, "alpha": 1},
        "toolWidths": {"arrow": 5}, "textFontSize": 40, "mosaicBlockSize": 16, "blurRadius": 12)";
    const std::vector<DefaultsValue> unreadable{
        std::string("{\"strokeColor\": {"), // cut short
        std::string("[1, 2, 3]"),
        std::string(""),
        std::int64_t{7},
        std::string(R"({"toolWidths": {"arrow": 5}, "textFontSize": 40, "mosaicBlockSize": 16, "blurRadius": 12})"),
        std::string(R"({"strokeColor": {"red": 1, "green": 0, "blue": 0}, "toolWidths": {}, "textFontSize": 40,
                        "mosaicBlockSize": 16, "blurRadius": 12})"),
        std::string(R"({"strokeColor": "red", "toolWidths": {}, "textFontSize": 40, "mosaicBlockSize": 16,
                        "blurRadius": 12})"),
        std::string(R"({"strokeColor": {"red": 1, "green": 0, "blue": 0, "alpha": 1}, "toolWidths": {"arrow": "5"},
                        "textFontSize": 40, "mosaicBlockSize": 16, "blurRadius": 12})"),
        std::string(R"({"strokeColor": {"red": 1, "green": 0, "blue": 0, "alpha": 1}, "toolWidths": [5],
                        "textFontSize": 40, "mosaicBlockSize": 16, "blurRadius": 12})"),
        std::string(R"({"strokeColor": {"red": 1, "green": 0, "blue": 0, "alpha": 1}, "toolWidths": {},
                        "textFontSize": "40", "mosaicBlockSize": 16, "blurRadius": 12})"),
        // Optional keys present with the wrong type fail the record as well.
        std::string("{" + good + R"(, "toolDashed": {"arrow": 1}})"),
        std::string("{" + good + R"(, "toolShadowOffset": {"text": [1]}})"),
        std::string("{" + good + R"(, "toolOpacity": [0.5]})"),
        std::string("{" + good + R"(, "watermarkAngle": "steep"})"),
        std::string("{" + good + R"(, "version": 4.5})"),
    };
    ASSERT_EQ(AnnotationStyleStore::decode("{" + good + "}")->toolWidths.at(T::arrow), 5); // the base reads

    for (const DefaultsValue& value : unreadable) {
        SCOPED_TRACE(std::holds_alternative<std::string>(value) ? std::get<std::string>(value) : "(an integer)");
        InMemoryDefaultsStore store;
        store.set(key, value);
        store.set("screenshotFormat", std::string("png"));
        store.set("playSounds", false);
        const DefaultsLayers before = store.layers();
        const int writes = store.writeCount();

        EXPECT_EQ(AnnotationStyleStore::load(store), AnnotationStyleStore::defaults());
        EXPECT_EQ(store.writeCount(), writes);
        EXPECT_EQ(store.layers().stored, before.stored);
    }
}

TEST(AnnotationStyleStore, ARecordWithANumberJsonCannotHoldKeepsTheStoredOne) {
    InMemoryDefaultsStore store;
    everyFieldSet().save(store);
    AnnotationStyleStore broken = everyFieldSet();
    broken.toolOpacity = std::map<T, double>{{T::arrow, std::numeric_limits<double>::quiet_NaN()}};
    broken.textFontSize = 12;
    EXPECT_FALSE(broken.encode());

    std::vector<std::string> logged;
    setLogSink([&](std::string_view line) { logged.emplace_back(line); });
    broken.save(store);
    setLogSink(nullptr);
    EXPECT_EQ(AnnotationStyleStore::load(store), everyFieldSet());
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_NE(logged[0].find("toolOpacity.arrow"), std::string::npos) << logged[0];
}
