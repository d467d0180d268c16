// Automatic picture analysis: ten frames of the video grabbed side by side, measured with
// OpenCV, and turned into brightness, contrast, saturation and gamma of the project.
#include "engine/tarnwick_process.h"

#include <string>
#include <vector>

#include "core/app_log.h"
#include "core/paths.h"
#include "engine/encoder_presets.h"
#include "engine/job_pool.h"
#include "engine/picture_measure.h"

namespace engine {
namespace {

// Grabs the ten frames of path into the files of pattern, in a pool. The code of the first
// grab in order that failed, or 0.
int GrabFrames(CTarnwickProcess &engine, const std::string &path, const std::string &pattern)
{
    const core::CTarnwickData &data = *engine.pData;
    const bool bUseCuda = data.bUseCuda != 0;
    const std::string prefix = ToolPrefix(bUseCuda);
    const int step = FrameGrabStep(data.viInput.frame_num);
    const double fps = data.viCurrent.fps;
    std::vector<int> results(kPictureSamples, 0); // each grab writes only its own entry
    {
        JobPool pool(bUseCuda);
        for (int i = 0; i < kPictureSamples; ++i) {
            const std::string file = FrameGrabFile(pattern, i + 1);
            std::string command = FrameGrabCommand(prefix, FrameGrabTime(i, step, fps), path, file);
            int *result = &results[static_cast<size_t>(i)];
            if (!engine.CommandCarriesPaths(
                    "CTarnwickProcess::AnalyzeVideoEQParams", __LINE__, command, {path, file})) {
                *result = kJobCannotStart;
                continue;
            }
            pool.Run([&engine, command, result] {
                // After a stop the grabs that have not begun yet start no tool.
                *result = engine.bCancel != 0 ? kJobStopped : engine.ExecuteCmd(command);
            });
        }
        pool.WaitAll();
    }
    for (int result : results) {
        if (result != kJobOk) {
            CTarnwickProcess::LogCommandResult(
                "CTarnwickProcess::AnalyzeVideoEQParams", __LINE__, "", result);
            return result;
        }
    }
    return kJobOk;
}

} // namespace

int CTarnwickProcess::AnalyzeVideoEQParams(const std::string &path, int /*nSamples*/)
{
    core::CTarnwickData &data = *pData;
    const std::string pattern = FrameGrabPattern(data.output_folder, data.input_file);
    int result = GrabFrames(*this, path, pattern);
    if (result != kJobOk) {
        return result; // the frames written stay; the next run measures and deletes them
    }
    // Every grab file of the input counts, also one left by an earlier run.
    const std::string glob = FrameGrabGlob(pattern);
    PictureSums sums;
    MeasurePictureFiles(GlobPictureFiles(glob), sums);
    core::DeleteByPattern(glob);
    if (sums.n == 0) {
        return kJobOk;
    }
    PictureMeans means = AveragePictureSums(sums);
    data.dMeanU = means.U - 128.0;
    data.dMeanV = means.V - 128.0;
    ColourCast cast = FindColourCast(means.peak, means.U, means.V);
    core::Log("%s(%d) n(%d) Y(%.3f) sdY(%.3f) U(%.3f) V(%.3f) S(%.3f) peak(%d) red(%d) blue(%d) "
              "green(%d)\n",
              "CTarnwickProcess::AnalyzeVideoEQParams",
              __LINE__,
              sums.n,
              means.Y,
              means.sdY,
              means.U,
              means.V,
              means.S,
              means.peak,
              cast.bRed ? 1 : 0,
              cast.bBlue ? 1 : 0,
              cast.bGreen ? 1 : 0);
    StorePictureValues(PictureValuesFor(means, cast), data);
    return kJobOk;
}

} // namespace engine
