// What the two workspaces share: the project and job engine they own, the job messages they
// receive, the status bar, progress and elapsed time, starting and stopping jobs, helper threads.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/tarnwick_data.h"
#include "workspace/scene_list.h"
#include "workspace/tab_controls.h"
#include "workspace/tab_view.h"

// The engine stays behind the tabs: a view names none of its types.
namespace engine {
class CTarnwickProcess;
class EngineHost;
class LoopEndpoint;
class MessageLoop;
struct JobMessage;
} // namespace engine

namespace workspace {

class TabLink;

// A job of the tabs' own: a probe that a stop can reach.
inline constexpr int kJobProbe = 9001;

// How the last job of a tab went, from its messages, as values a view can read.
struct JobReport
{
    int nJob = 0; // the job, 0 before the first
    bool bFinished = false;
    int nResult = 0;            // the job result: 0, -1, -2 or a tool's exit code
    int nLastState = 0;         // the last state index reported (engine::kState...)
    int nStages = 0;            // stages begun
    std::string failure;        // the first reason given with a "Failed" state, for the user
    bool bDefaultScene = false; // the scan found nothing and left the default scene
    // Scene extraction: frames the scan compared, and whether the picture was too small to
    // compare at all.
    int nFramesScanned = 0;
    bool bPictureTooSmall = false;
    // The result of each scene's cut in list order (0 a segment written), while scanning.
    std::vector<int> cutResults;
};

// Where the frame times of an opened video came from.
enum class TimesOrigin { None, Kept, Computed, Read };

// How the last opening of a video or project went (the analysis, job 1101).
struct AnalysisReport
{
    bool bProbed = false;           // the given file's facts were read
    bool bNeedsWorkingFile = false; // the given file is not used as it is
    bool bWorkingFileMade = false;  // this analysis made the working MP4
    TimesOrigin times = TimesOrigin::None;
    // An opening for scene extraction refused a picture too small to scan; its size.
    bool bPictureTooSmall = false;
    int nWidth = 0;
    int nHeight = 0;
};

// What a probe job found: ffprobe's JSON text (a kind from 1) or the stream facts (kind 0).
struct ProbeReport
{
    int nResult = 0;
    std::string text;
    core::VideoInfo info;
};

class CTarnwickTab
{
public:
    // view, loop and host must outlive the tab. nMergeMode: 0 scene tab, 1 merge tab.
    CTarnwickTab(TabView &view,
                 engine::MessageLoop &loop,
                 engine::EngineHost &host,
                 int nMergeMode);
    // Stops a running job, waits for the helper threads and ends the engine's queue thread.
    virtual ~CTarnwickTab();
    CTarnwickTab(const CTarnwickTab &) = delete;
    CTarnwickTab &operator=(const CTarnwickTab &) = delete;

    // ---- What the engine asks of the tab (through its TabLink) ----
    TabLink &Link() { return *m_link; }
    // The scan found nothing: the list gets the one default scene.
    void MakeDefaultScene();
    // The analysis of the input (or of a merge row) has ended: the list follows it.
    virtual void OnInputAnalysed(bool bKeepSelection) = 0;
    bool IsPositionDrag() const { return m_bPositionDrag; }

    // The handler of every job message, on the thread that owns the loop.
    void OnJobMessage(const engine::JobMessage &msg);

    // ---- Jobs ----
    // Starts job nJob (render jobs save the project first and start the elapsed time).
    void StartProcess(int nJob);
    // Stops the running job and returns when it has ended.
    void StopProcess();
    // Any thread (a signal watcher): asks the running job or analysis to stop; StopProcess on
    // the owning thread finishes the stop.
    void RequestStop();
    bool IsJobRunning() const;
    int RunningJob() const;
    const JobReport &LastJob() const { return m_report; }
    // Reads file with ffprobe as a job of the tab, so that a stop reaches the tool: kind 0 the
    // stream facts, 1 to 5 ffprobe's JSON text of that kind. The result is in LastProbe when
    // the job has ended.
    void StartProbe(const std::string &file, int nKind);
    const ProbeReport &LastProbe() const { return m_probe; }
    const AnalysisReport &LastAnalysis() const { return m_analysis; }
    // The picture pane's still of file at seconds (plain decimal text), as a seek of the
    // position bar shows it; with bProject through the project's picture values and the
    // caption of scene nScene (from 0; -1 the current scene). The picture arrives through the
    // view's ShowPicture. False, with nothing changed, when file cannot be opened.
    bool ShowStill(const std::string &file, const std::string &seconds, bool bProject, int nScene);
    // A still asked for is still being made.
    bool StillPending() const;
    // ffprobe's whole output for file (its error lines when it cannot read it); blocks.
    std::string ProbeText(const std::string &file);

    // ---- Settings a job takes at its start ----
    // The volume bar (0 to 100): play_vol stored; a running playback starts again with it, as
    // the player takes its volume only when it starts.
    void SetVolume(int nValue);
    // The encoder preset (0 best picture, 1, 2 smallest file) and the hardware path of the
    // tab's jobs; each job copies them at its start. The host sets both tabs alike.
    void SetEncodePreset(int nPreset);
    void SetUseCuda(bool bOn);
    // The project saved as it goes (after every change and job), as the settings say.
    void SetAutoSave(bool bOn);

    // ---- The list ----
    virtual void SelectRow(int nRow, int nColumn) = 0;
    // Row drag: a row taken (not while a render job runs), carried over the list (the rows
    // swap as the pointer passes), let go. DragOver takes the row under the pointer (-1 for
    // none), the first visible row and how many rows a page shows; above or below the list it
    // scrolls one line and carries the row to the edge. Returns the first row the list is to
    // show now.
    void BeginDrag(int nRow);
    int DragOver(int nHitRow, int nTopRow, int nRowsPerPage, PointerZone zone);
    void EndDrag() { m_nDragRow = -1; }
    int DragRow() const { return m_nDragRow; }

    // ---- State for the view ----
    void UpdateControls(bool bEnable);
    // Every control off but stop (opening a file, automatic picture).
    void DisableAllControls();
    const ControlStates &Controls() const { return m_controls; }
    virtual FieldTexts Fields() const = 0;
    // Exchange of fields to controls.
    void ShowFields() { m_view.ShowFields(Fields()); }
    void ResetStatusBar();
    // After a change of language: the stage and state panes translated in place, every row
    // and the controls shown again (texts that depend on the language follow).
    void ApplyLanguage();
    const std::string &StatusPane(int nPane) const { return m_panes[nPane]; }
    int ProgressPercent() const { return m_nProgress; }

    // Elapsed time: the view's timer calls OnTimerTick while TimerRunning.
    void StartElapsedTimer();
    void StopElapsedTimer();
    void OnTimerTick();
    bool TimerRunning() const { return m_bTimerRunning; }

    // The position bar's thumb is held (playback posts no positions meanwhile).
    void SetPositionDrag(bool bDrag) { m_bPositionDrag = bDrag; }
    // Where the picture pane stands on the screen, for the player window. Any thread.
    void SetPreviewPaneOrigin(int left, int top);
    int PreviewPaneLeft() const { return m_paneLeft; }
    int PreviewPaneTop() const { return m_paneTop; }

    // Helper threads (automatic picture, stills) at work; waiting for them serves messages.
    bool HelpersRunning() const { return m_helpersRunning > 0; }
    void JoinHelpers();

    // The project; read it on the owning thread while no job runs.
    const core::CTarnwickData &Data() const { return m_Data; }
    core::CTarnwickData &Data() { return m_Data; }
    engine::CTarnwickProcess &Process() { return m_Process; }

protected:
    // Rows of the list for the view.
    virtual std::vector<ListRow> ListRows() const = 0;
    virtual ControlStates ComputeControls(bool bEnable) const = 0;
    // The parts of message handling that differ between the tabs.
    virtual void OnScenesChanged(const engine::JobMessage &msg) = 0;
    virtual void OnRenderJobStart() {}
    virtual void OnRenderJobEnd() = 0;
    virtual void RefreshInputSummary() = 0;
    // Offset of the current scene for the position readout.
    virtual int SceneOffset() const { return 0; }
    // The facts of the availability rules that both tabs read alike.
    ControlFacts CommonFacts(bool bEnable) const;
    int RowCount() const;

    // Rebuilds the whole list with nSelect selected.
    void FillList(int nSelect);
    // Rewrites every row (start frames and numbers follow a change).
    void Renumber();
    void SetPane(int nPane, const std::string &text);
    void ApplyPercent(double percent);
    // The readout lines of a position (frame of a count, offset of the current scene).
    void UpdatePositionReadout(int nFrame, int nCount, int nSceneFirst);
    // Runs work on a helper thread that the tab waits for before it goes; messages it sends are
    // served meanwhile.
    void RunHelper(std::function<void()> work);
    // The show-input and show-output buttons: a running playback stops; unless it was the
    // button's own job (nButtonJob), file stands on show as a still at its stored position.
    void ShowWholeFile(int nButtonJob, const std::string &file);
    // The paths that name the old output folder now name the new one (pts_file, every fileName,
    // with bWorkingFile input_mp4_file too) and output_folder is set; the files stay where they
    // are. False, with a message and nothing changed, when the new folder cannot be made.
    bool
    MoveOutputFolder(const std::string &oldGiven, const std::string &newGiven, bool bWorkingFile);
    // Tells the user about file: the text of string id nId with the file and the reason.
    void ReportProblem(int nId, const std::string &file, const std::string &reason = {});
    // Says through the view why path cannot be used and returns true: a character that no
    // tool's command text can carry, or (bName) a file name too long for the names made from
    // it. False when it can be used.
    bool RefusePath(const std::string &path, bool bName);
    // RefusePath for the file name of a finished film, which must also end in ".mp4": the film
    // is an MP4 file whatever its name says.
    bool RefuseFilmName(const std::string &name);

    // The loop endpoint of the tab's messages (posting to itself, pumping while it waits).
    engine::LoopEndpoint &Endpoint();

    TabView &m_view;
    core::CTarnwickData m_Data;

private:
    std::unique_ptr<engine::CTarnwickProcess> m_pProcess;

protected:
    engine::CTarnwickProcess &m_Process; // *m_pProcess, the engine of this tab
    std::unique_ptr<TabLink> m_link;

    ControlStates m_controls;
    std::string m_panes[4];
    int m_nProgress = 0;
    double m_dMaxPercent = 0.0;
    int m_bListEvents = 1;
    int m_bWaitCursor = 0;
    bool m_bStopping = false;
    bool m_bSeeking = false;
    std::atomic<bool> m_bPositionDrag{false};
    std::atomic<int> m_paneLeft{0};
    std::atomic<int> m_paneTop{0};
    std::atomic<bool> m_bDefaultSceneMade{false};
    JobReport m_report;
    ProbeReport m_probe;
    int m_nDragRow = -1;
    AnalysisReport m_analysis;

private:
    std::chrono::steady_clock::time_point m_start;
    bool m_bTimerRunning = false;
    bool m_bStartGuard = false;
    std::mutex m_helperMutex; // guards m_helpers
    std::vector<std::thread> m_helpers;
    std::atomic<int> m_helpersRunning{0};
};

// Replaces every occurrence of oldFolder in text by newFolder.
void ReplaceFolderText(std::string &text,
                       const std::string &oldFolder,
                       const std::string &newFolder);

// The stage, state and elapsed-time texts the status bar shows for a time in seconds.
std::string ElapsedText(double seconds);

} // namespace workspace
