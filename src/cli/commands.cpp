// Dispatch of tarnwickmp4-cli: the command table, usage text and --version.
#include "cli/commands.h"

#include <cstring>
#include <iostream>
#include <sstream>

#include "cli/project_options.h"
#include "cli/signal_stop.h"
#include "core/version.h"

namespace cli {
namespace {

struct CommandEntry
{
    const char *name;
    CommandFn fn;
    const char *usage;
    const char *help = nullptr;    // what it does and its options, one per line
    const char *example = nullptr; // a command line to copy
    unsigned options = 0;          // the project options it takes (project_options.h)
    const char *usageTail = "";    // what follows them on the usage line
    // Its own options that take values, each followed by the number of its values when that is
    // more than one ("--split 2"); the project options of `options` are known by their group.
    const char *valueOptions = "";
};

// One row per command; each command lives in its own cmd_*.cpp.
const CommandEntry kCommands[] = {
    {"--version", RunVersion, "--version", "Prints the program's name and version.\n", nullptr},
    {"project",
     RunProjectCommand,
     "project check FILE [--write OUT]",
     "Reads a project file and reports what it holds; exit 3 when it loads but holds values\n"
     "that cannot be right (each named in a warning).\n"
     "  --write OUT   save the project as read to OUT\n",
     "tarnwickmp4-cli project check clip.mp4.twproj",
     0,
     "",
     "--write"},
    {"probe",
     RunProbe,
     "probe FILE [--kind N]",
     "Prints the stream facts of FILE as one JSON object.\n"
     "  --kind N      ffprobe's JSON text of kind N (1 to 5) instead\n",
     "tarnwickmp4-cli probe clip.mp4",
     0,
     "",
     "--kind"},
    {"scan",
     RunScan,
     "scan VIDEO",
     "Finds the scenes in which something moves; writes nothing.\n"
     "  --json                one JSON document instead of the table: file, fps, frames,\n"
     "                        default_scene (true: no motion, the list holds the default\n"
     "                        scene) and scenes with first, last, start and end\n",
     "tarnwickmp4-cli scan garden.mp4 --threshold 80",
     kScanOptions,
     " [--json]"},
    {"extract",
     RunExtract,
     "extract VIDEO",
     "Scans VIDEO, cuts every scene into its own MP4 and saves the project as VIDEO.twproj.\n"
     "  --json                one JSON document instead of the table: as scan's, each scene\n"
     "                        with its segment and whether it was written, and the project\n",
     "tarnwickmp4-cli extract garden.mp4 --output-folder scenes",
     kScanOptions | kFolderOption | kPictureOptions | kEncodeOptions,
     " [--json]"},
    {"analyze",
     RunAnalyze,
     "analyze VIDEO",
     "Opens VIDEO as a new project does: says whether it is used as it is or which working\n"
     "MP4 was made (interlaced and non-MP4 recordings are converted, deinterlaced when not\n"
     "known to be progressive), where its frame times are and how they were found, the\n"
     "default cross-fade and the working input's stream facts.\n"
     "  --json                one JSON document instead of the lines\n",
     "tarnwickmp4-cli analyze camera.mts --json",
     kFolderOption | kEncodeOptions,
     " [--json]"},
    {"render",
     RunRender,
     "render PROJECT",
     "Makes the finished film of a saved project: good segments are reused, stale ones cut\n"
     "again, the ticked scenes joined and encoded with picture values and captions. The\n"
     "options change the project's values first (and are saved with it). Prints the film.\n"
     "  --json                one JSON document: project, film, scenes (how many were\n"
     "                        rendered) and transition\n",
     "tarnwickmp4-cli render garden.mp4.twproj --output-name garden_film.mp4",
     kAllProjectOptions,
     " [--json]"},
    {"segments",
     RunSegments,
     "segments PROJECT",
     "Cuts every ticked scene of a saved project into its segment, as the segment output\n"
     "button does, after the options have changed the project's values; prints the list\n"
     "with the segment files.\n",
     "tarnwickmp4-cli segments garden.mp4.twproj --brightness 0.1",
     kAllProjectOptions},
    {"run",
     RunRun,
     "run VIDEO",
     "Scan, cuts and finished film of VIDEO in one go; saves the project as VIDEO.twproj.\n"
     "Prints the scenes, the project and the film.\n"
     "  --json                one JSON document instead: as extract's, and the film (null\n"
     "                        when none was made)\n",
     "tarnwickmp4-cli run garden.mp4 --transition --title \"Garden, May\"",
     kAllProjectOptions,
     " [--json]"},
    {"merge",
     RunMerge,
     "merge --size WxH --rate N/D [--transition] [--output-folder DIR] -o NAME [--json] "
     "FILE...",
     "Joins FILEs, in the order given, into one film of one picture size and frame rate:\n"
     "each file is analysed and converted to a segment of that size and rate (fitted without\n"
     "distortion on black, with a silent track when it has no sound), and the segments are\n"
     "joined. Segments already converted are reused.\n"
     "  --size WxH            4096x2160, 3840x2160, 2560x1440, 1920x1080, 1280x720, 854x480,\n"
     "                        720x576, 720x480 or 352x288\n"
     "  --rate N/D            120, 120000/1001, 60, 60000/1001, 30, 30000/1001, 24,\n"
     "                        24000/1001, 15 or 10\n"
     "  --transition          cross-fades of about half a second between the files\n"
     "  --output-folder DIR   segments and film (default NAME_out/ beside the first file)\n"
     "  -o NAME               file name of the film\n"
     "  --json                one JSON document: film, files, size, rate and transition\n",
     "tarnwickmp4-cli merge --size 1280x720 --rate 30 -o trip.mp4 day1.mp4 day2.mov",
     0,
     "",
     "--size --rate --output-folder -o --output-name"},
    {"scenes",
     RunScenes,
     "scenes PROJECT [--json]",
     "Lists the scenes of a saved project as the scene tab shows them: number, tick, first\n"
     "and last frame, frames, length, caption times, where the scene starts in the film, and\n"
     "the caption.\n"
     "  --json   one JSON document instead of the table\n",
     "tarnwickmp4-cli scenes garden.mp4.twproj"},
    {"edit",
     RunEdit,
     "edit PROJECT [--tick N] [--untick N] [--split N AT] [--delete N] [--duplicate N] "
     "[--move N TO] [--caption N TEXT] [--title TEXT] [--watermark TEXT]",
     "Changes the scene list of a saved project as the scene tab does, in the order given,\n"
     "and saves it. Scenes are numbered from 1 as scenes lists them.\n"
     "  --tick N / --untick N   take scene N into the film, or leave it out\n"
     "  --split N AT            split scene N; the later part begins at frame AT of the video\n"
     "  --delete N              remove scene N (the last one leaves the default scene)\n"
     "  --duplicate N           a copy of scene N after it\n"
     "  --move N TO             scene N to place TO (beyond the end: the last place)\n"
     "  --caption N TEXT        the caption of scene N\n"
     "  --title TEXT            the title over the film's first seconds\n"
     "  --watermark TEXT        the watermark\n",
     "tarnwickmp4-cli edit garden.mp4.twproj --untick 2 --split 3 480 --caption 1 \"Fox\"",
     0,
     "",
     "--tick --untick --delete --duplicate --split 2 --move 2 --caption 2 --title --watermark"},
    {"autopicture",
     RunAutoPicture,
     "autopicture VIDEO",
     "Prints the brightness, contrast, saturation and gamma that the automatic picture\n"
     "analysis proposes for VIDEO, one \"name value\" line each.\n",
     "tarnwickmp4-cli autopicture dusk.mp4"},
    {"still",
     RunStill,
     "still VIDEO [--at SECONDS] [--scene N] [--project PROJECT]",
     "Writes one still of VIDEO as the picture pane shows it (a 480x480 JPEG) and prints\n"
     "its path.\n"
     "  --at SECONDS        time of the still (default 0)\n"
     "  --project PROJECT   through the project's picture values, into its output folder\n"
     "  --scene N           with the caption of scene N (from 1) of that project\n",
     "tarnwickmp4-cli still garden.mp4 --at 12.5",
     0,
     "",
     "--at --scene --project"},
    {"play",
     RunPlay,
     "play VIDEO [--from SECONDS] [--volume N]",
     "Plays VIDEO with a live position line; Ctrl-C stops it and prints the position reached.\n"
     "  --from SECONDS   start time (default the start)\n"
     "  --volume N       0 to 100\n",
     "tarnwickmp4-cli play garden.mp4 --from 30",
     0,
     "",
     "--from --volume"},
};

void PrintUsage(std::ostream &os)
{
    os << "Usage: tarnwickmp4-cli COMMAND [ARGS]\nCommands:\n";
    for (const auto &c : kCommands) {
        os << "  tarnwickmp4-cli " << c.usage << ProjectOptionsUsage(c.options) << c.usageTail
           << "\n";
    }
    os << "tarnwickmp4-cli COMMAND --help tells more about one command.\n";
}

// How many values follow option arg of command c: 0 for a switch or an argument that is no
// option of c.
size_t ValueCount(const CommandEntry &c, const std::string &arg)
{
    std::istringstream own(c.valueOptions);
    std::string word;
    while (own >> word) {
        if (word != arg) {
            continue;
        }
        size_t count = 1;
        if (own >> word && word.find_first_not_of("0123456789") == std::string::npos) {
            count = std::stoul(word);
        }
        return count;
    }
    return ProjectOptionValueCount(arg, c.options);
}

// --help or -h stands among the arguments as an argument of its own: the value of an option that
// takes text ("--title -h", "--caption 1 --help") is that text, and after "--" come files.
bool AsksForHelp(const CommandEntry &c, const std::vector<std::string> &args)
{
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        if (arg == "--help" || arg == "-h") {
            return true;
        }
        if (arg == "--") {
            return false;
        }
        i += ValueCount(c, arg);
    }
    return false;
}

void PrintCommandUsage(const CommandEntry &c, std::ostream &os)
{
    os << "Usage: tarnwickmp4-cli " << c.usage << ProjectOptionsUsage(c.options) << c.usageTail
       << "\n";
}

void PrintCommandHelp(const CommandEntry &c, std::ostream &os)
{
    PrintCommandUsage(c, os);
    if (c.help != nullptr) {
        os << "\n" << c.help << ProjectOptionsHelp(c.options);
    }
    if (c.example != nullptr) {
        os << "\nExample:\n  " << c.example << "\n";
    }
}

// A stop that arrived at any moment of the command, before its first step, between two or after
// its last, ends it as stopped; the commands that saw it have said so already.
int EndsAsStopped(const CommandEntry &c, int status, CliOutput &io)
{
    if (status == kExitStopped || !StopSignalled()) {
        return status;
    }
    io.err << "tarnwickmp4-cli " << c.name << ": stopped\n";
    return kExitStopped;
}

} // namespace

int RunVersion(const std::vector<std::string> &, CliOutput &io)
{
    io.out << core::kProductName << " " << core::kProductVersion << "\n";
    return kExitOk;
}

int ArgumentProblem(CliOutput &io, const char *command, const std::string &problem)
{
    io.err << "tarnwickmp4-cli " << command << ": " << problem << "\n";
    for (const auto &c : kCommands) {
        if (std::strcmp(command, c.name) == 0) {
            PrintCommandUsage(c, io.err);
        }
    }
    return kExitBadInput;
}

int RunCommandLine(int argc, char **argv)
{
    CliOutput io{std::cout, std::cerr};
    if (argc < 2) {
        PrintUsage(io.err);
        return kExitBadInput;
    }
    if (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
        PrintUsage(io.out);
        return kExitOk;
    }
    for (const auto &c : kCommands) {
        if (std::strcmp(argv[1], c.name) == 0) {
            std::vector<std::string> args(argv + 2, argv + argc);
            if (AsksForHelp(c, args)) {
                PrintCommandHelp(c, io.out);
                return kExitOk;
            }
            // A stop before the command began: none of its steps runs.
            return EndsAsStopped(c, StopSignalled() ? kExitOk : c.fn(args, io), io);
        }
    }
    io.err << "tarnwickmp4-cli: unknown command \"" << argv[1] << "\"\n";
    PrintUsage(io.err);
    return kExitBadInput;
}

} // namespace cli
