// Which controls of a tab are available in which state: one value computed from the facts below.
#pragma once

#include "workspace/tab_view.h"

namespace workspace {

// What the availability rules look at.
struct ControlFacts
{
    bool bEnable = true;        // false right after a job was started
    int nProcessID = 0;         // the running job, 0 for none
    bool bInputFile = false;    // input_file is not empty
    bool bOutputFolder = false; // output_folder is not empty
    bool bOutputName = false;   // output_name is not empty
    bool bListEmpty = true;
    bool bInputExists = false;  // the input file exists
    bool bOutputExists = false; // the joined output path exists
    bool bFolderExists = false; // the output folder exists
    bool bOutputOnShow = false; // the output file is what the picture pane shows
    bool bAnyCaption = false;   // a scene has a caption text
    int nCaptionTarget = 0;
    // viCurrent's picture, for the cinema-scope rule.
    int width = 0;
    int height = 0;
    int rotation = 0;
};

// Width greater than height at rotation 0, less at 90 or -90, and false at any other rotation.
bool IsLandscape(int width, int height, int rotation);

ControlStates SceneTabControls(const ControlFacts &facts);
ControlStates MergeTabControls(const ControlFacts &facts);

} // namespace workspace
