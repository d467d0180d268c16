// Tests of the application log: configuration, line and file names, rolling, pruning, and two
// processes sharing one log file.
#include "core/app_log.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "core/version.h"
#include "support/test_support.h"

extern char **environ;

namespace {

namespace fs = std::filesystem;
using testsupport::ReadFile;
using testsupport::TempDir;
using testsupport::WriteFile;

constexpr const char *kWriterFlag = "--tw-app-log-writer";
constexpr int kWriterLines = 10000;
constexpr const char *kPadding = "abcdefghijklmnopqrstuvwxyz0123456789";

std::vector<std::string> ProcessArguments()
{
    std::string text = ReadFile("/proc/self/cmdline");
    std::vector<std::string> args;
    std::string current;
    for (char c : text) {
        if (c == '\0') {
            args.push_back(current);
            current.clear();
        } else {
            current += c;
        }
    }
    return args;
}

// When this binary is started with kWriterFlag, config path and tag, it is a writer process of
// the two-process test: it logs kWriterLines numbered lines, flushing every 25 of them, and ends
// before any test runs.
int RunAsWriterIfAsked()
{
    std::vector<std::string> args = ProcessArguments();
    if (args.size() != 4 || args[1] != kWriterFlag) {
        return 0;
    }
    {
        core::CAppLog log(args[2]);
        core::CAppLog::Install(&log);
        for (int i = 0; i < kWriterLines; ++i) {
            core::Log("writer %s line %05d %s\n", args[3].c_str(), i, kPadding);
            if (i % 25 == 24) {
                log.Flush();
            }
        }
    }
    std::_Exit(0);
}

const int kWriterCheck = RunAsWriterIfAsked();

std::string WriteConfig(const TempDir &dir, const std::string &text)
{
    std::string path = dir.file("AppLog.INI");
    EXPECT_TRUE(WriteFile(path, text));
    return path;
}

// Names in a folder, the lock file left out.
std::set<std::string> ListFolder(const std::string &folder)
{
    std::set<std::string> names;
    std::error_code ec;
    for (const auto &entry : fs::directory_iterator(folder, ec)) {
        std::string name = entry.path().filename().string();
        if (name != "AppLogFileAccess.lock") {
            names.insert(name);
        }
    }
    return names;
}

std::vector<std::string> SplitLines(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        lines.push_back(line);
    }
    return lines;
}

// 2024-03-05 06:07:08.009 local time.
std::chrono::system_clock::time_point FixedLocalTime()
{
    std::tm local{};
    local.tm_year = 2024 - 1900;
    local.tm_mon = 2;
    local.tm_mday = 5;
    local.tm_hour = 6;
    local.tm_min = 7;
    local.tm_sec = 8;
    local.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&local)) +
           std::chrono::milliseconds(9);
}

// Changes the current folder for the life of the object.
class CurrentFolder
{
public:
    explicit CurrentFolder(const std::string &folder)
        : m_previous(fs::current_path())
    {
        fs::current_path(folder);
    }
    ~CurrentFolder() { fs::current_path(m_previous); }

private:
    fs::path m_previous;
};

const char *const kLinePattern =
    R"(^(\d\d)/(\d\d) (\d\d):(\d\d):(\d\d)\.(\d\d\d) <(\d+)> TarnwickMP4 (.*)$)";

TEST(CAppLog, RelativePathResolvesAgainstWorkingDirectoryAtStart)
{
    TempDir work;
    TempDir exeFolder;
    std::string config = WriteConfig(exeFolder, "LOG_FILE_PATH,logs/rel.log\n");
    std::string expected;
    std::unique_ptr<core::CAppLog> log;
    {
        CurrentFolder inWork(work.path());
        expected = (fs::current_path() / "logs/rel.log").string();
        log = std::make_unique<core::CAppLog>(config);
    }
    EXPECT_EQ(log->path(), expected);
    core::CAppLog::Install(log.get());
    core::Log("%s(%d) relative\n", "Test::Relative", 1);
    log.reset();
    EXPECT_NE(ReadFile(expected).find("Test::Relative(1) relative\n"), std::string::npos);
    EXPECT_FALSE(fs::exists(exeFolder.file("logs")));
}

TEST(CAppLog, MaxNumZeroDeletesEveryRolledFileAtEachWrite)
{
    TempDir dir;
    WriteFile(dir.file("m.log"), "old\n");
    WriteFile(dir.file("m_20200101_000000000.log"), "r1\n");
    WriteFile(dir.file("m_20200102_000000000.log"), "r2\n");
    WriteFile(dir.file("mx.log"), "other\n");
    std::string config =
        WriteConfig(dir, "LOG_FILE_PATH," + dir.file("m.log") + "\nLOG_FILE_MAX_NUM,0\n");
    core::CAppLog log(config);
    EXPECT_EQ(log.maxNum(), 0);
    // The start line was a write: the rolled files went, the current file stayed.
    EXPECT_EQ(ListFolder(dir.path()), (std::set<std::string>{"AppLog.INI", "m.log", "mx.log"}));
    EXPECT_EQ(ReadFile(dir.file("m.log")).substr(0, 4), "old\n");

    WriteFile(dir.file("m_20200103_000000000.log"), "r3\n");
    core::CAppLog::Install(&log);
    core::Log("second write\n");
    log.Flush();
    EXPECT_EQ(ListFolder(dir.path()), (std::set<std::string>{"AppLog.INI", "m.log", "mx.log"}));

    // A write that rolls the current file deletes the copy at once; the new file holds the block.
    core::CAppLog::FlushToFile(dir.file("m.log"), "after roll\n", 1, 0);
    EXPECT_EQ(ListFolder(dir.path()), (std::set<std::string>{"AppLog.INI", "m.log", "mx.log"}));
    EXPECT_EQ(ReadFile(dir.file("m.log")), "after roll\n");
}

TEST(CAppLog, ClearLogFileDeletesCurrentAndRolledFilesAtStart)
{
    TempDir dir;
    WriteFile(dir.file("c.log"), "old content\n");
    WriteFile(dir.file("c_20200101_000000000.log"), "r1\n");
    WriteFile(dir.file("c_x.log"), "r2\n");
    WriteFile(dir.file("cat.log"), "the pattern takes every name that begins with the stem\n");
    WriteFile(dir.file("other.log"), "kept\n");
    WriteFile(dir.file("c.txt"), "kept\n");
    std::string config =
        WriteConfig(dir, "CLEAR_LOG_FILE,1\nLOG_FILE_PATH," + dir.file("c.log") + "\n");
    core::CAppLog log(config);
    EXPECT_EQ(log.clear(), 1);
    EXPECT_EQ(ListFolder(dir.path()),
              (std::set<std::string>{"AppLog.INI", "c.log", "c.txt", "other.log"}));
    std::vector<std::string> lines = SplitLines(ReadFile(dir.file("c.log")));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("TarnwickMP4 Version "), std::string::npos);
}

TEST(CAppLog, QuotedValueLosesItsQuotes)
{
    TempDir dir;
    std::string config = WriteConfig(dir, "LOG_FILE_PATH,\"" + dir.file("q.log") + "\"\n");
    {
        core::CAppLog log(config);
        EXPECT_EQ(log.path(), dir.file("q.log"));
    }
    EXPECT_EQ(ListFolder(dir.path()), (std::set<std::string>{"AppLog.INI", "q.log"}));
}

TEST(CAppLog, PathHoldingACommaIsCutAtIt)
{
    TempDir dir;
    std::string config = WriteConfig(dir, "LOG_FILE_PATH," + dir.file("a,b.log") + "\n");
    {
        core::CAppLog log(config);
        EXPECT_EQ(log.path(), dir.file("a"));
    }
    EXPECT_EQ(ListFolder(dir.path()), (std::set<std::string>{"AppLog.INI", "a"}));
}

TEST(CAppLog, PathWithoutExtensionRollsToNamesWithoutExtension)
{
    TempDir dir;
    std::string path = dir.file("applog");
    EXPECT_EQ(core::CAppLog::RolledLogName("/x/applog", FixedLocalTime()),
              "/x/applog_20240305_060708009");
    core::CAppLog::FlushToFile(path, std::string(60, 'a') + "\n", 50, 10);
    core::CAppLog::FlushToFile(path, "second\n", 50, 10);
    std::set<std::string> names = ListFolder(dir.path());
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(*names.begin(), "applog");
    EXPECT_TRUE(std::regex_match(*names.rbegin(), std::regex(R"(applog_\d{8}_\d{9})")));
    EXPECT_EQ(ReadFile(path), "second\n");

    // "applog_*" with an empty last part: every "applog_..." counts, nothing else.
    TempDir prune;
    for (const char *name :
         {"applog", "applog_1", "applog_2", "applog_3", "applog.txt", "applogX"}) {
        WriteFile(prune.file(name), "x\n");
    }
    core::CAppLog::PruneLogs(prune.file("applog"), 1);
    EXPECT_EQ(ListFolder(prune.path()),
              (std::set<std::string>{"applog", "applog_3", "applog.txt", "applogX"}));
}

TEST(CAppLog, RolledNameKeepsTheExtension)
{
    EXPECT_EQ(core::CAppLog::RolledLogName("/var/log/tw/app.log", FixedLocalTime()),
              "/var/log/tw/app_20240305_060708009.log");
}

TEST(CAppLog, LogDoesNothingWithoutConfiguration)
{
    TempDir dir;
    core::Log("no logger at all\n");
    {
        core::CAppLog log(dir.file("missing.INI"));
        EXPECT_TRUE(log.path().empty());
        core::CAppLog::Install(&log);
        core::Log("%s(%d) not written\n", "Test::Off", 1);
    }
    EXPECT_TRUE(ListFolder(dir.path()).empty());

    // Without LOG_FILE_PATH even CLEAR_LOG_FILE touches nothing in the working folder.
    std::string config = WriteConfig(dir, "CLEAR_LOG_FILE,1\nLOG_FILE_MAX_SIZE,10\n");
    WriteFile(dir.file("keep.txt"), "kept\n");
    {
        CurrentFolder inDir(dir.path());
        core::CAppLog log(config);
        EXPECT_TRUE(log.path().empty());
        core::CAppLog::Install(&log);
        core::Log("not written\n");
    }
    EXPECT_EQ(ListFolder(dir.path()), (std::set<std::string>{"AppLog.INI", "keep.txt"}));
    core::Log("after shutdown\n");
}

TEST(CAppLog, FormatLogLineGivesTheWholeLine)
{
    EXPECT_EQ(core::CAppLog::FormatLogLine(FixedLocalTime(),
                                           1234,
                                           "TarnwickMP4 ",
                                           "CTarnwickProcess::ProcessTrim(120) nResult(0)\n"),
              "03/05 06:07:08.009 <1234> TarnwickMP4 CTarnwickProcess::ProcessTrim(120) "
              "nResult(0)\n");
    EXPECT_EQ(core::CAppLog::FormatLogLine(FixedLocalTime(), 7, "", "bare"),
              "03/05 06:07:08.009 <7> bare");
}

TEST(CAppLog, WrittenLinesHaveTheLineFormat)
{
    TempDir dir;
    std::string config = WriteConfig(dir, "LOG_FILE_PATH," + dir.file("f.log") + "\n");
    {
        core::CAppLog log(config);
        EXPECT_EQ(log.product(), "TarnwickMP4");
        core::CAppLog::Install(&log);
        core::Log("%s(%d) nProcessID(%d)\n", "CTarnwickTabScene::StartProcess", 42, 7);
    }
    std::string text = ReadFile(dir.file("f.log"));
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.back(), '\n');
    std::vector<std::string> lines = SplitLines(text);
    ASSERT_EQ(lines.size(), 2u);
    std::string commandLine = ReadFile("/proc/self/cmdline");
    std::replace(commandLine.begin(), commandLine.end(), '\0', ' ');
    commandLine.erase(commandLine.find_last_not_of(' ') + 1);
    std::string messages[2] = {std::string("Version ") + core::kProductVersion + " " + commandLine,
                               "CTarnwickTabScene::StartProcess(42) nProcessID(7)"};
    std::regex pattern(kLinePattern);
    for (int i = 0; i < 2; ++i) {
        std::smatch m;
        ASSERT_TRUE(std::regex_match(lines[i], m, pattern)) << lines[i];
        EXPECT_GE(std::stoi(m[1]), 1);
        EXPECT_LE(std::stoi(m[1]), 12);
        EXPECT_GE(std::stoi(m[2]), 1);
        EXPECT_LE(std::stoi(m[2]), 31);
        EXPECT_LE(std::stoi(m[3]), 23);
        EXPECT_LE(std::stoi(m[4]), 59);
        EXPECT_LE(std::stoi(m[5]), 60);
        EXPECT_EQ(std::stoul(m[7]), static_cast<unsigned long>(getpid()));
        EXPECT_EQ(m[8].str(), messages[i]);
    }
}

TEST(CAppLog, ConfigFollowsTheLineRules)
{
    TempDir dir;
    std::string config = WriteConfig(dir,
                                     "# LOG_FILE_MAX_NUM,1\n"
                                     "// LOG_FILE_MAX_NUM,2\n"
                                     "\n"
                                     "log_file_max_num,3\n"
                                     "LOG_FILE_WRITE_SIZE\n"
                                     "UNKNOWN_KEY,5\n"
                                     "LOG_FILE_WRITE_INTERVAL,abc\n"
                                     "LOG_FILE_MAX_SIZE,12x,99\r\n"
                                     "LOG_FILE_PATH," +
                                         dir.file("p.log") + "\r\n");
    core::CAppLog log(config);
    EXPECT_EQ(log.path(), dir.file("p.log"));
    EXPECT_EQ(log.maxNum(), 100);
    EXPECT_EQ(log.writeSize(), 1048576);
    EXPECT_EQ(log.writeInterval(), 0);
    EXPECT_EQ(log.maxSize(), 12);
    EXPECT_EQ(log.clear(), 0);
}

TEST(CAppLog, ConfigTrimsShiftJisSpaceBytesAndQuotes)
{
    TempDir dir;
    std::string config =
        WriteConfig(dir,
                    "\x81\x40LOG_FILE_PATH\t\x40,\x81\x40 \"" + dir.file("@sj@.log") +
                        "\" \x40\x81\n"
                        "@LOG_FILE_MAX_NUM\x81,\x40\x40 7\x81\n"
                        "\"LOG_FILE_WRITE_SIZE\",\t\"300\"\n");
    core::CAppLog log(config);
    EXPECT_EQ(log.path(), dir.file("@sj@.log"));
    EXPECT_EQ(log.maxNum(), 7);
    EXPECT_EQ(log.writeSize(), 300);
}

TEST(CAppLog, RollsWhenTheSizeReachesMaxSize)
{
    TempDir dir;
    std::string path = dir.file("r.log");
    std::string first(99, 'a');
    core::CAppLog::FlushToFile(path, first, 100, 10);
    core::CAppLog::FlushToFile(path, "b", 100, 10);
    EXPECT_EQ(ListFolder(dir.path()), (std::set<std::string>{"r.log"}));
    core::CAppLog::FlushToFile(path, "z\n", 100, 10);
    std::set<std::string> names = ListFolder(dir.path());
    ASSERT_EQ(names.size(), 2u);
    std::string rolled = *names.rbegin(); // "r.log" sorts before "r_..."
    EXPECT_TRUE(std::regex_match(rolled, std::regex(R"(r_\d{8}_\d{9}\.log)"))) << rolled;
    EXPECT_EQ(ReadFile(dir.file(rolled)), first + "b");
    EXPECT_EQ(ReadFile(path), "z\n");
}

TEST(CAppLog, PruneLogsDeletesTheOldestRolledFiles)
{
    TempDir dir;
    for (const char *name : {"p.log",
                             "p_20200101_000000000.log",
                             "p_20200102_000000000.log",
                             "p_20210101_000000000.log",
                             "p_20191231_235959999.log"}) {
        WriteFile(dir.file(name), "x\n");
    }
    core::CAppLog::PruneLogs(dir.file("p.log"), 2);
    EXPECT_EQ(
        ListFolder(dir.path()),
        (std::set<std::string>{"p.log", "p_20200102_000000000.log", "p_20210101_000000000.log"}));
}

TEST(CAppLog, WriterThreadWritesWhenTheBufferReachesWriteSize)
{
    TempDir dir;
    std::string path = dir.file("w.log");
    std::string config = WriteConfig(dir,
                                     "LOG_FILE_PATH," + path +
                                         "\nLOG_FILE_WRITE_SIZE,1\n"
                                         "LOG_FILE_WRITE_INTERVAL,100000\n");
    core::CAppLog log(config);
    core::CAppLog::Install(&log);
    core::Log("picked up by the writer\n");
    bool written = false;
    for (int i = 0; i < 400 && !written; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        written = ReadFile(path).find("picked up by the writer\n") != std::string::npos;
    }
    EXPECT_TRUE(written);
}

TEST(CAppLog, ManyThreadsLogInTheOrderOfEnteringTheLock)
{
    TempDir dir;
    std::string path = dir.file("t.log");
    std::string config = WriteConfig(dir, "LOG_FILE_PATH," + path + "\nLOG_FILE_WRITE_SIZE,512\n");
    constexpr int kThreads = 4;
    constexpr int kLines = 2000;
    {
        core::CAppLog log(config);
        core::CAppLog::Install(&log);
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([t, &log] {
                for (int i = 0; i < kLines; ++i) {
                    core::Log("thread %d line %d\n", t, i);
                    if (t == 0 && i % 100 == 99) {
                        log.Flush();
                    }
                }
            });
        }
        for (auto &thread : threads) {
            thread.join();
        }
    }
    std::vector<int> next(kThreads, 0);
    std::regex pattern(R"(thread (\d) line (\d+))");
    for (const std::string &line : SplitLines(ReadFile(path))) {
        std::smatch m;
        std::string message = line.substr(line.find("TarnwickMP4 ") + 12);
        if (message.starts_with("Version ")) {
            continue;
        }
        ASSERT_TRUE(std::regex_match(message, m, pattern)) << line;
        int t = std::stoi(m[1].str());
        ASSERT_LT(t, kThreads);
        ASSERT_EQ(std::stoi(m[2].str()), next[t]) << line;
        ++next[t];
    }
    EXPECT_EQ(next, std::vector<int>(kThreads, kLines));
}

pid_t StartWriter(const std::string &config, const std::string &tag)
{
    std::string exe = fs::read_symlink("/proc/self/exe").string();
    std::vector<std::string> args = {exe, kWriterFlag, config, tag};
    std::vector<char *> argv;
    for (auto &arg : args) {
        argv.push_back(arg.data());
    }
    argv.push_back(nullptr);
    pid_t pid = -1;
    if (posix_spawn(&pid, exe.c_str(), nullptr, nullptr, argv.data(), environ) != 0) {
        return -1;
    }
    return pid;
}

int WaitFor(pid_t pid)
{
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// What the files of the two-process test hold, per writer tag.
struct WriterTally
{
    std::map<std::string, std::vector<int>> seen = {{"A", std::vector<int>(kWriterLines, 0)},
                                                    {"B", std::vector<int>(kWriterLines, 0)}};
    std::map<std::string, unsigned long> pids;
    int versions = 0;
};

// Checks that every line of one log file is whole and well formed, and counts it.
void TallyWriterFile(const std::string &name, const std::string &text, WriterTally &tally)
{
    static const std::regex linePattern(kLinePattern);
    static const std::regex writerPattern(std::string(R"(writer ([AB]) line (\d{5}) )") + kPadding);
    ASSERT_FALSE(text.empty()) << name;
    EXPECT_EQ(text.back(), '\n') << name;
    std::map<std::string, int> last = {{"A", -1}, {"B", -1}};
    for (const std::string &line : SplitLines(text)) {
        std::smatch m;
        ASSERT_TRUE(std::regex_match(line, m, linePattern)) << name << ": " << line;
        std::string message = m[8].str();
        if (message.starts_with("Version ")) {
            ++tally.versions;
            continue;
        }
        std::smatch w;
        ASSERT_TRUE(std::regex_match(message, w, writerPattern)) << name << ": " << line;
        std::string tag = w[1].str();
        int number = std::stoi(w[2].str());
        ++tally.seen[tag][number];
        // Lines of one process keep their order within a file.
        EXPECT_GT(number, last[tag]) << name << ": " << line;
        last[tag] = number;
        unsigned long pid = std::stoul(m[7].str());
        auto [it, inserted] = tally.pids.emplace(tag, pid);
        EXPECT_EQ(it->second, pid);
    }
}

TEST(CAppLog, TwoProcessesShareOneFileWithoutTornLines)
{
    TempDir dir;
    std::string config = WriteConfig(dir,
                                     "LOG_FILE_PATH," + dir.file("shared.log") +
                                         "\nLOG_FILE_MAX_SIZE,65536\n"
                                         "LOG_FILE_MAX_NUM,100000\n"
                                         "LOG_FILE_WRITE_SIZE,2048\n"
                                         "LOG_FILE_WRITE_INTERVAL,1\n");
    pid_t a = StartWriter(config, "A");
    pid_t b = StartWriter(config, "B");
    ASSERT_GT(a, 0);
    ASSERT_GT(b, 0);
    EXPECT_EQ(WaitFor(a), 0);
    EXPECT_EQ(WaitFor(b), 0);

    WriterTally tally;
    int files = 0;
    for (const std::string &name : ListFolder(dir.path())) {
        if (name != "AppLog.INI") {
            ++files;
            TallyWriterFile(name, ReadFile(dir.file(name)), tally);
        }
    }
    EXPECT_GT(files, 1); // the file rolled
    EXPECT_EQ(tally.versions, 2);
    for (const auto &[tag, counts] : tally.seen) {
        for (int i = 0; i < kWriterLines; ++i) {
            ASSERT_EQ(counts[i], 1) << "writer " << tag << " line " << i;
        }
    }
    EXPECT_NE(tally.pids["A"], tally.pids["B"]);
}

} // namespace
