// Which controls of a tab are available in which state.
#include "workspace/tab_controls.h"
#include "workspace/tab_link.h"

#include <initializer_list>

#include "engine/tarnwick_process.h"

namespace workspace {
namespace {

struct Rules
{
    bool bRendering;
    bool bIdle;
    bool bPlaying;
    bool bReady;
    bool bViewable;
};

Rules RulesOf(const ControlFacts &f)
{
    Rules r{};
    r.bRendering = engine::IsRenderJobNumber(f.nProcessID);
    r.bIdle = f.bEnable && f.nProcessID == 0;
    r.bPlaying = engine::IsPlaybackJobNumber(f.nProcessID);
    r.bReady = f.bInputFile && f.bOutputFolder && f.bOutputName && !f.bListEmpty;
    r.bViewable =
        !r.bRendering && (f.bInputFile || (f.bOutputFolder && f.bOutputName && !f.bListEmpty));
    return r;
}

void SetAll(ControlStates &s, std::initializer_list<Control> controls, bool on)
{
    for (Control c : controls) {
        s.Set(c, on);
    }
}

// The rules both tabs share: paths, show buttons, job buttons, stop, the picture pane's bars.
ControlStates CommonControls(const ControlFacts &f, const Rules &r)
{
    ControlStates s;
    SetAll(s,
           {Control::BrowseInput,
            Control::InputPath,
            Control::BrowseOutputFolder,
            Control::OutputFolder,
            Control::ChooseOutputFile,
            Control::OutputName},
           !r.bRendering);
    s.Set(Control::ShowInput, !r.bRendering && f.bInputFile && f.bInputExists);
    s.Set(Control::ShowOutput,
          !r.bRendering && f.bOutputFolder && f.bOutputName && f.bOutputExists);
    s.Set(Control::ClearOutputFolder, !r.bRendering && f.bFolderExists);
    SetAll(s,
           {Control::ResetSceneList,
            Control::SegmentOutput,
            Control::ExtractScenes,
            Control::FinalOutput,
            Control::ExtractAndOutput,
            Control::Transition},
           r.bIdle && r.bReady);
    s.Set(Control::Stop, r.bRendering && !r.bIdle);
    SetAll(s,
           {Control::SceneLoop,
            Control::PlayLoop,
            Control::Position,
            Control::Volume,
            Control::Play,
            Control::Back10,
            Control::Forward10,
            Control::BackStep,
            Control::ForwardStep,
            Control::Help},
           r.bViewable);
    SetAll(s, {Control::PreviousFrame, Control::NextFrame}, r.bViewable && !r.bPlaying);
    s.Set(Control::SceneList, true);
    s.bTabSwitch = !r.bRendering;
    s.nBackStepLabel = f.bOutputOnShow ? 3094 : 3038;
    s.nForwardStepLabel = f.bOutputOnShow ? 3095 : 3039;
    return s;
}

} // namespace

bool IsLandscape(int width, int height, int rotation)
{
    if (rotation == 0) {
        return width > height;
    }
    if (rotation == 90 || rotation == -90) {
        return width < height;
    }
    return false;
}

ControlStates SceneTabControls(const ControlFacts &f)
{
    const Rules r = RulesOf(f);
    ControlStates s = CommonControls(f, r);
    SetAll(s,
           {Control::Threshold,
            Control::ValidMinUnit,
            Control::CutMinUnit,
            Control::ResetScanSettings,
            Control::Brightness,
            Control::Saturation,
            Control::Contrast,
            Control::Gamma,
            Control::Primaries,
            Control::ResetPicture,
            Control::AutoPicture,
            Control::ResetCaptions,
            Control::AutoCaptions,
            Control::Font,
            Control::CaptionText,
            Control::CaptionStart,
            Control::CaptionEnd,
            Control::CaptionPosition},
           !r.bRendering && r.bReady);
    s.Set(Control::CinemaScope,
          !r.bRendering && r.bReady && IsLandscape(f.width, f.height, f.rotation));
    s.Set(Control::CaptionTarget, true);
    s.nAutoCaptionLabel = f.bAnyCaption ? 3024 : 3109;
    s.nCaptionTargetLabel = f.nCaptionTarget == 1 ? 1103 : f.nCaptionTarget == 2 ? 1102 : 3018;
    return s;
}

ControlStates MergeTabControls(const ControlFacts &f)
{
    const Rules r = RulesOf(f);
    ControlStates s = CommonControls(f, r);
    // The merge tab has no browse command for its inputs: files come in by drop.
    s.Set(Control::BrowseInput, false);
    SetAll(
        s, {Control::PictureSize, Control::FrameRate, Control::ResetScanSettings}, !r.bRendering);
    return s;
}

} // namespace workspace
