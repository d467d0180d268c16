// Analysis benchmark: the opening of a 10-minute constant-rate 1920x1080 MP4 (job 1101: facts,
// the check of the first frame times, the computed time list, a still) against one decoding of
// the whole file by ffmpeg. The regularity check reads only the first frames, so the opening
// must take less than 2 % of the decoding.
//
// Usage: tw_analyze_bench
// The clip is made once (20 seconds encoded, then repeated by stream copy) into the build's
// bench-data folder and reused by later runs.
#include <cstdio>
#include <filesystem>
#include <string>

#include "bench_support.h"
#include "core/helpers.h"
#include "core/project_names.h"

namespace {

namespace fs = std::filesystem;

constexpr const char *kClipName = "analyze_1920x1080_600s.mp4";

std::string CachedClip(bench::BenchSession &session)
{
    const std::string dir = TW_BENCH_DATA_DIR;
    const std::string clip = dir + "/" + kClipName;
    if (fs::exists(clip)) {
        return clip;
    }
    fs::create_directories(dir);
    const std::string part = dir + "/analyze_part.mp4";
    const std::string partial = dir + "/partial_" + kClipName;
    std::printf("making %s (once) ...\n", clip.c_str());
    std::fflush(stdout);
    int result = 0;
    session.TimeCommand(
        core::StrPrintf("ffmpeg -y -loglevel error -f lavfi -i \"testsrc2=size=1920x1080:rate=25:"
                        "duration=20\" -c:v libx264 -preset veryfast -g 25 -pix_fmt yuv420p \"%s\"",
                        part.c_str()),
        &result);
    if (result == 0) {
        session.TimeCommand(core::StrPrintf("ffmpeg -y -loglevel error -stream_loop 29 -i \"%s\" "
                                            "-c copy \"%s\"",
                                            part.c_str(),
                                            partial.c_str()),
                            &result);
    }
    fs::remove(part);
    if (result != 0) {
        std::fprintf(stderr, "tw_analyze_bench: the clip could not be made (%d)\n", result);
        return "";
    }
    fs::rename(partial, clip);
    return clip;
}

} // namespace

int main(int argc, char **)
{
    if (argc != 1) {
        std::fprintf(stderr, "Usage: tw_analyze_bench\n");
        return 2;
    }
    bench::BenchSession session(false);
    const std::string clip = CachedClip(session);
    if (clip.empty()) {
        return 1;
    }
    const std::string work = std::string(TW_BENCH_DATA_DIR) + "/analyze-run";
    fs::remove_all(work);
    fs::create_directories(work);
    core::CTarnwickData &data = session.data;
    data.ResetProject(false);
    data.output_folder = work + "/";
    core::DeriveProjectNames(data, clip);

    const bench::Clock::time_point start = bench::Clock::now();
    const int result = session.Engine().AnalyzeInputFile(false, -1);
    const double analysis = bench::SecondsSince(start);
    if (result != 0) {
        std::fprintf(stderr, "tw_analyze_bench: the analysis failed (%d)\n", result);
        return 1;
    }
    int decodeResult = 0;
    const double decode = session.TimeCommand(
        core::StrPrintf("ffmpeg -y -loglevel error -i \"%s\" -f null -", clip.c_str()),
        &decodeResult);
    std::printf("clip: %s\n      %dx%d, %d frames at %.3f fps, used as it is: %s, times %s\n",
                clip.c_str(),
                data.viInput.width,
                data.viInput.height,
                data.viInput.frame_num,
                data.viInput.fps,
                data.input_mp4_file.empty() ? "yes" : "no",
                session.Engine().ptsSource == engine::CTarnwickProcess::PtsSource::Computed
                    ? "computed"
                    : "read in full");
    std::printf("(a) ffmpeg decoding the whole file:  %8.3f s\n", decode);
    std::printf("(b) the opening's analysis:          %8.3f s\n", analysis);
    std::printf("ratio b/a: %.4f (target below 0.02)\n", analysis / decode);
    fs::remove_all(work);
    return 0;
}
