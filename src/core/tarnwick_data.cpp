// Project data model: defaults and reset of a workspace, its title, frame times and time text.
#include "core/tarnwick_data.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>

#include "core/helpers.h"
#include "core/language.h"
#include "core/paths.h"
#include "core/time_codes.h"

namespace core {

namespace {

void SetParamDefault(
    ParamRange &param, double value, double minValue, double maxValue, double step, int type)
{
    param.dValue = value;
    param.dMin = minValue;
    param.dMax = maxValue;
    param.dStep = step;
    param.nType = type;
    UpdateParamText(param);
}

// Seconds of a frame at fps, or 0 when the rate is not above 0.
double FrameSeconds(int frame, double fps)
{
    return fps > 0 ? frame / fps : 0.0;
}

// "%02d:%02d:%02d.%02d" of t; the hundredths are rounded from the fraction without carry.
std::string SplitTimeCode(double t)
{
    int h = static_cast<int>(t / 3600);
    int m = static_cast<int>(std::fmod(t / 60, 60));
    int s = static_cast<int>(std::fmod(t, 60));
    int c = static_cast<int>(std::fmod(t, 1) * 100 + 0.5);
    return StrPrintf("%02d:%02d:%02d.%02d", h, m, s, c);
}

std::string TrimLine(const std::string &line)
{
    const char *kBlanks = " \t\r\n\v\f";
    size_t first = line.find_first_not_of(kBlanks);
    if (first == std::string::npos) {
        return std::string();
    }
    size_t last = line.find_last_not_of(kBlanks);
    return line.substr(first, last - first + 1);
}

} // namespace

SceneEntry::SceneEntry(int first, int last, const std::string &file)
    : bAnalyzed(true)
    , bEnable(true)
    , framNo_first(first)
    , framNo_second(last)
    , fileName(file)
{
}

void SceneEntry::SetCaption(double firstSeconds, double lastSeconds, const std::string &text)
{
    capParam.capTime_first = std::strtod(StrPrintf("%.02f", firstSeconds).c_str(), nullptr);
    capParam.capTime_second = std::strtod(StrPrintf("%.02f", lastSeconds).c_str(), nullptr);
    capParam.caption = text;
}

CapParam DefaultWatermark()
{
    CapParam cap;
    cap.capTime_first = 0;
    cap.capTime_second = ParseTimeCode("10:00:00.00");
    cap.caption = "TarnwickMP4\\NBrindlemoor."; // \N is the ASS line break
    cap.cap_pos_type = 5;
    cap.font_name = "Impact";
    cap.font_size = 37;
    cap.color = 0xC0FFFFFF;
    cap.bold = 0;
    cap.italic = 0;
    cap.underline = 0;
    cap.strike_uut = 0;
    cap.encoding = 0;
    cap.outline = 0;
    return cap;
}

CapParam DefaultTitle()
{
    CapParam cap;
    cap.capTime_first = 0;
    cap.capTime_second = ParseTimeCode("00:00:03.00");
    cap.caption.clear();
    cap.cap_pos_type = 5;
    cap.font_name = "Yu Gothic UI";
    cap.font_size = 32;
    cap.color = 0xFFFFFF;
    cap.bold = -1;
    cap.italic = 0;
    cap.underline = 0;
    cap.strike_uut = 0;
    cap.encoding = 128;
    cap.outline = 2;
    return cap;
}

CTarnwickData::CTarnwickData()
{
    bUseCuda = HasCuda() ? 1 : 0;
    play_loop = 0;
    ResetProject(false);
}

void CTarnwickData::ResetProject(bool keepProjectPath)
{
    SetParamDefault(threshold, 100, 0, 1000, 1, 1);
    SetParamDefault(valid_min_unit, 1, 1, 10, 0.01, 0);
    SetParamDefault(cut_min_unit, 1, 1, 10, 0.01, 0);

    SetParamDefault(brightness, 0, -1, 1, 0.01, 0);
    SetParamDefault(saturation, 1, 0, 3, 0.01, 0);
    SetParamDefault(contrast, 1, 0, 2, 0.01, 0);
    SetParamDefault(gamma, 1, 0.1, 2, 0.01, 0);
    cine_sco = 0;
    transition = 0;
    primaries = 0;

    {
        std::lock_guard<std::mutex> lock(sceneLock.m);
        for (SceneEntry &entry : diff_list) {
            entry.capParam = CapParam();
        }
    }
    capWatermark = DefaultWatermark();
    capTitle = DefaultTitle();

    if (!keepProjectPath) {
        project_file.clear();
    }

    input_file.clear();
    input_mp4_file.clear();
    output_folder.clear();
    output_name.clear();
    pts_file.clear();
    {
        std::lock_guard<std::mutex> lock(sceneLock.m);
        diff_list.clear();
        list_idx = -1;
    }
    pts_list.clear();
    nListSubItem = -1;
    play_scene_loop = 0;
    viCurrent = VideoInfo();
    viInput = VideoInfo();
    viSource = VideoInfo();
    dTransitionSec = 0.5;
    play_vol = 5;
}

std::string CTarnwickData::BuildTitle() const
{
    if (project_file.empty()) {
        return LoadStringById(kIdsUntitled);
    }
    std::string fieldText;
    // Interlaced sources deliver two pictures per frame, so the duration counts twice the frames.
    double frames = viSource.frame_num;
    if (!viSource.field_order.empty()) {
        fieldText = StrPrintf(" field_order:%s", viSource.field_order.c_str());
        if (viSource.field_order != "progressive") {
            frames *= 2;
        }
    }
    std::string rotText;
    if (viSource.rotation != 0) {
        rotText = StrPrintf(" Rot:%d", viSource.rotation);
    }
    // Frames of the source, rate of the file probed last.
    double seconds = viCurrent.fps > 0 ? frames / viCurrent.fps : 0.0;
    std::string timeText = SecondsToTimeCode(seconds, true);
    return FileNamePart(project_file) + StrPrintf(" \"%s %s Frm:%d FPS:%.2f W%dxH%d%s%s\"",
                                                  FileNamePart(input_file).c_str(),
                                                  timeText.c_str(),
                                                  viSource.frame_num,
                                                  viSource.fps,
                                                  viSource.width,
                                                  viSource.height,
                                                  rotText.c_str(),
                                                  fieldText.c_str());
}

PictureValues CTarnwickData::Picture() const
{
    PictureValues picture;
    picture.brightness = brightness.dValue;
    picture.contrast = contrast.dValue;
    picture.saturation = saturation.dValue;
    picture.gamma = gamma.dValue;
    picture.primaries = primaries;
    picture.cine_sco = cine_sco;
    return picture;
}

namespace {

// Largest frame count for which evenly spaced times are generated: six days at 100 frames a
// second, 400 MB of times.
constexpr int kMaxEvenFrames = 52'000'000;

} // namespace

bool CTarnwickData::LoadPtsList(const std::string &path)
{
    pts_list.clear();
    std::ifstream in(path);
    if (!in.is_open()) {
        // Without a list, frames are taken as evenly spaced. A rate that is not above 0 gives
        // no times at all rather than a list of infinities, and a frame count beyond any real
        // recording (a damaged project) gives none rather than exhausting the memory.
        if (viInput.fps > 0 && viInput.frame_num >= 0 && viInput.frame_num <= kMaxEvenFrames) {
            double step = 1 / viInput.fps;
            pts_list.reserve(static_cast<size_t>(viInput.frame_num) + 1);
            for (int64_t i = 0; i <= viInput.frame_num; ++i) {
                pts_list.push_back(std::strtod(StrPrintf("%.6f", i * step).c_str(), nullptr));
            }
        }
        return !pts_list.empty();
    }
    std::string line;
    while (std::getline(in, line)) {
        std::string text = TrimLine(line);
        if (text.empty()) {
            continue;
        }
        pts_list.push_back(std::strtod(text.c_str(), nullptr));
    }
    return true;
}

std::string CTarnwickData::GetOutputPath() const
{
    if (output_folder.empty() || output_name.empty()) {
        return std::string();
    }
    return output_folder + output_name;
}

std::string CTarnwickData::InputFile() const
{
    std::lock_guard<std::mutex> lock(sceneLock.m);
    return input_file;
}

void CTarnwickData::SetInputFile(const std::string &path)
{
    std::lock_guard<std::mutex> lock(sceneLock.m);
    input_file = path;
}

std::string CTarnwickData::PlayableInput() const
{
    std::lock_guard<std::mutex> lock(sceneLock.m);
    return input_mp4_file.empty() ? input_file : input_mp4_file;
}

int CTarnwickData::SelectedRow() const
{
    std::lock_guard<std::mutex> lock(sceneLock.m);
    return list_idx;
}

VideoInfo CTarnwickData::CurrentVideo() const
{
    std::lock_guard<std::mutex> lock(sceneLock.m);
    return viCurrent;
}

std::string CTarnwickData::FrameToTimeCode(int frame) const
{
    return TruncatedTimeCodeAt(frame, viCurrent.fps);
}

std::string CTarnwickData::TruncatedTimeCodeAt(int frame, double fps)
{
    double t = FrameSeconds(frame, fps);
    // Truncation to hundredths.
    t = std::trunc(t * std::pow(10.0, 2)) * std::pow(10.0, -2);
    return SplitTimeCode(t);
}

std::string CTarnwickData::FrameToTimeCodeAt(int frame, double fps) const
{
    // Without truncation the hundredths can reach 100 ("00:00:01.100"); there is no carry.
    return SplitTimeCode(FrameSeconds(frame, fps > 0 ? fps : viCurrent.fps));
}

std::string CTarnwickData::FrameToText(int frame, double fps, const char *format) const
{
    return SecondsToText(FrameSeconds(frame, fps > 0 ? fps : viCurrent.fps), format);
}

} // namespace core
