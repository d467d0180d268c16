// What the render library adds to an engine: the finished film of both tabs, the conversions
// of the merge tab, and the picture chain of stills and playback.
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

namespace engine {

void CTarnwickProcess::InstallRenderJobs()
{
    SetJobFunction(kJobFinalOutput, 0, [this](int) {
        return ProcessTrim(SourcePath(), pData->GetOutputPath());
    });
    SetJobFunction(kJobFinalOutput, 1, [this](int) { return ProcessConv(pData->GetOutputPath()); });
    SetJobFunction(kJobSegmentOutput, 1, [this](int) { return ConvertAllInputs(); });
    m_pictureChain = [](CTarnwickProcess &engine,
                        bool bVf,
                        bool bPad,
                        bool bPreview,
                        bool bRotated,
                        int nScene) {
        return engine.BuildVideoFilter(bVf, bPad, bPreview, bRotated, nScene);
    };
}

} // namespace engine
