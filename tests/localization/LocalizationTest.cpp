#include "LanguageResolution.h"
#include "LocalizationManager.h"
#include "TextFormatter.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <cstdlib>

using namespace tosvar;

TEST(LanguageResolution, SystemLanguageFollowsThePreferredOne) {
    const std::pair<const char*, AppLanguage> rows[] = {
        {"zh-Hant-TW", AppLanguage::zhHant}, {"zh-Hans-CN", AppLanguage::zh}, {"zh-HK", AppLanguage::zhHant},
        {"zh_TW.UTF-8", AppLanguage::zhHant}, {"zh_CN.UTF-8", AppLanguage::zh}, {"zh_MO", AppLanguage::zhHant},
        {"de_DE@euro", AppLanguage::de},      {"fr_CA.UTF-8", AppLanguage::fr}, {"ja", AppLanguage::ja},
        {"ko-KR", AppLanguage::ko},           {"es_419", AppLanguage::es},      {"pt-BR", AppLanguage::en},
        {"dev", AppLanguage::en},             {"", AppLanguage::en},
    };
    for (const auto& [preferred, expected] : rows)
        EXPECT_EQ(LanguageResolution::resolved(AppLanguage::system, {preferred}), expected) << preferred;
    EXPECT_EQ(LanguageResolution::resolved(AppLanguage::system, {}), AppLanguage::en);
    EXPECT_EQ(LanguageResolution::resolved(AppLanguage::fr, {"ja"}), AppLanguage::fr);
    EXPECT_EQ(LanguageResolution::tableCode(AppLanguage::zhHant), "zh-Hant");
}

TEST(LanguageResolution, PreferredLanguagesFromTheEnvironment) {
    ::setenv("LANGUAGE", "ja:en_US", 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::setenv("LANG", "de_DE.UTF-8", 1);
    ::unsetenv("LC_MESSAGES");
    EXPECT_EQ(LanguageResolution::preferredLanguagesFromEnvironment(),
              (std::vector<std::string>{"ja", "en_US", "de_DE.UTF-8"}));
    ::unsetenv("LANGUAGE");
    ::unsetenv("LC_ALL");
    ::unsetenv("LANG");
}

TEST(TextFormatter, FillsEveryFormAndNeverMisbehaves) {
    const std::tuple<const char*, std::vector<FormatArgument>, const char*> rows[] = {
        {"%@ is running", {std::string("Vemla")}, "Vemla is running"},
        {"in %d seconds", {std::int64_t{5}}, "in 5 seconds"},
        {"%ld items", {std::int64_t{12}}, "12 items"},
        {"%.1f MB", {2.345}, "2.3 MB"},
        {"100%%", {}, "100%"},
        {"%2$@ then %1$@", {std::string("a"), std::string("b")}, "b then a"},
        {"missing: [%@]", {}, "missing: []"},
        {"text for a number: %d", {std::string("five")}, "text for a number: five"},
        {"number as text: %@", {std::int64_t{7}}, "number as text: 7"},
        {"whole double: %d", {3.0}, "whole double: 3"},
        {"unknown %s stays", {std::string("x")}, "unknown %s stays"},
        {"dangling %", {}, "dangling %"},
        {"%1$@ %1$@", {std::string("echo")}, "echo echo"},
    };
    for (const auto& [format, arguments, expected] : rows) EXPECT_EQ(formatText(format, arguments), expected) << format;
}

TEST(LocalizationManager, FallsBackKeyByKeyAndTableByTable) {
    const std::map<std::string, std::string> tables{
        {"en", R"({"menu.quit": "Quit {appName}", "only.en": "English only", "twice": "{appName} and {appName}",
                   "shot": "%@ saved"})"},
        {"ja", R"({"menu.quit": "{appName}を終了"})"},
        {"fr", "not json"},
    };
    LocalizationManager manager([&](std::string_view code) -> std::optional<std::string> {
        auto it = tables.find(std::string(code));
        if (it == tables.end()) return std::nullopt;
        return it->second;
    });
    int changes = 0;
    manager.onLanguageChanged = [&] { ++changes; };

    manager.apply(AppLanguage::ja);
    EXPECT_EQ(manager.string("menu.quit"), "Tosvarを終了");
    EXPECT_EQ(manager.string("only.en"), "English only");
    EXPECT_EQ(manager.string("no.such.key"), "no.such.key");
    EXPECT_EQ(manager.string("twice"), "Tosvar and Tosvar");
    EXPECT_EQ(manager.string("shot", {std::string("{appName}.png")}), "{appName}.png saved"); // arguments stay literal

    manager.apply(AppLanguage::fr); // broken table: English
    EXPECT_EQ(manager.string("menu.quit"), "Quit Tosvar");
    manager.apply(AppLanguage::de); // no table: English
    EXPECT_EQ(manager.string("menu.quit"), "Quit Tosvar");
    EXPECT_NE(manager.diagnosticDescription().find("language=de, resolved=de"), std::string::npos)
        << manager.diagnosticDescription();
    EXPECT_EQ(changes, 3);
}

TEST(LocalizationManager, BuiltInTablesParseAndAddNoKeyEnglishLacks) {
    const auto english = nlohmann::json::parse(LocalizationManager::builtInTable("en").value());
    EXPECT_GT(english.size(), 80u);
    for (const char* code : {"de", "fr", "es", "ja", "ko", "zh", "zh-Hant"}) {
        const auto text = LocalizationManager::builtInTable(code);
        ASSERT_TRUE(text.has_value()) << code;
        const auto table = nlohmann::json::parse(*text, nullptr, false);
        ASSERT_TRUE(table.is_object()) << code;
        for (const auto& [key, value] : table.items()) EXPECT_TRUE(english.contains(key)) << code << ": " << key;
    }
    EXPECT_FALSE(LocalizationManager::builtInTable("pt").has_value());
    EXPECT_EQ(L("menu.quit"), "Quit Tosvar");
    EXPECT_EQ(L("menu.screenshotDelayed", std::int64_t{5}), "Capture Area in 5 Seconds");
}
