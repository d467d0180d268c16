// Merge benchmark: three 20-second sources (1920x1080 at 25 fps with sound, 640x480 at 30000/1001
// without, 1280x720 at 30 with sound) brought to 1280x720 at 30 fps and joined (job 1057 of the
// merge tab: analysis, three conversions, merge graph, final encode), against one ffmpeg encode
// of the same number of output frames with the same encoder. Target: at most 2.5.
//
// Usage: tw_merge_bench [--stages]
// The sources are made once into the build's bench-data folder and reused by later runs.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "bench_support.h"
#include "core/helpers.h"
#include "core/merge_formats.h"
#include "core/paths.h"
#include "engine/encoder_presets.h"

namespace {

namespace fs = std::filesystem;

struct Source
{
    const char *name;
    const char *video; // lavfi source
    bool sound;
};

constexpr Source kSources[] = {
    {"merge_a_1080p25.mp4", "testsrc2=size=1920x1080:rate=25:duration=20", true},
    {"merge_b_480p2997.mp4", "testsrc2=size=640x480:rate=30000/1001:duration=20", false},
    {"merge_c_720p30.mp4", "testsrc2=size=1280x720:rate=30:duration=20", true},
};
constexpr int kRateIndex = 4; // 30/1
constexpr int kSizeIndex = 4; // 1280x720

std::string CachedSource(bench::BenchSession &session, const Source &source)
{
    const std::string dir = TW_BENCH_DATA_DIR;
    const std::string path = dir + "/" + source.name;
    if (fs::exists(path)) {
        return path;
    }
    fs::create_directories(dir);
    const std::string partial = dir + "/partial_" + source.name;
    std::printf("making %s (once) ...\n", path.c_str());
    std::fflush(stdout);
    int result = 0;
    session.TimeCommand(core::StrPrintf("ffmpeg -y -loglevel error -f lavfi -i \"%s\" %s-c:v "
                                        "libx264 -preset veryfast -g 25 -pix_fmt yuv420p -c:a aac "
                                        "-shortest \"%s\"",
                                        source.video,
                                        source.sound ? "-f lavfi -i \"sine=duration=20\" " : "",
                                        partial.c_str()),
                        &result);
    if (result != 0) {
        std::fprintf(stderr, "tw_merge_bench: %s could not be made (%d)\n", source.name, result);
        return "";
    }
    fs::rename(partial, path);
    return path;
}

} // namespace

int main(int argc, char **argv)
{
    const bool stages = argc == 2 && std::string(argv[1]) == "--stages";
    if (argc > 2 || (argc == 2 && !stages)) {
        std::fprintf(stderr, "Usage: tw_merge_bench [--stages]\n");
        return 2;
    }
    bench::BenchSession session(stages, 1);
    const std::string work = std::string(TW_BENCH_DATA_DIR) + "/merge-run/";
    fs::remove_all(work);
    fs::create_directories(work);
    core::CTarnwickData &data = session.data;
    data.ResetProject(false);
    data.output_folder = work;
    data.output_name = "merged_film.mp4";
    session.Engine().nRateIndex = kRateIndex;
    session.Engine().nSizeIndex = kSizeIndex;
    const core::MergeSize size = core::MergeSizeAt(kSizeIndex);
    const core::MergeRate rate = core::MergeRateAt(kRateIndex);
    for (const Source &source : kSources) {
        const std::string path = CachedSource(session, source);
        if (path.empty()) {
            return 1;
        }
        core::SceneEntry row;
        row.strWorkFile = path;
        row.fileName =
            work + core::ReplaceExtension(source.name, "_seg_") +
            core::StrPrintf("%dx%d_%.02f.mp4", size.width, size.height, core::MergeRateFps(rate));
        data.diff_list.push_back(row);
    }
    int result = 0;
    const double merge = session.TimeJob(engine::kJobExtractAndOutput, &result);
    if (result != 0) {
        std::fprintf(stderr, "tw_merge_bench: the merge failed (%d)\n", result);
        return 1;
    }
    int frames = 0;
    for (const core::SceneEntry &row : data.diff_list) {
        frames += row.viOut.frame_num;
    }
    // One encode of as many frames of the output's size and rate, with the same encoder.
    const double once = session.TimeCommand(
        core::StrPrintf("ffmpeg -y -loglevel error -f lavfi -i \"testsrc2=size=%dx%d:rate=%s\" "
                        "-frames:v %d -c:v %s -g 30 -keyint_min 1 -f null -",
                        size.width,
                        size.height,
                        core::MergeRateText(rate).c_str(),
                        frames,
                        engine::EncoderText(data.bUseCuda, data.nEncodePreset).c_str()),
        &result);
    std::printf("three 20 s sources to %dx%d at %s: film of %d frames\n",
                size.width,
                size.height,
                core::MergeRateText(rate).c_str(),
                frames);
    std::printf("(a) one encode of the film's frames:          %8.3f s\n", once);
    std::printf("(b) the merge (analysis, conversions, join):  %8.3f s\n", merge);
    std::printf("ratio b/a: %.3f (target at most 2.5)\n", merge / once);
    std::printf("peak memory of this process (ru_maxrss): %ld KiB\n", bench::PeakMemoryKiB());
    fs::remove_all(work);
    return 0;
}
