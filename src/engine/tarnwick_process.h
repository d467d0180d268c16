// The job engine: numbered jobs on a worker thread, the media tools as child processes, and
// reports to the current tab through job messages.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include <sys/types.h>

#include "core/tarnwick_data.h"
#include "engine/child_process.h"
#include "engine/engine_host.h"
#include "engine/guarded_value.h"
#include "engine/job_messages.h"
#include "engine/job_states.h"

namespace render {
struct EncodeArgs;
struct MergeStep;
struct TrimNames;
} // namespace render

namespace engine {

struct StatusMatch;
struct TrimPrecheck;

// How a merge graph joins its inputs: the cross-fade (0 for end to end) and the rate every
// input is brought to.
struct GraphForm
{
    double fade = 0.0;
    std::string rate;
};

// Results of every job and job step. Any other value is the exit code of the failing tool.
inline constexpr int kJobOk = 0;
inline constexpr int kJobCannotStart = -1; // could not start, runner refused, nothing to do
inline constexpr int kJobStopped = -2;     // stopped by the user

// Job numbers: the ids of the tabs' command buttons.
inline constexpr int kJobFinalOutput = 1006;
inline constexpr int kJobPlayInput = 1027;
inline constexpr int kJobPlayOutput = 1028;
inline constexpr int kJobPlayScenes = 1029;
inline constexpr int kJobSegmentOutput = 1052;
inline constexpr int kJobSceneExtract = 1053;
inline constexpr int kJobExtractAndOutput = 1057;
inline constexpr int kJobInputAnalysis = 1101;

// 1006, 1052, 1053, 1057, 1101.
bool IsRenderJobNumber(int nJob);
// 1027, 1028, 1029.
bool IsPlaybackJobNumber(int nJob);

// Set while a CancelProcess runs, on either engine: at most one runs at a time in the program.
extern std::atomic<bool> bCancelling;

// A still picture asked for and not yet taken by the preview thread.
struct PreviewRequest
{
    EngineTab *hTarget = nullptr; // the tab that asked, current at the moment of the request
    int nScene = -1;              // scene for the caption, -1 for list_idx
    bool bVf = false;             // apply the picture chain
    std::string strTime;          // time text for -ss
    std::string strFile;          // file to read
    // The project, the job number and the position as they stood at the request: the preview
    // thread builds the still's chain from these copies while jobs go on changing the project.
    std::shared_ptr<const core::CTarnwickData> project;
    int nJob = 0;
    int nPreviewFrame = 0;
    int bMergeMode = 0;
};

// The values of the project that a job works with, copied when the job starts: a view may
// change the project while the job runs, and the job goes on with what it began with.
struct JobSettings
{
    double threshold = 0.0;    // changed pixels per full-HD frame
    double validMinUnit = 0.0; // seconds of activity a scene needs
    double cutMinUnit = 0.0;   // seconds of stillness that end a scene
    int transition = 0;
    core::PictureValues picture;
    int encodePreset = 0;     // nEncodePreset: the encoder settings of cuts
    int useCuda = 0;          // bUseCuda
    std::string outputFolder; // where segments are written
};
JobSettings SettingsOf(const core::CTarnwickData &data);

// One engine per tab, living as long as the tab. The tab starts jobs and asks for stops on
// its user-interface thread; each job runs on the engine's worker thread and reports through
// the job messages of the tab that is current when it reports (pHostDlg->CurrentTab()).
// Neither copyable nor movable: job functions and threads hold its address.
class CTarnwickProcess
{
public:
    // A job function: runs on the worker thread with the job number, returns the job result.
    using JobFunction = std::function<int(int nJob)>;

    CTarnwickProcess();
    // Joins the worker thread and stops the check-queue thread. Stop a running job first
    // (CancelProcess): its thread may be waiting for the user-interface thread. Destroying
    // the engine on its own worker thread ends the program.
    virtual ~CTarnwickProcess();
    // What the destructor does, for an owner that must end the threads while the tab they
    // report to is still whole: joins the worker, after-scan, check-queue and preview threads,
    // handling the current tab's messages meanwhile. Stop a running job first.
    void EndThreads();
    // Drops a waiting still request and waits for the preview thread.
    void EndPreviewThread();
    CTarnwickProcess(const CTarnwickProcess &) = delete;
    CTarnwickProcess &operator=(const CTarnwickProcess &) = delete;
    // Adds what the render library provides: the rows of the final output of both tabs (1006)
    // and of the merge tab's conversions (1052), and the picture chain (BuildVideoFilter) that
    // stills and playback apply. Defined in the render library; an engine without them runs
    // every other job, fails 1006 with "not available" and shows frames as they are. Call
    // before the first job.
    void InstallRenderJobs();
    // The -vf chain of stills and playback; bVf .. nScene as for BuildVideoFilter.
    using PictureChainFunction = std::function<std::string(
        CTarnwickProcess &engine, bool bVf, bool bPad, bool bPreview, bool bRotated, int nScene)>;
    // The picture chain of InstallRenderJobs for engine, or "null" (frames as they are) when
    // none was installed.
    std::string PictureChain(
        CTarnwickProcess &engine, bool bVf, bool bPad, bool bPreview, bool bRotated, int nScene);

    // ---- Dispatcher ----

    // User-interface thread. Starts job nJob on a new worker thread: 1 when started, 0 when a
    // job still runs (nothing else happens then). Never waits for a running job.
    int StartThread(int nJob);
    // User-interface thread or a tab's helper thread. Stops the running job and returns when
    // its thread has ended, handling the current tab's messages meanwhile. Returns at once
    // when no job runs, when a stop runs already (on either engine), or while job 1029 is
    // choosing its scene.
    void CancelProcess();
    // The running job (nProcessID) is 1006, 1052, 1053, 1057 or 1101.
    bool IsRenderJob() const;
    // The result line of a tool command in the log: "%s(%d) %s\n", "%s(%d) [CANCEL] %s\n"
    // for -2, "%s(%d) [NG:%d] %s\n" for any other non-zero code. position tells call sites
    // apart. Any thread.
    static void
    LogCommandResult(const char *function, int position, const std::string &command, int exitCode);

    // The job table. The function that runs job nJob on the tab with the given bMergeMode
    // (0 scene tab, 1 merge tab). Called while no job runs. A row replaces an earlier one.
    void SetJobFunction(int nJob, int nMergeMode, JobFunction fn);
    // The playback branch: runs every job number that has no row of its own.
    void SetPlaybackFunction(int nMergeMode, JobFunction fn);

    // ---- Runner: the one way to the tools ----

    // Starts the command (the tool is found on PATH). 0 when it runs; -1 when it could not
    // be started, after WM_APP_JOB_STATE with state 3 and "CreateProcess failed with error %lu"
    // (the errno). Any thread; the child belongs to the calling thread, which must read it
    // and wait for it.
    int StartChildProcess(const std::string &command, ChildProcess &child);
    // The check every built command gets before its tool runs: true when each of paths is
    // carried by command as one whole argument. Otherwise nothing runs: the refusal is logged
    // as "[NG:-1]" with function and position, and WM_APP_JOB_STATE with state 3 says which
    // path cannot be passed. Any thread.
    bool CommandCarriesPaths(const char *function,
                             int position,
                             const std::string &command,
                             const std::vector<std::string> &paths);
    // Runs a short command to its end. pOutput, when given, receives everything the tool
    // wrote. Returns the exit code, -1 when it could not start, -2 when stopped (bCancel).
    // Logs the result, sends nothing else. Any thread, any number at once.
    int ExecuteCmd(const std::string &command, std::string *pOutput = nullptr);
    // Runs the one long step of a job. Without bPlayback: posts WM_APP_PROGRESS with nTotal and
    // the tool's frame number + nBase. With bPlayback: follows the showinfo times into
    // nPreviewFrame/strPreviewTime and posts WM_APP_POSITION. Refuses with -1 when nTotal is
    // below 1. Reports state 5 for a stop and for any end of playback, state 3 with
    // "ExitCode(%d)" for a failure. Returns the exit code. Worker thread only. The last
    // argument is not read.
    int ExecuteCmdWithProgress(bool bPlayback,
                               const std::string &command,
                               int nTotal,
                               int nBase,
                               const std::string &unused = {});

    // The words of the last tool that failed on the calling thread (ToolWords of what it
    // wrote); empty when the last tool of this thread succeeded or was stopped. Runner only.
    static std::string LastToolWords();
    // The reason of the job's first failure for the user: which film, segment or scene, and
    // the tool's own words. The first note of a job stays; a new job starts without one. Any
    // thread; read it once the job has ended.
    void NoteFailure(const std::string &reason);
    std::string FailureReason() const;
    // NoteFailure of "<what> could not be written to <folder>: <the tool's words>" (or of its
    // exit code when it said nothing usable) after a tool that wrote file failed with result; a
    // stop notes nothing. Call on the thread that ran the tool.
    void NoteWriteFailure(const std::string &what, const std::string &file, int result);

    // ---- Input analysis ----

    // Makes the working MP4 of source at target (stage "Change MP4" over viCurrent's frames),
    // deinterlaced with bDeinterlace. Written under target's partial name and renamed when the
    // tool succeeded, so a stopped, failed or killed run leaves nothing under target; then the
    // record of source is written beside target (core::WriteSourceStamp). State 4 on success.
    // Returns 0, -2 when stopped, or the tool's exit code. Worker thread only.
    int ConvertToMp4(const std::string &source, const std::string &target, bool bDeinterlace);

    // The analysis of a newly opened input (job 1101): facts, the working MP4 when the input
    // is not a progressive MP4, the time list, the default cross-fade, the current scene's
    // check and a still. Runs on an analysis thread while the calling thread pumps the current
    // tab's messages; returns the job result (0, -2 when stopped, else a failure). nScene is
    // carried along and read by no step. Not while another job runs.
    int AnalyzeInputFile(bool bProjectLoad, int nScene);
    // Set while an opening runs that a scene extraction follows (scan, extract, run): the
    // analysis then cuts no scene, since the extraction empties the list. Set by the tab
    // before AnalyzeInputFile and cleared after it.
    std::atomic<bool> bOpenForExtraction{false};

    // The merge tab (job 1053 there): analyses every row not analysed yet, in list order, as
    // AnalyzeMergeSource does; stage "Video Analysis" over those rows. A failing row ends the
    // loop. Nothing is sent when every row is analysed already. Worker thread only.
    int ProcessAnalysis();
    // One merge row from input_file: facts, the working MP4 when needed, the row's work file,
    // its facts and the facts its segment will have at the chosen rate and size (a segment
    // already there with that rate and size counts with its real frames). Worker thread only.
    int AnalyzeMergeSource(int nRow);

    // ---- Stream facts ----

    // Probes path into info (reset first): 0; 1 when the tool failed or was stopped; -1 when
    // its output held no video stream. Any thread.
    int GetVideoInfoFfprobe(const std::string &path, core::VideoInfo &info);
    // Reads ffprobe's JSON text of path into info: true when a video stream was read. Counts
    // the frames with GetNbFrame when the text has no "nb_frames" (see ProbeVideoText).
    bool ProbeVideoJson(const std::string &text, const std::string &path, core::VideoInfo &info);
    // Counts the frames of path by decoding it at a hundredth of info's size per side. The
    // count so far, also after a stop; 0 when the tool cannot start.
    int GetNbFrame(const std::string &path, const core::VideoInfo &info);
    // Probes path into viCurrent (and viInput/viSource when it is the input) and makes it the
    // preview file. The probe's result; nothing changes unless 0.
    int OpenVideoFile(const std::string &path);
    // OpenVideoFile, then WM_APP_INPUT_INFO (unless bQuiet) and WM_APP_POSITION.
    int ReloadVideoInfo(const std::string &path, bool bQuiet);
    // frame_num of path; 0 when the probe fails.
    int GetFrameCount(const std::string &path);
    // True when path's video stream reaches the end its header states: its last packets are
    // read (StreamEndCommand), nothing is decoded. A file cut short keeps the header of the
    // whole one, so its frame count alone does not show it. Any thread.
    bool StreamIsWhole(const std::string &path);
    // The one test of a scene's segment before it is used: its file is the one named after the
    // scene's frames (SegmentPath), its probed frame count (in facts) is at least 1 and equals
    // the scene's, and its stream is whole (StreamIsWhole). Scene tab; any thread.
    bool SegmentHoldsScene(const core::SceneEntry &scene, core::VideoInfo &facts);
    // A copy of scene nScene whose record names its segment after its frames (SegmentPath):
    // another name found there is replaced, since that file may hold other frames or another
    // scene's; every cut writes under the corrected name. None when the index is out of range.
    // Scene tab; takes pData->sceneLock.
    std::optional<core::SceneEntry> SceneUnderItsSegmentName(int nScene);
    // ffprobe's JSON text of path in one of the fixed modes (1 to 5; any other number gives
    // the first video stream with errors shown). 0, or 1 when the tool failed.
    int RunFfprobeJson(const std::string &path, std::string &text, int mode);

    // ---- Frame times ----

    // Makes pts_list hold the time of every frame of the working input path (viInput), counted
    // from its first frame, plus the end of the last one: viInput.frame_num + 1 entries, each
    // the value of its "%.6f" text, and writes them to pts_file (one per line, atomically,
    // creating output_folder). Nothing is done, and nothing sent, when pts_file exists and the
    // list has that length already. Otherwise WM_APP_STAGE_BEGIN "Frame Rate Analysis" with
    // viInput.frame_num; a file whose first frames show a constant rate gets multiples of
    // 1 / viInput.fps, any other is read in full by ffprobe (with progress). Reports state 4,
    // 5 for a stop, or 3 with "ExitCode(%d)". Returns 0, -2 when stopped (file not written),
    // or the tool's code or -1 (file not written). Analysis or worker thread.
    int EnsurePtsList(const std::string &path);
    // Where the last EnsurePtsList took its times from.
    enum class PtsSource {
        None,     // it failed before it had any
        Kept,     // the list and its file were there already
        Computed, // a constant rate: multiples of 1 / fps
        Read,     // every frame's time, read by ffprobe
    };
    std::atomic<PtsSource> ptsSource{PtsSource::None};
    // True when the first hundred or so frame times of path are evenly spaced at 1 /
    // viInput.fps; ffprobe is ended after those. False when the tool fails, is stopped or gives
    // fewer than 3 times. Logs mean, standard deviation and range of the spacing.
    bool CheckPtsDeltaFromFirstFrames(const std::string &path);
    // Reads the frame times of path's first video stream with ffprobe into texts ("%.6f",
    // counted from the first frame) and values (their numbers), appending. With bAll: every
    // frame, a WM_APP_PROGRESS (viCurrent.frame_num, count) posted per frame, and on success a
    // list of viInput.frame_num entries or fewer extended to viInput.frame_num + 1 by its
    // first delta. Without bAll: the tool is ended with result 0 once more than a hundred
    // times were read. Returns the tool's exit code, -2 when stopped, -1 when it could not
    // start. Any thread.
    int GetPtsListFromFfprobe(const std::string &path,
                              std::vector<std::string> &texts,
                              std::vector<double> &values,
                              bool bAll);

    // ---- Scene extraction (job 1053 on the scene tab) ----

    // The scan job: probes path, scans it, leaves the default scene when nothing was found,
    // and reports "Done", "Stopped" or "Failed". nThreshold is ThresholdArgument(). Worker
    // thread only. Returns the job result.
    int ProcessDiffFrame(const std::string &path, int nThreshold);
    // Streams path through ffmpeg as small gray frames, counts changed pixels, groups the
    // frames into scenes and (with bCutScenes) cuts each scene in a JobPool while reading.
    // Returns the tool's exit code, or the start failure. Worker thread only.
    int ExecuteCmdLoadVideo(const std::string &path, int nThreshold);
    // When false, the scan only finds scenes: no segment is cut (the command line's scan and
    // the benchmark). Set while no job runs.
    std::atomic<bool> bCutScenes{true};
    // Frames the last scan compared. After a scan that ended normally, a count below
    // viCurrent.frame_num means the file holds fewer frames than its container announces (a
    // truncated or damaged recording); after a stop, how far the scan came.
    std::atomic<int> nScanFrames{0};
    // The last scan's picture was too small to compare (no scan pixel); the scan then failed.
    std::atomic<bool> bScanTooSmall{false};
    // Results of the cuts of the last scan, one per scene in the order found (0 for a segment
    // written, else CutSceneQuiet's result); empty when it cut nothing. Written by the worker
    // thread at the end of the scan; read it only while no job runs.
    std::vector<int> cutResults;
    // After a scan that cut its scenes (not in job 1057), this thread opens the last scene's
    // segment as the preview file. It works on pData, so it is joined before the next job
    // starts and when the engine goes; the scan itself does not wait for it. A scan without
    // cutting starts none: its segments do not exist.
    std::thread afterScanThread;
    std::atomic<bool> bAfterScanRunning{false}; // afterScanThread has not finished yet
    // Waits for afterScanThread and joins it, handling the current tab's messages meanwhile
    // (it may be sending one). Returns at once when there is none. Any thread but that one.
    void JoinAfterScanThread();

    // ---- Scene cutting ----

    // Cuts scene nScene of source path into its segment with progress (total nTotal, base
    // nBase) with the encoder and folder of settings; with bReport the list follows the work.
    // Worker thread of the job or the queue thread. 0, -2 or the tool's code; a failed cut
    // deletes its file and leaves the record as it was.
    int CutScene(const std::string &path,
                 int nScene,
                 int nTotal,
                 int nBase,
                 bool bReport,
                 const JobSettings &settings);
    // Cuts scene nScene without progress, then stores the segment's facts in its viIn and
    // corrects the record. Pool threads. The probe's result, or the cut's failure.
    int CutSceneQuiet(const std::string &path, int nScene, const JobSettings &settings);
    // Makes the record of nScene tell the nFrames that its segment holds, renames the file to
    // match and posts WM_APP_SCENES_CHANGED. Any thread; takes pData->sceneLock.
    void UpdateSceneFile(int nScene, int nFrames);
    // Job 1052 on the scene tab: every enabled scene in list order. Worker thread.
    int CutAllScenes(const std::string &path);
    // Recuts the scene at list_idx when its segment is stale. -1 without a current scene.
    int CutCurrentScene();
    // Asks the queue thread to check scene nScene (ignored when negative or while a stop
    // runs); an equal pair already waiting is not added again. The project's settings are
    // copied here, and a recut works with the copy of the latest request. The thread that
    // owns the project.
    void EnqueueSceneCheck(int nScene, bool bShow);
    // Starts the queue thread once for the tab's life; nMergeMode goes to bMergeMode.
    // The destructor ends it.
    void StartQueueThread(int nMergeMode);

    // ---- Filter chains and captions ----

    // The -vf chain of the project's picture settings for viCurrent (render::BuildVideoFilterText).
    // With bVf it holds the caption filter of BuildCaptionFilter, for the whole film while job
    // 1006 or 1057 runs; bPreview: the chain is for one still frame at nPreviewFrame; nScene:
    // the scene whose caption applies, negative for list_idx. Job worker thread or preview
    // thread; the caller must not hold pData->sceneLock.
    std::string BuildVideoFilter(bool bVf, bool bPad, bool bPreview, bool bRotated, int nScene);
    // Writes the ASS file of the case into output_folder (name ending "_all.ass" with bAll,
    // "_one.ass" with bPreview, else "_seg.ass"; see render::CaptionFilePath) in UTF-8 and
    // returns "subtitles='<path>'" with the path escaped for the filter graph. Empty, and no
    // file written, when no caption is in force. A file that cannot be written is logged and
    // the filter text is returned all the same. On the merge tab the project's watermark text
    // is emptied first. w and h: the frame before the sample aspect ratio. Same threads and
    // lock rule as BuildVideoFilter.
    std::string BuildCaptionFilter(bool bAll, int w, int h, bool bPreview, int nScene);

    // ---- Final render (job 1006 on the scene tab) ----

    // Makes output from the enabled scenes of input: checks every segment and recuts stale ones
    // side by side, merges the segments (concat demuxer, or merge graphs in levels with the
    // transition), and encodes the film once more with the picture chain and captions. The
    // segments stay as the cache of the next render; the merge files go. 0, or the first
    // failure's result (-2 for a stop), with output deleted. Worker thread only.
    int ProcessTrim(const std::string &input, const std::string &output);

    // ---- Conversion and merge (the merge tab) ----

    // Brings row nRow's work file to its segment (fileName) at the chosen rate and size, with a
    // silent stereo track when the source has no sound. A segment that already has the row's
    // planned frames, rate and size is kept. With bReport: the row is announced, progress goes
    // over nTotal from nBase, and the segment is shown; without, the tool runs quietly (pool
    // threads). On failure the segment is deleted. 0, -2 or the tool's code; on success the
    // probe's result of the new segment, whose facts become the row's viOut.
    int ConvertInput(int nRow, int nTotal, int nBase, bool bReport);
    // Job 1052 on the merge tab: analysis of the rows not analysed yet, then every ticked row
    // converted in list order ("Segment Output"). The first failure ends the loop. Worker
    // thread only.
    int ConvertAllInputs();
    // Job 1006 on the merge tab: the analysis, the segments checked and converted again where
    // stale (side by side), joined by one merge graph or graphs in levels (cross-faded with the
    // transition when at least two rows are ticked), and the final encode at the chosen rate
    // with picture chain and captions. A single row is encoded from its segment directly.
    // Worker thread only.
    int ProcessConv(const std::string &output);
    // ---- Automatic picture values ----

    // Proposes brightness, contrast, saturation and gamma for path and stores them in pData
    // with their texts, and dMeanU, dMeanV. Grabs ten frames spread evenly over the video (from
    // viInput.frame_num and viCurrent.fps) side by side in a JobPool into JPEG files named after
    // input_file in output_folder, measures them with any grab files of an earlier run, and
    // deletes them all. Returns 0, also when no file could be read (nothing changes then), or
    // the code of the first grab in order that failed or was stopped (-2); nothing changes then
    // and the files written stay for the next run. nSamples is not read: ten are built in. Not
    // a numbered job: a stop (bCancel) reaches it only when it runs inside one. Any thread but a
    // pool thread.
    int AnalyzeVideoEQParams(const std::string &path, int nSamples);

    // ---- Stills and playback ----

    // Asks for a still of strFile at strTime (seconds as text; empty: 0), through the picture
    // chain when bVf, with the caption of scene nScene (-1: list_idx). Returns at once: the
    // preview thread writes the JPEG at PreviewImagePath() with ffmpeg and then sends
    // WM_APP_PREVIEW_IMAGE with that path to the tab that was current at this call, also when
    // the tool failed (the pane then shows grey). At most one request waits: a newer one
    // replaces it, so a dragged position bar costs one tool run at a time. Any thread.
    void
    SetPreviewImage(const std::string &strFile, const std::string &strTime, bool bVf, int nScene);
    // Where the still and the capture of a stopped player go: output_folder + the input's file
    // name (merge tab: output_name) with its extension replaced by "_preview.jpg".
    std::string PreviewImagePath() const;
    // Brings path on show as a still. A path other than strPreviewFile is opened first at its
    // first frame (with bScene as a scene of the list: viCurrent from viInput, nPlayJob 1029);
    // then a still at strPreviewTime, through the picture chain when bScene. 0, or the failed
    // opening's result; 0 without a still while a playback job runs. Worker or queue thread.
    int ShowFile(const std::string &path, bool bScene);
    // Plays strFile in ffplay over the picture pane, as job nJob (1027 the input, 1028 the
    // output), from strPreviewTime, or from the start (file opened anew, stage "Input Preview"
    // or "Output Preview") when that is "0" or stands at the last frame. Follows the player's
    // position in nPreviewFrame/strPreviewTime; with play_loop plays again from the start
    // after each end. The player's exit code (0 at its end, -2 stopped) or the opening's
    // result. Worker thread only.
    int PlayVideo(const std::string &strFile, int nJob);
    // Plays the row list_idx from its file strFile (scene tab: the segment, opened anew when
    // missing or when playing from the start) with the picture chain, bars and captions. 0
    // without a player when no row is current, or when the scene tab cannot open the file;
    // otherwise as PlayVideo. Worker thread only.
    int PlayVideoScene(const std::string &strFile);

    // ---- Reports and paths of a job ----

    // The tab that gets reports now; null without a host.
    EngineTab *CurrentTab() const;
    // Blocking and queued messages to the current tab; dropped without a host.
    void SendToTab(AppMessage id,
                   int64_t wParam,
                   int64_t lParam,
                   std::optional<std::string> text = std::nullopt);
    void PostToTab(AppMessage id, int64_t wParam, int64_t lParam);
    // WM_APP_JOB_STATE with a state index (engine::kState...) and an optional text.
    void SendJobState(int nState, std::optional<std::string> text = std::nullopt);
    // WM_APP_STAGE_BEGIN with the stage name of nStage in the current language and a total.
    void SendStageBegin(int nStage, int nTotal);
    // The end state of a job step by its result: 4 "Done" for 0, 5 "Stopped" for -2, otherwise
    // 3 "Failed" with "ExitCode(%d)".
    void SendEndState(int result);
    // The end of a tool that wrote target under its partial name: with result 0 the partial
    // file takes target's name (a failing rename sends state 3 naming target and gives -1);
    // otherwise, or then, the partial file is deleted. Returns the result.
    int SettlePartialFile(int result, const std::string &partial, const std::string &target);
    // input_mp4_file if not empty, else input_file, read under sceneLock (PlayableInput).
    std::string SourcePath() const;
    // output_folder + output_name.
    std::string OutputPath() const;
    // threshold cut to an integer, times 100: the scan's nThreshold.
    int ThresholdArgument() const;
    // The settings of the running job, copied by StartThread; when no job runs (a background
    // check, a step called on its own), those of the project as it stands.
    JobSettings Settings() const;

    // ---- Fields ----

    EngineHost *pHostDlg = nullptr;                  // receiver of all reports; not owned
    core::CTarnwickData *pData = nullptr;            // the tab's project; not owned
    std::atomic<bool> bThreadRunning{false};         // a job thread exists and has not finished
    Guarded<std::optional<JobSettings>> jobSettings; // the running job's copy
    std::thread workerThread;                        // thread of the current or the last job
    std::atomic<int> nProcessID{0};                  // running job, 0 when none
    std::atomic<int> nPlayJob{0};   // last playback job (1027, 1028, 1029), 0 when none
    std::atomic<pid_t> hProcess{0}; // child of the running step that a stop reaches; for the log
    Guarded<std::string> strPreviewFile;      // the file whose facts stand in viCurrent
    std::atomic<int> nPreviewFrame{0};        // frame at which preview and playback stand
    Guarded<std::string> strPreviewTime{"0"}; // the same position as seconds, as text
    // Where the running playback was asked to start (frame, and seconds as the -ss text): the
    // player begins at the key frame before it, and those frames are not reported as positions.
    // The job's worker thread only.
    int nPlayFromFrame = 0;
    std::string strPlayFrom = "0";
    std::atomic<int> nProcessExitCode{0};     // result of the last job
    std::atomic<int> bCancel{0};              // a stop was asked for; every reading loop looks
    std::atomic<bool> bSelectingScene{false}; // job 1029 is choosing its scene: no stop now
    std::atomic<bool> bPreviewRunning{false}; // the preview thread exists
    mutable std::mutex failureMutex;          // guards strFailureReason
    std::string strFailureReason;             // see NoteFailure
    std::mutex previewMutex;                  // guards previewRequest and previewThread
    std::optional<PreviewRequest> previewRequest;
    std::thread previewThread; // the preview thread, or the last one, which has ended
    // Background scene check: pairs (scene index, show flag) waiting for the queue thread.
    std::deque<std::pair<int, bool>> checkQueue;
    JobSettings checkSettings;              // copied at the latest request
    std::mutex queueMutex;                  // guards checkQueue and checkSettings
    std::condition_variable queueCondition; // a pair arrived, or quit
    std::mutex checkMutex;                  // held while a check runs; only ever tried
    std::condition_variable queueEmpty;     // the queue ran empty
    std::atomic<bool> running{false};       // the queue thread runs
    std::atomic<bool> quit{false};          // the queue thread is to end
    std::thread queueThread;
    // The merge tab's chosen frame rate and picture size, as indices into core::kMergeRates
    // and core::kMergeSizes; set by the tab before a job starts.
    std::atomic<int> nRateIndex{4};
    std::atomic<int> nSizeIndex{4};
    std::atomic<int> bMergeMode{0}; // 0 scene tab, 1 merge tab: chooses the job variants

private:
    // Waits while busy is set, handling the current tab's messages meanwhile: the thread that
    // clears it may be blocked in a send to this thread.
    void WaitPumping(const std::atomic<bool> &busy);
    // The steps of AnalyzeInputFile's analysis thread before its end state.
    int RunInputAnalysis(bool bProjectLoad);
    // Steps 3 to 6 shared by the analyses: decides, converts when needed, and returns the path
    // that later work reads (the working MP4 or the input itself) in src.
    int PrepareWorkingFile(std::string &src);
    // The still at the end of an analysis: file opened when it is not on show yet, then a
    // still at strPreviewTime. Nothing during playback.
    void PreviewAnalysedFile(const std::string &file);
    // Deletes the partial segment files of the scene tab's project and the partial file of its
    // output, left behind when the program was killed during a cut or an encode. Skipped while
    // a background cut runs.
    void DeletePartialSegments();
    // The thread body: runs the job, reports WM_APP_PROCESS_FINISHED, clears bThreadRunning.
    void RunJob(int nJob);
    // The rows of the job table that the engine provides (see job_table.cpp).
    void InstallJobTable();
    // Runs the row of nJob for the current bMergeMode; with bPlaybackBranch, a number that
    // names no job of its own (not 1006, 1029, 1052, 1053, 1057, 1101) and has no row goes to
    // the playback branch. A job without a function fails with -1, state 3 and a log line.
    int RunJobRow(int nJob, bool bPlaybackBranch);
    // Job 1057 on the scene tab: the scan (1053), then, if it succeeded and left scenes, the
    // final output (1006).
    int ProcessDiffTrim(int nJob);
    // Job 1057 on the merge tab: the conversions (1052), then the final output (1006).
    int ProcessConvMerge(int nJob);
    // The precheck of ProcessConv: every ticked row's segment counted, and converted again in
    // a pool when its frame count is not the planned one. A segment already seen in this run
    // counts as good at once.
    int PrecheckConversions(int nScenes, double fps, TrimPrecheck &checked);
    // The results of a precheck's pool tasks in order: at the first failure state 5 (-2) or
    // state 3 with "ExitCode(%d)", a log line naming function, and that result; else 0.
    int SettlePoolResults(const char *function, const std::vector<int> &results);
    bool DiffListEmpty() const;
    // One report of ExecuteCmdWithProgress: progress, or the playback position and its message.
    void ReportStatus(bool bPlayback, const StatusMatch &match, int nTotal, int nBase, double fps);
    // The state report after a step with progress has ended: none, "Stopped" or "ExitCode(%d)".
    void ReportStepEnd(bool bPlayback, int exitCode);

    // The stages of ProcessTrim: the precheck with its cuts, the merge (by the concat demuxer
    // or by graphs in levels) into merged with nFinal frames, and the final encode.
    int PrecheckSegments(const std::string &input, int nScenes, TrimPrecheck &checked);
    int MergeSegments(const render::TrimNames &names,
                      const TrimPrecheck &checked,
                      std::string &merged,
                      int &nFinal);
    int MergeByConcat(const render::TrimNames &names,
                      const render::EncodeArgs &args,
                      const std::string &merged,
                      int nTotal);
    int MergeByGraphs(const render::TrimNames &names,
                      const render::EncodeArgs &args,
                      const std::vector<render::MergeStep> &inputs,
                      const GraphForm &form,
                      std::string &merged);
    int EncodeFinal(const render::TrimNames &names,
                    const render::EncodeArgs &args,
                    const std::string &merged,
                    int nFinal,
                    const std::string &output);

    std::map<std::pair<int, int>, JobFunction> m_jobTable; // (bMergeMode, job) to function
    JobFunction m_playback[2];                             // per bMergeMode
    PictureChainFunction m_pictureChain;                   // from the render library

    // The preview thread's body: makes stills while requests wait, then clears bPreviewRunning.
    void RunPreviewThread();
    // One still of the request: the JPEG at PreviewImagePath(), then WM_APP_PREVIEW_IMAGE.
    void MakePreviewImage(const PreviewRequest &request);
    // The playback branch (1027, 1028 and numbers without a job of their own): PlayVideo of the
    // source, or of the output for 1028, then a still where it stopped unless stopped by a stop.
    int RunPlaybackBranch(int nJob);
    // Job 1029: the scenes from list_idx on, one PlayVideoScene each while play_scene_loop goes
    // on; then a still of the last file unless stopped.
    int PlayScenes(int nJob);
    // The player runs of one playback from ss over nFrames frames, again from the start while
    // play_loop is set and the player ended normally. The last player's exit code.
    int RunPlayerLoop(const std::string &file, bool bVf, std::string ss, int nFrames, int nBase);

    // Destroyed before every other member: drops a waiting still request and waits for the
    // preview thread, handling the current tab's messages meanwhile (it may be sending one).
    struct PreviewThreadEnd
    {
        CTarnwickProcess &engine;
        ~PreviewThreadEnd();
    };
    PreviewThreadEnd m_previewEnd{*this}; // last member: see above
};

} // namespace engine
