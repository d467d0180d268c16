// The working MP4 of an input that is not a progressive MP4: converted once, under a partial
// name that becomes the working file's name only when the tool has succeeded, with the record of
// the file it was made from beside it.
#include <filesystem>
#include <system_error>

#include "core/app_log.h"
#include "core/language.h"
#include "core/paths.h"
#include "core/project_names.h"
#include "core/source_stamp.h"
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
    // The record of the file it replaces goes first: a run killed before the new record is
    // written leaves a file that is not trusted.
    core::RemoveSourceStamp(target);
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
    if (!core::WriteSourceStamp(target, source)) {
        core::Log("%s(%d) no record of the source beside %s\n",
                  "CTarnwickProcess::ConvertToMp4",
                  __LINE__,
                  target.c_str());
    }
    SendJobState(engine::kStateDone);
    return kJobOk;
}

} // namespace engine
