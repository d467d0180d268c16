// The scene list and the merge list as data: output start frames, row texts, cell editor bounds
// and the context menu.
#include "workspace/scene_list.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <mutex>

#include "core/helpers.h"
#include "core/paths.h"
#include "workspace/caption_edit.h"

namespace workspace {

namespace {

bool ValidRow(const core::CTarnwickData &data, int row)
{
    return row >= 0 && row < static_cast<int>(data.diff_list.size());
}

// Whether a row takes part in the output: ticked, and on the merge list analysed too.
bool TakesPart(const core::SceneEntry &entry, ListKind kind)
{
    return entry.bEnable && (kind == ListKind::Scene || entry.bAnalyzed);
}

template <size_t N> void GreyWhenUnticked(RowTexts<N> &texts, bool bChecked)
{
    texts.bChecked = bChecked;
    if (!bChecked) {
        texts.textColour = kUntickedTextColour;
        texts.backColour = kUntickedBackColour;
    }
}

// The bounds of the editor of one column, as they stand before the start value is clamped.
CellBounds RawBounds(const core::CTarnwickData &data, int row, int column)
{
    const core::SceneEntry &entry = data.diff_list[row];
    const int m = MinSceneFrames(data);
    const int first = entry.framNo_first;
    const int last = entry.framNo_second;
    const bool lastRow = row + 1 == static_cast<int>(data.diff_list.size());
    const int nextFirst = lastRow ? 0 : data.diff_list[row + 1].framNo_first;
    const int frames = data.viInput.frame_num;
    switch (column) {
    case 1:
        return {row == 0 ? 0 : data.diff_list[row - 1].framNo_second + 1, last - m + 1, first};
    case 2:
        return {first - 1 + m, lastRow ? frames - 1 : nextFirst - 1, last};
    default:
        return {m, lastRow ? frames - first : nextFirst - first, last - first + 1};
    }
}

// Lower bound first, then the upper: crossing bounds give the upper one.
int ClampToBounds(int value, const CellBounds &bounds)
{
    value = std::max(value, bounds.nLower);
    return std::min(value, bounds.nUpper);
}

// A cell text as a number: the plain conversion (0 for text that is not a number), held to the
// range of an int.
int ParseCellNumber(const std::string &text)
{
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

// The editor's bounds with the start value clamped. The caller holds data.sceneLock and has
// checked row and column.
CellBounds ClampedBounds(const core::CTarnwickData &data, int row, int column)
{
    CellBounds bounds = RawBounds(data, row, column);
    bounds.nStart = ClampToBounds(bounds.nStart, bounds);
    return bounds;
}

} // namespace

int RowFrameCount(const core::SceneEntry &entry, ListKind kind)
{
    if (kind == ListKind::Merge) {
        return entry.viOut.frame_num;
    }
    return entry.framNo_second - entry.framNo_first + 1;
}

int MinSceneFrames(const core::CTarnwickData &data)
{
    return static_cast<int>(std::lround(data.viCurrent.fps * data.valid_min_unit.dValue));
}

StartFrames ComputeStartFrames(const std::vector<core::SceneEntry> &rows,
                               ListKind kind,
                               double fps,
                               bool transition,
                               double transitionSec)
{
    const int full = static_cast<int>(std::lround(transitionSec * fps));
    const int half = static_cast<int>(std::lround(transitionSec * 0.5 * fps));
    StartFrames result;
    result.rowStart.reserve(rows.size());
    int running = 0;
    for (size_t i = 0; i < rows.size(); ++i) {
        const core::SceneEntry &entry = rows[i];
        if (!TakesPart(entry, kind)) {
            result.rowStart.push_back(std::nullopt);
            continue;
        }
        result.rowStart.push_back(running);
        result.tickedStarts.push_back(running);
        int length = RowFrameCount(entry, kind);
        if (transition) {
            // The ends of the list, not of the ticked rows, give up only half a fade.
            const bool end = i == 0 || i + 1 == rows.size();
            length -= end ? half : full;
        }
        running += length;
    }
    return result;
}

StartFrames ComputeStartFrames(const core::CTarnwickData &data, ListKind kind)
{
    std::vector<core::SceneEntry> rows;
    double fps = 0.0;
    double transitionSec = 0.0;
    {
        std::lock_guard lock(data.sceneLock.m);
        rows = data.diff_list;
        fps = data.viCurrent.fps;
        transitionSec = data.dTransitionSec;
    }
    return ComputeStartFrames(rows, kind, fps, data.transition != 0, transitionSec);
}

SceneRowText SceneRowTexts(const core::CTarnwickData &data, int row, std::optional<int> startFrame)
{
    SceneRowText texts;
    core::SceneEntry entry;
    double fps = 0; // a scan's last-scene preview writes viCurrent from its thread
    {
        std::lock_guard lock(data.sceneLock.m);
        if (!ValidRow(data, row)) {
            return texts;
        }
        entry = data.diff_list[row];
        fps = data.viCurrent.fps;
    }
    const int frames = RowFrameCount(entry, ListKind::Scene);
    texts.columns[0] = core::StrPrintf("%03d", row + 1);
    texts.columns[1] = core::StrPrintf("%d", entry.framNo_first);
    texts.columns[2] = core::StrPrintf("%d", entry.framNo_second);
    texts.columns[3] = core::StrPrintf("%d", frames);
    texts.columns[4] = core::CTarnwickData::TruncatedTimeCodeAt(frames, fps);
    texts.columns[5] = entry.capParam.caption;
    texts.columns[6] = core::StrPrintf("%.02f", entry.capParam.capTime_first);
    texts.columns[7] = core::StrPrintf("%.02f", entry.capParam.capTime_second);
    if (entry.bEnable && startFrame) {
        texts.columns[8] = core::StrPrintf("%d", *startFrame);
        texts.columns[9] = core::CTarnwickData::TruncatedTimeCodeAt(*startFrame, fps);
    }
    GreyWhenUnticked(texts, entry.bEnable);
    return texts;
}

MergeRowText MergeRowTexts(const core::CTarnwickData &data,
                           int row,
                           std::optional<int> startFrame,
                           const std::string &unanalyzedWord)
{
    MergeRowText texts;
    core::SceneEntry entry;
    double fps = 0;
    {
        std::lock_guard lock(data.sceneLock.m);
        if (!ValidRow(data, row)) {
            return texts;
        }
        entry = data.diff_list[row];
        fps = data.viCurrent.fps;
    }
    texts.columns[0] = core::StrPrintf("%03d", row + 1);
    texts.columns[1] = core::FileNamePart(entry.fileName);
    if (!entry.bAnalyzed) {
        std::fill(texts.columns.begin() + 2, texts.columns.end(), unanalyzedWord);
        texts.bKeepStartColumns = !entry.bEnable;
    } else {
        texts.columns[2] = core::StrPrintf("%d x %d", entry.viIn.width, entry.viIn.height);
        texts.columns[3] = core::StrPrintf("%.02f", entry.viIn.fps);
        texts.columns[4] = core::StrPrintf("%d", entry.viIn.frame_num);
        texts.columns[5] = core::StrPrintf("%d", entry.viOut.frame_num);
        texts.columns[6] = core::CTarnwickData::TruncatedTimeCodeAt(entry.viOut.frame_num, fps);
        if (entry.bEnable && startFrame) {
            texts.columns[7] = core::StrPrintf("%d", *startFrame);
            texts.columns[8] = core::CTarnwickData::TruncatedTimeCodeAt(*startFrame, fps);
        }
    }
    GreyWhenUnticked(texts, entry.bEnable);
    return texts;
}

std::optional<CellBounds> CellEditBounds(const core::CTarnwickData &data, int row, int column)
{
    if (column < 1 || column > 3) {
        return std::nullopt;
    }
    std::lock_guard lock(data.sceneLock.m);
    if (!ValidRow(data, row)) {
        return std::nullopt;
    }
    return ClampedBounds(data, row, column);
}

CellEditResult
ApplyCellEdit(core::CTarnwickData &data, int row, int column, const std::string &text)
{
    CellEditResult result;
    std::lock_guard lock(data.sceneLock.m);
    if (column < 1 || column > 3 || !ValidRow(data, row)) {
        return result;
    }
    const CellBounds bounds = ClampedBounds(data, row, column);
    const std::string trimmed = TrimText(text);
    if (trimmed == core::StrPrintf("%d", bounds.nStart)) {
        return result;
    }
    // The plain conversion: text that is not a number reads as 0 and lands on the lower bound.
    const int value = ClampToBounds(ParseCellNumber(trimmed), bounds);
    core::SceneEntry &entry = data.diff_list[row];
    if (column == 1) {
        entry.framNo_first = value;
    } else if (column == 2) {
        entry.framNo_second = value;
    } else {
        entry.framNo_second = entry.framNo_first + value - 1;
    }
    ClampCaptionTimes(entry.capParam, SceneSeconds(data, entry));
    result.bChanged = true;
    result.nSceneToCheck = row;
    return result;
}

bool CanSplit(const core::CTarnwickData &data, int row)
{
    return SplitRange(data, row).has_value();
}

ContextMenu
ContextMenuAt(const core::CTarnwickData &data, ListKind kind, int row, int column, bool bRenderJob)
{
    ContextMenu menu;
    if (bRenderJob) {
        return menu;
    }
    {
        std::lock_guard lock(data.sceneLock.m);
        if (!ValidRow(data, row)) {
            return menu;
        }
    }
    // Frame number cells of the scene list are edited in place; a right click there does
    // nothing.
    if (kind == ListKind::Scene && column >= 1 && column <= 3) {
        return menu;
    }
    menu.bShow = true;
    menu.bHasDelete = true;
    menu.bHasDuplicate = true;
    if (kind == ListKind::Scene) {
        menu.bHasSplit = true;
        menu.bSplitEnabled = CanSplit(data, row);
    }
    return menu;
}

} // namespace workspace
