// Language: the current language tag, the string tables and the built-in stage and state names.
#include "core/language.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <system_error>

#include <nlohmann/json.hpp>

#include "core/app_log.h"

namespace core {

namespace fs = std::filesystem;

namespace {

// A loaded string table. Immutable once built, so readers share it without a lock.
struct StringTable
{
    std::string path;
    std::map<int, std::string> strings;
    std::map<int, std::vector<MenuItem>> menus;
};

// The language state of the program.
struct LanguageState
{
    std::mutex lock;                          // guards strLanguage and table
    std::string strLanguage;                  // the current tag
    std::shared_ptr<const StringTable> table; // null when no table is loaded
    std::mutex loadLock;                      // serialises whole LoadLanguage runs
};

// Built on first use, so that file-scope objects elsewhere may already ask for the language.
LanguageState &State()
{
    static LanguageState state;
    return state;
}

std::shared_ptr<const StringTable> CurrentTable()
{
    LanguageState &state = State();
    std::lock_guard<std::mutex> guard(state.lock);
    return state.table;
}

bool IsAllAlpha(const std::string &text)
{
    for (char c : text) {
        if (!std::isalpha(static_cast<unsigned char>(c))) {
            return false;
        }
    }
    return true;
}

bool IsAllDigit(const std::string &text)
{
    for (char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c))) {
            return false;
        }
    }
    return true;
}

std::string ExecutableFolder()
{
    std::error_code ec;
    fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    if (ec) {
        return ".";
    }
    return exe.parent_path().string();
}

// Reads one menu item list; false with a reason when the shape is wrong.
bool ParseMenuItems(const nlohmann::json &list, std::vector<MenuItem> &items, std::string &reason)
{
    if (!list.is_array()) {
        reason = "a menu is not an array";
        return false;
    }
    for (const nlohmann::json &entry : list) {
        if (!entry.is_object()) {
            reason = "a menu item is not an object";
            return false;
        }
        MenuItem item;
        item.separator = entry.value("separator", false);
        item.id = entry.value("id", 0);
        item.text = entry.value("text", std::string());
        if (entry.contains("items") && !ParseMenuItems(entry["items"], item.items, reason)) {
            return false;
        }
        items.push_back(std::move(item));
    }
    return true;
}

// Turns a decimal key into an id; false when it is not one.
bool ParseId(const std::string &key, int &id)
{
    if (key.empty() || key.size() > 9 || !IsAllDigit(key)) {
        return false;
    }
    id = std::stoi(key);
    return true;
}

// Builds a table from the parsed document; false with a reason when the shape is wrong.
bool BuildTable(const nlohmann::json &doc, StringTable &table, std::string &reason)
{
    if (!doc.is_object() || !doc.contains("strings") || !doc["strings"].is_object()) {
        reason = "no \"strings\" object";
        return false;
    }
    for (const auto &[key, value] : doc["strings"].items()) {
        int id = 0;
        if (!ParseId(key, id) || !value.is_string()) {
            reason = "bad string entry \"" + key + "\"";
            return false;
        }
        table.strings[id] = value.get<std::string>();
    }
    if (doc.contains("menus")) {
        if (!doc["menus"].is_object()) {
            reason = "\"menus\" is not an object";
            return false;
        }
        for (const auto &[key, value] : doc["menus"].items()) {
            int id = 0;
            if (!ParseId(key, id) || !ParseMenuItems(value, table.menus[id], reason)) {
                reason = "bad menu \"" + key + "\": " + reason;
                return false;
            }
        }
    }
    return true;
}

// Reads and checks one table file; null with a reason on failure.
std::shared_ptr<const StringTable> ReadTable(const std::string &path, std::string &reason)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        reason = "cannot be opened";
        return nullptr;
    }
    std::stringstream text;
    text << in.rdbuf();
    auto table = std::make_shared<StringTable>();
    table->path = path;
    try {
        nlohmann::json doc = nlohmann::json::parse(text.str());
        if (!BuildTable(doc, *table, reason)) {
            return nullptr;
        }
    } catch (const nlohmann::json::exception &e) {
        reason = e.what();
        return nullptr;
    }
    return table;
}

} // namespace

std::string GetLanguage()
{
    LanguageState &state = State();
    std::lock_guard<std::mutex> guard(state.lock);
    return state.strLanguage;
}

void SetLanguage(const std::string &tag)
{
    LanguageState &state = State();
    std::lock_guard<std::mutex> guard(state.lock);
    state.strLanguage = tag;
}

bool IsJapanese()
{
    return GetLanguage() == kLanguageJapanese;
}

std::string LanguageTagFromLocale(const std::string &localeName)
{
    std::string name = localeName.substr(0, localeName.find_first_of(".@"));
    if (name.empty() || name == "C" || name == "POSIX") {
        return kLanguageEnglish;
    }
    size_t sep = name.find_first_of("_-");
    std::string language = name.substr(0, sep);
    std::string territory = sep == std::string::npos ? "" : name.substr(sep + 1);
    if (language.size() < 2 || language.size() > 3 || !IsAllAlpha(language)) {
        return kLanguageEnglish;
    }
    for (char &c : language) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    if (sep == std::string::npos) {
        return language == "ja" ? std::string(kLanguageJapanese) : language;
    }
    bool letters = territory.size() == 2 && IsAllAlpha(territory);
    bool digits = territory.size() == 3 && IsAllDigit(territory);
    if (!letters && !digits) {
        return kLanguageEnglish;
    }
    for (char &c : territory) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return language + "-" + territory;
}

std::string SystemLanguageTag()
{
    for (const char *name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char *value = std::getenv(name);
        if (value != nullptr && value[0] != '\0') {
            return LanguageTagFromLocale(value);
        }
    }
    return kLanguageEnglish;
}

std::string ChooseStartLanguage(const std::string &storedTag)
{
    if (!storedTag.empty()) {
        return storedTag;
    }
    return SystemLanguageTag();
}

std::string StringTableFileName(const std::string &tag)
{
    return tag == kLanguageJapanese ? kStringTableJapanese : kStringTableEnglish;
}

std::vector<std::string> StringTableFolders()
{
    fs::path exeDir = ExecutableFolder();
    return {
        (exeDir / "res").string(),
        exeDir.string(),
        (exeDir / ".." / "share" / "tarnwickmp4" / "res").lexically_normal().string(),
    };
}

bool LoadLanguage(const std::string &tag, std::string *pError)
{
    return LoadLanguageFrom(tag, StringTableFolders(), pError);
}

bool LoadLanguageFrom(const std::string &tag,
                      const std::vector<std::string> &searchFolders,
                      std::string *pError)
{
    LanguageState &state = State();
    std::lock_guard<std::mutex> loadGuard(state.loadLock);
    {
        std::lock_guard<std::mutex> guard(state.lock);
        state.table.reset();
        state.strLanguage = tag;
    }
    const std::string fileName = StringTableFileName(tag);
    std::string tried;
    for (const std::string &folder : searchFolders) {
        std::string path = (fs::path(folder) / fileName).string();
        std::error_code ec;
        if (!fs::is_regular_file(path, ec)) {
            tried += "\n" + path;
            continue;
        }
        std::string reason;
        std::shared_ptr<const StringTable> table = ReadTable(path, reason);
        if (!table) {
            tried += "\n" + path + ": " + reason;
            break;
        }
        Log("%s(%d) strLanguage(%s) table(%s)\n",
            "LoadLanguage",
            __LINE__,
            tag.c_str(),
            path.c_str());
        std::lock_guard<std::mutex> guard(state.lock);
        state.table = std::move(table);
        return true;
    }
    if (tried.empty()) {
        tried = "\n" + fileName;
    }
    Log("%s(%d) strLanguage(%s) [NG] table(%s)\n",
        "LoadLanguage",
        __LINE__,
        tag.c_str(),
        fileName.c_str());
    if (pError != nullptr) {
        *pError = MessageText3073() + tried;
    }
    return false;
}

std::string LoadedStringTablePath()
{
    std::shared_ptr<const StringTable> table = CurrentTable();
    return table ? table->path : std::string();
}

std::string LoadStringById(int id)
{
    std::shared_ptr<const StringTable> table = CurrentTable();
    if (!table) {
        return {};
    }
    auto it = table->strings.find(id);
    return it == table->strings.end() ? std::string() : it->second;
}

std::vector<MenuItem> LoadMenuById(int id)
{
    std::shared_ptr<const StringTable> table = CurrentTable();
    if (!table) {
        return {};
    }
    auto it = table->menus.find(id);
    return it == table->menus.end() ? std::vector<MenuItem>() : it->second;
}

std::string MessageText3073()
{
    return "The language file could not be loaded. The program cannot show its texts.\n"
           "言語ファイルを読み込めませんでした。プログラムの文字を表示できません。";
}

std::string UnanalyzedWord()
{
    return IsJapanese() ? "未解析" : "Unanalyzed";
}

std::string ManualFileName(int tabIndex)
{
    const char *suffix = IsJapanese() ? "_ja.txt" : "_en.txt";
    return std::string(tabIndex == 0 ? "manual" : "manual2") + suffix;
}

} // namespace core
