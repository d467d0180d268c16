// The scene scan of the command line: its arguments, one headless scene tab that runs job 1053,
// how a run ended, and the reports of scan and extract.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/cli_view.h"
#include "cli/commands.h"
#include "cli/job_guard.h"
#include "cli/project_options.h"
#include "cli/signal_stop.h"
#include "workspace/tab_bench.h"

namespace cli {

// The commands that scan a video: scan only, extract (scan and cut), run (scan, cut, render).
enum class ScanKind { Scan, Extract, Run, Analyze };

// "scan", "extract", "run" or "analyze".
const char *CommandName(ScanKind kind);

// The option groups each kind takes.
unsigned OptionGroups(ScanKind kind);

struct ScanArgs
{
    std::string video;
    ProjectOptions options;
    bool json = false; // scan and analyze
};

// How a job ended. Read from the tab's typed report, never from message texts.
struct JobOutcome
{
    int result = 0;       // the job result
    bool stopped = false; // Ctrl-C or a termination request
    bool scanned = false; // the probe succeeded and the scan's tool was started
    std::string failure;  // text of the first "Failed" state, such as a start failure
    bool defaultScene = false;
    bool tooSmall = false;   // the picture was too small to scan
    int framesScanned = 0;   // frames the scan compared
    int framesAnnounced = 0; // frames the working input's container announces
    int framesSource = 0;    // frames the given file's container announces
    bool converted = false;  // the scan read a working MP4 made from the given file
    std::vector<int> cutResults;
};

// Frames that the scan of a healthy file may miss against the given file's count: none when
// the file is read as it is; when a working MP4 was made, the conversion to a constant rate may
// drop a frame or two (and one in a hundred at most).
int ConversionTolerance(const JobOutcome &outcome);

// The scan ended normally but read clearly fewer frames than the given file announces.
bool LooksTruncated(const JobOutcome &outcome);

// How opening a video or project (the analysis, job 1101) went. Read from typed results.
struct AnalysisOutcome
{
    int result = 0;           // the analysis' result
    bool stopped = false;     // Ctrl-C or a termination request
    bool probed = false;      // the given file's facts were read
    bool workingMade = false; // a working MP4 was made by this analysis
    std::string failure;      // text of the first "Failed" state, such as a start failure
    bool tooSmall = false;    // an opening to extract refused a picture too small to scan
    int width = 0;            // the given file's picture, when probed
    int height = 0;
};

// The command line's scene tab: the tab and its host without a window, with the command
// line as the tab's view.
class ScanSession
{
public:
    ScanSession();

    workspace::CTarnwickTabScene &Tab() { return m_bench.Scene(); }
    // The merge tab, not started: its user calls Init and makes it the active tab.
    workspace::CTarnwickTabMerge &MergeTab() { return m_bench.Merge(); }
    workspace::TabBench &Bench() { return m_bench; }
    // Ctrl-C or a termination request arrived while the session lived: it asked both tabs to
    // stop, and the command ends.
    bool StopRequested() const { return m_stop->StopRequested(); }
    CliView &View() { return m_view; }

    // The tab's open command for video (its folder, name and title as ApplyNames set them);
    // Ctrl-C or a termination request stops the analysis.
    AnalysisOutcome OpenVideo(const std::string &video);
    // The same for a scene extraction that follows at once (scan, extract, run): the opening
    // cuts no scene, and a picture too small to scan is refused before anything is written.
    AnalysisOutcome OpenVideoToExtract(const std::string &video);
    // The tab's open command for a saved project.
    AnalysisOutcome OpenProject(const std::string &project);
    // The tab's command that sets the output folder and the film's name together and opens the
    // project again (the analysis); empty texts keep their values.
    AnalysisOutcome ChangeOutputNames(const std::string &folder, const std::string &name);
    // The tab's open command for a project's list alone (the video need not exist); false,
    // with the reason after head on err, when the file cannot be read.
    bool OpenProjectList(const std::string &project, const std::string &head, std::ostream &err);
    // Starts a job through start (a command of the tab) and serves the tab until it has
    // ended or a signal stops it; progress, when given, follows its stages.
    JobOutcome RunJob(const std::function<void()> &start, ProgressLine *progress = nullptr);
    // The same on either tab.
    JobOutcome RunJob(workspace::CTarnwickTab &tab,
                      const std::function<void()> &start,
                      ProgressLine *progress);
    // The automatic picture of the tab; the exit status, or -1 when the values were measured.
    int MeasurePicture(const std::string &command, const std::string &video, std::ostream &err);
    // The names opening video will give (project file, output folder, film), set now so that
    // they can be locked and checked first: the tab keeps names already set when it opens.
    void PlanNames(const std::string &video);
    // Makes the project's output folder and locks it and the project file for the session's
    // whole length (JobGuard); false, with the reason on err, when that fails.
    bool Lock(const std::string &head, const std::string &owner, std::ostream &err);
    // ffprobe's error lines for file, each without the tool's "[demuxer @ address] " and
    // without the file name in front, joined with "; ".
    std::string ProbeErrors(const std::string &file);

private:
    AnalysisOutcome Open(const std::function<int()> &open);

    std::unique_ptr<JobGuard> m_guard; // released after the tab has ended
    CliView m_view;
    CliView m_mergeView;
    workspace::TabBench m_bench;
    std::unique_ptr<SignalStop> m_stop; // from the start: a still or a check may run any time

public:
    // The tab's project, to read: every change goes through a command of the tab.
    const core::CTarnwickData &data;
};

// What extract and run do before their job: the project's names planned from the options and
// the video, the session locked, the video opened (the analysis), the options' values applied
// and, when asked, the automatic picture. The exit status, or -1 when the job can start.
int OpenForJob(ScanKind kind, const ScanArgs &parsed, ScanSession &session, CliOutput &io);

// After OpenForJob of extract or run ended in a stop: once the open has named the video, the
// project keeps the settings given and, when it holds no scene, the default scene, and is saved.
void KeepStoppedOpening(const ScanArgs &parsed, ScanSession &session);

// Parses the arguments of a scan command and checks VIDEO and the output options; prints the
// problem and returns an exit status, or -1 when the command can go on.
int ParseAndCheck(const std::vector<std::string> &args,
                  ScanKind kind,
                  ScanArgs &parsed,
                  CliOutput &io);

// Says on err, after head, that a width x height picture is too small to scan; the exit status.
int ReportTooSmall(const std::string &head, int width, int height, std::ostream &err);

// Reports an outcome that is not a success on err (a stop is ReportScanExtent's to tell);
// returns its exit status, or -1 when the scan succeeded.
int ReportFailure(const char *command,
                  const std::string &video,
                  const JobOutcome &outcome,
                  ScanSession &session,
                  std::ostream &err);

// What a normal end or a stop leaves to say on err: how far a stopped scan came, and a file
// that holds fewer frames than its container announces.
void ReportScanExtent(const char *command,
                      const std::string &video,
                      const JobOutcome &outcome,
                      std::ostream &err);

// Reports an analysis that did not succeed on err, as ReportFailure does for a scan: a file
// that is not a video, a working MP4 that could not be made, a stop. Returns the exit status,
// or -1 when the analysis succeeded.
int ReportAnalysisFailure(const char *command,
                          const std::string &video,
                          const AnalysisOutcome &analysis,
                          ScanSession &session,
                          std::ostream &err);

// The JSON document of a scan: file, fps, frames, default_scene (no motion was found and the
// list holds the default scene) and the scenes with first, last, start and end; with segments,
// each scene also names its segment and whether it was written.
nlohmann::ordered_json ScenesJson(const std::string &video,
                                  const core::CTarnwickData &data,
                                  bool defaultScene,
                                  bool segments);
// One row per scene: number, frames, time codes and length; with files, the segment file.
void PrintTable(const core::CTarnwickData &data, bool files, std::ostream &out);
void PrintSummary(const std::string &video, const core::CTarnwickData &data, std::ostream &out);
// Says when the list is what the scan leaves without a result, in words true to how it ended.
void PrintDefaultNote(const JobOutcome &outcome,
                      const core::CTarnwickData &data,
                      std::ostream &out);

} // namespace cli
