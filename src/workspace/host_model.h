// The host dialog and main frame as a model: start-up and shutdown, the settings and the
// recent project list, the main menu's commands with their availability, the language, the
// tab switch and the close question. It owns the two tabs (through a TabBench); the main
// window is a view of it (HostView), as the tabs' widgets are views of the tabs (TabView).
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/tarnwick_data.h"
#include "workspace/host_view.h"
#include "workspace/menu_states.h"
#include "workspace/settings_store.h"
#include "workspace/tab_bench.h"

namespace workspace {

// How a command of the host went.
enum class HostResult {
    Done,     // carried out
    Refused,  // not available now (the menu shows it greyed), nothing changed
    Declined, // the user said No or cancelled a chooser, nothing changed
    Failed,   // tried and failed (the tab or the view said why)
    Busy,     // a wait is in progress (a window event inside a wait): nothing changed
};

// The program's command line: the first argument that is not a flag is the project, every
// other argument (flags, a second file name) is the window toolkit's.
struct CommandLine
{
    std::string project;
    std::vector<std::string> passedOn;
};
// args without the program name. A flag begins with "-".
CommandLine ParseCommandLine(const std::vector<std::string> &args);

struct HostOptions
{
    // The system's language tag (core::SystemLanguageTag() or the toolkit's locale); empty
    // gives "en-US". Used when the settings hold no tag.
    std::string systemLanguage;
    // Folders of the string tables; empty: core::StringTableFolders().
    std::vector<std::string> stringTableFolders;
    // Folders of the manuals, searched in order; empty: "doc" beside the executable, then the
    // installed "../share/tarnwickmp4/doc".
    std::vector<std::string> manualFolders;
    // Whether a CUDA device exists; empty: core::HasCuda().
    std::optional<bool> cudaDevice;
};

// How the start went.
struct StartReport
{
    bool bSettingsRead = false;   // the store held a settings record
    bool bLanguageLoaded = false; // the string table of the language was loaded
    std::string language;         // the tag in force
    std::string project;          // the project that was opened, empty for none
    int nOpenResult = 0;          // OpenProject's result when one was opened
};

class HostModel
{
public:
    // The views and the store must outlive the host. Nothing happens before Start.
    HostModel(HostView &view,
              TabView &sceneView,
              TabView &mergeView,
              SettingsStore &store,
              HostOptions options = {});
    // Shuts down when that has not happened yet.
    ~HostModel();
    HostModel(const HostModel &) = delete;
    HostModel &operator=(const HostModel &) = delete;

    // The start of the program, in this order: the settings record applied to both tabs'
    // data (scene tab first), the recent list read, the language (the record's tag, else the
    // system's, else "en-US") loaded, both tabs started, the project opened (the command
    // line's, else the remembered one, which the record gives only when reopening the last
    // project is on; a path that does not exist is ignored without a message), and the
    // window relabelled with its menu states. A command line's file that is not a project
    // (a video the desktop hands over) is taken as a dropped file is.
    StartReport Start(const CommandLine &commandLine);

    // ---- The main menu, by command number (menu_states.h); Refused for an unknown number
    // or a command not available now (Menu() says which). Inside a wait the commands that
    // start work or change the project (new, open, save, save as, recent, hardware
    // acceleration, presets, tab switch, drop, RunInformation) give Busy; help, about,
    // information dialogs, language, the two switches and exit go on.
    HostResult Command(int nCommand);

    HostResult NewProject();
    // The project chooser, then OpenProjectFile.
    HostResult OpenProject();
    // OpenProject(path, false) on the scene tab; Done when it opened (the recent list and
    // the settings follow).
    HostResult OpenProjectFile(const std::string &path);
    HostResult SaveProject();
    HostResult SaveProjectAs();
    // Information kinds 1 to 5 for the current tab: the view opens the dialog.
    HostResult ShowInformation(int nKind);
    // The dialog's probe of file, as a job of the request's tab that a stop reaches; waits
    // (with the window's event pump) until it has ended.
    InformationResult RunInformation(const InformationRequest &request, const std::string &file);
    HostResult ToggleHardwareAcceleration();
    HostResult ToggleSaveAutomatically();
    HostResult ToggleReopenLast();
    // 0, 1 or 2; the project is opened again with the new encoder settings.
    HostResult SetEncodePreset(int nPreset);
    // "ja-JP", "en-US" or any tag (English texts for any other): the string table loaded (a
    // message when it cannot be), the window and both tabs relabelled, the status panes and
    // the merge rows translated, the settings saved. Running jobs go on.
    HostResult SetLanguage(const std::string &tag);
    // Opens the help viewer for the tab in front; does nothing while one is open.
    HostResult Help();
    void HelpClosed();
    // The help viewer's content for a tab's manual in the current language (an open viewer
    // shows it anew after a change of language).
    HelpContent HelpFor(int nTab) const;
    bool HelpOpen() const { return m_bHelpOpen; }
    // Opens recent entry nIndex (from 0). An entry whose file has gone is removed, the list
    // written, without a message (Failed).
    HostResult OpenRecent(int nIndex);
    HostResult About();
    // The close question (string 3126); on Yes the host shuts down (a running job stopped,
    // settings and recent list written) and then tells the view to close the window. Every
    // exit comes here: the menu's, the window's close button, the system's. Also inside a
    // wait: the stop ends the wait, and the view closes once its loop runs again (it must not
    // destroy the host inside CloseWindow). Done without a question once shut down.
    HostResult RequestExit();

    // ---- The host dialog ----
    // The tab buttons: the job of the tab being left is stopped. Refused while a render job
    // runs on either tab.
    HostResult SwitchTab(int nTab);
    int CurrentTab() const { return m_nCurrentTab; }
    // The stop button of the tab in front; allowed inside a wait, which it ends.
    HostResult StopJob();
    // Files dropped on the window: the tab in front takes them.
    HostResult DropFiles(const std::vector<std::string> &paths);

    // ---- State ----
    MenuStates Menu() const;
    HostTexts Texts() const { return CurrentHostTexts(); }
    std::vector<std::string> RecentProjects() const { return m_recent.Entries(); }
    // A tab runs a render job.
    bool Busy() const;
    // A wait is in progress and the window's events are being served inside it.
    bool InWait() const { return m_bench->InWait(); }
    bool IsShutDown() const { return m_bShutDown; }

    // The main window's rectangle, kept in the settings; the window sets it before it goes.
    void SetMainWindowRect(const core::WindowRect &rect);
    // Where the window opens: the remembered position (when the remembered rectangle is not
    // empty) with the window's own size, else defaultRect.
    core::WindowRect InitialWindowRect(const core::WindowRect &defaultRect) const;

    // The window's event loop during waits (TabBench::SetEventPump).
    void SetEventPump(std::function<void()> pump) { m_bench->SetEventPump(std::move(pump)); }
    // The tabs' messages, for a window's own loop (TabBench::SetMessageNotice, ServeMessages).
    TabBench &Bench() { return *m_bench; }
    CTarnwickTabScene &Scene() { return m_bench->Scene(); }
    CTarnwickTabMerge &Merge() { return m_bench->Merge(); }
    CTarnwickTab &Tab(int nTab);

    // Writes the settings record now (the scene tab's data, the language, the window).
    void SaveSettings();
    // The end: running jobs stopped, settings and recent list written. Idempotent.
    void Shutdown();

private:
    HostResult ToggleSwitch(int core::CTarnwickData::*field);
    HostResult Reload();
    void OnProjectOpened(const std::string &projectFile);
    void PublishMenu();
    void PublishRecent();
    void ApplyLanguageToTabs();
    std::vector<std::string> StringTableFolders() const;

    HostView &m_view;
    TabView &m_sceneView;
    SettingsStore &m_store;
    HostOptions m_options;
    RecentFiles m_recent;
    std::unique_ptr<TabBench> m_bench;
    int m_nCurrentTab = 0;
    bool m_bCudaDevice = false;
    bool m_bHelpOpen = false;
    bool m_bStarted = false;
    bool m_bShutDown = false;
};

} // namespace workspace
