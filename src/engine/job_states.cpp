// The stage and state names of the status bar.
#include "engine/job_states.h"

#include "core/language.h"

namespace engine {
namespace {

constexpr const char *kStageNamesEnglish[kStageCount] = {
    "",
    "Scene Extract",
    "Segment Output",
    "Effects",
    "Scene Merge",
    "Final Merge",
    "Input Preview",
    "Output Preview",
    "Scene Preview",
    "Precheck",
    "Frame Rate Analysis",
    "Deinterlacing",
    "Change MP4",
    "File Analysis",
    "Video Analysis",
};

constexpr const char *kStageNamesJapanese[kStageCount] = {
    "",
    "シーン抽出",
    "セグメント出力",
    "映像効果設定",
    "シーン結合",
    "最終結合",
    "入力プレビュー",
    "出力プレビュー",
    "シーンプレビュー",
    "結合前検査",
    "フレームレート解析",
    "インターレース解除",
    "MP4変換",
    "ファイル解析",
    "ビデオ解析",
};

constexpr const char *kStateNamesEnglish[kStateCount] = {
    "",
    "Processing",
    "Playing",
    "Failed",
    "Done",
    "Stopped",
    "Waiting",
};

constexpr const char *kStateNamesJapanese[kStateCount] = {
    "",
    "処理中",
    "再生中",
    "失敗",
    "完了",
    "停止",
    "完了待ち",
};

} // namespace

std::string StageName(int stage, bool japanese)
{
    if (stage < 0 || stage >= kStageCount) {
        return {};
    }
    return japanese ? kStageNamesJapanese[stage] : kStageNamesEnglish[stage];
}

std::string StateName(int state, bool japanese)
{
    if (state < 0 || state >= kStateCount) {
        return {};
    }
    return japanese ? kStateNamesJapanese[state] : kStateNamesEnglish[state];
}

std::string StageName(int stage)
{
    return StageName(stage, core::IsJapanese());
}

std::string StateName(int state)
{
    return StateName(state, core::IsJapanese());
}

int FindStageName(const std::string &name)
{
    for (int i = 0; i < kStageCount; ++i) {
        if (name == kStageNamesEnglish[i] || name == kStageNamesJapanese[i]) {
            return i;
        }
    }
    return -1;
}

int FindStateName(const std::string &name)
{
    for (int i = 0; i < kStateCount; ++i) {
        if (name == kStateNamesEnglish[i] || name == kStateNamesJapanese[i]) {
            return i;
        }
    }
    return -1;
}

std::string TranslateStagePane(const std::string &text)
{
    size_t split = text.find(" (");
    std::string front = text.substr(0, split);
    std::string rest = split == std::string::npos ? "" : text.substr(split);
    int row = FindStageName(front);
    return (row < 0 ? std::string() : StageName(row)) + rest;
}

std::string TranslateStatePane(const std::string &text)
{
    int row = FindStateName(text);
    return row < 0 ? std::string() : StateName(row);
}

} // namespace engine
