// The main menu's commands and, as one value, which of them are available and checked.
#pragma once

#include <string>
#include <vector>

namespace workspace {

// Command numbers of the main menu (the ids of the menu in the string tables).
inline constexpr int kCmdNewProject = 2011;
inline constexpr int kCmdOpenProject = 2005;
inline constexpr int kCmdSaveProject = 2006;
inline constexpr int kCmdSaveProjectAs = 3081;
inline constexpr int kCmdStreamInfo = 3096; // information kind 2, title 3093
inline constexpr int kCmdFormatInfo = 3103; // kind 3, title 3106
inline constexpr int kCmdVideoInfo = 3104;  // kind 4, title 3107
inline constexpr int kCmdAudioInfo = 3105;  // kind 5, title 3108
inline constexpr int kCmdHardwareAcceleration = 2010;
inline constexpr int kCmdSaveAutomatically = 2012;
inline constexpr int kCmdReopenLast = 2013;
inline constexpr int kCmdPreset0 = 3110;
inline constexpr int kCmdPreset1 = 3111;
inline constexpr int kCmdPreset2 = 3112;
inline constexpr int kCmdJapanese = 2007;
inline constexpr int kCmdEnglish = 2008;
inline constexpr int kCmdHelp = 1095;
inline constexpr int kCmdRecentFirst = 57616; // recent entry i is kCmdRecentFirst + i
inline constexpr int kCmdRecentLast = 57631;
inline constexpr int kCmdAbout = 57664;
inline constexpr int kCmdExit = 57665;

// The host dialog's two tab buttons.
inline constexpr int kTabButtonScene = 1104;
inline constexpr int kTabButtonMerge = 1105;

// Every command of the menu but the recent entries, in menu order.
inline constexpr int kMenuCommands[] = {kCmdNewProject,
                                        kCmdOpenProject,
                                        kCmdSaveProject,
                                        kCmdSaveProjectAs,
                                        kCmdExit,
                                        kCmdStreamInfo,
                                        kCmdFormatInfo,
                                        kCmdVideoInfo,
                                        kCmdAudioInfo,
                                        kCmdHardwareAcceleration,
                                        kCmdSaveAutomatically,
                                        kCmdReopenLast,
                                        kCmdPreset0,
                                        kCmdPreset1,
                                        kCmdPreset2,
                                        kCmdJapanese,
                                        kCmdEnglish,
                                        kCmdHelp,
                                        kCmdAbout};

// One command of the menu as it stands now.
struct MenuItemState
{
    int nCommand = 0;
    bool bEnabled = false;
    bool bChecked = false;
};

// One entry of the recent project list as the file menu shows it.
struct RecentMenuEntry
{
    int nCommand = 0; // kCmdRecentFirst + its index
    std::string path; // the whole path
    std::string text; // the menu text: "&1 " and the path shortened to 30 characters
    bool bEnabled = false;
};

// What the availability and check rules look at.
struct MenuFacts
{
    bool bBusy = false;       // a render job runs on either tab
    bool bSceneInput = false; // the scene tab's input_file is not empty
    bool bCudaDevice = false; // a CUDA device exists
    bool bUseCuda = false;
    bool bAutoSave = false;
    bool bReopenLast = false;
    int nEncodePreset = 0;
    bool bJapanese = false; // the language tag is exactly "ja-JP"
    std::vector<std::string> recent;
    int nCurrentTab = 0;
};

// The availability and check marks of every menu command, the recent entries and the tab
// buttons. Computed by the host after each of its commands and on request (a window asks
// when a menu opens, since jobs start and end without the menu's knowledge).
struct MenuStates
{
    std::vector<MenuItemState> items; // one per kMenuCommands entry, same order
    std::vector<RecentMenuEntry> recent;
    bool bTabButtons = true; // both tab buttons: off while a render job runs on either tab
    int nCurrentTab = 0;     // 0 scene, 1 merge

    // False for a command that is not on the menu.
    bool Enabled(int nCommand) const;
    bool Checked(int nCommand) const;
};

MenuStates ComputeMenuStates(const MenuFacts &facts);

// A path shortened for the menu as the recent list shows it: whole when it fits in nMax
// characters (UTF-8 characters, not bytes); else the first folder, "..." and the file name;
// else the file name alone, cut at nMax.
std::string AbbreviatePath(const std::string &path, size_t nMax);

} // namespace workspace
