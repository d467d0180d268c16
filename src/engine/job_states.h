// The stages and states of a job as the status bar names them, in English and Japanese.
#pragma once

#include <string>

namespace engine {

// Indexes of the state words (first word of WM_APP_JOB_STATE).
inline constexpr int kStateNone = 0;
inline constexpr int kStateProcessing = 1;
inline constexpr int kStatePlaying = 2;
inline constexpr int kStateFailed = 3;
inline constexpr int kStateDone = 4;
inline constexpr int kStateStopped = 5;
inline constexpr int kStateWaiting = 6;
inline constexpr int kStateCount = 7;

// Indexes of the stage names (text of WM_APP_STAGE_BEGIN).
inline constexpr int kStageNone = 0;
inline constexpr int kStageSceneExtract = 1;
inline constexpr int kStageSegmentOutput = 2;
inline constexpr int kStageEffects = 3;
inline constexpr int kStageSceneMerge = 4;
inline constexpr int kStageFinalMerge = 5;
inline constexpr int kStageInputPreview = 6;
inline constexpr int kStageOutputPreview = 7;
inline constexpr int kStageScenePreview = 8;
inline constexpr int kStagePrecheck = 9;
inline constexpr int kStageFrameRateAnalysis = 10;
inline constexpr int kStageDeinterlacing = 11;
inline constexpr int kStageChangeMp4 = 12;
inline constexpr int kStageFileAnalysis = 13;
inline constexpr int kStageVideoAnalysis = 14;
inline constexpr int kStageCount = 15;

// Stage and state names in the current language (IsJapanese()); "" out of range.
std::string StageName(int stage);
std::string StateName(int state);
// The same in the language given.
std::string StageName(int stage, bool japanese);
std::string StateName(int state, bool japanese);
// Row of a name in either language's table; -1 when not found. "" is row 0.
int FindStageName(const std::string &name);
int FindStateName(const std::string &name);
// Status-bar texts after a language change. The stage pane is split at the first " (": the front
// is replaced by the name of the same row in the current language (empty when it is no stage
// name) and the remainder is kept. The state pane is translated as a whole.
std::string TranslateStagePane(const std::string &text);
std::string TranslateStatePane(const std::string &text);

} // namespace engine
