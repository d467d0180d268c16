// The merge workspace: dropped files, the chosen target, the jobs, the list of whole files.
#include "workspace/tab_merge.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>

#include "core/helpers.h"
#include "core/language.h"
#include "core/merge_formats.h"
#include "core/paths.h"
#include "workspace/caption_edit.h"
#include "workspace/tab_controls.h"
#include "workspace/tab_link.h"
#include "workspace/tab_scene.h"

namespace workspace {
CTarnwickTabMerge::CTarnwickTabMerge(TabView &view,
                                     engine::MessageLoop &loop,
                                     engine::EngineHost &host)
    : CTarnwickTab(view, loop, host, 1)
{
}

CTarnwickTabMerge::~CTarnwickTabMerge()
{
    // The engine's threads end while the tab they report to is whole.
    m_Process.CancelProcess();
    JoinHelpers();
    m_Process.EndThreads();
}

void CTarnwickTabMerge::ApplyChoices()
{
    m_Process.nSizeIndex = m_nSizeIndex;
    m_Process.nRateIndex = m_nRateIndex;
}

void CTarnwickTabMerge::Init()
{
    m_Data.ResetProject(true);
    m_nSizeIndex = kDefaultMergeSizeIndex;
    m_nRateIndex = kDefaultMergeRateIndex;
    ApplyChoices();
    ResetStatusBar();
    RefreshInputSummary();
    UpdatePositionReadout(0, 0, 0);
    FillList(-1);
    ShowFields();
    UpdateControls(true);
    m_Process.StartQueueThread(1);
}

void CTarnwickTabMerge::NewProject()
{
    StopProcess();
    m_Data.ResetProject(false);
    m_Process.strPreviewFile = std::string();
    m_Process.nPreviewFrame = 0;
    m_Process.strPreviewTime = std::string("0");
    FillList(-1);
    UpdatePositionReadout(0, 0, 0);
    m_view.ShowPicture("");
    ShowFields();
    UpdateControls(true);
}

std::string CTarnwickTabMerge::SegmentPattern() const
{
    const core::MergeSize size = core::MergeSizeAt(m_nSizeIndex);
    const double fps = core::MergeRateFps(core::MergeRateAt(m_nRateIndex));
    return core::StrPrintf(
        "%s*_seg_%dx%d_%.02f.mp4", m_Data.output_folder.c_str(), size.width, size.height, fps);
}

std::string CTarnwickTabMerge::SegmentOf(const std::string &source) const
{
    const core::MergeSize size = core::MergeSizeAt(m_nSizeIndex);
    const double fps = core::MergeRateFps(core::MergeRateAt(m_nRateIndex));
    return core::StrPrintf("%s%s%dx%d_%.02f.mp4",
                           m_Data.output_folder.c_str(),
                           core::ReplaceExtension(core::FileNamePart(source), "_seg_").c_str(),
                           size.width,
                           size.height,
                           fps);
}

void CTarnwickTabMerge::DropFiles(const std::vector<std::string> &paths)
{
    if (m_Process.IsRenderJob()) {
        return;
    }
    DisableAllControls();
    for (const std::string &path : paths) {
        std::error_code ec;
        if (std::filesystem::is_directory(path, ec)) {
            ReportProblem(kIdsFolderDropped, path);
            continue;
        }
        if (RefusePath(path, true)) {
            continue;
        }
        core::VideoInfo info;
        if (m_Process.GetVideoInfoFfprobe(path, info) != 0) {
            continue; // left out without a word, as the tab has always done
        }
        m_Data.SetInputFile(path);
        bool empty = false;
        {
            std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
            empty = m_Data.diff_list.empty();
        }
        if (empty) {
            if (m_Data.output_folder.empty()) {
                const std::string folder =
                    std::filesystem::path(path).parent_path().string() + "/conv_out/";
                m_Data.output_folder = folder;
            }
            if (m_Data.output_name.empty()) {
                const core::MergeSize size = core::MergeSizeAt(m_nSizeIndex);
                const double fps = core::MergeRateFps(core::MergeRateAt(m_nRateIndex));
                m_Data.output_name = core::StrPrintf(
                    "%s%dx%d_%.02f.mp4",
                    core::ReplaceExtension(core::FileNamePart(path), "_conv_").c_str(),
                    size.width,
                    size.height,
                    fps);
            }
        }
        ShowFields();
        core::SceneEntry entry;
        entry.bAnalyzed = false;
        entry.bEnable = true;
        entry.strWorkFile = path;
        entry.fileName = SegmentOf(path);
        {
            std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
            m_Data.diff_list.push_back(entry);
            m_Data.list_idx = static_cast<int>(m_Data.diff_list.size()) - 1;
        }
        FillList(m_Data.SelectedRow());
    }
    RefreshInputSummary();
    UpdateControls(true);
}

void CTarnwickTabMerge::Analysis()
{
    ApplyChoices();
    StartProcess(engine::kJobSceneExtract);
}

void CTarnwickTabMerge::Convert()
{
    StopProcess();
    m_bListEvents = 0;
    ClearSegments(false);
    m_bListEvents = 1;
    ApplyChoices();
    StartProcess(engine::kJobSegmentOutput);
}

void CTarnwickTabMerge::Merge()
{
    StopProcess();
    ApplyChoices();
    StartProcess(engine::kJobFinalOutput);
}

void CTarnwickTabMerge::ConvertAndMerge()
{
    StopProcess();
    m_bListEvents = 0;
    ClearSegments(false);
    m_bListEvents = 1;
    ApplyChoices();
    StartProcess(engine::kJobExtractAndOutput);
}

void CTarnwickTabMerge::ResetList()
{
    if (!m_view.AskYesNo(3124)) {
        return;
    }
    m_bListEvents = 0;
    ClearSegments(true);
    m_bListEvents = 1;
}

void CTarnwickTabMerge::ClearSegments(bool bEmptyList)
{
    if (bEmptyList) {
        {
            std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
            m_Data.diff_list.clear();
            m_Data.list_idx = -1;
        }
        FillList(-1);
        ResetStatusBar();
    }
    ShowFields();
    if (!m_Data.output_folder.empty()) {
        core::DeleteByPattern(SegmentPattern());
    }
}

void CTarnwickTabMerge::ResetSettings()
{
    if (!m_view.AskYesNo(3121)) {
        return;
    }
    const core::CTarnwickData defaults;
    m_Data.threshold = defaults.threshold;
    m_Data.valid_min_unit = defaults.valid_min_unit;
    m_Data.cut_min_unit = defaults.cut_min_unit;
    m_nSizeIndex = kDefaultMergeSizeIndex;
    m_nRateIndex = kDefaultMergeRateIndex;
    ApplyChoices();
    ShowFields();
}

void CTarnwickTabMerge::SetSizeIndex(int index)
{
    m_nSizeIndex = std::clamp(index, 0, core::kMergeSizeCount - 1);
    ApplyChoices();
    m_bListEvents = 0;
    RefreshInputSummary();
    Renumber();
    m_bListEvents = 1;
}

void CTarnwickTabMerge::SetRateIndex(int index)
{
    m_nRateIndex = std::clamp(index, 0, core::kMergeRateCount - 1);
    ApplyChoices();
    m_bListEvents = 0;
    RefreshInputSummary();
    Renumber();
    m_bListEvents = 1;
}

void CTarnwickTabMerge::SetTransition(bool bOn)
{
    m_Data.transition = bOn ? 1 : 0;
    m_bListEvents = 0;
    RefreshInputSummary();
    Renumber();
    m_bListEvents = 1;
}

void CTarnwickTabMerge::ClearOutputFolder()
{
    if (!m_view.AskYesNo(3118)) {
        return;
    }
    core::DeleteTree(m_Data.output_folder);
    UpdateControls(true);
    ShowFields();
}

void CTarnwickTabMerge::ChangeOutputFolder(const std::string &oldGiven, const std::string &newGiven)
{
    if (!MoveOutputFolder(oldGiven, newGiven, false)) {
        return;
    }
    UpdateControls(true);
    ShowFields();
}

void CTarnwickTabMerge::OutputFolderConfirmed(const std::string &text)
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

void CTarnwickTabMerge::OutputNameConfirmed(const std::string &text)
{
    const std::string name = TrimText(text);
    if (!name.empty() && name != m_Data.output_name) {
        if (RefuseFilmName(name)) {
            ShowFields();
            return;
        }
        m_Data.output_name = name;
        UpdateControls(true);
        ShowFields();
    }
}

void CTarnwickTabMerge::BrowseOutputFolder()
{
    StopProcess();
    if (std::optional<std::string> folder = m_view.ChooseFolder(3102, m_Data.output_folder)) {
        const std::string chosen = core::SetTrailingSeparator(*folder, true);
        if (chosen != m_Data.output_folder) {
            ChangeOutputFolder(m_Data.output_folder, chosen);
        }
    }
}

void CTarnwickTabMerge::ShowInput()
{
    ShowWholeFile(engine::kJobPlayInput, m_Data.PlayableInput());
}

void CTarnwickTabMerge::ShowOutput()
{
    ShowWholeFile(engine::kJobPlayOutput, m_Data.GetOutputPath());
}

// ---- Messages and what the view shows ----

void CTarnwickTabMerge::OnInputAnalysed(bool bKeepSelection)
{
    std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
    if (bKeepSelection) {
        const int count = static_cast<int>(m_Data.diff_list.size());
        m_Data.list_idx = count == 0 ? -1 : std::clamp(m_Data.list_idx, 0, count - 1);
    } else {
        m_Data.diff_list.clear();
        m_Data.list_idx = -1;
    }
    Endpoint().Post({engine::AppMessage::WM_APP_SCENES_CHANGED, -1, 0, std::nullopt});
}

void CTarnwickTabMerge::OnScenesChanged(const engine::JobMessage &msg)
{
    UpdateControls(false);
    const int row = static_cast<int>(msg.wParam);
    int count = 0;
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        count = static_cast<int>(m_Data.diff_list.size());
    }
    if (row < 0 || row >= count) {
        FillList(m_Data.SelectedRow());
    } else {
        std::vector<ListRow> rows = ListRows();
        m_view.ShowRow(row, rows[row]);
        Renumber();
    }
    RefreshInputSummary();
    UpdateControls(true);
}

FieldTexts CTarnwickTabMerge::Fields() const
{
    FieldTexts f;
    f.inputPath = m_Data.InputFile();
    f.outputFolder = m_Data.output_folder;
    f.outputName = m_Data.output_name;
    f.bTransition = m_Data.transition != 0;
    f.bSceneLoop = m_Data.play_scene_loop != 0;
    f.bPlayLoop = m_Data.play_loop != 0;
    f.nVolume = m_Data.play_vol;
    f.nSizeIndex = m_nSizeIndex;
    f.nRateIndex = m_nRateIndex;
    return f;
}

ControlStates CTarnwickTabMerge::ComputeControls(bool bEnable) const
{
    return MergeTabControls(CommonFacts(bEnable));
}

std::string CTarnwickTabMerge::InputSummary() const
{
    const core::MergeRate rate = core::MergeRateAt(m_nRateIndex);
    const core::MergeSize size = core::MergeSizeAt(m_nSizeIndex);
    double r = core::MergeRateFps(rate);
    int all = 0;
    int selected = 0;
    int n = 0;
    double transitionSec = 0.0;
    core::VideoInfo current;
    int inputFrames = 0;
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        transitionSec = m_Data.dTransitionSec;
        current = m_Data.viCurrent;
        inputFrames = m_Data.viInput.frame_num;
        for (const core::SceneEntry &entry : m_Data.diff_list) {
            if (!entry.bAnalyzed) {
                continue;
            }
            all += entry.viOut.frame_num;
            if (entry.bEnable) {
                selected += entry.viOut.frame_num;
                ++n;
            }
        }
    }
    double seconds = r > 0 ? selected / r : 0.0;
    if (m_Data.transition != 0 && seconds > 0) {
        seconds -= (n - 1) * transitionSec;
    }
    if (r <= 0) {
        r = current.fps;
    }
    const int out = static_cast<int>(std::floor(seconds * r));
    if (inputFrames <= 0) {
        return "";
    }
    auto at = [r](int frames) { return r > 0 ? frames / r : 0.0; };
    return core::StrPrintf("%s/%s Frm:%d/%d FPS:%.2f W%dxH%d",
                           ElapsedText(at(out)).c_str(),
                           ElapsedText(at(all)).c_str(),
                           out,
                           all,
                           r,
                           size.width,
                           size.height);
}

void CTarnwickTabMerge::RefreshInputSummary()
{
    m_view.SetInputSummary(InputSummary());
}

} // namespace workspace
