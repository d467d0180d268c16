// Row commands of the scene list and the merge list: split, delete, duplicate, tick, move and the
// swaps of a row drag.
#include "workspace/scene_list.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "core/project_names.h"
#include "workspace/caption_edit.h"

namespace workspace {

namespace {

bool ValidRow(const core::CTarnwickData &data, int row)
{
    return row >= 0 && row < static_cast<int>(data.diff_list.size());
}

// Whether a row of the list names file (a duplicate shares its segment). The caller holds
// data.sceneLock.
bool NamedByAnyRow(const core::CTarnwickData &data, const std::string &file)
{
    return std::any_of(data.diff_list.begin(),
                       data.diff_list.end(),
                       [&file](const core::SceneEntry &entry) { return entry.fileName == file; });
}

// Seconds of a number of frames at viCurrent.fps; 0 when the rate is not positive.
double FramesToSeconds(const core::CTarnwickData &data, int frames)
{
    return data.viCurrent.fps > 0.0 ? frames / data.viCurrent.fps : 0.0;
}

} // namespace

std::optional<SplitFrames> SplitRange(const core::CTarnwickData &data, int row)
{
    std::lock_guard lock(data.sceneLock.m);
    if (!ValidRow(data, row)) {
        return std::nullopt;
    }
    const int m = std::max(1, MinSceneFrames(data));
    const core::SceneEntry &entry = data.diff_list[row];
    if (RowFrameCount(entry, ListKind::Scene) < 2 * m) {
        return std::nullopt;
    }
    return SplitFrames{entry.framNo_first + m, entry.framNo_second - m + 1};
}

ListChange SplitRowAt(core::CTarnwickData &data, int row, int frame)
{
    ListChange change;
    const std::optional<SplitFrames> range = SplitRange(data, row);
    if (!range || frame < range->nFirst || frame > range->nLast) {
        return change;
    }
    std::lock_guard lock(data.sceneLock.m);
    if (!ValidRow(data, row)) {
        return change;
    }
    core::SceneEntry &later = data.diff_list[row];
    const int s = later.framNo_first;
    const int e = later.framNo_second;
    const std::string oldFile = later.fileName;

    const double oldLength = later.capParam.capTime_second;
    const double laterSeconds = FramesToSeconds(data, e - frame + 1);
    core::SceneEntry earlier(s, frame - 1, core::SegmentPath(data, s, frame - 1));
    earlier.SetCaption(0.0, oldLength - laterSeconds, later.capParam.caption);

    later.framNo_first = frame;
    later.fileName = core::SegmentPath(data, frame, e);
    later.SetCaption(later.capParam.capTime_first, laterSeconds, later.capParam.caption);

    data.diff_list.insert(data.diff_list.begin() + row, earlier);
    data.list_idx = row + 1;
    if (!NamedByAnyRow(data, oldFile)) {
        change.filesToDelete.push_back(oldFile);
    }
    change.scenesToCheck = {row, row + 1};
    change.bChanged = true;
    return change;
}

ListChange SplitRow(core::CTarnwickData &data, int row, int previewFrameOffset)
{
    const std::optional<SplitFrames> range = SplitRange(data, row);
    int first = 0;
    {
        std::lock_guard lock(data.sceneLock.m);
        if (!range || !ValidRow(data, row)) {
            return ListChange{};
        }
        first = data.diff_list[row].framNo_first;
    }
    const long long wanted = static_cast<long long>(first) + previewFrameOffset;
    const int frame = static_cast<int>(std::clamp<long long>(wanted, range->nFirst, range->nLast));
    return SplitRowAt(data, row, frame);
}

ListChange DeleteRow(core::CTarnwickData &data, int row, ListKind kind)
{
    ListChange change;
    std::lock_guard lock(data.sceneLock.m);
    if (data.diff_list.size() < 2) {
        change.bResetScenes = true;
        return change;
    }
    if (!ValidRow(data, row)) {
        return change;
    }
    const core::SceneEntry &entry = data.diff_list[row];
    change.nDeletedFrames = RowFrameCount(entry, kind);
    const std::string file = entry.fileName;
    data.diff_list.erase(data.diff_list.begin() + row);
    if (kind == ListKind::Scene && !NamedByAnyRow(data, file)) {
        change.filesToDelete.push_back(file);
    }
    const int lastRow = static_cast<int>(data.diff_list.size()) - 1;
    data.list_idx = std::min(data.list_idx, lastRow);
    if (kind == ListKind::Scene && data.list_idx >= 0) {
        change.scenesToCheck.push_back(data.list_idx);
    }
    change.bChanged = true;
    return change;
}

ListChange DuplicateRow(core::CTarnwickData &data, int row)
{
    ListChange change;
    std::lock_guard lock(data.sceneLock.m);
    if (!ValidRow(data, row)) {
        return change;
    }
    const core::SceneEntry copy = data.diff_list[row];
    data.diff_list.insert(data.diff_list.begin() + row, copy);
    data.list_idx = row + 1;
    change.bChanged = true;
    return change;
}

bool SetChecked(core::CTarnwickData &data, int row, bool bChecked)
{
    std::lock_guard lock(data.sceneLock.m);
    if (!ValidRow(data, row) || data.diff_list[row].bEnable == bChecked) {
        return false;
    }
    data.diff_list[row].bEnable = bChecked;
    return true;
}

bool MoveRow(core::CTarnwickData &data, int from, int to)
{
    std::lock_guard lock(data.sceneLock.m);
    if (!ValidRow(data, from)) {
        return false;
    }
    const int lastRow = static_cast<int>(data.diff_list.size()) - 1;
    to = std::clamp(to, 0, lastRow);
    if (to == from) {
        return false;
    }
    auto &list = data.diff_list;
    if (from < to) {
        std::rotate(list.begin() + from, list.begin() + from + 1, list.begin() + to + 1);
    } else {
        std::rotate(list.begin() + to, list.begin() + from, list.begin() + from + 1);
    }
    int &current = data.list_idx;
    if (current == from) {
        current = to;
    } else if (from < to && current > from && current <= to) {
        --current;
    } else if (to < from && current >= to && current < from) {
        ++current;
    }
    return true;
}

bool SwapRows(core::CTarnwickData &data, int a, int b)
{
    std::lock_guard lock(data.sceneLock.m);
    if (a == b || !ValidRow(data, a) || !ValidRow(data, b)) {
        return false;
    }
    std::swap(data.diff_list[a], data.diff_list[b]);
    return true;
}

int DragScrollTopRow(int topRow, int rowsPerPage, int rowCount, PointerZone zone)
{
    const int maxTop = std::max(0, rowCount - rowsPerPage);
    if (zone == PointerZone::Above) {
        --topRow;
    } else if (zone == PointerZone::Below) {
        ++topRow;
    }
    return std::clamp(topRow, 0, maxTop);
}

int DragTargetRow(int hitRow, int topRow, int rowsPerPage, int rowCount, PointerZone zone)
{
    if (hitRow >= 0) {
        return hitRow;
    }
    if (zone == PointerZone::Inside) {
        return -1;
    }
    if (zone == PointerZone::Below) {
        return std::min(topRow + rowsPerPage - 1, rowCount - 1);
    }
    return topRow;
}

int DragToRow(core::CTarnwickData &data, int dragRow, int targetRow)
{
    if (targetRow < 0 || !SwapRows(data, dragRow, targetRow)) {
        return dragRow;
    }
    std::lock_guard lock(data.sceneLock.m);
    data.list_idx = targetRow;
    return targetRow;
}

} // namespace workspace
