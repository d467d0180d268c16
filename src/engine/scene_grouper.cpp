// Scene grouping of the scan: the active/still step rules, the end of a run and the close of the
// last scene.
#include "engine/scene_grouper.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <utility>

namespace engine {

SceneGrouper::SceneGrouper(int validFrames, int cutFrames, EmitFn onScene)
    : nValidFrames(validFrames)
    , nCutFrames(cutFrames)
    , m_onScene(std::move(onScene))
{
}

int SceneGrouper::FramesFor(double fps, double seconds)
{
    const double frames = fps * seconds;
    if (!std::isfinite(frames)) {
        return 0;
    }
    if (frames >= static_cast<double>(INT_MAX)) {
        return INT_MAX;
    }
    if (frames <= static_cast<double>(INT_MIN)) {
        return INT_MIN;
    }
    return static_cast<int>(std::lround(frames));
}

void SceneGrouper::Step(int n, bool active)
{
    if (active) {
        if (!bInRun) {
            bInRun = true;
            nRunStart = n;
            nActiveRun = 0;
        }
        // A pause shorter than nCutFrames becomes part of the scene; one of exactly nCutFrames
        // neither ends the run nor counts.
        if (nStillRun > 0 && nStillRun < nCutFrames) {
            nActiveRun += nStillRun;
        }
        nActiveRun += 1;
        nStillRun = 0;
        return;
    }

    // Tested before the count: the run ends on the still frame after nCutFrames still frames.
    if (nStillRun >= nCutFrames && bInRun) {
        if (nActiveRun >= nValidFrames) {
            Emit(nRunStart, n - nStillRun - 1);
        } else {
            // Keeps the pause at or above nCutFrames, so the next active frame bridges nothing.
            nStillRun += nActiveRun;
        }
        bInRun = false;
        nActiveRun = 0;
        nRunStart = n;
    }
    nStillRun += 1;
}

void SceneGrouper::Close(int frameNum)
{
    if (bInRun && nActiveRun > 0 && nActiveRun >= nValidFrames) {
        // The end comes from the count, so a still tail (and an unbridged pause) is left out.
        Emit(nRunStart, std::min(nRunStart + nActiveRun, frameNum) - 1);
    }
}

void SceneGrouper::Emit(int first, int last)
{
    if (m_onScene) {
        m_onScene(first, last);
    }
    nSceneCount += 1;
}

} // namespace engine
