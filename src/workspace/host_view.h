// What the host shows and asks, as the host model tells it: the interface the main window
// implements (the tabs have their own, TabView). Called on the thread that owns the host.
#pragma once

#include <string>
#include <vector>

#include "workspace/menu_states.h"
#include "workspace/tab_labels.h"

namespace workspace {

// String ids the host uses.
inline constexpr int kIdsExitQuestion = 3126;  // the close question
inline constexpr int kIdsChooseFileFor = 3097; // "%s \"%s\"" of it and the dialog's title
inline constexpr int kIdsHelpTitle = 1096;
inline constexpr int kIdsAboutTitle = 3400;
inline constexpr int kIdsAboutVersion = 2000; // followed by the version
inline constexpr int kIdsAboutCopyright = 1092;

// An information dialog to open (kinds 1 to 5: ffprobe's JSON of that kind for one file).
// The dialog closes one of its kind already open on that tab, asks for a file when bAskFile
// (a chooser titled chooserTitle, starting at startFile, with filter and defaultExt, the file
// must exist), then calls HostModel::RunInformation with the file; when that fails it ends
// before it is shown.
struct InformationRequest
{
    int nKind = 2;
    int nTab = 0;        // the tab it belongs to
    int nTitleId = 3093; // the window title's string id
    std::string title;   // its text
    std::string chooserTitle;
    std::string startFile; // the file the tab is previewing, may be empty
    bool bAskFile = true;
    std::string filter;     // "Name (*.ext)|*.ext|...||"
    std::string defaultExt; // "mp4"
};

// What an information dialog shows: the tool's text, or nothing when it failed.
struct InformationResult
{
    bool bOk = false;
    int nResult = 0; // the probe's result: 0, -1, -2 or ffprobe's exit code
    std::string file;
    std::string text; // ffprobe's JSON text
};

// The help viewer: the manual of the tab in front in the current language.
struct HelpContent
{
    int nTab = 0;
    std::string title; // string 1096
    std::string file;  // the manual's path; empty when none was found
    std::string text;  // its lines joined by "\n"; empty when it could not be read
};

// The about dialog.
struct AboutContent
{
    std::string title;     // string 3400
    std::string version;   // string 2000 followed by the version, "TarnwickMP4 Version 1.0.0"
    std::string copyright; // string 1092
};

class HostView
{
public:
    virtual ~HostView() = default;

    // A yes/no question with the message of string id nMessageId (a modal dialog with Yes
    // and No); true only for Yes.
    virtual bool AskYesNo(int nMessageId) = 0;
    // A message box with the text.
    virtual void ShowMessage(const std::string &text) = 0;
    // Every text of the window anew (menu, tab buttons, both tabs' labels, column heads and
    // choices), after the start and after a change of language. Texts that follow state
    // arrive through the tabs' views as before (panes, rows, controls, title).
    virtual void Relabel(const HostTexts &texts) = 0;
    // Availability and check marks of the menu, the recent entries, the tab buttons.
    virtual void SetMenuStates(const MenuStates &states) = 0;
    // The recent project list changed (it is also in the next SetMenuStates).
    virtual void RecentFilesChanged(const std::vector<RecentMenuEntry> &entries) = 0;
    // Show this tab, hide the other (0 scene, 1 merge).
    virtual void ShowTab(int nTab) = 0;
    virtual void ShowInformation(const InformationRequest &request) = 0;
    // Opens the help viewer; the host asks only when none is open. The view calls
    // HostModel::HelpClosed when its viewer goes.
    virtual void ShowHelp(const HelpContent &help) = 0;
    virtual void ShowAbout(const AboutContent &about) = 0;
    // The host has shut down (settings written, jobs stopped): the main window closes now.
    virtual void CloseWindow() = 0;
};

} // namespace workspace
