// Reading ffprobe's JSON into the stream facts of a file: rate, frame count, start, rotation,
// field order and aspect, each with its rule for missing or untidy values.
#include "engine/probe_json.h"

#include <cctype>
#include <charconv>
#include <climits>
#include <cmath>

#include <nlohmann/json.hpp>

#include "core/helpers.h"

namespace engine {
namespace {

using nlohmann::json;

std::string StringOr(const json &obj, const char *key, const std::string &fallback)
{
    auto it = obj.find(key);
    return (it != obj.end() && it->is_string()) ? it->get<std::string>() : fallback;
}

std::optional<int> NumberToInt(const json &value)
{
    if (value.is_number_integer()) {
        long long v = value.is_number_unsigned()
                          ? static_cast<long long>(std::min<unsigned long long>(
                                value.get<unsigned long long>(), LLONG_MAX))
                          : value.get<long long>();
        if (v < INT_MIN || v > INT_MAX) {
            return std::nullopt;
        }
        return static_cast<int>(v);
    }
    if (value.is_number_float()) {
        double v = std::trunc(value.get<double>());
        if (!(v >= INT_MIN && v <= INT_MAX)) {
            return std::nullopt;
        }
        return static_cast<int>(v);
    }
    return std::nullopt;
}

int IntOr(const json &obj, const char *key, int fallback)
{
    auto it = obj.find(key);
    if (it == obj.end()) {
        return fallback;
    }
    return NumberToInt(*it).value_or(fallback);
}

struct Fraction
{
    bool usable = false; // has a "/" and two integers
    int num = 0;
    int den = 0;
    double fps = 0.0;
};

Fraction ReadFraction(const std::string &text)
{
    Fraction f;
    size_t slash = text.find('/');
    if (slash == std::string::npos) {
        return f;
    }
    std::optional<int> num = ParseIntPrefix(text.substr(0, slash));
    std::optional<int> den = ParseIntPrefix(text.substr(slash + 1));
    if (!num || !den) {
        return f;
    }
    f.usable = true;
    f.num = *num;
    f.den = *den;
    if (f.den != 0) {
        f.fps = static_cast<double>(f.num) / f.den;
    }
    return f;
}

// A container that knows only its time base gives such as "1000/1" or "90000/1": no rate.
bool IsPlausibleRate(const Fraction &f)
{
    return f.usable && f.den != 0 && f.fps < 120.0 && !(f.den == 1 && f.num >= 1000);
}

void ReadRate(const json &video, core::VideoInfo &info)
{
    info.r_frame_rate = StringOr(video, "avg_frame_rate", "0/1");
    Fraction avg = ReadFraction(info.r_frame_rate);
    info.fps = avg.fps;
    if (IsPlausibleRate(avg)) {
        return;
    }
    info.r_frame_rate = StringOr(video, "r_frame_rate", "0/1");
    info.fps = ReadFraction(info.r_frame_rate).fps;
}

void ReadFrameCount(const json &video,
                    const std::string &path,
                    const ProbeContext &context,
                    core::VideoInfo &info)
{
    info.frame_num = 0;
    auto it = video.find("nb_frames");
    if (it == video.end()) {
        if (path == context.input_file && context.inputFrameNum > 0) {
            info.frame_num = context.inputFrameNum; // saves the counting pass
        } else if (context.countFrames) {
            info.frame_num = context.countFrames(path, info);
        }
    } else if (it->is_string()) {
        const std::string &text = it->get_ref<const std::string &>();
        if (text != "N/A") {
            info.frame_num = ParseIntPrefix(text).value_or(0);
        }
    } else {
        info.frame_num = NumberToInt(*it).value_or(0);
    }
}

void ReadStartFrame(const json &video, core::VideoInfo &info)
{
    info.start_frame = 0;
    if (!video.contains("start_time")) {
        return;
    }
    std::string text = StringOr(video, "start_time", "0");
    if (text == "N/A") {
        return;
    }
    std::optional<double> seconds = ParseDoublePrefix(text);
    if (!seconds) {
        return;
    }
    double frames = *seconds * info.fps + 0.5;
    if (frames > INT_MIN && frames < INT_MAX) {
        info.start_frame = static_cast<int>(frames);
    }
}

void ReadRotation(const json &video, core::VideoInfo &info)
{
    info.rotation = 0;
    auto list = video.find("side_data_list");
    if (list == video.end() || !list->is_array()) {
        return;
    }
    for (const json &entry : *list) {
        if (!entry.is_object()) {
            continue;
        }
        auto rotation = entry.find("rotation");
        if (rotation != entry.end() && rotation->is_number()) {
            info.rotation = NumberToInt(*rotation).value_or(0);
            return;
        }
    }
}

void ReadAspect(const json &video, core::VideoInfo &info)
{
    std::string text = StringOr(video, "sample_aspect_ratio", "1:1");
    info.sar_num = 1;
    info.sar_den = 1;
    size_t colon = text.find(':');
    if (colon == std::string::npos) {
        return;
    }
    std::optional<int> num = ParseIntPrefix(text.substr(0, colon));
    std::optional<int> den = ParseIntPrefix(text.substr(colon + 1));
    if (num && den) {
        info.sar_num = *num;
        info.sar_den = *den;
    }
}

bool ReadVideo(const json &root,
               const std::string &path,
               const ProbeContext &context,
               core::VideoInfo &info)
{
    if (!root.is_object()) {
        return false;
    }
    auto streams = root.find("streams");
    if (streams == root.end() || !streams->is_array()) {
        return false;
    }
    const json *video = nullptr;
    bool hasAudio = false;
    for (const json &stream : *streams) {
        std::string type = stream.is_object() ? StringOr(stream, "codec_type", "") : "";
        if (type == "video" && video == nullptr) {
            video = &stream;
        } else if (type == "audio") {
            hasAudio = true;
        }
    }
    if (video == nullptr) {
        return false;
    }
    core::VideoInfo read = info;
    read.bHasAudio = hasAudio;
    read.width = IntOr(*video, "width", -1);
    read.height = IntOr(*video, "height", -1);
    ReadRate(*video, read);
    ReadFrameCount(*video, path, context, read);
    ReadStartFrame(*video, read);
    ReadRotation(*video, read);
    std::string fieldOrder = StringOr(*video, "field_order", "unknown");
    read.field_order = (fieldOrder == "N/A" || fieldOrder == "unknown") ? "" : fieldOrder;
    ReadAspect(*video, read);
    core::SnapFrameRate(read, path != context.input_file);
    info = read;
    return true;
}

const char *SkipSpace(const char *first, const char *last)
{
    while (first != last && std::isspace(static_cast<unsigned char>(*first))) {
        ++first;
    }
    return first;
}

// The number that starts text, as std::stoi or std::stod reads it: white space skipped, one
// sign, then the longest number of the type; trailing text ignored. Empty when no number starts
// the text or the value does not fit the type.
template <typename Number> std::optional<Number> ParseNumberPrefix(const std::string &text)
{
    const char *last = text.data() + text.size();
    const char *first = SkipSpace(text.data(), last);
    if (first != last && *first == '+') {
        ++first;
        if (first != last && *first == '-') {
            return std::nullopt;
        }
    }
    Number value{};
    auto [ptr, ec] = std::from_chars(first, last, value);
    if (ec != std::errc() || ptr == first) {
        return std::nullopt;
    }
    return value;
}

} // namespace

bool ProbeVideoText(const std::string &text,
                    const std::string &path,
                    const ProbeContext &context,
                    core::VideoInfo &info)
{
    json root = json::parse(text, nullptr, false);
    if (root.is_discarded()) {
        return false;
    }
    try {
        return ReadVideo(root, path, context, info);
    } catch (const json::exception &) {
        return false;
    }
}

std::optional<int> ParseIntPrefix(const std::string &text)
{
    return ParseNumberPrefix<int>(text);
}

std::optional<double> ParseDoublePrefix(const std::string &text)
{
    return ParseNumberPrefix<double>(text);
}

} // namespace engine
