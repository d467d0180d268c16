// Pieces the commands share: the checks of input files, paths and output options, ffprobe's
// error lines and temporary folders.
#include "cli/cli_support.h"

#include <filesystem>
#include <sstream>
#include <vector>

#include <stdlib.h>

#include <unistd.h>

#include "core/helpers.h"
#include "core/path_check.h"
#include "core/paths.h"

namespace cli {

std::string UnusablePath(const std::string &path)
{
    std::error_code ec;
    std::string absolute = std::filesystem::absolute(path, ec).string();
    std::string problem = core::PathProblem(ec ? path : absolute);
    if (problem.empty()) {
        return "";
    }
    return "the path " + problem + ", which a tool's command line cannot carry; rename it or " +
           "its folder";
}

std::string CheckOutputOptions(const std::string &folder, const std::string &name)
{
    if (!folder.empty()) {
        std::string problem = UnusablePath(folder + "/");
        if (!problem.empty()) {
            return "--output-folder " + PrintablePath(folder) + ": " + problem;
        }
    }
    if (!name.empty()) {
        if (name.find('/') != std::string::npos || name == "." || name == "..") {
            return "--output-name " + PrintablePath(name) +
                   ": a file name is wanted, without a folder (use --output-folder for that)";
        }
        std::string problem = core::PathProblem(name);
        if (!problem.empty()) {
            return "--output-name " + PrintablePath(name) + ": the name " + problem +
                   ", which a tool's command line cannot carry";
        }
        problem = NameRoomProblem(name);
        if (!problem.empty()) {
            return "--output-name " + PrintablePath(name) + ": " + problem;
        }
        if (!core::IsMp4File(name)) {
            // Whatever the name says, the film is an MP4 file.
            const std::string suggested = name.find('.') == std::string::npos
                                              ? name + ".mp4"
                                              : core::ReplaceExtension(name, ".mp4");
            return "--output-name " + PrintablePath(name) +
                   ": the film is an MP4 file, so its name must end in .mp4 (such as " +
                   PrintablePath(suggested) + ")";
        }
    }
    return "";
}

std::string PrintablePath(const std::string &path)
{
    std::string text = path;
    for (char &c : text) {
        if (c >= 0 && c < 0x20) {
            c = '?';
        }
    }
    return text;
}

std::string
CheckInputFile(const std::string &file, const char *folderProblem, const char *unreadableProblem)
{
    std::string unusable = UnusablePath(file);
    if (!unusable.empty()) {
        return unusable;
    }
    std::error_code ec;
    if (!std::filesystem::exists(file, ec)) {
        return "does not exist";
    }
    if (std::filesystem::is_directory(file, ec)) {
        return folderProblem;
    }
    if (access(file.c_str(), R_OK) != 0) {
        return unreadableProblem;
    }
    return "";
}

std::string NameRoomProblem(const std::string &path)
{
    if (!core::StemTooLong(path)) {
        return "";
    }
    const std::string name = std::filesystem::path(path).filename().string();
    const size_t dot = name.rfind('.');
    const size_t stem = dot == std::string::npos || dot == 0 ? name.size() : dot;
    return core::StrPrintf("the file name is %zu bytes long without its extension; the files "
                           "made from it need it to be %zu bytes or fewer (a Japanese character "
                           "takes 3): rename it",
                           stem,
                           core::kMaxStemBytes);
}

std::string FfprobeErrorLines(const std::string &text,
                              const std::function<void(std::string &line)> &tidy)
{
    std::istringstream in(text);
    std::string line;
    std::string reason;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '{' || line[0] == '}' || line[0] == ' ') {
            continue;
        }
        if (tidy) {
            tidy(line);
        }
        reason += (reason.empty() ? "" : "; ") + line;
    }
    return reason;
}

std::string MakeTemporaryFolder(const char *prefix)
{
    std::error_code ec;
    std::filesystem::path base = std::filesystem::temp_directory_path(ec);
    std::string name =
        core::SetTrailingSeparator(ec ? "/tmp" : base.string(), true) + prefix + "-XXXXXX";
    std::vector<char> buffer(name.begin(), name.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data()) == nullptr) {
        return "";
    }
    return core::SetTrailingSeparator(buffer.data(), true);
}

} // namespace cli
