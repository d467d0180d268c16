// Whether a segment's video stream really reaches the end that its header announces: the
// ffprobe command that reads only the packets of the file's last stretch, and the reading of
// its answer. Also the engine's check of a scene's segment built on it.
#include "engine/segment_check.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>

#include <nlohmann/json.hpp>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/project_names.h"
#include "engine/tarnwick_process.h"

namespace engine {
namespace {

// A number that ffprobe writes as text ("1.840000"); nothing for "N/A" or a missing key.
bool SecondsOf(const nlohmann::json &object, const char *key, double &seconds)
{
    auto it = object.find(key);
    if (it == object.end() || !it->is_string()) {
        return false;
    }
    const std::string text = it->get<std::string>();
    char *end = nullptr;
    seconds = std::strtod(text.c_str(), &end);
    return end != text.c_str() && *end == '\0';
}

} // namespace

std::string StreamEndCommand(const std::string &path)
{
    // The seek far past the end lands on the last key frame; from there to the end every
    // packet is read, no more than a second or two of the file.
    return core::StrPrintf("ffprobe -v quiet -read_intervals 99999999%% -select_streams v:0 "
                           "-show_entries stream=duration:packet=pts_time,duration_time "
                           "-print_format json \"%s\"",
                           path.c_str());
}

bool StreamReachesItsEnd(const std::string &json)
{
    const nlohmann::json root = nlohmann::json::parse(json, nullptr, false);
    if (!root.is_object() || !root.contains("streams") || !root["streams"].is_array() ||
        root["streams"].empty()) {
        return false;
    }
    double stated = 0.0;
    if (!root["streams"][0].is_object() || !SecondsOf(root["streams"][0], "duration", stated)) {
        return true;
    }
    if (!root.contains("packets") || !root["packets"].is_array()) {
        return false;
    }
    double end = -1.0;
    double last = 0.0;
    for (const nlohmann::json &packet : root["packets"]) {
        double pts = 0.0;
        double length = 0.0;
        if (!packet.is_object() || !SecondsOf(packet, "pts_time", pts)) {
            continue;
        }
        SecondsOf(packet, "duration_time", length);
        if (pts + length > end) {
            end = pts + length;
            last = length;
        }
    }
    return end >= 0.0 && end + std::max(last * 0.5, 0.001) >= stated;
}

bool CTarnwickProcess::StreamIsWhole(const std::string &path)
{
    const std::string command = StreamEndCommand(path);
    if (!CommandCarriesPaths("CTarnwickProcess::StreamIsWhole", __LINE__, command, {path})) {
        return false;
    }
    std::string text;
    if (ExecuteCmd(command, &text) != 0) {
        return false;
    }
    // Errors of the demuxer ("partial file") come before the JSON on the same pipe.
    const size_t open = text.find('{');
    const bool whole = open != std::string::npos && StreamReachesItsEnd(text.substr(open));
    if (!whole) {
        core::Log("%s(%d) \"%s\" ends before the end its header states\n",
                  "CTarnwickProcess::StreamIsWhole",
                  __LINE__,
                  path.c_str());
    }
    return whole;
}

bool CTarnwickProcess::SegmentHoldsScene(const core::SceneEntry &scene, core::VideoInfo &facts)
{
    facts = core::VideoInfo{};
    const int frames = scene.framNo_second - scene.framNo_first + 1;
    std::string expected;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        expected = core::SegmentPath(*pData, scene.framNo_first, scene.framNo_second);
    }
    if (frames < 1 || scene.fileName != expected) {
        return false;
    }
    GetVideoInfoFfprobe(scene.fileName, facts);
    return facts.frame_num >= 1 && facts.frame_num == frames && StreamIsWhole(scene.fileName);
}

} // namespace engine
