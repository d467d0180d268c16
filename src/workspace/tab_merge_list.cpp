// The merge workspace's list of whole files: rows, selection, ticks, delete, duplicate, drag.
#include "workspace/tab_merge.h"

#include <algorithm>

#include "core/language.h"
#include "workspace/tab_controls.h"
#include "workspace/tab_link.h"

namespace workspace {
namespace {

std::string UnanalyzedWord()
{
    return core::IsJapanese() ? "未解析" : "Unanalyzed";
}

ListRow ToListRow(const MergeRowText &texts, const ListRow *previous)
{
    ListRow row;
    row.columns.assign(texts.columns.begin(), texts.columns.end());
    if (texts.bKeepStartColumns && previous != nullptr && previous->columns.size() > 8) {
        row.columns[7] = previous->columns[7];
        row.columns[8] = previous->columns[8];
    }
    row.bChecked = texts.bChecked;
    row.textColour = texts.textColour;
    row.backColour = texts.backColour;
    return row;
}

} // namespace

// ---- The list ----

std::vector<ListRow> CTarnwickTabMerge::ListRows() const
{
    const StartFrames starts = ComputeStartFrames(m_Data, ListKind::Merge);
    const std::string word = UnanalyzedWord();
    std::vector<ListRow> rows;
    for (size_t i = 0; i < starts.rowStart.size(); ++i) {
        rows.push_back(ToListRow(
            MergeRowTexts(m_Data, static_cast<int>(i), starts.rowStart[i], word), nullptr));
    }
    return rows;
}

void CTarnwickTabMerge::SelectRow(int nRow, int nColumn)
{
    core::SceneEntry entry;
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        if (m_bListEvents == 0 || m_Process.IsRenderJob() || nRow < 0 ||
            nRow >= static_cast<int>(m_Data.diff_list.size())) {
            return;
        }
        entry = m_Data.diff_list[nRow];
    }
    const bool bChanged =
        nRow != m_Data.SelectedRow() || entry.fileName != m_Process.strPreviewFile.get();
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        m_Data.list_idx = nRow;
        m_Data.nListSubItem = nColumn;
    }
    m_Data.SetInputFile(entry.strWorkFile);
    if (bChanged) {
        ShowFields();
    }
    const bool bPlaying = engine::IsPlaybackJobNumber(m_Process.nProcessID);
    if (m_nDragRow >= 0) {
        if (bPlaying) {
            StopProcess();
        }
        if (bChanged) {
            RunHelper([this, file = entry.fileName] { m_Process.ShowFile(file, true); });
        }
        return;
    }
    if (!bChanged && m_Process.bThreadRunning) {
        return;
    }
    if (bPlaying) {
        StopProcess();
    }
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        m_Data.viCurrent = entry.viOut;
        m_Data.viInput = entry.viIn;
    }
    m_Process.strPreviewFile = entry.fileName;
    m_Process.nPreviewFrame = 0;
    m_Process.strPreviewTime = std::string("0");
    UpdatePositionReadout(0, entry.viOut.frame_num, entry.framNo_first);
    m_Process.SetPreviewImage(entry.fileName, "0", true, nRow);
    UpdateControls(true);
}

void CTarnwickTabMerge::SetRowChecked(int nRow, bool bChecked)
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

ContextMenu CTarnwickTabMerge::ContextMenuAt(int nRow, int nColumn) const
{
    return workspace::ContextMenuAt(
        m_Data, ListKind::Merge, nRow, nColumn, m_Process.IsRenderJob());
}

void CTarnwickTabMerge::DeleteRow()
{
    m_bListEvents = 0;
    const ListChange change = workspace::DeleteRow(m_Data, m_Data.SelectedRow(), ListKind::Merge);
    if (change.bResetScenes) {
        ClearSegments(true);
    } else if (change.bChanged) {
        FillList(m_Data.SelectedRow());
        UpdatePositionReadout(0, change.nDeletedFrames, 0);
        RefreshInputSummary();
    }
    m_bListEvents = 1;
}

void CTarnwickTabMerge::DuplicateRow()
{
    m_bListEvents = 0;
    if (workspace::DuplicateRow(m_Data, m_Data.SelectedRow()).bChanged) {
        FillList(m_Data.SelectedRow());
        RefreshInputSummary();
    }
    m_bListEvents = 1;
}

} // namespace workspace
