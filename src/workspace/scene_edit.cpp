// One edit of a project's scene list, through the list commands and the caption editor.
#include "workspace/scene_edit.h"

#include <filesystem>
#include <mutex>
#include <system_error>

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

// What a list command asks of its caller: stale files deleted, the default scene in place of
// an emptied list.
void Settle(core::CTarnwickData &data, const ListChange &change)
{
    for (const std::string &file : change.filesToDelete) {
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
    }
    if (change.bResetScenes) {
        std::error_code ignored;
        std::string file;
        {
            std::lock_guard<std::mutex> lock(data.sceneLock.m);
            file = data.diff_list.empty() ? "" : data.diff_list.front().fileName;
        }
        std::filesystem::remove(file, ignored);
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
    if (!CanSplit(data, row)) {
        return core::StrPrintf("scene %d has %d frames, too few to split: each part needs at "
                               "least %d",
                               row + 1,
                               scene.framNo_second - scene.framNo_first + 1,
                               MinSceneFrames(data));
    }
    if (frame <= scene.framNo_first || frame > scene.framNo_second) {
        return core::StrPrintf("scene %d holds frames %d to %d: the later part must begin at "
                               "frame %d to %d",
                               row + 1,
                               scene.framNo_first,
                               scene.framNo_second,
                               scene.framNo_first + 1,
                               scene.framNo_second);
    }
    {
        std::lock_guard<std::mutex> lock(data.sceneLock.m);
        data.list_idx = row;
    }
    Settle(data, SplitRow(data, row, frame - scene.framNo_first));
    return "";
}

} // namespace

std::string ApplySceneEdit(core::CTarnwickData &data, const SceneEdit &edit)
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

} // namespace workspace
