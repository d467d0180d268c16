// The options that set a project's values.
#include "cli/project_options.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "cli/arg_problems.h"
#include "core/helpers.h"
#include "core/paths.h"
#include "workspace/tab_scene.h"

namespace cli {
namespace {

using workspace::ValueField;

struct NumberOption
{
    const char *name;
    unsigned group;
    std::optional<double> ProjectOptions::*field;
    ValueField value;
    const char *usage;
    const char *help;
};

const NumberOption kNumbers[] = {
    {"--threshold",
     kScanOptions,
     &ProjectOptions::threshold,
     ValueField::Threshold,
     " [--threshold N]",
     "  --threshold N         how much of a frame must change to count as motion, 0 to 1000\n"
     "                        (default 100: about half a percent of the picture)\n"},
    {"--valid-min",
     kScanOptions,
     &ProjectOptions::validMin,
     ValueField::ValidMinUnit,
     " [--valid-min S]",
     "  --valid-min S         activity a scene must have at least, in seconds (1 to 10)\n"},
    {"--cut-min",
     kScanOptions,
     &ProjectOptions::cutMin,
     ValueField::CutMinUnit,
     " [--cut-min S]",
     "  --cut-min S           still pause that ends a scene, in seconds (1 to 10)\n"},
    {"--brightness",
     kPictureOptions,
     &ProjectOptions::brightness,
     ValueField::Brightness,
     " [--brightness N]",
     "  --brightness N        -1 to 1 (default 0)\n"},
    {"--contrast",
     kPictureOptions,
     &ProjectOptions::contrast,
     ValueField::Contrast,
     " [--contrast N]",
     "  --contrast N          0 to 2 (default 1)\n"},
    {"--saturation",
     kPictureOptions,
     &ProjectOptions::saturation,
     ValueField::Saturation,
     " [--saturation N]",
     "  --saturation N        0 to 3 (default 1)\n"},
    {"--gamma",
     kPictureOptions,
     &ProjectOptions::gamma,
     ValueField::Gamma,
     " [--gamma N]",
     "  --gamma N             0.1 to 2 (default 1)\n"},
};

// The whole text is a finite number.
bool ParseNumber(const std::string &text, double &value)
{
    if (text.empty()) {
        return false;
    }
    char *end = nullptr;
    errno = 0;
    value = std::strtod(text.c_str(), &end);
    return *end == '\0' && errno == 0 && std::isfinite(value);
}

} // namespace

OptionParse ParseProjectOption(const std::vector<std::string> &args,
                               size_t &i,
                               unsigned groups,
                               ProjectOptions &options,
                               std::string &error)
{
    const std::string &arg = args[i];
    error.clear();
    const bool hasValue = i + 1 < args.size();
    for (const NumberOption &option : kNumbers) {
        if ((groups & option.group) == 0 || arg != option.name) {
            continue;
        }
        if (!hasValue) {
            error = NeedsValue(arg);
            return OptionParse::Wrong;
        }
        double value = 0;
        if (!ParseNumber(args[i + 1], value)) {
            error = arg + ": \"" + args[i + 1] + "\" is not a number";
            return OptionParse::Wrong;
        }
        options.*option.field = value;
        ++i;
        return OptionParse::Taken;
    }
    std::string *text =
        (groups & kFolderOption) != 0 && arg == "--output-folder" ? &options.outputFolder
        : (groups & kNameOption) != 0 && arg == "--output-name"   ? &options.outputName
                                                                  : nullptr;
    if (text != nullptr) {
        if (!hasValue || args[i + 1].empty()) {
            error = NeedsValue(arg);
            return OptionParse::Wrong;
        }
        *text = args[++i];
        return OptionParse::Taken;
    }
    if ((groups & kFilmOptions) != 0) {
        if (arg == "--title") {
            if (!hasValue) {
                error = NeedsValue(arg);
                return OptionParse::Wrong;
            }
            options.title = args[++i];
            return OptionParse::Taken;
        }
        if (arg == "--transition" || arg == "--no-transition") {
            options.transition = arg == "--transition";
            return OptionParse::Taken;
        }
        if (arg == "--no-watermark") {
            options.noWatermark = true;
            return OptionParse::Taken;
        }
    }
    if ((groups & kPictureOptions) != 0) {
        if (arg == "--cinema-scope" || arg == "--no-cinema-scope") {
            options.cinemaScope = arg == "--cinema-scope";
            return OptionParse::Taken;
        }
        if (arg == "--auto-picture") {
            options.autoPicture = true;
            return OptionParse::Taken;
        }
    }
    if ((groups & kEncodeOptions) != 0) {
        if (arg == "--cuda") {
            options.cuda = true;
            return OptionParse::Taken;
        }
        if (arg == "--preset") {
            if (!hasValue) {
                error = NeedsValue(arg);
                return OptionParse::Wrong;
            }
            const std::string &value = args[++i];
            if (value != "0" && value != "1" && value != "2") {
                error = "--preset: 0 (best picture), 1 or 2 (smallest file) is wanted";
                return OptionParse::Wrong;
            }
            options.preset = value[0] - '0';
            return OptionParse::Taken;
        }
    }
    return OptionParse::NotMine;
}

size_t ProjectOptionValueCount(const std::string &arg, unsigned groups)
{
    // Parsed with a value that every such option takes: it is taken with its value or not.
    const std::vector<std::string> probe{arg, "1"};
    size_t i = 0;
    ProjectOptions scratch;
    std::string error;
    return ParseProjectOption(probe, i, groups, scratch, error) == OptionParse::Taken ? i : 0;
}

std::string OptionNotTaken(const std::string &arg, const char *command)
{
    // An option of any group: one that another command takes.
    const std::vector<std::string> probe{arg, "0"};
    size_t i = 0;
    ProjectOptions scratch;
    std::string error;
    if (ParseProjectOption(probe, i, kAllProjectOptions, scratch, error) != OptionParse::NotMine) {
        return arg + " does not apply to " + command;
    }
    return UnexpectedArgument(arg);
}

std::string ProjectOptionsUsage(unsigned groups)
{
    std::string usage;
    for (const NumberOption &option : kNumbers) {
        if ((groups & option.group) != 0) {
            usage += option.usage;
        }
    }
    if ((groups & kPictureOptions) != 0) {
        usage += " [--cinema-scope] [--auto-picture]";
    }
    if ((groups & kFilmOptions) != 0) {
        usage += " [--transition] [--title TEXT] [--no-watermark]";
    }
    if ((groups & kEncodeOptions) != 0) {
        usage += " [--preset 0|1|2] [--cuda]";
    }
    if ((groups & kFolderOption) != 0) {
        usage += " [--output-folder DIR]";
    }
    if ((groups & kNameOption) != 0) {
        usage += " [--output-name NAME]";
    }
    return usage;
}

std::string ProjectOptionsHelp(unsigned groups)
{
    std::string help;
    for (const NumberOption &option : kNumbers) {
        if ((groups & option.group) != 0) {
            help += option.help;
        }
    }
    if ((groups & kPictureOptions) != 0) {
        help += "  --cinema-scope        the picture cropped to 2.35:1 (--no-cinema-scope: not)\n"
                "  --auto-picture        brightness, contrast, saturation and gamma measured from\n"
                "                        the video first\n";
    }
    if ((groups & kFilmOptions) != 0) {
        help += "  --transition          cross-fades between the scenes (--no-transition: cuts)\n"
                "  --title TEXT          the title over the film's first seconds\n"
                "  --no-watermark        no watermark in the film\n";
    }
    if ((groups & kEncodeOptions) != 0) {
        help += "  --preset N            encoder preset: 0 best picture, 1, 2 smallest file\n"
                "  --cuda                encode and decode on an NVIDIA card\n";
    }
    if ((groups & kFolderOption) != 0) {
        help += "  --output-folder DIR   folder of segments, working files and film\n"
                "                        (default VIDEO_out/, or the project's)\n";
    }
    if ((groups & kNameOption) != 0) {
        help += "  --output-name NAME    file name of the film (default VIDEO_trim.mp4)\n";
    }
    return help;
}

void ApplyNames(workspace::CTarnwickTabScene &tab, const ProjectOptions &options)
{
    const core::CTarnwickData &data = std::as_const(tab).Data();
    std::string folder = data.output_folder;
    if (!options.outputFolder.empty()) {
        // Resolved once here: the folder is named, locked and compared by its real path.
        folder = core::SetTrailingSeparator(core::RealPath(options.outputFolder), true);
    }
    tab.PresetOutputNames(folder,
                          options.outputName.empty() ? data.output_name : options.outputName);
}

void ApplyValues(workspace::CTarnwickTabScene &tab, const ProjectOptions &options)
{
    for (const NumberOption &option : kNumbers) {
        if (const std::optional<double> &value = options.*option.field) {
            tab.CommitValue(option.value, core::StrPrintf("%.17g", *value));
        }
    }
    if (options.transition) {
        tab.SetTransition(*options.transition);
    }
    if (options.cinemaScope) {
        tab.SetCinemaScope(*options.cinemaScope);
    }
    if (options.title) {
        // After the opening, which gives a new project whose title is empty the default title:
        // an empty title given means no title, in a new project as in a saved one.
        tab.SetTitleText(*options.title);
    }
    if (options.noWatermark) {
        tab.RemoveWatermark();
    }
    if (options.preset) {
        tab.SetEncodePreset(*options.preset);
    }
    if (options.cuda) {
        tab.SetUseCuda(true);
    }
    tab.SaveProject(false);
}

} // namespace cli
