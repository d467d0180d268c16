// The options that set a project's values, shared by every command that scans, cuts or
// renders: parsed once, checked, and applied through the scene tab's own commands.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace workspace {
class CTarnwickTabScene;
}

namespace cli {

// Groups of options, so that each command takes those that mean something to it.
enum ProjectOptionGroup : unsigned {
    kScanOptions = 1u << 0,    // --threshold, --valid-min, --cut-min
    kFolderOption = 1u << 1,   // --output-folder
    kNameOption = 1u << 2,     // --output-name
    kPictureOptions = 1u << 3, // --brightness, --contrast, --saturation, --gamma,
                               // --cinema-scope, --auto-picture
    kFilmOptions = 1u << 4,    // --transition, --no-transition, --title, --no-watermark
    kEncodeOptions = 1u << 5,  // --preset, --cuda
    kAllProjectOptions = 0x3f
};

struct ProjectOptions
{
    std::optional<double> threshold; // changed pixels per full-HD frame, 0 to 1000
    std::optional<double> validMin;  // seconds of activity a scene needs, 1 to 10
    std::optional<double> cutMin;    // seconds of stillness that end a scene, 1 to 10
    std::optional<double> brightness;
    std::optional<double> contrast;
    std::optional<double> saturation;
    std::optional<double> gamma;
    std::optional<int> preset; // encoder preset 0 (best picture) to 2 (smallest file)
    std::optional<bool> transition;
    std::optional<bool> cinemaScope;
    bool cuda = false;
    bool autoPicture = false;
    bool noWatermark = false;
    std::string outputFolder; // empty: the project's, or VIDEO + "_out/"
    std::string outputName;   // empty: the project's, or the input's name + "_trim.mp4"
    std::optional<std::string> title;
};

// How an argument went: not an option of the groups, taken, or wrong (error says why: a value
// missing or not one the option takes).
enum class OptionParse { NotMine, Taken, Wrong };

// Reads args[i] (and its value, advancing i) when it is an option of groups.
OptionParse ParseProjectOption(const std::vector<std::string> &args,
                               size_t &i,
                               unsigned groups,
                               ProjectOptions &options,
                               std::string &error);

// How many values follow arg when it is a project option of groups that takes one (a number,
// a folder, a name, a title, a preset): 1; else 0.
size_t ProjectOptionValueCount(const std::string &arg, unsigned groups);

// What to say of an argument that a command's options did not take: "--brightness does not
// apply to scan" for a project option of other commands, else UnexpectedArgument's phrase.
std::string OptionNotTaken(const std::string &arg, const char *command);

// The " [--threshold N] ..." of a usage line, and the help lines of the groups.
std::string ProjectOptionsUsage(unsigned groups);
std::string ProjectOptionsHelp(unsigned groups);

// Before a video or project is opened: the folder and film name the tab keeps when it opens a
// video. The folder is made absolute, its symbolic links resolved.
void ApplyNames(workspace::CTarnwickTabScene &tab, const ProjectOptions &options);
// After it is open: every value through the tab's commands (committed as a value box is,
// clamped to its bounds, and saved when the tab saves), and the title given (empty: none). The
// automatic picture is not run here.
void ApplyValues(workspace::CTarnwickTabScene &tab, const ProjectOptions &options);

} // namespace cli
