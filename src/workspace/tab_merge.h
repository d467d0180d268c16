// The merge workspace as a model of state and commands: any number of films brought to one
// picture size and frame rate and joined. No project file belongs to it.
#pragma once

#include <string>
#include <vector>

#include "workspace/scene_list.h"
#include "workspace/tab_base.h"

namespace workspace {

// The picture size and frame rate chosen when the tab starts: 1920 x 1080 at 59.94.
inline constexpr int kDefaultMergeSizeIndex = 3;
inline constexpr int kDefaultMergeRateIndex = 3;

class CTarnwickTabMerge : public CTarnwickTab
{
public:
    CTarnwickTabMerge(TabView &view, engine::MessageLoop &loop, engine::EngineHost &host);
    ~CTarnwickTabMerge() override;

    // The tab's start: an empty list, both choices at their defaults, the queue thread started.
    void Init();
    // The main frame's new-project command while this tab is in front.
    void NewProject();

    // Files dropped on the tab, in drop order; a file the probe refuses is left out.
    void DropFiles(const std::vector<std::string> &paths);

    void Analysis();
    void Convert();
    void Merge();
    void ConvertAndMerge();
    void ResetList();
    void ResetSettings();
    void SetSizeIndex(int index);
    void SetRateIndex(int index);
    void SetTransition(bool bOn);
    void ClearOutputFolder();
    void OutputFolderConfirmed(const std::string &text);
    void OutputNameConfirmed(const std::string &text);
    void BrowseOutputFolder();
    void ShowInput();
    void ShowOutput();
    void SetSceneLoop(bool bOn) { m_Data.play_scene_loop = bOn ? 1 : 0; }
    void SetPlayLoop(bool bOn) { m_Data.play_loop = bOn ? 1 : 0; }
    // Empties the list (bEmptyList) or not, and deletes the segments of the chosen target.
    void ClearSegments(bool bEmptyList);

    // ---- The list ----
    void SelectRow(int nRow, int nColumn) override;
    void SetRowChecked(int nRow, bool bChecked);
    ContextMenu ContextMenuAt(int nRow, int nColumn) const;
    void DeleteRow();
    void DuplicateRow();

    int SizeIndex() const { return m_nSizeIndex; }
    int RateIndex() const { return m_nRateIndex; }
    // "%s*_seg_%dx%d_%.02f.mp4" of the output folder and the chosen target.
    std::string SegmentPattern() const;
    // The segment of a source file at the chosen target.
    std::string SegmentOf(const std::string &source) const;
    std::string InputSummary() const;

    void OnInputAnalysed(bool bKeepSelection) override;
    FieldTexts Fields() const override;
    std::vector<ListRow> ListRows() const override;

protected:
    ControlStates ComputeControls(bool bEnable) const override;
    void OnScenesChanged(const engine::JobMessage &msg) override;
    void OnRenderJobEnd() override {}
    void RefreshInputSummary() override;

private:
    void ApplyChoices();
    void ChangeOutputFolder(const std::string &oldFolder, const std::string &newFolder);

    int m_nSizeIndex = kDefaultMergeSizeIndex;
    int m_nRateIndex = kDefaultMergeRateIndex;
};

} // namespace workspace
