// The scene workspace: the commands of its controls (files, jobs, toggles, value boxes,
// resets, automatic picture) and what the view shows of it.
#include "workspace/tab_scene.h"

#include <algorithm>
#include <cmath>

#include "core/helpers.h"
#include "core/language.h"
#include "core/paths.h"
#include "core/project_names.h"
#include "engine/preview_commands.h"
#include "workspace/tab_controls.h"
#include "workspace/tab_files.h"
#include "workspace/tab_link.h"

namespace workspace {

// ---- Commands of the controls ----

void CTarnwickTabScene::BrowseInput()
{
    StopProcess();
    FileChoice choice;
    choice.kind = FileChoice::Kind::OpenVideo;
    choice.nTitleId = 3100;
    choice.filter = kVideoFilter;
    choice.initialPath = m_Data.input_file;
    choice.bMustExist = true;
    if (std::optional<std::string> path = m_view.ChooseFile(choice)) {
        OpenVideo(*path);
    }
}

void CTarnwickTabScene::InputPathConfirmed(const std::string &text)
{
    const std::string path = TrimText(text);
    if (!path.empty()) {
        OpenVideo(path);
    }
}

void CTarnwickTabScene::BrowseOutputFolder()
{
    StopProcess();
    if (std::optional<std::string> folder = m_view.ChooseFolder(3102, m_Data.output_folder)) {
        const std::string chosen = core::SetTrailingSeparator(*folder, true);
        if (chosen != m_Data.output_folder) {
            ChangeOutputFolder(m_Data.output_folder, chosen);
        }
    }
}

void CTarnwickTabScene::OutputFolderConfirmed(const std::string &text)
{
    std::string folder = TrimText(text);
    if (folder.empty()) {
        return;
    }
    folder = core::SetTrailingSeparator(folder, true);
    if (folder != m_Data.output_folder) {
        ChangeOutputFolder(m_Data.output_folder, folder);
    }
}

void CTarnwickTabScene::ChooseOutputFile()
{
    StopProcess();
    FileChoice choice;
    choice.kind = FileChoice::Kind::SaveOutput;
    choice.nTitleId = 3127;
    choice.filter = kMp4Filter;
    choice.defaultExt = "mp4";
    choice.initialPath = m_Data.GetOutputPath();
    choice.bAskOverwrite = true;
    std::optional<std::string> path = m_view.ChooseFile(choice);
    if (!path || *path == m_Data.GetOutputPath()) {
        return;
    }
    ChangeOutputNames(core::FolderPart(*path), core::FileNamePart(*path));
}

int CTarnwickTabScene::ChangeOutputNames(const std::string &folderText, const std::string &nameText)
{
    std::string folder = TrimText(folderText);
    folder = folder.empty() ? m_Data.output_folder : core::SetTrailingSeparator(folder, true);
    std::string name = TrimText(nameText);
    name = name.empty() ? m_Data.output_name : name;
    if (folder == m_Data.output_folder && name == m_Data.output_name) {
        return 0;
    }
    if (name != m_Data.output_name && RefuseFilmName(name)) {
        ShowFields();
        return -1;
    }
    if (folder != m_Data.output_folder && !MoveOutputFolder(m_Data.output_folder, folder, true)) {
        return -1;
    }
    m_Data.output_name = name;
    SaveProject(false);
    const int result = OpenProject(std::string(m_Data.project_file), true);
    UpdateControls(true);
    ShowFields();
    return result;
}

void CTarnwickTabScene::OutputNameConfirmed(const std::string &text)
{
    const std::string name = TrimText(text);
    if (name.empty() || name == m_Data.output_name) {
        return;
    }
    if (RefuseFilmName(name)) {
        ShowFields();
        return;
    }
    m_Data.output_name = name;
    SaveProject(false);
    OpenProject(std::string(m_Data.project_file), true);
    UpdateControls(true);
    ShowFields();
}

void CTarnwickTabScene::ClearOutputFolder()
{
    if (!m_view.AskYesNo(3118)) {
        return;
    }
    core::DeleteTree(m_Data.output_folder);
    OpenProject(std::string(m_Data.project_file), true);
    UpdateControls(true);
}

void CTarnwickTabScene::OpenProjectDialog()
{
    StopProcess();
    FileChoice choice;
    choice.kind = FileChoice::Kind::OpenProject;
    choice.nTitleId = 3098;
    choice.filter = kProjectFilter;
    choice.defaultExt = "twproj";
    choice.initialPath = m_Data.project_file;
    choice.bMustExist = true;
    if (std::optional<std::string> path = m_view.ChooseFile(choice)) {
        OpenProject(*path, false);
    }
}

void CTarnwickTabScene::SaveProjectAsDialog()
{
    FileChoice choice;
    choice.kind = FileChoice::Kind::SaveProject;
    choice.nTitleId = 3099;
    choice.filter = kProjectFilter;
    choice.defaultExt = "twproj";
    choice.initialPath = m_Data.project_file;
    choice.bAskOverwrite = true;
    if (std::optional<std::string> path = m_view.ChooseFile(choice)) {
        SaveProjectAs(*path);
    }
}

void CTarnwickTabScene::ExtractScenes()
{
    StartExtraction(engine::kJobSceneExtract);
}

void CTarnwickTabScene::ExtractAndOutput()
{
    StartExtraction(engine::kJobExtractAndOutput);
}

void CTarnwickTabScene::StartExtraction(int nJob)
{
    StopProcess();
    core::VideoInfo input;
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        input = m_Data.viInput;
    }
    if (RefuseTooSmallToScan(m_Data.input_file, input.width, input.height)) {
        // Nothing of the list goes: the scan could not replace it.
        m_report = JobReport{};
        m_report.nJob = nJob;
        m_report.bFinished = true;
        m_report.nResult = engine::kJobCannotStart;
        m_report.bPictureTooSmall = true;
        UpdateControls(true);
        return;
    }
    m_bListEvents = 0;
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        m_Data.diff_list.clear();
        m_Data.list_idx = -1;
    }
    m_CellValue = core::ParamRange{};
    UpdateControls(false);
    FillList(-1);
    UpdateControls(true);
    ResetScenes(false);
    m_bListEvents = 1;
    StartProcess(nJob);
}

void CTarnwickTabScene::SegmentOutput()
{
    StopProcess();
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        m_Data.list_idx = -1;
    }
    StartProcess(engine::kJobSegmentOutput);
}

void CTarnwickTabScene::FinalOutput()
{
    const int running = m_Process.nProcessID;
    StopProcess();
    if (running != engine::kJobFinalOutput) {
        StartProcess(engine::kJobFinalOutput);
    }
}

void CTarnwickTabScene::ShowInput()
{
    ShowWholeFile(engine::kJobPlayInput, m_Data.PlayableInput());
}

void CTarnwickTabScene::PlayInput(const std::string &seconds)
{
    StopProcess();
    if (!seconds.empty()) {
        // A repeat of the same playback job resumes at the stored position.
        m_Process.nPlayJob = engine::kJobPlayInput;
        m_Process.nPreviewFrame =
            static_cast<int>(std::lround(ParseValue(seconds) * m_Data.CurrentVideo().fps));
        m_Process.strPreviewTime = seconds;
    }
    StartProcess(engine::kJobPlayInput);
}

std::string CTarnwickTabScene::PlayStart(const std::string &seconds) const
{
    const core::VideoInfo current = m_Data.CurrentVideo();
    const int frame = static_cast<int>(std::lround(ParseValue(seconds) * current.fps));
    const bool bRestart =
        seconds.empty() || engine::IsPlaybackRestart(seconds, frame, current.frame_num);
    return bRestart ? core::StrPrintf("%.6f", 0.0) : seconds;
}

void CTarnwickTabScene::ShowOutput()
{
    ShowWholeFile(engine::kJobPlayOutput, m_Data.GetOutputPath());
}

void CTarnwickTabScene::SetTransition(bool bOn)
{
    m_bListEvents = 0;
    m_Data.transition = bOn ? 1 : 0;
    RefreshInputSummary();
    Renumber();
    SaveProject(false);
    m_bListEvents = 1;
}

void CTarnwickTabScene::SetCinemaScope(bool bOn)
{
    m_Data.cine_sco = bOn ? 1 : 0;
    MarkPictureChanged();
    SaveProject(false);
}

void CTarnwickTabScene::SetPrimaries(bool bOn)
{
    m_Data.primaries = bOn ? 1 : 0;
    MarkPictureChanged();
    SaveProject(false);
}

void CTarnwickTabScene::SetSceneLoop(bool bOn)
{
    m_Data.play_scene_loop = bOn ? 1 : 0;
    SaveProject(false);
}

void CTarnwickTabScene::SetPlayLoop(bool bOn)
{
    m_Data.play_loop = bOn ? 1 : 0;
    SaveProject(false);
}

core::ParamRange &CTarnwickTabScene::Value(ValueField field)
{
    switch (field) {
    case ValueField::Threshold:
        return m_Data.threshold;
    case ValueField::ValidMinUnit:
        return m_Data.valid_min_unit;
    case ValueField::CutMinUnit:
        return m_Data.cut_min_unit;
    case ValueField::Brightness:
        return m_Data.brightness;
    case ValueField::Saturation:
        return m_Data.saturation;
    case ValueField::Contrast:
        return m_Data.contrast;
    default:
        return m_Data.gamma;
    }
}

void CTarnwickTabScene::ValueChanged(ValueField field)
{
    ShowFields();
    if (field == ValueField::Brightness || field == ValueField::Saturation ||
        field == ValueField::Contrast || field == ValueField::Gamma) {
        MarkPictureChanged();
    }
    SaveProject(false);
}

void CTarnwickTabScene::CommitValue(ValueField field, const std::string &text)
{
    if (m_bValueGuard) {
        return;
    }
    core::ParamRange &param = Value(field);
    const std::string trimmed = TrimText(text);
    if (trimmed == param.strText) {
        return;
    }
    m_bValueGuard = true;
    param.dValue = std::clamp(ParseValue(trimmed), param.dMin, param.dMax);
    core::UpdateParamText(param);
    ValueChanged(field);
    m_bValueGuard = false;
}

void CTarnwickTabScene::SpinValue(ValueField field, int direction)
{
    if (m_bValueGuard) {
        return;
    }
    m_bValueGuard = true;
    core::ParamRange &param = Value(field);
    param.dValue = std::clamp(
        param.dValue + (direction > 0 ? param.dStep : -param.dStep), param.dMin, param.dMax);
    core::UpdateParamText(param);
    ValueChanged(field);
    m_bValueGuard = false;
}

void CTarnwickTabScene::ResetScanSettings()
{
    if (!m_view.AskYesNo(3121)) {
        return;
    }
    const core::CTarnwickData defaults;
    m_Data.threshold = defaults.threshold;
    m_Data.valid_min_unit = defaults.valid_min_unit;
    m_Data.cut_min_unit = defaults.cut_min_unit;
    ShowFields();
    SaveProject(false);
}

void CTarnwickTabScene::ResetPicture()
{
    if (!m_view.AskYesNo(3122)) {
        return;
    }
    const core::CTarnwickData defaults;
    m_Data.brightness = defaults.brightness;
    m_Data.saturation = defaults.saturation;
    m_Data.contrast = defaults.contrast;
    m_Data.gamma = defaults.gamma;
    m_Data.cine_sco = 0;
    m_Data.primaries = 0;
    ShowFields();
    MarkPictureChanged();
    SaveProject(false);
}

void CTarnwickTabScene::ResetSceneList()
{
    if (!m_view.AskYesNo(3124)) {
        return;
    }
    m_bListEvents = 0;
    ResetScenes(true);
    SaveProject(false);
    m_bListEvents = 1;
}

void CTarnwickTabScene::AutoPicture()
{
    const int running = m_Process.nProcessID;
    const std::string path = m_Data.PlayableInput();
    RunHelper([this, running, path] {
        if (running == engine::kJobPlayScenes) {
            m_Process.CancelProcess();
        }
        Endpoint().Send({engine::AppMessage::WM_APP_ANALYSIS_BUSY, 0, 0, std::nullopt});
        const int r = m_Process.AnalyzeVideoEQParams(path, 10);
        m_nAutoPictureResult = r;
        if (r == 0) {
            SaveProject(false);
        }
        Endpoint().Send({engine::AppMessage::WM_APP_ANALYSIS_BUSY, 1, 0, std::nullopt});
        if (r != 0) {
            return;
        }
        if (!engine::IsPlaybackJobNumber(running)) {
            m_Process.CancelProcess();
            m_Process.EnqueueSceneCheck(m_Data.SelectedRow(), true);
        } else if (running == engine::kJobPlayScenes) {
            m_Process.StartThread(engine::kJobPlayScenes);
        }
    });
}

// ---- What the view shows ----

FieldTexts CTarnwickTabScene::Fields() const
{
    FieldTexts f;
    f.inputPath = m_Data.input_file;
    f.outputFolder = m_Data.output_folder;
    f.outputName = m_Data.output_name;
    f.threshold = m_Data.threshold.strText;
    f.validMinUnit = m_Data.valid_min_unit.strText;
    f.cutMinUnit = m_Data.cut_min_unit.strText;
    f.brightness = m_Data.brightness.strText;
    f.saturation = m_Data.saturation.strText;
    f.contrast = m_Data.contrast.strText;
    f.gamma = m_Data.gamma.strText;
    f.bCinemaScope = m_Data.cine_sco != 0;
    f.bPrimaries = m_Data.primaries != 0;
    f.bTransition = m_Data.transition != 0;
    f.bSceneLoop = m_Data.play_scene_loop != 0;
    f.bPlayLoop = m_Data.play_loop != 0;
    f.nVolume = m_Data.play_vol;
    f.captionText = m_captions.m_strCaptionText;
    f.captionStart = m_captions.m_strCaptionStart;
    f.captionEnd = m_captions.m_strCaptionEnd;
    f.nCaptionPosition = m_captions.m_Caption.cap_pos_type;
    return f;
}

ControlStates CTarnwickTabScene::ComputeControls(bool bEnable) const
{
    ControlFacts f = CommonFacts(bEnable);
    f.bAnyCaption = AnySceneCaption(m_Data);
    f.nCaptionTarget = m_captions.m_nCaptionTarget;
    {
        // A worker or helper may be opening another file.
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        f.width = m_Data.viCurrent.width;
        f.height = m_Data.viCurrent.height;
        f.rotation = m_Data.viCurrent.rotation;
    }
    return SceneTabControls(f);
}

std::string CTarnwickTabScene::InputSummary() const
{
    int selected = 0;
    int n = 0;
    core::VideoInfo in;
    double fpsNow = 0.0;
    double transitionSec = 0.0;
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        for (const core::SceneEntry &entry : m_Data.diff_list) {
            if (entry.bEnable) {
                selected += entry.framNo_second - entry.framNo_first + 1;
                ++n;
            }
        }
        in = m_Data.viInput;
        fpsNow = m_Data.viCurrent.fps;
        transitionSec = m_Data.dTransitionSec;
    }
    double seconds = selected > 0 && in.fps > 0 ? selected / in.fps : 0.0;
    if (m_Data.transition != 0 && seconds > 0) {
        seconds -= (n - 1) * transitionSec;
    }
    const int out = static_cast<int>(std::floor(seconds * fpsNow));
    int width = in.width;
    int height = in.height;
    if (in.rotation == 90 || in.rotation == -90) {
        std::swap(width, height);
    }
    if (in.frame_num <= 0) {
        return "";
    }
    auto at = [fpsNow](int frame) { return fpsNow > 0 ? frame / fpsNow : 0.0; };
    return core::StrPrintf("%s/%s Frm:%d/%d FPS:%.2f W%dxH%d",
                           ElapsedText(at(out)).c_str(),
                           ElapsedText(at(in.frame_num)).c_str(),
                           out,
                           in.frame_num,
                           in.fps,
                           width,
                           height);
}

void CTarnwickTabScene::RefreshInputSummary()
{
    m_view.SetInputSummary(InputSummary());
    m_view.SetTitle(m_Data.BuildTitle());
}

} // namespace workspace
