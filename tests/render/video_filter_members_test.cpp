// Tests of the engine's filter chain and caption file members: which ASS file each case writes,
// its bytes, and the chain that reads it.
#include "engine/tarnwick_process.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "core/tarnwick_data.h"
#include "render/captions.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

constexpr const char *kNeutral =
    "lut=y='pow(clip(((val+0.000-128)*1.000+128)/255\\,0\\,1),1/1.000)*255',hue=s=1.000,";

// An engine on a project of two 100-frame scenes of a 1920 by 1080 recording at 25 fps, whose
// output folder is a fresh temporary folder. No caption is in force.
struct CaptionRig
{
    CaptionRig()
    {
        engine.pData = &data;
        data.input_file = "/videos/clip.mov";
        data.output_folder = dir.path() + "/";
        data.output_name = "clip.mp4";
        data.viCurrent.fps = 25.0;
        data.viCurrent.width = 1920;
        data.viCurrent.height = 1080;
        data.viCurrent.frame_num = 100;
        data.capWatermark.caption.clear();
        data.diff_list.emplace_back(0, 99, "");
        data.diff_list.emplace_back(200, 299, "");
        data.list_idx = 0;
    }

    // The text the file of request must hold for a w by h frame.
    std::string Expected(const render::CaptionRequest &request, int w, int h)
    {
        return render::BuildCaptionText(data, request, w, h);
    }

    testsupport::TempDir dir;
    core::CTarnwickData data;
    engine::CTarnwickProcess engine;
};

render::CaptionRequest Request(bool bAll, bool bPreview, int nScene = -1)
{
    render::CaptionRequest request;
    request.bAll = bAll;
    request.bPreview = bPreview;
    request.nScene = nScene;
    return request;
}

TEST(VideoFilterMembersTest, NoCaptionInForceWritesNoFileAndNoSubtitlesPiece)
{
    CaptionRig rig;
    rig.engine.nProcessID = engine::kJobFinalOutput;
    EXPECT_EQ(rig.engine.BuildVideoFilter(true, false, false, false, -1), kNeutral);
    EXPECT_EQ(rig.engine.BuildCaptionFilter(true, 1920, 1080, false, -1), "");
    EXPECT_TRUE(fs::is_empty(rig.dir.path()));
}

TEST(VideoFilterMembersTest, FinalOutputWritesTheWholeFilmFileInUtf8)
{
    CaptionRig rig;
    rig.data.capTitle.caption = "Zürich — 東京";
    for (int nJob : {engine::kJobFinalOutput, engine::kJobExtractAndOutput}) {
        rig.engine.nProcessID = nJob;
        std::string path = rig.dir.file("clip_all.ass");
        EXPECT_EQ(rig.engine.BuildVideoFilter(true, false, false, false, -1),
                  std::string(kNeutral) + "subtitles='" + path + "',");
        std::string expected = rig.Expected(Request(true, false), 1920, 1080);
        EXPECT_EQ(expected.substr(0, 15), "[Script Info]\r\n"); // no byte order mark
        EXPECT_EQ(testsupport::ReadFile(path), expected);
        fs::remove(path);
    }
    EXPECT_TRUE(fs::is_empty(rig.dir.path()));
}

TEST(VideoFilterMembersTest, ScenePlaybackWritesTheSceneFile)
{
    CaptionRig rig;
    rig.engine.nProcessID = engine::kJobPlayScenes;
    rig.data.diff_list[1].SetCaption(0, 1, "second");
    std::string path = rig.dir.file("clip_seg.ass");
    EXPECT_EQ(rig.engine.BuildVideoFilter(true, true, false, false, 1),
              std::string(kNeutral) + "subtitles='" + path +
                  "',scale=iw*1.000000:ih,setsar=1,scale=480:270,pad=480:480:0:105:color=#505050");
    EXPECT_EQ(testsupport::ReadFile(path), rig.Expected(Request(false, false, 1), 1920, 1080));
}

TEST(VideoFilterMembersTest, PreviewWritesTheFrameFileAtThePreviewFrame)
{
    CaptionRig rig;
    rig.engine.nProcessID = engine::kJobFinalOutput; // a still picture is one frame all the same
    rig.engine.nPreviewFrame = 40;
    rig.data.diff_list[0].SetCaption(1, 1, "first"); // frames 25 to 50
    std::string path = rig.dir.file("clip_one.ass");
    EXPECT_EQ(rig.engine.BuildVideoFilter(true, true, true, false, -1),
              std::string(kNeutral) + "subtitles='" + path +
                  "',scale=iw*1.000000:ih,setsar=1,scale=480:270,pad=480:480:0:105:color=#505050");
    render::CaptionRequest request = Request(true, true);
    request.nPreviewFrame = 40;
    std::string expected = rig.Expected(request, 1920, 1080);
    EXPECT_NE(expected.find("Dialogue: 0,00:00:00.00,00:00:01.00,Scene001,,0,0,0,,first\r\n"),
              std::string::npos);
    EXPECT_EQ(testsupport::ReadFile(path), expected);
}

TEST(VideoFilterMembersTest, RotatedPreviewGivesTheCaptionsTheTurnedFrame)
{
    CaptionRig rig;
    rig.data.viCurrent.rotation = 90;
    rig.data.capTitle.caption = "upright";
    rig.engine.BuildVideoFilter(true, true, true, true, -1);
    std::string text = testsupport::ReadFile(rig.dir.file("clip_one.ass"));
    EXPECT_EQ(text, rig.Expected(Request(false, true), 1080, 1920));
    EXPECT_NE(text.find("PlayResX: 1080\r\nPlayResY: 1920\r\n"), std::string::npos);
}

TEST(VideoFilterMembersTest, TitleKeepsItsDurationAcrossRenders)
{
    CaptionRig rig;
    rig.engine.nProcessID = engine::kJobFinalOutput;
    rig.data.capTitle.caption = "title";
    rig.data.capTitle.capTime_first = 1.0;
    rig.engine.BuildVideoFilter(true, false, false, false, -1);
    std::string first = testsupport::ReadFile(rig.dir.file("clip_all.ass"));
    EXPECT_EQ(rig.data.capTitle.capTime_second, 3.0);
    rig.engine.BuildVideoFilter(true, false, false, false, -1);
    EXPECT_EQ(testsupport::ReadFile(rig.dir.file("clip_all.ass")), first);
    EXPECT_NE(first.find("Dialogue: 1,00:00:01.00,00:00:04.00,Title,,0,0,0,,title\r\n"),
              std::string::npos);
}

TEST(VideoFilterMembersTest, MergeTabEmptiesTheWatermarkAndNamesTheFileAfterTheOutput)
{
    CaptionRig rig;
    rig.engine.bMergeMode = 1;
    rig.engine.nProcessID = engine::kJobFinalOutput;
    rig.data.output_name = "joined.mp4";
    rig.data.capWatermark = core::DefaultWatermark();
    rig.data.capTitle.caption = "joined";
    std::string filter = rig.engine.BuildCaptionFilter(true, 1920, 1080, false, -1);
    std::string path = rig.dir.file("joined_all.ass");
    EXPECT_EQ(filter, "subtitles='" + path + "'");
    EXPECT_EQ(rig.data.capWatermark.caption, "");
    render::CaptionRequest request = Request(true, false);
    request.bMergeMode = true;
    EXPECT_EQ(testsupport::ReadFile(path), rig.Expected(request, 1920, 1080));
}

TEST(VideoFilterMembersTest, UnwritableFolderStillGivesTheFilterText)
{
    CaptionRig rig;
    rig.data.output_folder = rig.dir.file("missing") + "/";
    rig.data.capTitle.caption = "title";
    EXPECT_EQ(rig.engine.BuildCaptionFilter(false, 1920, 1080, true, -1),
              "subtitles='" + rig.dir.file("missing") + "/clip_one.ass'");
    EXPECT_TRUE(fs::is_empty(rig.dir.path()));
}

TEST(VideoFilterMembersTest, ChainWithoutVfWritesNoCaptionFile)
{
    CaptionRig rig;
    rig.data.capTitle.caption = "title";
    EXPECT_EQ(rig.engine.BuildVideoFilter(false, false, false, false, -1), "");
    EXPECT_TRUE(fs::is_empty(rig.dir.path()));
}

} // namespace

namespace {

TEST(VideoFilterMembersTest, StillsAndPlaybackApplyThePictureChainOnceTheRenderJobsAreInstalled)
{
    CaptionRig rig;
    EXPECT_EQ(rig.engine.PictureChain(rig.engine, true, true, true, false, -1), "null");
    rig.engine.InstallRenderJobs();
    EXPECT_EQ(rig.engine.PictureChain(rig.engine, true, true, true, false, -1),
              rig.engine.BuildVideoFilter(true, true, true, false, -1));
    EXPECT_NE(rig.engine.PictureChain(rig.engine, true, true, true, false, -1).find("lut="),
              std::string::npos);
}

} // namespace
