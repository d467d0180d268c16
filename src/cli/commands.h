// The commands of tarnwickmp4-cli and the table that dispatches to them.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace cli {

// Exit statuses of the command line.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;    // the work failed (a tool, a probe)
inline constexpr int kExitBadInput = 2;  // the arguments or an input file are wrong
inline constexpr int kExitWarnings = 3;  // project check: the file loads, but holds values that
                                         // cannot be right, each named in a warning
inline constexpr int kExitStopped = 130; // stopped by Ctrl-C

// Where a command prints: results to out, messages for the user to err.
struct CliOutput
{
    std::ostream &out;
    std::ostream &err;
};

// A command receives the arguments behind its name.
using CommandFn = int (*)(const std::vector<std::string> &args, CliOutput &io);

int RunVersion(const std::vector<std::string> &args, CliOutput &io);
// project check FILE [--write OUT]: reads a project file and reports what it holds.
int RunProjectCommand(const std::vector<std::string> &args, CliOutput &io);
// probe FILE [--kind N]: the stream facts of FILE as one JSON object, or with --kind N (1 to 5)
// ffprobe's JSON text of that kind. Ctrl-C stops it (exit 130).
int RunProbe(const std::vector<std::string> &args, CliOutput &io);
// scan VIDEO [--threshold N] [--valid-min S] [--cut-min S] [--json]: the scenes that scene
// extraction finds in VIDEO with a new project's settings (or the given ones, clamped to their
// bounds: threshold 0 to 1000, the two units 1 to 10 seconds), before any cut; nothing is
// written. A table, or one JSON object {"file", "fps", "frames", "default_scene", "scenes":
// [{"first", "last", "start", "end"}]} with times in seconds; default_scene is true when no
// motion was found and the list holds the default scene. Exit 2 for bad arguments and for a VIDEO
// that is missing, not readable, not a video, without a video stream or too small to scan; 1 when a
// tool fails; 130 on Ctrl-C or a termination request.
int RunScan(const std::vector<std::string> &args, CliOutput &io);
// extract VIDEO [same options] [--output-folder DIR]: a new project for VIDEO (output folder
// VIDEO + "_out/" or DIR), old segments deleted, the scenes found and cut into their segments,
// the project saved as VIDEO + ".twproj". Prints each scene with its segment. The project is
// saved also after a stop or a failing tool, with what was finished; exit statuses as scan.
int RunExtract(const std::vector<std::string> &args, CliOutput &io);
// autopicture VIDEO: the brightness, contrast, saturation and gamma that the automatic picture
// analysis proposes for VIDEO, one "name value" line each, the value as its field shows it. The
// frames are grabbed into a temporary folder that is deleted afterwards. Exit 2 for bad
// arguments, a path that a command cannot carry, and a VIDEO that is missing, not readable, not
// a video or without a video stream; 1 when a tool fails; 130 on Ctrl-C or a termination
// request.
int RunAutoPicture(const std::vector<std::string> &args, CliOutput &io);

// render PROJECT [--output-folder DIR] [--output-name NAME]: the finished film of a saved
// project (job 1006): good segments reused, stale ones cut again, merged with or without
// cross-fades, encoded with picture settings and captions. Prints the film's path. A progress
// line on standard error. Exit 2 for a project that cannot be read, whose video is gone or with
// no scene ticked; 1 when the render fails or the project or folder is in use; 130 on Ctrl-C,
// with nothing left under the film's name.
int RunRender(const std::vector<std::string> &args, CliOutput &io);
// segments PROJECT [options]: every ticked scene of a saved project cut into its segment (job
// 1052), after the options have changed the project's values; the list is printed with the
// segment files. Exit statuses as render.
int RunSegments(const std::vector<std::string> &args, CliOutput &io);
// run VIDEO [scan options] [--transition] [--output-folder DIR] [--output-name NAME] [--title
// TEXT] [--auto-picture]: scan, cuts and render of a new project (job 1057); prints the scenes,
// the saved project and the film.
int RunRun(const std::vector<std::string> &args, CliOutput &io);

// still VIDEO [--at SECONDS] [--scene N] [--project PROJECT]: one still of VIDEO at SECONDS
// (default 0) as the picture pane gets it, a 480 by 480 JPEG; prints its path. Without a
// project it is written to VIDEO + "_out/"; with --project into that project's output folder,
// through the project's picture chain and the caption of scene N (from 1; default the current
// scene). Exit 2 for bad arguments, a missing or unreadable VIDEO or PROJECT and a scene that
// does not exist; 1 when the still could not be made; 130 on Ctrl-C.
int RunStill(const std::vector<std::string> &args, CliOutput &io);
// play VIDEO [--from SECONDS] [--volume N]: plays VIDEO in ffplay on the X display from
// SECONDS (default the start) at volume N (0 to 100), with a live position line on standard
// error; prints the position reached in seconds, as text that --from takes unchanged. Exit 0
// at the end of the video, 130 on Ctrl-C (the player stops), 1 without a display or when the
// player fails, 2 for bad arguments or a VIDEO that cannot be read.
int RunPlay(const std::vector<std::string> &args, CliOutput &io);

// analyze VIDEO [--output-folder DIR] [--preset 0|1|2] [--json]: the analysis of a newly opened
// video: used as it is or converted into a working MP4 (in VIDEO + "_out/" or DIR), its frame
// times in "_pts.csv", the default cross-fade and the working input's facts. Exit 2 for bad
// arguments or a VIDEO that is not a video, 1 when a tool fails, 130 on Ctrl-C.
int RunAnalyze(const std::vector<std::string> &args, CliOutput &io);
// merge --size WxH --rate N/D [--transition] [--output-folder DIR] -o NAME FILE...: the merge
// workspace's jobs on FILEs in the order given: analysis, conversion of each to the size and
// rate, and the joined film NAME in DIR (default: the first file's folder). Progress on
// standard error; prints the film's path. Exit 2 for bad arguments or a FILE that cannot be
// read (named before anything runs), 1 when a tool fails, 130 on Ctrl-C.
int RunMerge(const std::vector<std::string> &args, CliOutput &io);

// scenes PROJECT [--json]: the scene list of a saved project as the scene tab shows it.
int RunScenes(const std::vector<std::string> &args, CliOutput &io);
// edit PROJECT [edits...]: the scene tab's list commands and captions applied in the order
// given, the project saved; the list is printed. A scene that does not exist saves nothing.
int RunEdit(const std::vector<std::string> &args, CliOutput &io);

// Says what is wrong with a command's arguments: "tarnwickmp4-cli COMMAND: PROBLEM", then the
// command's usage line. Returns kExitBadInput.
int ArgumentProblem(CliOutput &io, const char *command, const std::string &problem);

// Parses argv and runs the named command; prints usage for unknown ones.
int RunCommandLine(int argc, char **argv);

} // namespace cli
