// The scene scan of the command line: its arguments, one headless scene tab that runs job 1053,
// how a run ended, and the reports of scan and extract.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "core/tarnwick_data.h"
#include "engine/headless_host.h"
#include "engine/tarnwick_process.h"

namespace cli {

// The commands that scan a video: scan only, extract (scan and cut), run (scan, cut, render).
enum class ScanKind { Scan, Extract, Run, Analyze };

// "scan", "extract", "run" or "analyze".
const char *CommandName(ScanKind kind);

struct ScanArgs
{
    std::string video;
    std::optional<double> threshold; // changed pixels per full-HD frame, 0 to 1000
    std::optional<double> validMin;  // seconds of activity a scene needs, 1 to 10
    std::optional<double> cutMin;    // seconds of stillness that end a scene, 1 to 10
    std::optional<double> preset;    // analyze: encoder preset 0 (best picture) to 2 (smallest)
    bool json = false;               // scan and analyze
    std::string outputFolder;        // extract and run; empty: VIDEO + "_out/"
    std::string outputName;          // run only; empty: the input's name + "_trim.mp4"
    std::string title;               // run only; empty: the default title
    bool transition = false;         // run only: cross-fades between the scenes
    bool autoPicture = false;        // run only: picture values measured from the video
};

// How a run of job 1053 ended. Read from typed results, never from message texts.
struct JobOutcome
{
    int result = 0;       // the job result
    bool stopped = false; // Ctrl-C or a termination request
    bool scanned = false; // the probe succeeded and the scan's tool was started
    std::string failure;  // text of the first "Failed" state, such as a start failure
    bool defaultScene = false;
    int framesScanned = 0;   // frames the scan compared
    int framesAnnounced = 0; // frames the working input's container announces
    int framesSource = 0;    // frames the given file's container announces
    bool converted = false;  // the scan read a working MP4 made from the given file
};

// Frames that the scan of a healthy file may miss against the given file's count: none when
// the file is read as it is; when a working MP4 was made, the conversion to a constant rate may
// drop a frame or two (and one in a hundred at most).
int ConversionTolerance(const JobOutcome &outcome);

// The scan ended normally but read clearly fewer frames than the given file announces.
bool LooksTruncated(const JobOutcome &outcome);

// How the analysis of a newly opened video (job 1101) went. Read from typed results.
struct AnalysisOutcome
{
    int result = 0;           // the analysis' result
    bool stopped = false;     // Ctrl-C or a termination request
    bool probed = false;      // the given file's facts were read
    bool workingMade = false; // a working MP4 was made by this analysis
    std::string failure;      // text of the first "Failed" state, such as a start failure
};

// One scene tab of a headless host with its engine and project.
class ScanSession
{
public:
    ScanSession();

    engine::CTarnwickProcess &Engine() { return m_engine; }

    // Runs job 1053 until it ends or a signal stops it, and waits for what follows the scan.
    JobOutcome RunSceneExtract(bool bCutScenes);
    // The analysis of the project's video (job 1101) on this thread, which pumps the tab's
    // messages meanwhile; Ctrl-C or a termination request stops it. observer, when given, sees
    // every message of the tab.
    AnalysisOutcome Analyze(bool bProjectLoad,
                            const std::function<void(const engine::JobMessage &)> &observer = {});
    // Runs job nJob the same way; observer sees every message of the tab, on this thread.
    JobOutcome RunJob(int nJob,
                      bool bCutScenes,
                      const std::function<void(const engine::JobMessage &)> &observer);

    core::CTarnwickData data;

private:
    engine::HeadlessHost m_host; // before the engine: it outlives the engine
    engine::CTarnwickProcess m_engine;
};

// Parses the arguments of a scan command and checks VIDEO and the output options; prints the
// problem and returns an exit status, or -1 when the command can go on.
int ParseAndCheck(const std::vector<std::string> &args,
                  ScanKind kind,
                  ScanArgs &parsed,
                  CliOutput &io);

// A new project for the video as opening it makes one, with the options of the command line.
void PrepareProject(core::CTarnwickData &data, const ScanArgs &args);

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

// One JSON document: file, fps, frames, default_scene (no motion was found and the list holds
// the default scene) and the scenes with first, last, start and end.
void PrintJson(const std::string &video,
               const core::CTarnwickData &data,
               bool defaultScene,
               std::ostream &out);
// One row per scene: number, frames, time codes and length; with files, the segment file.
void PrintTable(const core::CTarnwickData &data, bool files, std::ostream &out);
void PrintSummary(const std::string &video, const core::CTarnwickData &data, std::ostream &out);
// Says when the list is what the scan leaves without a result, in words true to how it ended.
void PrintDefaultNote(const JobOutcome &outcome,
                      const core::CTarnwickData &data,
                      std::ostream &out);

} // namespace cli
