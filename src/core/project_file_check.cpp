// Project file (.twproj): the warnings about a project, and the check of a loaded project for
// values that cannot be right.
#include "core/project_file.h"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "core/helpers.h"
#include "core/path_check.h"
#include "core/paths.h"
#include "core/project_file_internal.h"
#include "core/tarnwick_data.h"

namespace core {
namespace {

using detail::NumberText;
using detail::PrintableLine;

// Paths are handed to tools inside double quotes of a command text; an empty one is not used.
// False when the path was warned about.
bool CheckPath(const std::string &field, const std::string &path, ProjectWarnings &warnings)
{
    if (path.empty()) {
        return true;
    }
    std::string problem = PathProblem(path);
    if (!problem.empty()) {
        warnings.Add(field + ": " + problem + "; no tool can be given this path");
        return false;
    }
    return true;
}

// The writer refuses a text that is not valid UTF-8.
void CheckText(const std::string &field, const std::string &text, ProjectWarnings &warnings)
{
    if (!IsValidUtf8(text)) {
        warnings.Add(field + ": is not valid UTF-8; the project cannot be saved");
    }
}

// prefix: the caption's path from the root; suffix: its scene, " (scene 3)", or empty.
void CheckCaption(const std::string &prefix,
                  const std::string &suffix,
                  const CapParam &cap,
                  ProjectWarnings &warnings)
{
    CheckText(prefix + ".caption" + suffix, cap.caption, warnings);
    CheckText(prefix + ".font_name" + suffix, cap.font_name, warnings);
}

// A segment is named after the frames it holds, "<stem>_seg_<first>_<last>.mp4": a name that
// names other frames belongs to another cut (the render takes such a file for stale).
void CheckSegmentName(const std::string &field, const SceneEntry &scene, ProjectWarnings &warnings)
{
    if (scene.fileName.empty()) {
        return;
    }
    const std::string name = FileNamePart(scene.fileName);
    const std::string tail = StrPrintf("_%d_%d.mp4", scene.framNo_first, scene.framNo_second);
    if (name.size() > tail.size() &&
        name.compare(name.size() - tail.size(), tail.size(), tail) == 0) {
        return;
    }
    warnings.Add(field + ": " + PrintableLine(name) + " is not named after the scene's frames " +
                 std::to_string(scene.framNo_first) + " to " + std::to_string(scene.framNo_second) +
                 " (it should end in " + tail + "); the next render cuts the scene again");
}

void CheckScene(const SceneEntry &scene, size_t index, int frameNum, ProjectWarnings &warnings)
{
    const std::string prefix = "diff_list[" + std::to_string(index) + "]";
    const std::string suffix = " (scene " + std::to_string(index + 1) + ")";
    const std::pair<const char *, int> frames[] = {{"framNo_first", scene.framNo_first},
                                                   {"framNo_second", scene.framNo_second}};
    bool bFramesGood = true;
    for (const auto &[key, frame] : frames) {
        const std::string field = prefix + "." + key + suffix + ": " + std::to_string(frame);
        if (frame < 0) {
            warnings.Add(field + " is negative; frames count from 0");
            bFramesGood = false;
        } else if (frameNum > 0 && frame >= frameNum) {
            warnings.Add(field + " is at or beyond frame_num " + std::to_string(frameNum) +
                         "; the last frame is " + std::to_string(frameNum - 1));
            bFramesGood = false;
        }
    }
    if (scene.framNo_second < scene.framNo_first) {
        warnings.Add(prefix + suffix + ": framNo_second " + std::to_string(scene.framNo_second) +
                     " is before framNo_first " + std::to_string(scene.framNo_first) +
                     "; the scene has no frames");
        bFramesGood = false;
    }
    const std::string field = prefix + ".fileName" + suffix;
    // One warning for one fault: the name is looked at only for frames and a path that can be.
    if (CheckPath(field, scene.fileName, warnings) && bFramesGood) {
        CheckSegmentName(field, scene, warnings);
    }
    CheckCaption(prefix + ".capParam", suffix, scene.capParam, warnings);
}

// The facts of the working input, to which the frame numbers and times refer.
void CheckVideo(const CTarnwickData &data, ProjectWarnings &warnings)
{
    const VideoInfo &video = data.viInput;
    bool needsRate = !data.diff_list.empty() || !data.input_file.empty();
    if (needsRate && !(video.fps > 0 && std::isfinite(video.fps))) {
        warnings.Add("fps: " + NumberText(video.fps) +
                     " is not a frame rate; the times of the scenes cannot be computed");
    }
    const std::pair<const char *, int> counts[] = {
        {"frame_num", video.frame_num}, {"width", video.width}, {"height", video.height}};
    for (const auto &[key, value] : counts) {
        if (value < 0) {
            warnings.Add(std::string(key) + ": " + std::to_string(value) + " is negative");
        }
    }
    if (video.sar_den <= 0) {
        warnings.Add("sar_den: " + std::to_string(video.sar_den) +
                     " is not above 0; the aspect ratio is undefined");
    }
    if (video.sar_num < 0 || (video.sar_num == 0 && video.sar_den != 1)) {
        warnings.Add("sar_num: " + std::to_string(video.sar_num) +
                     " is not above 0; the aspect ratio is undefined (only 0:1 stands for an "
                     "unknown one)");
    }
    CheckText("r_frame_rate", video.r_frame_rate, warnings);
    CheckText("field_order", video.field_order, warnings);
}

} // namespace

void ProjectWarnings::Add(std::string line)
{
    if (m_lines.size() < kMaxLines) {
        m_lines.push_back(std::move(line));
    } else {
        ++m_more;
    }
}

std::vector<std::string> ProjectWarnings::Lines() const
{
    std::vector<std::string> lines = m_lines;
    if (m_more > 0) {
        lines.push_back("... and " + std::to_string(m_more) + " more warnings");
    }
    return lines;
}

void CheckCurrentRow(const CTarnwickData &data, ProjectWarnings &warnings)
{
    const int count = static_cast<int>(data.diff_list.size());
    const int row = data.list_idx;
    const std::string field = "list_idx: " + std::to_string(row);
    if (count == 0) {
        if (row != -1) {
            warnings.Add(field + " names a scene, but the list is empty; -1 is read");
        }
        return;
    }
    if (row < 0 || row >= count) {
        const int taken = row < 0 ? 0 : count - 1;
        warnings.Add(field + " is outside the list of " + std::to_string(count) + " scene" +
                     (count == 1 ? "" : "s") + " (0 to " + std::to_string(count - 1) +
                     "); the list is kept and scene " + std::to_string(taken + 1) +
                     " becomes the current one");
    }
}

void CheckProjectData(const CTarnwickData &data, ProjectWarnings &warnings)
{
    const std::pair<const char *, const std::string *> paths[] = {
        {"input_file", &data.input_file},
        {"input_mp4_file", &data.input_mp4_file},
        {"output_folder", &data.output_folder},
        {"output_name", &data.output_name},
        {"pts_file", &data.pts_file},
    };
    for (const auto &[field, path] : paths) {
        CheckPath(field, *path, warnings);
    }
    CheckVideo(data, warnings);
    CheckCaption("capWatermark", "", data.capWatermark, warnings);
    CheckCaption("capTitle", "", data.capTitle, warnings);
    for (size_t i = 0; i < data.diff_list.size(); ++i) {
        CheckScene(data.diff_list[i], i, data.viInput.frame_num, warnings);
    }
}

} // namespace core
