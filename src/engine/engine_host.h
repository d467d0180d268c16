// The engine's view of the tabs it reports to, and of the host that says which tab is current.
#pragma once

#include "engine/job_messages.h"

namespace engine {

// A point on the screen, in pixels from its top-left corner.
struct ScreenPoint
{
    int left = 0;
    int top = 0;
};

// A tab as the engine sees it. The engine never keeps "its" tab: it asks the host for the
// current one each time it reports (EngineHost::CurrentTab). Every report of a worker reaches
// the tab as a job message; the few calls below are questions. Operations named "worker" run
// on a job's worker thread while the user-interface thread runs on, so an implementation
// answers them without touching what its user-interface thread changes unguarded.
class EngineTab
{
public:
    virtual ~EngineTab() = default;

    // Where this tab's job messages go. The sink lives as long as the tab.
    virtual JobMessageSink &Sink() = 0;
    // Worker: the tab's default-scene routine, called when a scan leaves diff_list empty.
    virtual void MakeDefaultScene() = 0;
    // Analysis thread, when the input analysis has read the video and its frame times: the
    // tab's list is made to fit (bKeepSelection: a loaded project keeps its list, list_idx
    // clamped; otherwise the default scene). What the screen needs follows as messages.
    virtual void OnInputAnalysed(bool bKeepSelection) = 0;
    // Worker: the user is dragging the position bar; playback then posts no positions.
    virtual bool IsPositionDrag() const = 0;
    // User-interface thread, from CancelProcess before a playback job is told to stop: keep
    // the player's last picture in the pane.
    virtual void CaptureFfplayWindow() = 0;
    // Worker: where the picture pane's top-left corner stands on the screen, so that the player
    // opens right over it.
    virtual ScreenPoint PreviewPaneOrigin() const = 0;
};

// The host dialog as the engine sees it: the rule that picks the tab that gets a report.
class EngineHost
{
public:
    virtual ~EngineHost() = default;

    // The tab that is current at the moment of the call (scene tab for the active-tab flag
    // 0, the merge tab otherwise). Any thread; never null once the host is built.
    virtual EngineTab *CurrentTab() = 0;
};

} // namespace engine
