// Render benchmark: a first run of a 60-second 1280x720 clip (scan, cuts, merge, final encode:
// job 1057) and a second render of the same project (job 1006), against one ffmpeg encode of
// the film's frames with the final encode's settings, and the scan's own decoding.
//
// Usage: tw_render_bench [--keep] [--stages]
// The clip (motion in about half of it, with sound) is made once into the build's bench-data
// folder and reused by later runs. The project and its files go to a fresh folder there.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include <sys/resource.h>

#include "core/helpers.h"
#include "core/project_names.h"
#include "core/tarnwick_data.h"
#include "engine/changed_pixels.h"
#include "engine/encoder_presets.h"
#include "engine/headless_host.h"
#include "engine/scan_command.h"
#include "engine/tarnwick_process.h"

#include "bench_support.h"

namespace {

namespace fs = std::filesystem;
using bench::PeakMemoryKiB;

constexpr const char *kClipName = "render_1280x720_60s_v3.mp4";
// A light box on a dark ground swings to and fro in the first five seconds of every ten.
// A key frame every second, as cameras write them, so that a cut's seek lands near its start.
constexpr const char *kClipSource =
    "color=c=0x404040:s=1280x720:r=25:d=60[bg];color=c=0xA0A0A0:s=256x256:r=25:d=60[box];"
    "[bg][box]overlay=x='if(lt(mod(t,10),5),512+400*sin(2*PI*t),512)':y=232:eval=frame";

std::string CachedClip(bench::BenchSession &bench)
{
    const std::string dir = TW_BENCH_DATA_DIR;
    const std::string clip = dir + "/" + kClipName;
    if (fs::exists(clip)) {
        return clip;
    }
    fs::create_directories(dir);
    const std::string partial = dir + "/partial_" + kClipName;
    std::printf("making %s (once) ...\n", clip.c_str());
    std::fflush(stdout);
    int result = 0;
    bench.TimeCommand(core::StrPrintf("ffmpeg -y -loglevel error -f lavfi -i \"%s\" -f lavfi -i "
                                      "\"sine=frequency=440:duration=60\" -c:v libx264 -preset "
                                      "veryfast -g 25 -pix_fmt yuv420p -c:a aac \"%s\"",
                                      kClipSource,
                                      partial.c_str()),
                      &result);
    if (result != 0) {
        std::fprintf(stderr, "tw_render_bench: the clip could not be made (%d)\n", result);
        return "";
    }
    fs::rename(partial, clip);
    return clip;
}

// The times at which the project's segments were last written.
std::vector<fs::file_time_type> SegmentTimes(const core::CTarnwickData &data)
{
    std::vector<fs::file_time_type> times;
    std::error_code ec;
    for (const core::SceneEntry &scene : data.diff_list) {
        times.push_back(fs::last_write_time(scene.fileName, ec));
    }
    return times;
}

int TickedFrames(const core::CTarnwickData &data)
{
    int frames = 0;
    for (const core::SceneEntry &scene : data.diff_list) {
        frames += scene.bEnable ? scene.framNo_second - scene.framNo_first + 1 : 0;
    }
    return frames;
}

int Run(bool keep, bool stages)
{
    bench::BenchSession bench(stages);
    const std::string clip = CachedClip(bench);
    if (clip.empty()) {
        return 1;
    }
    const std::string work = std::string(TW_BENCH_DATA_DIR) + "/render-run";
    fs::remove_all(work);
    fs::create_directories(work);
    const std::string video = work + "/clip.mp4";
    fs::create_symlink(clip, video);
    core::CTarnwickData &data = bench.data;
    data.ResetProject(false);
    core::DeriveProjectNames(data, video);

    int result = 0;
    const double run = bench.TimeJob(engine::kJobExtractAndOutput, &result);
    if (result != 0) {
        std::fprintf(stderr, "tw_render_bench: the first run failed (%d)\n", result);
        return 1;
    }
    if (data.diff_list.empty()) {
        std::fprintf(stderr, "tw_render_bench: the first run found no scene\n");
        return 1;
    }
    const long peakAfterRun = PeakMemoryKiB();
    const std::vector<fs::file_time_type> cut = SegmentTimes(data);
    const double render = bench.TimeJob(engine::kJobFinalOutput, &result);
    if (result != 0) {
        std::fprintf(stderr, "tw_render_bench: the second render failed (%d)\n", result);
        return 1;
    }
    const std::vector<fs::file_time_type> after = SegmentTimes(data);
    int recut = 0;
    for (size_t i = 0; i < cut.size() && i < after.size(); ++i) {
        recut += cut[i] != after[i] ? 1 : 0;
    }
    const int filmFrames = TickedFrames(data);
    const core::VideoInfo info = data.viInput;
    // (a): the film's frames encoded once with the final encode's settings, output discarded.
    const std::string encode =
        core::StrPrintf("ffmpeg -y -i \"%s\" -frames:v %d -c:v %s %s %s -c:a aac -b:a 192k -vf "
                        "\"setpts=PTS-STARTPTS\" -af \"asetpts=PTS-STARTPTS\" -f null -",
                        clip.c_str(),
                        filmFrames,
                        engine::EncoderText(data.bUseCuda, data.nEncodePreset).c_str(),
                        engine::KeyFrameArgs(info.fps).c_str(),
                        engine::RateArgs(info.r_frame_rate).c_str());
    const double once = bench.TimeCommand(encode, &result);
    // The scan's own decoding: its command writing its frames to /dev/null.
    std::string decode = engine::ScanCommand(
        false, clip, engine::ScanDimension(info.width), engine::ScanDimension(info.height));
    decode.replace(decode.size() - 1, 1, "/dev/null");
    const double scanDecode = bench.TimeCommand(decode, &result);

    std::printf("clip: %s\n      %dx%d, %d frames at %.3f fps; %zu scenes, film of %d frames\n",
                clip.c_str(),
                info.width,
                info.height,
                info.frame_num,
                info.fps,
                data.diff_list.size(),
                filmFrames);
    std::printf("(a) one encode of the film's frames:         %8.3f s\n", once);
    std::printf("(b) first run (scan, cuts, merge, encode):   %8.3f s\n", run);
    std::printf(
        "(c) second render of the same project:       %8.3f s  (%d segments cut)\n", render, recut);
    std::printf("    the scan's own decoding:                 %8.3f s\n", scanDecode);
    std::printf("ratio c/a: %.3f (target at most 2.2)\n", render / once);
    std::printf("b against c + 1.2 x scan decode: %.3f s vs %.3f s, ratio %.3f (target below 1)\n",
                run,
                render + 1.2 * scanDecode,
                run / (render + 1.2 * scanDecode));
    std::printf("cuts in (c): %d (target 0)\n", recut);
    std::printf("peak memory of this process (ru_maxrss): %ld KiB after (b), %ld KiB after (c) "
                "(target under 65536)\n",
                peakAfterRun,
                PeakMemoryKiB());
    if (!keep) {
        fs::remove_all(work);
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    bool keep = false;
    bool stages = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--keep" || arg == "--stages") {
            (arg == "--keep" ? keep : stages) = true;
        } else {
            std::fprintf(stderr, "Usage: tw_render_bench [--keep] [--stages]\n");
            return 2;
        }
    }
    return Run(keep, stages);
}
