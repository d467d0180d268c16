// Language: the current language tag, the string tables and the built-in stage and state names.
#pragma once

#include <string>
#include <vector>

namespace core {

// String id of the title shown for a project that has not been saved yet.
inline constexpr int kIdsUntitled = 57345;
// String id of the message shown when a string table cannot be loaded.
inline constexpr int kIdsLanguageLoadFailed = 3073;
// Menu id of the main menu in the string tables.
inline constexpr int kMainMenuId = 128;
// Commands of the language menu.
inline constexpr int kCmdLanguageJapanese = 2007;
inline constexpr int kCmdLanguageEnglish = 2008;

// The two tags the program has tables for, and the fallback tag.
inline constexpr const char *kLanguageJapanese = "ja-JP";
inline constexpr const char *kLanguageEnglish = "en-US";

// File names of the two string tables.
inline constexpr const char *kStringTableJapanese = "TarnwickMP4Res_JPN.json";
inline constexpr const char *kStringTableEnglish = "TarnwickMP4Res_ENG.json";

// One entry of a menu from the string table. A popup has a text and items and id 0; a command
// has an id and a text; a separator has neither. Text after a tab character is the shortcut.
struct MenuItem
{
    int id = 0;
    std::string text;
    bool separator = false;
    std::vector<MenuItem> items;
};

// The current language tag (strLanguage), such as "ja-JP", "en-US" or whatever the system gave.
// Safe on any thread: the tag is copied out under a lock.
std::string GetLanguage();
// Replaces the language tag as a whole. Written by the UI thread; readers on other threads see
// either the old or the new tag.
void SetLanguage(const std::string &tag);
// True when the tag is exactly "ja-JP" (case-sensitive). Every other tag counts as English
// wherever the program chooses between its built-in texts.
bool IsJapanese();

// The language tag of a POSIX locale name. Rules:
// - empty, "C", "POSIX" and "C.<codeset>" give "en-US";
// - the codeset (".UTF-8") and the modifier ("@euro") are dropped;
// - "ll_CC" gives "ll-CC", the language in lower case and the territory in upper case
//   ("ja_JP.UTF-8" gives "ja-JP", "de_DE.UTF-8" gives "de-DE");
// - a language alone gives the language alone ("fr" gives "fr"), except "ja", which gives
//   "ja-JP" since Japanese has only that territory;
// - anything that is not two or three letters, optionally followed by two letters or three
//   digits, gives "en-US".
std::string LanguageTagFromLocale(const std::string &localeName);
// The system's language tag: the first of LC_ALL, LC_MESSAGES and LANG that is set and not
// empty, passed through LanguageTagFromLocale; "en-US" when none is set.
std::string SystemLanguageTag();
// The language at start: a stored tag wins; otherwise the system's tag; otherwise "en-US".
std::string ChooseStartLanguage(const std::string &storedTag);

// "TarnwickMP4Res_JPN.json" when the tag is exactly "ja-JP", "TarnwickMP4Res_ENG.json" for
// every other tag.
std::string StringTableFileName(const std::string &tag);
// Folders searched for the string tables, in order: "<exe dir>/res", "<exe dir>" and the
// installed data folder "<exe dir>/../share/tarnwickmp4/res".
std::vector<std::string> StringTableFolders();

// Switches the language: unloads the current table, stores the tag (whatever happens next) and
// loads the table for the tag from StringTableFolders(). True on success. On failure no table is
// loaded, so lookups yield empty strings, and pError (when given) receives MessageText3073()
// followed by the paths that were tried, one per line (with the reason for a broken file).
// Called on the UI thread; lookups on other threads may run at the same time.
bool LoadLanguage(const std::string &tag, std::string *pError = nullptr);
// The same with the folders to search given; the first folder holding the file is used.
bool LoadLanguageFrom(const std::string &tag,
                      const std::vector<std::string> &searchFolders,
                      std::string *pError);
// Path of the table now loaded; empty when none is loaded.
std::string LoadedStringTablePath();

// The text with that id from the current table; empty when no table is loaded or the id is
// unknown. Safe on any thread.
std::string LoadStringById(int id);
// The menu with that id from the current table; empty when no table is loaded or the id is
// unknown. Safe on any thread.
std::vector<MenuItem> LoadMenuById(int id);
// The built-in text of message 3073, in English and Japanese, since it cannot come from a
// table that failed to load.
std::string MessageText3073();

// The word in a merge-list row whose source has not been analysed yet.
std::string UnanalyzedWord();
// Manual file of a tab (0 scene, 1 merge) in the current language, such as "manual_en.txt".
std::string ManualFileName(int tabIndex);

} // namespace core
