// Scene grouping of the scan: turns the per-frame verdicts active/still into scenes, bridging
// short pauses and dropping runs too short to keep.
#pragma once

#include <functional>

namespace engine {

// One grouping per scan, stepped once per frame in frame order, from the scan's thread only.
// A scene is emitted through the callback as soon as its end is certain; nothing per frame is
// kept. Frame numbers count from 0, and a scene's first and last frames are both inclusive.
class SceneGrouper
{
public:
    // Receives each scene as it is emitted. Runs inside Step or Close on the caller's thread;
    // during the call SceneCount() is still the index of the new scene (0 for the first).
    using EmitFn = std::function<void(int first, int last)>;

    // The scan stops reading at this many scenes, so a scene number never needs a fourth digit.
    static constexpr int kMaxScenes = 999;

    // validFrames: counted frames a run needs to become a scene. cutFrames: a run ends at the
    // still frame that follows this many still frames; shorter pauses are bridged. onScene may
    // be empty (scenes are then only counted).
    SceneGrouper(int validFrames, int cutFrames, EmitFn onScene);

    // Frames for a length in seconds at a frame rate: fps x seconds, halves rounded away from
    // zero. A rate of 0 (or one that gives no finite number) gives 0.
    static int FramesFor(double fps, double seconds);

    // One frame n; frames come in order. The first frame of a scan is expected to be active, as
    // the changed-pixel measure makes it.
    void Step(int n, bool active);
    // Closes the open run after the tool ended with exit code 0; frameNum is the frame count of
    // the video. Emits nRunStart .. min(nRunStart + nActiveRun, frameNum) - 1 when the run has
    // counted frames and at least nValidFrames of them. Call once, after the last Step; a failed
    // or stopped scan does not call it, so its open run is dropped.
    void Close(int frameNum);

    // Scenes emitted so far.
    int SceneCount() const { return nSceneCount; }
    // True once kMaxScenes scenes were emitted: the scan must stop its tool.
    bool LimitReached() const { return nSceneCount >= kMaxScenes; }

    // A run is open (collecting) rather than pausing.
    bool InRun() const { return bInRun; }
    // First frame of the open run; after a run ended, the frame at which it ended.
    int RunStart() const { return nRunStart; }
    // Frames counted for the open run: active frames plus bridged pauses.
    int ActiveRun() const { return nActiveRun; }
    // Still frames since the last active frame (plus a dropped run's count).
    int StillRun() const { return nStillRun; }

private:
    void Emit(int first, int last);

    int nValidFrames;
    int nCutFrames;
    EmitFn m_onScene;

    bool bInRun = true; // starts open, so a film that begins with movement begins a scene at 0
    int nRunStart = 0;
    int nActiveRun = 0;
    int nStillRun = 0;
    int nSceneCount = 0;
};

} // namespace engine
