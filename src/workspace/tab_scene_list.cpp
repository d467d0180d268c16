// The scene workspace's list and captions: rows, selection, cell edits, row commands, drag,
// the caption boxes, and the messages that change the list.
#include <algorithm>

#include "core/helpers.h"
#include "engine/tarnwick_process.h"
#include "workspace/scene_defaults.h"
#include "workspace/tab_link.h"
#include "workspace/tab_scene.h"

namespace workspace {

namespace {

template <size_t N> ListRow ToListRow(const RowTexts<N> &texts)
{
    ListRow row;
    row.columns.assign(texts.columns.begin(), texts.columns.end());
    row.bChecked = texts.bChecked;
    row.textColour = texts.textColour;
    row.backColour = texts.backColour;
    return row;
}

} // namespace

std::vector<ListRow> CTarnwickTabScene::ListRows() const
{
    const StartFrames starts = ComputeStartFrames(m_Data, ListKind::Scene);
    std::vector<ListRow> rows;
    rows.reserve(starts.rowStart.size());
    for (size_t i = 0; i < starts.rowStart.size(); ++i) {
        rows.push_back(ToListRow(SceneRowTexts(m_Data, static_cast<int>(i), starts.rowStart[i])));
    }
    return rows;
}

int CTarnwickTabScene::SceneOffset() const
{
    std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
    const int row = m_Data.list_idx;
    if (row < 0 || row >= static_cast<int>(m_Data.diff_list.size())) {
        return 0;
    }
    return m_Data.diff_list[row].framNo_first;
}

void CTarnwickTabScene::OnInputAnalysed(bool bKeepSelection)
{
    // Analysis thread: the list is made to fit here, the screen follows on the loop's thread.
    if (bKeepSelection) {
        // A project keeps its scenes whatever row it names: only an empty list gets the default
        // scene (a project saved while a job ran may name no row).
        bool empty = false;
        {
            std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
            empty = m_Data.diff_list.empty();
        }
        if (empty) {
            workspace::MakeDefaultScene(m_Data);
        }
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        const int count = static_cast<int>(m_Data.diff_list.size());
        m_Data.list_idx = std::clamp(m_Data.list_idx, 0, std::max(0, count - 1));
    } else {
        workspace::MakeDefaultScene(m_Data);
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        m_Data.list_idx = 0;
    }
    Endpoint().Post({engine::AppMessage::WM_APP_SCENES_CHANGED, -1, 0, std::nullopt});
}

void CTarnwickTabScene::OnScenesChanged(const engine::JobMessage &)
{
    m_bListEvents = 0;
    UpdateControls(false);
    bool empty = false;
    int select = -1;
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        empty = m_Data.diff_list.empty();
        if (empty) {
            m_Data.list_idx = -1;
            m_Data.nListSubItem = -1;
        }
        select = m_Data.list_idx;
    }
    if (empty) {
        ResetStatusBar();
        SetPane(kPaneElapsed, "");
    }
    FillList(select);
    RefreshInputSummary();
    UpdateControls(true);
    m_bListEvents = 1;
    m_captions.LoadCaptionFields(m_Data);
    ShowFields();
    // The file follows the list as it grows (a scan, a recut): a job killed later leaves the
    // scenes found so far.
    SaveProject(false);
}

void CTarnwickTabScene::OnRenderJobEnd()
{
    const int nJob = m_report.nJob;
    bool empty = false;
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        empty = m_Data.diff_list.empty();
    }
    if (empty && (nJob == engine::kJobSceneExtract || nJob == engine::kJobExtractAndOutput)) {
        // Stopped before the scan began: the list the extraction emptied gets the default scene.
        MakeDefaultScene();
        m_report.bDefaultScene = RowCount() > 0;
        m_bListEvents = 0;
        FillList(m_Data.SelectedRow());
        RefreshInputSummary();
        m_bListEvents = 1;
        m_captions.LoadCaptionFields(m_Data);
        ShowFields();
    }
    SaveProject(false);
}

void CTarnwickTabScene::DeleteFiles(const std::vector<std::string> &files)
{
    for (const std::string &file : files) {
        std::remove(file.c_str()); // a failed delete is ignored
    }
}

void CTarnwickTabScene::SelectRow(int nRow, int nColumn)
{
    int count = 0;
    std::string file;
    bool ticked = false;
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        count = static_cast<int>(m_Data.diff_list.size());
        if (nRow >= 0 && nRow < count) {
            file = m_Data.diff_list[nRow].fileName;
            ticked = m_Data.diff_list[nRow].bEnable;
        }
    }
    if (m_bListEvents == 0 || m_Process.IsRenderJob() || nRow < 0 || nRow >= count) {
        return;
    }
    const bool bChanged = nRow != m_Data.SelectedRow() || file != m_Process.strPreviewFile.get();
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        m_Data.list_idx = nRow;
        m_Data.nListSubItem = nColumn;
    }
    if (bChanged) {
        m_captions.LoadCaptionFields(m_Data);
        ShowFields();
    }
    const bool bPlaying = engine::IsPlaybackJobNumber(m_Process.nProcessID);
    if (m_nDragRow >= 0) {
        if (bPlaying) {
            StopProcess();
        }
        if (bChanged) {
            RunHelper([this, file] { m_Process.ShowFile(file, true); });
        }
        return;
    }
    if (ticked && nColumn >= 1 && nColumn <= 3) {
        if (bPlaying) {
            StopProcess();
        }
        if (bChanged) {
            RunHelper([this, file] { m_Process.ShowFile(file, true); });
        }
        UpdateControls(true);
        if (std::optional<CellBounds> bounds = CellEditBounds(m_Data, nRow, nColumn)) {
            m_CellValue = core::ParamRange{};
            m_CellValue.dValue = bounds->nStart;
            m_CellValue.dMin = bounds->nLower;
            m_CellValue.dMax = bounds->nUpper;
            m_CellValue.dStep = 1;
            m_CellValue.nType = 1;
            core::UpdateParamText(m_CellValue);
            m_bCellEdit = true;
        }
        return;
    }
    if (!bChanged && m_Process.bThreadRunning) {
        return;
    }
    if (bPlaying) {
        StopProcess();
    }
    m_Process.EnqueueSceneCheck(nRow, true);
}

void CTarnwickTabScene::SetRowChecked(int nRow, bool bChecked)
{
    if (m_bListEvents == 0 || m_Process.IsRenderJob()) {
        return;
    }
    m_bListEvents = 0;
    if (SetChecked(m_Data, nRow, bChecked)) {
        Renumber();
        RefreshInputSummary();
    }
    m_bListEvents = 1;
}

void CTarnwickTabScene::OnCellEdited(const std::string &text)
{
    if (!m_bCellEdit) {
        return;
    }
    m_bCellEdit = false;
    const CellEditResult result =
        ApplyCellEdit(m_Data, m_Data.SelectedRow(), m_Data.nListSubItem, text);
    if (!result.bChanged) {
        return;
    }
    m_captions.LoadCaptionFields(m_Data);
    UpdateControls(false);
    FillList(m_Data.SelectedRow());
    UpdateControls(true);
    ShowFields();
    if (engine::IsPlaybackJobNumber(m_Process.nProcessID)) {
        StopProcess();
    }
    m_Process.EnqueueSceneCheck(result.nSceneToCheck, true);
}

ContextMenu CTarnwickTabScene::ContextMenuAt(int nRow, int nColumn) const
{
    return workspace::ContextMenuAt(
        m_Data, ListKind::Scene, nRow, nColumn, m_Process.IsRenderJob());
}

void CTarnwickTabScene::SplitRow()
{
    const int row = m_Data.SelectedRow();
    if (!CanSplit(m_Data, row)) {
        return;
    }
    m_bListEvents = 0;
    const ListChange change = workspace::SplitRow(m_Data, row, m_Process.nPreviewFrame);
    DeleteFiles(change.filesToDelete);
    FillList(m_Data.SelectedRow());
    for (int scene : change.scenesToCheck) {
        m_Process.EnqueueSceneCheck(scene, true);
    }
    m_bListEvents = 1;
}

std::string CTarnwickTabScene::ApplyEdit(const SceneEdit &edit)
{
    return ApplyEdits({edit});
}

std::string CTarnwickTabScene::ApplyEdits(const std::vector<SceneEdit> &edits)
{
    if (IsJobRunning()) {
        return "the list cannot change while a job runs";
    }
    m_bListEvents = 0;
    std::string problem = ApplySceneEdits(m_Data, edits);
    if (problem.empty()) {
        m_captions.LoadCaptionFields(m_Data);
        FillList(m_Data.SelectedRow());
        ShowFields();
    }
    m_bListEvents = 1;
    return problem;
}

void CTarnwickTabScene::DeleteRow()
{
    const int row = m_Data.SelectedRow();
    m_bListEvents = 0;
    const ListChange change = workspace::DeleteRow(m_Data, row, ListKind::Scene);
    if (change.bResetScenes) {
        ResetScenes(true);
    } else if (change.bChanged) {
        DeleteFiles(change.filesToDelete);
        FillList(m_Data.SelectedRow());
        UpdatePositionReadout(0, change.nDeletedFrames, SceneOffset());
        for (int scene : change.scenesToCheck) {
            m_Process.EnqueueSceneCheck(scene, true);
        }
    }
    m_bListEvents = 1;
}

void CTarnwickTabScene::DuplicateRow()
{
    m_bListEvents = 0;
    const ListChange change = workspace::DuplicateRow(m_Data, m_Data.SelectedRow());
    if (change.bChanged) {
        FillList(m_Data.SelectedRow());
    }
    m_bListEvents = 1;
}

// ---- Captions ----

void CTarnwickTabScene::CaptionChanged()
{
    m_captions.LoadCaptionFields(m_Data);
    ShowFields();
    Renumber();
    MarkPictureChanged();
    SaveProject(false);
}

void CTarnwickTabScene::NextCaptionTarget()
{
    m_captions.NextTarget(m_Data);
    ShowFields();
    UpdateControls(true);
}

void CTarnwickTabScene::CaptionTextConfirmed(const std::string &text)
{
    if (m_captions.SetText(m_Data, text)) {
        CaptionChanged();
        UpdateControls(true);
    }
}

void CTarnwickTabScene::CaptionStartConfirmed(const std::string &text)
{
    if (m_captions.SetStartTime(m_Data, text)) {
        CaptionChanged();
    } else {
        ShowFields(); // the box goes back to the value's text
    }
}

void CTarnwickTabScene::CaptionEndConfirmed(const std::string &text)
{
    if (m_captions.SetEndTime(m_Data, text)) {
        CaptionChanged();
    } else {
        ShowFields();
    }
}

void CTarnwickTabScene::StepCaptionStart(int direction)
{
    if (m_captions.StepStart(m_Data, direction)) {
        CaptionChanged();
    }
}

void CTarnwickTabScene::StepCaptionEnd(int direction)
{
    if (m_captions.StepEnd(m_Data, direction)) {
        CaptionChanged();
    }
}

void CTarnwickTabScene::CaptionPositionChanged(int index)
{
    if (m_captions.SetPosition(m_Data, index)) {
        MarkPictureChanged();
        SaveProject(false);
    }
}

void CTarnwickTabScene::ChooseFont(const FontChoice &font)
{
    if (m_captions.SetFont(m_Data, font)) {
        MarkPictureChanged();
        SaveProject(false);
    }
}

void CTarnwickTabScene::ResetCaptions()
{
    if (!m_view.AskYesNo(3123)) {
        return;
    }
    if (m_captions.ResetCaptions(m_Data)) {
        m_captions.LoadCaptionFields(m_Data);
        UpdateControls(true);
        ShowFields();
        Renumber();
        MarkPictureChanged();
        SaveProject(false);
    }
}

void CTarnwickTabScene::AutoCaptions()
{
    AutoCaptionOutcome outcome = m_captions.AutoCaptions(m_Data, false);
    if (outcome == AutoCaptionOutcome::NeedsConfirmation) {
        if (!m_view.AskYesNo(3125)) {
            return;
        }
        outcome = m_captions.AutoCaptions(m_Data, true);
    }
    if (outcome == AutoCaptionOutcome::Nothing) {
        return;
    }
    m_captions.LoadCaptionFields(m_Data);
    UpdateControls(true);
    ShowFields();
    Renumber();
    MarkPictureChanged();
    SaveProject(false);
}

} // namespace workspace
