// The working MP4 of an input that is not a progressive MP4: converted once, under a partial
// name that becomes the working file's name only when the tool has succeeded.
#include <filesystem>
#include <system_error>

#include "core/language.h"
#include "core/paths.h"
#include "core/project_names.h"
#include "engine/encoder_presets.h"
#include "engine/input_analysis.h"
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

namespace engine {

int CTarnwickProcess::ConvertToMp4(const std::string &source,
                                   const std::string &target,
                                   bool bDeinterlace)
{
    const core::VideoInfo current = pData->viCurrent;
    SendStageBegin(engine::kStageChangeMp4, current.frame_num);
    core::CreateFolders(pData->output_folder);
    const std::string partial = core::PartialSegmentPath(target);
    const std::string command =
        ConvertToMp4Command(ToolPrefix(pData->bUseCuda != 0),
                            source,
                            EncoderText(pData->bUseCuda, pData->nEncodePreset),
                            current.fps,
                            current.r_frame_rate,
                            bDeinterlace,
                            partial);
    if (!CommandCarriesPaths(
            "CTarnwickProcess::ConvertToMp4", __LINE__, command, {source, partial})) {
        return kJobCannotStart;
    }
    int result = SettlePartialFile(
        ExecuteCmdWithProgress(false, command, current.frame_num, 0), partial, target);
    if (result != kJobOk) {
        return result;
    }
    SendJobState(engine::kStateDone);
    return kJobOk;
}

} // namespace engine
