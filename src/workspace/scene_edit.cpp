// Edits of a project's scene list, through the list commands and the caption editor: all made on
// a copy, taken over together, the segments they made stale deleted last.
#include "workspace/scene_edit.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include "core/helpers.h"
#include "workspace/caption_edit.h"
#include "workspace/scene_defaults.h"
#include "workspace/scene_list.h"

namespace workspace {
namespace {

int SceneCount(const core::CTarnwickData &data)
{
    std::lock_guard<std::mutex> lock(data.sceneLock.m);
    return static_cast<int>(data.diff_list.size());
}

// What a list command asks of its caller on the copy: the default scene in place of an emptied
// list. Files are left alone until every edit has been made.
void Settle(core::CTarnwickData &data, const ListChange &change)
{
    if (change.bResetScenes) {
        MakeDefaultScene(data);
    }
}

std::string EditCaption(core::CTarnwickData &data, int target, int row, const std::string &text)
{
    CaptionEditor editor;
    if (target == kTargetScene) {
        std::lock_guard<std::mutex> lock(data.sceneLock.m);
        data.list_idx = row;
    }
    while (editor.m_nCaptionTarget != target) {
        editor.NextTarget(data);
    }
    editor.LoadCaptionFields(data);
    editor.SetText(data, text);
    return "";
}

std::string SplitScene(core::CTarnwickData &data, int row, int frame)
{
    core::SceneEntry scene;
    {
        std::lock_guard<std::mutex> lock(data.sceneLock.m);
        scene = data.diff_list[static_cast<size_t>(row)];
    }
    const std::optional<SplitFrames> range = SplitRange(data, row);
    if (!range) {
        return core::StrPrintf("scene %d has %d frames, too few to split: each part needs at "
                               "least %d",
                               row + 1,
                               scene.framNo_second - scene.framNo_first + 1,
                               std::max(1, MinSceneFrames(data)));
    }
    if (frame < range->nFirst || frame > range->nLast) {
        const std::string where =
            range->nFirst == range->nLast
                ? core::StrPrintf("at frame %d", range->nFirst)
                : core::StrPrintf("at frame %d to %d", range->nFirst, range->nLast);
        return core::StrPrintf("scene %d holds frames %d to %d: the later part must begin %s, so "
                               "that each part keeps at least %d frames",
                               row + 1,
                               scene.framNo_first,
                               scene.framNo_second,
                               where.c_str(),
                               range->nFirst - scene.framNo_first);
    }
    {
        std::lock_guard<std::mutex> lock(data.sceneLock.m);
        data.list_idx = row;
    }
    Settle(data, SplitRowAt(data, row, frame));
    return "";
}

// Checks and makes one edit on data (the copy).
std::string ApplyOne(core::CTarnwickData &data, const SceneEdit &edit)
{
    using Kind = SceneEdit::Kind;
    if (edit.kind == Kind::Title) {
        return EditCaption(data, kTargetTitle, -1, edit.text);
    }
    if (edit.kind == Kind::Watermark) {
        return EditCaption(data, kTargetWatermark, -1, edit.text);
    }
    const int count = SceneCount(data);
    if (edit.nScene < 1 || edit.nScene > count) {
        return core::StrPrintf("scene %d does not exist: the project has %d scene%s",
                               edit.nScene,
                               count,
                               count == 1 ? "" : "s");
    }
    const int row = edit.nScene - 1;
    switch (edit.kind) {
    case Kind::Tick:
    case Kind::Untick:
        SetChecked(data, row, edit.kind == Kind::Tick);
        return "";
    case Kind::Split:
        return SplitScene(data, row, edit.nValue);
    case Kind::Delete:
        Settle(data, DeleteRow(data, row, ListKind::Scene));
        return "";
    case Kind::Duplicate:
        Settle(data, DuplicateRow(data, row));
        return "";
    case Kind::Move:
        MoveRow(data, row, edit.nValue - 1); // beyond the end: to the last place
        return "";
    default:
        return EditCaption(data, kTargetScene, row, edit.text);
    }
}

std::set<std::string> SegmentNames(const std::vector<core::SceneEntry> &list)
{
    std::set<std::string> names;
    for (const core::SceneEntry &entry : list) {
        if (!entry.fileName.empty()) {
            names.insert(entry.fileName);
        }
    }
    return names;
}

} // namespace

std::string ApplySceneEdits(core::CTarnwickData &data, const std::vector<SceneEdit> &edits)
{
    std::unique_lock<std::mutex> lock(data.sceneLock.m);
    core::CTarnwickData scratch(data);
    const std::set<std::string> before = SegmentNames(data.diff_list);
    lock.unlock();
    for (const SceneEdit &edit : edits) {
        std::string problem = ApplyOne(scratch, edit);
        if (!problem.empty()) {
            return problem;
        }
    }
    const std::set<std::string> after = SegmentNames(scratch.diff_list);
    lock.lock();
    data.diff_list = std::move(scratch.diff_list);
    data.list_idx = scratch.list_idx;
    data.viCurrent = scratch.viCurrent;
    data.capTitle = scratch.capTitle;
    data.capWatermark = scratch.capWatermark;
    lock.unlock();
    for (const std::string &file : before) {
        if (after.count(file) == 0) {
            std::error_code ignored;
            std::filesystem::remove(file, ignored);
        }
    }
    return "";
}

std::string ApplySceneEdit(core::CTarnwickData &data, const SceneEdit &edit)
{
    return ApplySceneEdits(data, {edit});
}

} // namespace workspace
