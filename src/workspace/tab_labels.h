// The fixed texts of the host and the tabs by string id: control labels, list column heads,
// caption positions, and the merge tab's picture size and frame rate choices. A view takes
// every text it shows from here (or from a model's state), so that a change of language
// relabels it and no view formats a text of its own.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "core/language.h"
#include "workspace/tab_view.h"

namespace workspace {

// A control's label: the text on a button or check box, or the caption beside a box or list.
// Labels that follow state (back and forward step, automatic captions, caption target) are
// not here: ControlStates names them.
struct ControlLabel
{
    Control control;
    int nStringId;
};

const std::vector<ControlLabel> &SceneTabLabels();
const std::vector<ControlLabel> &MergeTabLabels();
// The column heads of the scene list (ten) and of the merge list (nine), in column order.
const std::vector<int> &SceneListColumnIds();
const std::vector<int> &MergeListColumnIds();
// The caption position list: "Off" and the nine positions, in list order (index = position).
const std::vector<int> &CaptionPositionIds();
// The merge tab's choices, in list order: sizes as "%d x %d", rates as "%.02f".
std::vector<std::string> MergeSizeChoices();
std::vector<std::string> MergeRateChoices();

// The texts of one tab in the current language.
struct TabTexts
{
    std::vector<std::pair<Control, std::string>> labels;
    std::vector<std::string> columnHeads;
    std::vector<std::string> captionPositions; // scene tab only
    std::vector<std::string> sizeChoices;      // merge tab only
    std::vector<std::string> rateChoices;      // merge tab only
};

// nTab: 0 the scene tab, 1 the merge tab.
TabTexts TabTextsOf(int nTab);

// The texts of the host: the main menu, the tab buttons, the status bar's pane names and both
// tabs, in the current language.
struct HostTexts
{
    std::string language;             // the language tag now in force
    bool bJapanese = false;           // the tag is exactly "ja-JP"
    std::vector<core::MenuItem> menu; // menu 128 of the string table
    std::string sceneTabButton;       // string 3152 (button 1104)
    std::string mergeTabButton;       // string 3153 (button 1105)
    TabTexts scene;
    TabTexts merge;
};

HostTexts CurrentHostTexts();

} // namespace workspace
