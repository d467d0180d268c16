// The host model with the real tools: projects opened from the command line and the recent
// list, stops that waits serve through a window's event pump, exit and tab switch with a job
// running, and a language switch while the tabs show job states.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "core/language.h"
#include "engine/job_states.h"
#include "support/host_rig.h"
#include "support/motion_clips.h"

namespace {

using testsupport::HostRig;
using workspace::HostResult;

std::string SmallClip(const testsupport::TempDir &dir, const std::string &name)
{
    const std::string path = dir.file(name);
    testsupport::MakeClip(path, "testsrc2=size=160x120:rate=25:duration=1");
    return path;
}

// A address that ffprobe connects to and then waits on for ever, since nothing is ever sent:
// a job (not a render job) that runs until it is stopped.
class Endless
{
public:
    Endless()
    {
        m_socket = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr *>(&address), size), 0);
        EXPECT_EQ(listen(m_socket, 4), 0);
        getsockname(m_socket, reinterpret_cast<sockaddr *>(&address), &size);
        m_url = "tcp://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    }
    ~Endless() { close(m_socket); }
    const std::string &Url() const { return m_url; }

private:
    int m_socket = -1;
    std::string m_url;
};

// Opens video on the scene tab with saving on and returns its project file.
std::string MakeProject(workspace::HostModel &host, const std::string &video)
{
    EXPECT_EQ(host.NewProject(), HostResult::Done);
    EXPECT_EQ(host.DropFiles({video}), HostResult::Done);
    EXPECT_EQ(host.Scene().LastJob().nResult, 0);
    return host.Scene().Data().project_file;
}

TEST(HostModel, ACommandLinePathWinsOverTheRememberedProject)
{
    HostRig rig;
    const std::string videoA = SmallClip(rig.dir, "a.mp4");
    const std::string videoB = SmallClip(rig.dir, "b.mp4");
    {
        workspace::HostModel &host = rig.Make();
        host.Start({});
        host.ToggleSaveAutomatically();
        host.ToggleReopenLast();
        MakeProject(host, videoA);
        MakeProject(host, videoB);
        host.Shutdown();
    }
    const std::string projectA = videoA + ".twproj";
    const std::string projectB = videoB + ".twproj";
    ASSERT_EQ(workspace::ReadSettingsRecord(rig.Store())->lastProject, projectB);

    workspace::HostModel &host = rig.Make();
    const workspace::StartReport report = host.Start(workspace::ParseCommandLine({projectA}));
    EXPECT_EQ(report.project, projectA);
    EXPECT_EQ(report.nOpenResult, 0);
    EXPECT_EQ(host.Scene().Data().project_file, projectA);
    EXPECT_EQ(host.Scene().Data().input_file, videoA);
    host.Shutdown();

    // Without a command line the remembered project opens (reopening is on).
    workspace::HostModel &again = rig.Make();
    EXPECT_EQ(again.Start({}).project, projectA) << "the last project of the run before";
}

TEST(HostModel, AVideoOnTheCommandLineIsOpenedAsADroppedOneIs)
{
    HostRig rig;
    const std::string video = SmallClip(rig.dir, "handed.mp4");
    workspace::HostModel &host = rig.Make();
    const workspace::StartReport report = host.Start(workspace::ParseCommandLine({video}));
    EXPECT_EQ(report.project, video);
    EXPECT_EQ(host.Scene().Data().input_file, video);
    EXPECT_EQ(host.Scene().LastJob().nResult, 0);
    EXPECT_TRUE(rig.view.messages.empty());
    EXPECT_TRUE(rig.sceneView.errors.empty());
}

TEST(HostModel, EverySuccessfulOpenPutsTheProjectFirstInTheRecentListOfFive)
{
    HostRig rig;
    workspace::HostModel &host = rig.Make();
    host.Start({});
    host.ToggleSaveAutomatically();
    std::vector<std::string> projects;
    for (int i = 0; i < 6; ++i) {
        projects.push_back(MakeProject(host, SmallClip(rig.dir, "v" + std::to_string(i) + ".mp4")));
    }
    const std::vector<std::string> expected = {
        projects[5], projects[4], projects[3], projects[2], projects[1]};
    EXPECT_EQ(host.RecentProjects(), expected);
    ASSERT_EQ(rig.view.recent.size(), 5u);
    EXPECT_EQ(rig.view.recent[0].path, projects[5]);
    EXPECT_EQ(rig.Store().ReadText("Recent Files", "File1"), projects[5]) << "written at once";
    // Choosing an entry opens it and brings it to the front.
    EXPECT_EQ(host.Command(workspace::kCmdRecentFirst + 3), HostResult::Done);
    EXPECT_EQ(host.Scene().Data().project_file, projects[2]);
    EXPECT_EQ(host.RecentProjects().front(), projects[2]);
}

TEST(HostModel, ExitWithAJobRunningAsksAndOnYesStopsItLeavingNoTool)
{
    HostRig rig;
    Endless server;
    const std::string endless = server.Url();
    workspace::HostModel &host = rig.Make();
    host.Start({});
    host.Scene().StartProbe(endless, 1);
    ASSERT_TRUE(host.Scene().IsJobRunning());
    rig.view.answer = false;
    EXPECT_EQ(host.Command(workspace::kCmdExit), HostResult::Declined);
    EXPECT_TRUE(host.Scene().IsJobRunning()) << "No leaves the job alone";
    rig.view.answer = true;
    EXPECT_EQ(host.RequestExit(), HostResult::Done);
    EXPECT_FALSE(host.Scene().IsJobRunning());
    EXPECT_NE(host.Scene().LastProbe().nResult, 0) << "the probe was killed";
    EXPECT_EQ(testsupport::CountProcessesWith(endless), 0);
    EXPECT_EQ(rig.view.closes, 1);
    EXPECT_TRUE(workspace::ReadSettingsRecord(rig.Store()).has_value());
}

TEST(HostModel, SwitchingTabsStopsTheJobOfTheTabLeft)
{
    HostRig rig;
    Endless server;
    const std::string endless = server.Url();
    workspace::HostModel &host = rig.Make();
    host.Start({});
    host.Scene().StartProbe(endless, 1);
    ASSERT_TRUE(host.Scene().IsJobRunning());
    EXPECT_EQ(host.SwitchTab(1), HostResult::Done);
    EXPECT_FALSE(host.Scene().IsJobRunning());
    EXPECT_EQ(testsupport::CountProcessesWith(endless), 0);
    EXPECT_EQ(host.CurrentTab(), 1);
    EXPECT_EQ(rig.view.shownTab, 1);
    EXPECT_EQ(rig.view.menu.nCurrentTab, 1);
}

TEST(HostModel, TheMenuIsGreyedAndTheTabsStayWhileARenderJobRuns)
{
    HostRig rig;
    const std::string video = testsupport::MakeLongClip(rig.dir);
    workspace::HostModel &host = rig.Make();
    host.Start({});
    ASSERT_EQ(host.DropFiles({video}), HostResult::Done);
    host.Scene().ExtractScenes();
    ASSERT_TRUE(host.Busy());
    const workspace::MenuStates menu = host.Menu();
    for (int nCommand : {workspace::kCmdNewProject,
                         workspace::kCmdOpenProject,
                         workspace::kCmdSaveProject,
                         workspace::kCmdPreset1}) {
        EXPECT_FALSE(menu.Enabled(nCommand)) << nCommand;
    }
    EXPECT_TRUE(menu.Enabled(workspace::kCmdHelp));
    EXPECT_TRUE(menu.Enabled(workspace::kCmdStreamInfo));
    for (const workspace::RecentMenuEntry &entry : menu.recent) {
        EXPECT_FALSE(entry.bEnabled);
    }
    EXPECT_FALSE(menu.bTabButtons);
    EXPECT_EQ(host.SwitchTab(1), HostResult::Refused);
    EXPECT_TRUE(host.Scene().IsJobRunning());
    EXPECT_EQ(host.StopJob(), HostResult::Done);
    // The last scene's still is made after the stop.
    host.Bench().RunUntil([&] { return !host.Scene().StillPending(); });
    EXPECT_EQ(testsupport::CountProcessesWith(video), 0);
}

TEST(HostModel, TheLanguageSwitchTranslatesTheStatusPanesAndTheUnanalyzedRows)
{
    HostRig rig;
    const std::string video = SmallClip(rig.dir, "a.mp4");
    workspace::HostModel &host = rig.Make();
    host.Start({});
    ASSERT_EQ(host.DropFiles({video}), HostResult::Done);
    ASSERT_EQ(host.SwitchTab(1), HostResult::Done);
    ASSERT_EQ(host.DropFiles({video}), HostResult::Done);
    ASSERT_EQ(rig.mergeView.rows.size(), 1u);
    ASSERT_NE(std::find(rig.mergeView.rows[0].columns.begin(),
                        rig.mergeView.rows[0].columns.end(),
                        "Unanalyzed"),
              rig.mergeView.rows[0].columns.end());
    // The stage pane may carry a remainder, "Segment Output (001)" of the background cut.
    const std::string stage = rig.sceneView.panes[0];
    const std::string state = rig.sceneView.panes[1];
    const size_t split = stage.find(" (");
    const int stageRow = engine::FindStageName(stage.substr(0, split));
    const int stateRow = engine::FindStateName(state);
    ASSERT_GT(stageRow, 0) << stage;
    ASSERT_GT(stateRow, 0) << state;

    EXPECT_EQ(host.SetLanguage("ja-JP"), HostResult::Done);
    EXPECT_EQ(rig.sceneView.panes[0],
              engine::StageName(stageRow, true) +
                  (split == std::string::npos ? "" : stage.substr(split)));
    EXPECT_EQ(rig.sceneView.panes[1], engine::StateName(stateRow, true));
    EXPECT_EQ(host.Scene().StatusPane(0), rig.sceneView.panes[0]);
    EXPECT_NE(std::find(rig.mergeView.rows[0].columns.begin(),
                        rig.mergeView.rows[0].columns.end(),
                        "未解析"),
              rig.mergeView.rows[0].columns.end());
    EXPECT_EQ(host.SetLanguage("en-US"), HostResult::Done);
    EXPECT_EQ(rig.sceneView.panes[0], stage);
}

TEST(HostModel, TheInformationDialogProbesTheChosenFileOnItsTab)
{
    HostRig rig;
    const std::string video = SmallClip(rig.dir, "a.mp4");
    workspace::HostModel &host = rig.Make();
    host.Start({});
    ASSERT_EQ(host.Command(workspace::kCmdFormatInfo), HostResult::Done);
    const workspace::InformationResult result =
        host.RunInformation(rig.view.informations.back(), video);
    EXPECT_TRUE(result.bOk);
    EXPECT_NE(result.text.find("\"format\""), std::string::npos) << result.text;
    const workspace::InformationResult missing =
        host.RunInformation(rig.view.informations.back(), rig.dir.file("none.mp4"));
    EXPECT_FALSE(missing.bOk);
    EXPECT_TRUE(missing.text.empty());
}

TEST(TabBench, AStopInsideTheEventPumpNeverEntersThePumpAgain)
{
    testsupport::TempDir dir;
    Endless server;
    const std::string endless = server.Url();
    testsupport::RecordingView sceneView;
    testsupport::RecordingView mergeView;
    workspace::TabBench bench(sceneView, mergeView);
    bench.Scene().Init();
    int depth = 0;
    int maxDepth = 0;
    int rounds = 0;
    bool inWait = false;
    bench.SetEventPump([&] {
        maxDepth = std::max(maxDepth, ++depth);
        if (++rounds == 5) {
            inWait = bench.InWait();
            bench.Scene().StopProcess(); // the window's Stop button: a wait of its own
        }
        --depth;
    });
    bench.Scene().StartProbe(endless, 1);
    bench.WaitForJob(bench.Scene(), [] { return false; });
    EXPECT_GE(rounds, 5);
    EXPECT_EQ(maxDepth, 1);
    EXPECT_TRUE(inWait);
    EXPECT_FALSE(bench.InWait());
    EXPECT_NE(bench.Scene().LastProbe().nResult, 0) << "the probe was killed";
    EXPECT_EQ(testsupport::CountProcessesWith(endless), 0);
}

// The opening of a long recording that needs a working MP4, stopped from the window's event
// pump at one of several moments: before the conversion, as it begins, and well into it.
class StopDuringOpening : public testing::TestWithParam<int>
{
};

TEST_P(StopDuringOpening, AStopPressedDuringTheOpeningOfALongFileEndsTheConversion)
{
    HostRig rig;
    const std::string part = rig.dir.file("part.avi");
    ASSERT_TRUE(testsupport::MakeClip(
        part, "testsrc2=size=1280x720:rate=25:duration=4", {"-c:v", "mpeg4", "-q:v", "4"}));
    const std::string video = rig.dir.file("long.avi");
    ASSERT_TRUE(testsupport::LoopClip(video, part, 9));
    const std::string folder = video + "_out/";
    workspace::HostModel &host = rig.Make();
    host.Start({});
    const int moment = GetParam();
    int rounds = 0;
    int partialRound = -1;
    bool stopped = false;
    bool refused = false;
    host.SetEventPump([&] {
        ++rounds;
        if (stopped) {
            return;
        }
        if (partialRound < 0 && !testsupport::FilesMatching(folder, ".partial.mp4").empty()) {
            partialRound = rounds;
        }
        const bool now = moment == 0   ? rounds == 1
                         : moment == 1 ? partialRound > 0
                                       : partialRound > 0 && rounds >= partialRound + 100;
        if (now) {
            // Commands that start work wait for the end of the wait.
            refused = host.InWait() && host.NewProject() == HostResult::Busy &&
                      host.SwitchTab(1) == HostResult::Busy &&
                      host.DropFiles({video}) == HostResult::Busy;
            stopped = host.StopJob() == HostResult::Done;
        }
    });
    EXPECT_EQ(host.DropFiles({video}), HostResult::Done);
    EXPECT_TRUE(stopped) << "the pump ran " << rounds << " times";
    EXPECT_TRUE(refused);
    EXPECT_FALSE(host.Scene().IsJobRunning());
    EXPECT_NE(host.Scene().LastJob().nResult, 0);
    if (moment > 0) {
        EXPECT_EQ(host.Scene().LastJob().nResult, -2);
    }
    EXPECT_EQ(testsupport::CountProcessesWith(video), 0);
    EXPECT_TRUE(testsupport::FilesMatching(folder, "_input_ch.mp4").empty())
        << "no working file from a stopped conversion";
    EXPECT_TRUE(host.RecentProjects().empty()) << "a stopped open is no successful one";
}

INSTANTIATE_TEST_SUITE_P(HostModel, StopDuringOpening, testing::Values(0, 1, 2));

} // namespace
