// Tests of the stage and state names of the status bar.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/language.h"
#include "engine/job_states.h"

namespace {

TEST(StageName, EnglishTable)
{
    const std::vector<std::string> expected = {
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
    ASSERT_EQ(expected.size(), static_cast<size_t>(engine::kStageCount));
    core::SetLanguage("en-US");
    for (int i = 0; i < engine::kStageCount; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(engine::StageName(i), expected[i]);
        EXPECT_EQ(engine::StageName(i, false), expected[i]);
    }
}

TEST(StageName, JapaneseTable)
{
    const std::vector<std::string> expected = {
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
    ASSERT_EQ(expected.size(), static_cast<size_t>(engine::kStageCount));
    core::SetLanguage("ja-JP");
    for (int i = 0; i < engine::kStageCount; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(engine::StageName(i), expected[i]);
        EXPECT_EQ(engine::StageName(i, true), expected[i]);
    }
}

TEST(StageName, NamedIndexes)
{
    EXPECT_EQ(engine::StageName(engine::kStageSceneExtract, false), "Scene Extract");
    EXPECT_EQ(engine::StageName(engine::kStageSegmentOutput, false), "Segment Output");
    EXPECT_EQ(engine::StageName(engine::kStagePrecheck, false), "Precheck");
    EXPECT_EQ(engine::StageName(engine::kStageFrameRateAnalysis, false), "Frame Rate Analysis");
    EXPECT_EQ(engine::StageName(engine::kStageChangeMp4, false), "Change MP4");
    EXPECT_EQ(engine::StageName(engine::kStageVideoAnalysis, false), "Video Analysis");
}

TEST(StageName, OutOfRangeIsEmpty)
{
    core::SetLanguage("en-US");
    EXPECT_EQ(engine::StageName(-1), "");
    EXPECT_EQ(engine::StageName(15), "");
    EXPECT_EQ(engine::StageName(15, true), "");
}

TEST(StateName, EnglishTable)
{
    const std::vector<std::string> expected = {
        "",
        "Processing",
        "Playing",
        "Failed",
        "Done",
        "Stopped",
        "Waiting",
    };
    ASSERT_EQ(expected.size(), static_cast<size_t>(engine::kStateCount));
    core::SetLanguage("de-DE");
    for (int i = 0; i < engine::kStateCount; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(engine::StateName(i), expected[i]);
    }
    EXPECT_EQ(engine::StateName(engine::kStateWaiting), "Waiting");
}

TEST(StateName, JapaneseTable)
{
    const std::vector<std::string> expected = {
        "",
        "処理中",
        "再生中",
        "失敗",
        "完了",
        "停止",
        "完了待ち",
    };
    ASSERT_EQ(expected.size(), static_cast<size_t>(engine::kStateCount));
    core::SetLanguage("ja-JP");
    for (int i = 0; i < engine::kStateCount; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(engine::StateName(i), expected[i]);
    }
    EXPECT_EQ(engine::StateName(engine::kStateWaiting), "完了待ち");
}

TEST(StateName, OutOfRangeIsEmpty)
{
    core::SetLanguage("ja-JP");
    EXPECT_EQ(engine::StateName(-1), "");
    EXPECT_EQ(engine::StateName(7), "");
}

TEST(StatusPanes, StagePaneTranslatedKeepingRemainder)
{
    core::SetLanguage("ja-JP");
    EXPECT_EQ(engine::TranslateStagePane("Segment Output (003)"), "セグメント出力 (003)");
    EXPECT_EQ(engine::TranslateStagePane("Scene Extract"), "シーン抽出");
    core::SetLanguage("en-US");
    EXPECT_EQ(engine::TranslateStagePane("セグメント出力 (012)"), "Segment Output (012)");
    EXPECT_EQ(engine::TranslateStagePane("Segment Output (003)"), "Segment Output (003)");
    EXPECT_EQ(engine::TranslateStagePane("Something else (1)"), " (1)");
    EXPECT_EQ(engine::TranslateStagePane(""), "");
}

TEST(StatusPanes, StatePaneTranslatedWhole)
{
    core::SetLanguage("en-US");
    EXPECT_EQ(engine::TranslateStatePane("完了待ち"), "Waiting");
    EXPECT_EQ(engine::TranslateStatePane("ExitCode(1)"), "");
    core::SetLanguage("ja-JP");
    EXPECT_EQ(engine::TranslateStatePane("Stopped"), "停止");
    EXPECT_EQ(engine::FindStateName("Done"), engine::kStateDone);
    EXPECT_EQ(engine::FindStageName("ビデオ解析"), engine::kStageVideoAnalysis);
    EXPECT_EQ(engine::FindStageName("Nothing"), -1);
}

} // namespace
