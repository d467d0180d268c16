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
// current one each time it reports (EngineHost::CurrentTab). Operations named "worker" run on
// a job's worker thread while the user-interface thread runs on, so an implementation answers
// them without touching what its user-interface thread changes unguarded.
class EngineTab
{
public:
    virtual ~EngineTab() = default;

    // Where this tab's job messages go. The sink lives as long as the tab.
    virtual JobMessageSink &Sink() = 0;
    // Worker: the tab's default-scene routine, called when a scan leaves diff_list empty.
    virtual void MakeDefaultScene() = 0;
    // Worker: the user is dragging the position bar; playback then posts no positions.
    virtual bool IsPositionDrag() const = 0;
    // User-interface thread, from CancelProcess before a playback job is told to stop: keep
    // the player's last picture in the pane.
    virtual void CaptureFfplayWindow() = 0;
    // The repaint flag of the picture pane: cleared when a playback is stopped, set (worker)
    // when the player has ended.
    virtual void SetPreviewRepaint(bool bRepaint) = 0;
    // Worker: where the picture pane's top-left corner stands on the screen, so that the player
    // opens right over it.
    virtual ScreenPoint PreviewPaneOrigin() const = 0;

    // Queue thread, around a background recut of a scene: true disables the tab's scene list
    // (the tab is busy), false enables it again. Must not wait for the user-interface thread:
    // an implementation hands the change over to it and returns.
    virtual void SetSceneListBusy(bool bBusy) = 0;
    // Queue thread: starts the tab's elapsed-time timer unless one runs; stops it, showing the
    // elapsed time once more. Must not wait for the user-interface thread either.
    virtual void StartElapsedTimer() = 0;
    virtual void StopElapsedTimer() = 0;
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
