// Caption editing of the scene tab: which caption the boxes edit (scene, title, watermark), the
// bounds of its two times, the font, and the automatic fill.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/tarnwick_data.h"

namespace workspace {

// The frame of title and watermark times, in seconds: ten hours.
inline constexpr double kTitleFrameSeconds = 36000.0;
// One step of the time spin buttons, and the shortest caption.
inline constexpr double kCaptionTimeStep = 0.01;

// Edit targets, in the order of the target button.
inline constexpr int kTargetScene = 0;
inline constexpr int kTargetTitle = 1;
inline constexpr int kTargetWatermark = 2;

// Text with leading and trailing white space removed.
std::string TrimText(const std::string &text);

// Length of a scene in seconds at viCurrent.fps; 0 when the rate is not positive.
double SceneSeconds(const core::CTarnwickData &data, const core::SceneEntry &entry);

// Keeps a caption inside a scene of sceneSeconds (taken in hundredths): the start within
// 0 .. D - 0.01, the length within 0.01 .. D, each on its own: the two are not compared, so a
// start plus length beyond the end may stay. True when a time changed.
bool ClampCaptionTimes(core::CapParam &cap, double sceneSeconds);

// What the font chooser shows and gives back.
struct FontChoice
{
    std::string face;
    int height = 0; // the chooser's height: negative for a character height
    int weight = 400;
    bool bItalic = false;
    bool bUnderline = false;
    bool bStrikeOut = false;
    int charSet = 0;
    uint32_t colour = 0;
};

// What the automatic caption command did.
enum class AutoCaptionOutcome {
    Nothing,           // the list is empty
    Filled,            // no scene had a caption: every scene, the title and watermark got one
    NeedsConfirmation, // a scene has a caption: nothing done until the user confirms emptying
    Emptied            // confirmed: every caption text emptied
};

// The editing model of the caption boxes. Every command returns whether it changed the project;
// on true the tab rewrites the caption columns, marks the picture changed and saves. Locking:
// the commands take data.sceneLock themselves while they touch diff_list; the caller must not
// hold it.
class CaptionEditor
{
public:
    // The record the boxes edit: capWatermark, capTitle, or the caption of the entry at list_idx
    // (nothing when the list is empty or list_idx is not a row). A copy.
    std::optional<core::CapParam> GetCaptionTarget(const core::CTarnwickData &data) const;
    // Label string id of the target button: 3018 scene, 1103 title, 1102 watermark.
    int TargetLabelId() const;

    // m_Caption from the target over the defaults of a new caption, and the box texts from it.
    void LoadCaptionFields(const core::CTarnwickData &data);
    // Cycles scene, title, watermark and loads that target. Nothing to save.
    void NextTarget(const core::CTarnwickData &data);
    // Back to the scene caption (a reset of the scenes or of the project).
    void ResetTarget(const core::CTarnwickData &data);

    // The caption text, trimmed; a change only when it differs from the target's text.
    bool SetText(core::CTarnwickData &data, const std::string &text);
    // The start time typed in its box: 0 .. D - 0.01; a length that no longer fits in D is
    // reduced to D - start.
    bool SetStartTime(core::CTarnwickData &data, const std::string &text);
    // The length typed in its box: 0.01 .. D; a start that no longer fits is reduced to
    // D - length.
    bool SetEndTime(core::CTarnwickData &data, const std::string &text);
    // The spin buttons: one step of 0.01 up (direction > 0) or down, kept in hundredths.
    bool StepStart(core::CTarnwickData &data, int direction);
    bool StepEnd(core::CTarnwickData &data, int direction);
    // The position list row (0 .. 9) into cap_pos_type; the whole of m_Caption goes to the
    // target.
    bool SetPosition(core::CTarnwickData &data, int index);
    // What the font chooser opens with, from m_Caption.
    FontChoice FontDialogSeed() const;
    // The chooser's OK: the font into m_Caption, and the whole of m_Caption into the target.
    bool SetFont(core::CTarnwickData &data, const FontChoice &font);

    // Every scene caption, the title and the watermark back to the defaults of a new project,
    // in any case. True when a target exists (the list is not empty, or title or watermark is
    // edited): only then do the boxes reload and the tab saves.
    bool ResetCaptions(core::CTarnwickData &data);
    // Fills when no scene has a caption text; otherwise empties, but only once bConfirmed.
    AutoCaptionOutcome AutoCaptions(core::CTarnwickData &data, bool bConfirmed);
    // After a change of row's length: its caption is kept inside the scene, then the fields
    // are reloaded. True when a time changed.
    bool ClampCaptionToScene(core::CTarnwickData &data, int row);

    int m_nCaptionTarget = kTargetScene;
    core::CapParam m_Caption;
    std::string m_strCaptionText;
    std::string m_strCaptionStart; // "%.02f"
    std::string m_strCaptionEnd;   // "%.02f"

private:
    // The target record inside data, or nullptr. The caller holds data.sceneLock.
    core::CapParam *TargetRecord(core::CTarnwickData &data) const;
    const core::CapParam *TargetRecord(const core::CTarnwickData &data) const;
    // D of the target: the title frame, or the current scene's seconds. The caller holds
    // data.sceneLock.
    double TargetSeconds(const core::CTarnwickData &data) const;
    void LoadFieldsLocked(const core::CTarnwickData &data);
    // Sets the start (bStart) or the length of the target's caption to value, clamped within
    // the target (in hundredths for a spin); the other time shrinks to the room left.
    bool ApplyTime(core::CTarnwickData &data, double value, bool bSpin, bool bStart);
    bool StoreWholeCaption(core::CTarnwickData &data);
};

// True when any scene of the list has a caption text. Takes data.sceneLock.
bool AnySceneCaption(const core::CTarnwickData &data);
// Label string id of the automatic caption button: 3024 when a scene has a caption, else 3109.
int AutoCaptionLabelId(const core::CTarnwickData &data);

} // namespace workspace
