// Tests of the language tag, the string tables and the stage and state names.
#include "core/language.h"

#include <atomic>
#include <cstdlib>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/test_support.h"

namespace {

const std::string kSourceTables = TW_SOURCE_DIR "/res";

// Sets or clears environment variables for the length of a test and puts them back after.
class EnvOverride
{
public:
    EnvOverride(std::initializer_list<std::pair<const char *, const char *>> values)
    {
        for (const auto &[name, value] : values) {
            const char *old = std::getenv(name);
            m_saved.emplace_back(name, old ? std::optional<std::string>(old) : std::nullopt);
            if (value != nullptr) {
                setenv(name, value, 1);
            } else {
                unsetenv(name);
            }
        }
    }
    ~EnvOverride()
    {
        for (const auto &[name, value] : m_saved) {
            if (value) {
                setenv(name.c_str(), value->c_str(), 1);
            } else {
                unsetenv(name.c_str());
            }
        }
    }

private:
    std::vector<std::pair<std::string, std::optional<std::string>>> m_saved;
};

nlohmann::json ReadTableFile(const std::string &name)
{
    std::string text = testsupport::ReadFile(kSourceTables + "/" + name);
    return nlohmann::json::parse(text);
}

// The printf conversions of a text, in order ("%%" included, so that a literal percent sign
// must be written the same way in both languages).
std::vector<std::string> Placeholders(const std::string &text)
{
    static const std::regex conversion(
        R"(%[-+ #0]*(\*|[0-9]+)?(\.(\*|[0-9]+))?(hh|h|ll|l|L|z|j|t)?[diouxXeEfFgGaAcspn%])");
    std::vector<std::string> found;
    for (auto it = std::sregex_iterator(text.begin(), text.end(), conversion);
         it != std::sregex_iterator();
         ++it) {
        found.push_back(it->str());
    }
    return found;
}

// Finds a popup whose text contains word; nullptr when none does.
const core::MenuItem *FindPopup(const std::vector<core::MenuItem> &items, const std::string &word)
{
    for (const core::MenuItem &item : items) {
        if (!item.items.empty() && item.text.find(word) != std::string::npos) {
            return &item;
        }
    }
    return nullptr;
}

// Ids of all commands in a menu, depth first.
void CollectMenuIds(const std::vector<core::MenuItem> &items, std::vector<int> &ids)
{
    for (const core::MenuItem &item : items) {
        if (item.id != 0) {
            ids.push_back(item.id);
        }
        CollectMenuIds(item.items, ids);
    }
}

} // namespace

TEST(LanguageTag, FromLocaleNames)
{
    const std::pair<const char *, const char *> cases[] = {
        {"ja_JP.UTF-8", "ja-JP"},
        {"de_DE.UTF-8", "de-DE"},
        {"en_US.UTF-8", "en-US"},
        {"en_GB", "en-GB"},
        {"fr_FR@euro", "fr-FR"},
        {"de_AT.ISO-8859-1@euro", "de-AT"},
        {"EN_us.utf8", "en-US"},
        {"es_419.UTF-8", "es-419"},
        {"ast_ES.UTF-8", "ast-ES"},
        {"ja", "ja-JP"},
        {"ja.UTF-8", "ja-JP"},
        {"fr", "fr"},
        {"C", "en-US"},
        {"POSIX", "en-US"},
        {"C.UTF-8", "en-US"},
        {"", "en-US"},
        {"x", "en-US"},
        {"english_US", "en-US"},
        {"de_DEU", "en-US"},
        {"1a_JP", "en-US"},
        {"ja-JP", "ja-JP"},
    };
    for (const auto &[locale, tag] : cases) {
        SCOPED_TRACE(locale);
        EXPECT_EQ(core::LanguageTagFromLocale(locale), tag);
    }
}

TEST(SystemLanguageTag, LcAllWinsOverLcMessagesAndLang)
{
    EnvOverride env(
        {{"LC_ALL", "ja_JP.UTF-8"}, {"LC_MESSAGES", "de_DE.UTF-8"}, {"LANG", "fr_FR.UTF-8"}});
    EXPECT_EQ(core::SystemLanguageTag(), "ja-JP");
}

TEST(SystemLanguageTag, LcMessagesWinsOverLang)
{
    EnvOverride env({{"LC_ALL", ""}, {"LC_MESSAGES", "de_DE.UTF-8"}, {"LANG", "fr_FR.UTF-8"}});
    EXPECT_EQ(core::SystemLanguageTag(), "de-DE");
}

TEST(SystemLanguageTag, LangAlone)
{
    EnvOverride env({{"LC_ALL", nullptr}, {"LC_MESSAGES", nullptr}, {"LANG", "ja_JP.UTF-8"}});
    EXPECT_EQ(core::SystemLanguageTag(), "ja-JP");
}

TEST(SystemLanguageTag, NoLocaleGivesEnUs)
{
    EnvOverride env({{"LC_ALL", nullptr}, {"LC_MESSAGES", nullptr}, {"LANG", nullptr}});
    EXPECT_EQ(core::SystemLanguageTag(), "en-US");
}

TEST(ChooseStartLanguage, StoredTagWins)
{
    EnvOverride env({{"LC_ALL", "ja_JP.UTF-8"}});
    EXPECT_EQ(core::ChooseStartLanguage("de-DE"), "de-DE");
}

TEST(ChooseStartLanguage, SystemTagWhenNoneStored)
{
    EnvOverride env({{"LC_ALL", "ja_JP.UTF-8"}});
    EXPECT_EQ(core::ChooseStartLanguage(""), "ja-JP");
}

TEST(ChooseStartLanguage, EnUsWhenSystemGivesNone)
{
    EnvOverride env({{"LC_ALL", nullptr}, {"LC_MESSAGES", nullptr}, {"LANG", nullptr}});
    EXPECT_EQ(core::ChooseStartLanguage(""), "en-US");
}

TEST(IsJapanese, ExactTagOnly)
{
    const std::pair<const char *, bool> cases[] = {
        {"ja-JP", true},
        {"ja-jp", false},
        {"JA-JP", false},
        {"ja", false},
        {"ja_JP", false},
        {"en-US", false},
        {"", false},
    };
    for (const auto &[tag, japanese] : cases) {
        SCOPED_TRACE(tag);
        core::SetLanguage(tag);
        EXPECT_EQ(core::GetLanguage(), tag);
        EXPECT_EQ(core::IsJapanese(), japanese);
    }
}

TEST(StringTableFileName, JapaneseOnlyForExactTag)
{
    EXPECT_EQ(core::StringTableFileName("ja-JP"), "TarnwickMP4Res_JPN.json");
    EXPECT_EQ(core::StringTableFileName("ja-jp"), "TarnwickMP4Res_ENG.json");
    EXPECT_EQ(core::StringTableFileName("en-US"), "TarnwickMP4Res_ENG.json");
    EXPECT_EQ(core::StringTableFileName("de-DE"), "TarnwickMP4Res_ENG.json");
    EXPECT_EQ(core::StringTableFileName(""), "TarnwickMP4Res_ENG.json");
}

TEST(BuiltInTexts, UnanalyzedWordAndManualNames)
{
    core::SetLanguage("ja-JP");
    EXPECT_EQ(core::UnanalyzedWord(), "未解析");
    EXPECT_EQ(core::ManualFileName(0), "manual_ja.txt");
    EXPECT_EQ(core::ManualFileName(1), "manual2_ja.txt");
    core::SetLanguage("ja-jp");
    EXPECT_EQ(core::UnanalyzedWord(), "Unanalyzed");
    EXPECT_EQ(core::ManualFileName(0), "manual_en.txt");
    EXPECT_EQ(core::ManualFileName(1), "manual2_en.txt");
}

TEST(LoadLanguage, EnglishTableLookups)
{
    std::string error;
    ASSERT_TRUE(core::LoadLanguageFrom("en-US", {kSourceTables}, &error)) << error;
    EXPECT_EQ(core::GetLanguage(), "en-US");
    EXPECT_EQ(core::LoadedStringTablePath(), kSourceTables + "/TarnwickMP4Res_ENG.json");
    EXPECT_EQ(core::LoadStringById(core::kIdsUntitled), "Untitled");
    EXPECT_EQ(core::LoadStringById(3043), "No.");
    EXPECT_EQ(core::LoadStringById(3053), "Off");
    EXPECT_EQ(core::LoadStringById(2008), "English");
    EXPECT_EQ(core::LoadStringById(12345), "");
}

TEST(LoadLanguage, JapaneseTableLookups)
{
    std::string error;
    ASSERT_TRUE(core::LoadLanguageFrom("ja-JP", {kSourceTables}, &error)) << error;
    EXPECT_EQ(core::GetLanguage(), "ja-JP");
    EXPECT_TRUE(core::IsJapanese());
    EXPECT_EQ(core::LoadedStringTablePath(), kSourceTables + "/TarnwickMP4Res_JPN.json");
    EXPECT_EQ(core::LoadStringById(core::kIdsUntitled), "無題");
    EXPECT_EQ(core::LoadStringById(2007), "日本語");
    EXPECT_EQ(core::LoadStringById(3062), "9: 右上");
}

TEST(LoadLanguage, OtherTagUsesEnglishTableAndKeepsTag)
{
    ASSERT_TRUE(core::LoadLanguageFrom("fr-FR", {kSourceTables}, nullptr));
    EXPECT_EQ(core::GetLanguage(), "fr-FR");
    EXPECT_FALSE(core::IsJapanese());
    EXPECT_EQ(core::LoadStringById(core::kIdsUntitled), "Untitled");
}

TEST(LoadLanguage, MissingTableFailsWithMessage3073)
{
    testsupport::TempDir empty;
    ASSERT_TRUE(core::LoadLanguageFrom("en-US", {kSourceTables}, nullptr));
    ASSERT_EQ(core::LoadStringById(core::kIdsUntitled), "Untitled");

    std::string error;
    EXPECT_FALSE(core::LoadLanguageFrom("ja-JP", {empty.path(), empty.file("res")}, &error));
    EXPECT_EQ(error,
              core::MessageText3073() + "\n" + empty.path() + "/TarnwickMP4Res_JPN.json\n" +
                  empty.path() + "/res/TarnwickMP4Res_JPN.json");
    EXPECT_EQ(core::GetLanguage(), "ja-JP");
    EXPECT_EQ(core::LoadStringById(core::kIdsUntitled), "");
    EXPECT_EQ(core::LoadStringById(3043), "");
    EXPECT_TRUE(core::LoadMenuById(core::kMainMenuId).empty());
    EXPECT_EQ(core::LoadedStringTablePath(), "");
}

TEST(LoadLanguage, BrokenTableFailsNamingIt)
{
    testsupport::TempDir dir;
    ASSERT_TRUE(testsupport::WriteFile(dir.file("TarnwickMP4Res_ENG.json"), "{\"strings\": [1]}"));
    std::string error;
    EXPECT_FALSE(core::LoadLanguageFrom("en-US", {dir.path(), kSourceTables}, &error));
    EXPECT_EQ(error,
              core::MessageText3073() + "\n" + dir.path() +
                  "/TarnwickMP4Res_ENG.json: no \"strings\" object");
    EXPECT_EQ(core::LoadStringById(core::kIdsUntitled), "");
}

TEST(LoadLanguage, FirstFolderHoldingTheTableWins)
{
    testsupport::TempDir dir;
    ASSERT_TRUE(testsupport::WriteFile(dir.file("TarnwickMP4Res_ENG.json"),
                                       "{\"strings\": {\"57345\": \"Nameless\"}}"));
    testsupport::TempDir none;
    ASSERT_TRUE(core::LoadLanguageFrom("en-US", {none.path(), dir.path(), kSourceTables}, nullptr));
    EXPECT_EQ(core::LoadStringById(core::kIdsUntitled), "Nameless");
}

TEST(LoadLanguage, FindsTablesBesideTheExecutable)
{
    std::vector<std::string> folders = core::StringTableFolders();
    ASSERT_EQ(folders.size(), 3u);
    EXPECT_EQ(folders[0], std::string(TW_BINARY_DIR) + "/bin/res");
    EXPECT_EQ(folders[1], std::string(TW_BINARY_DIR) + "/bin");
    EXPECT_EQ(folders[2], std::string(TW_BINARY_DIR) + "/share/tarnwickmp4/res");
    std::string error;
    ASSERT_TRUE(core::LoadLanguage("ja-JP", &error)) << error;
    EXPECT_EQ(core::LoadedStringTablePath(),
              std::string(TW_BINARY_DIR) + "/bin/res/TarnwickMP4Res_JPN.json");
    EXPECT_EQ(core::LoadStringById(core::kIdsUntitled), "無題");
}

TEST(MessageText3073, BuiltInInBothLanguages)
{
    EXPECT_EQ(core::MessageText3073(),
              "The language file could not be loaded. The program cannot show its texts.\n"
              "言語ファイルを読み込めませんでした。プログラムの文字を表示できません。");
}

TEST(LoadStringById, RaceFreeWhileTheLanguageChanges)
{
    std::atomic<bool> stop{false};
    std::vector<std::thread> readers;
    std::atomic<int> unexpected{0};
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] {
            while (!stop.load()) {
                std::string text = core::LoadStringById(core::kIdsUntitled);
                if (text != "" && text != "Untitled" && text != "無題") {
                    ++unexpected;
                }
            }
        });
    }
    for (int i = 0; i < 50; ++i) {
        core::LoadLanguageFrom(i % 2 == 0 ? "ja-JP" : "en-US", {kSourceTables}, nullptr);
    }
    stop = true;
    for (std::thread &reader : readers) {
        reader.join();
    }
    EXPECT_EQ(unexpected.load(), 0);
    EXPECT_EQ(core::LoadStringById(core::kIdsUntitled), "Untitled");
}

TEST(StringTables, SameIdsInBothLanguages)
{
    nlohmann::json english = ReadTableFile("TarnwickMP4Res_ENG.json");
    nlohmann::json japanese = ReadTableFile("TarnwickMP4Res_JPN.json");
    std::set<std::string> englishIds;
    std::set<std::string> japaneseIds;
    for (const auto &[key, value] : english["strings"].items()) {
        englishIds.insert(key);
    }
    for (const auto &[key, value] : japanese["strings"].items()) {
        japaneseIds.insert(key);
    }
    EXPECT_EQ(englishIds, japaneseIds);
    EXPECT_FALSE(englishIds.empty());
}

TEST(StringTables, SamePrintfPlaceholdersInBothLanguages)
{
    EXPECT_EQ(Placeholders("%s (%03d) %.02f 100%%"),
              (std::vector<std::string>{"%s", "%03d", "%.02f", "%%"}));
    nlohmann::json english = ReadTableFile("TarnwickMP4Res_ENG.json");
    nlohmann::json japanese = ReadTableFile("TarnwickMP4Res_JPN.json");
    for (const auto &[key, value] : english["strings"].items()) {
        SCOPED_TRACE(key);
        ASSERT_TRUE(japanese["strings"].contains(key));
        EXPECT_EQ(Placeholders(value.get<std::string>()),
                  Placeholders(japanese["strings"][key].get<std::string>()));
    }
}

TEST(StringTables, HoldEveryNamedIdWithText)
{
    std::vector<int> ids = {1092, 1095, 1096, 1097, 1100, 1101, 1102, 1103, 1104,
                            1105, 2000, 2001, 2002, 2003, 2004, 2005, 2006, 2007,
                            2008, 2010, 2011, 2012, 2013, 2014, 2015, 2016, 3018,
                            3024, 3038, 3039, 3073, 3075, 3081, 3126, 3127, 57345};
    for (int id = 3043; id <= 3062; ++id) {
        ids.push_back(id);
    }
    for (int id = 3093; id <= 3112; ++id) {
        ids.push_back(id);
    }
    for (int id = 3118; id <= 3125; ++id) {
        ids.push_back(id);
    }
    for (int id = 3149; id <= 3155; ++id) {
        ids.push_back(id);
    }
    for (const char *tag : {"en-US", "ja-JP"}) {
        ASSERT_TRUE(core::LoadLanguageFrom(tag, {kSourceTables}, nullptr));
        for (int id : ids) {
            SCOPED_TRACE(std::string(tag) + " " + std::to_string(id));
            EXPECT_NE(core::LoadStringById(id), "");
        }
    }
}

TEST(StringTables, MainMenuMarksSettingsAndLanguage)
{
    const std::pair<const char *, std::pair<const char *, const char *>> cases[] = {
        {"en-US", {"Setting", "Language"}},
        {"ja-JP", {"設定", "言語"}},
    };
    for (const auto &[tag, words] : cases) {
        SCOPED_TRACE(tag);
        ASSERT_TRUE(core::LoadLanguageFrom(tag, {kSourceTables}, nullptr));
        std::vector<core::MenuItem> menu = core::LoadMenuById(core::kMainMenuId);
        const core::MenuItem *settings = FindPopup(menu, words.first);
        ASSERT_NE(settings, nullptr);
        const core::MenuItem *language = FindPopup(settings->items, words.second);
        ASSERT_NE(language, nullptr);
        std::vector<int> ids;
        CollectMenuIds(language->items, ids);
        EXPECT_EQ(ids, (std::vector<int>{core::kCmdLanguageJapanese, core::kCmdLanguageEnglish}));
    }
}

TEST(StringTables, BothMenusHoldTheSameCommands)
{
    ASSERT_TRUE(core::LoadLanguageFrom("en-US", {kSourceTables}, nullptr));
    std::vector<int> english;
    CollectMenuIds(core::LoadMenuById(core::kMainMenuId), english);
    ASSERT_TRUE(core::LoadLanguageFrom("ja-JP", {kSourceTables}, nullptr));
    std::vector<int> japanese;
    CollectMenuIds(core::LoadMenuById(core::kMainMenuId), japanese);
    EXPECT_EQ(english, japanese);
    std::vector<int> expected = {2011, 2005, 2006, 3081, 57616, 57665, 3096, 3103, 3104, 3105,
                                 2010, 2012, 2013, 3110, 3111,  3112,  2007, 2008, 1095, 57664};
    EXPECT_EQ(english, expected);
}
