// Tests of the settings record, its byte layout and the transfer to and from the project data.
#include "core/app_settings.h"

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/language.h"
#include "core/tarnwick_data.h"
#include "support/test_support.h"

namespace {

const std::string kSourceTables = TW_SOURCE_DIR "/res";

void PutLe32(std::vector<uint8_t> &bytes, size_t offset, uint32_t value)
{
    bytes[offset] = static_cast<uint8_t>(value);
    bytes[offset + 1] = static_cast<uint8_t>(value >> 8);
    bytes[offset + 2] = static_cast<uint8_t>(value >> 16);
    bytes[offset + 3] = static_cast<uint8_t>(value >> 24);
}

void PutText(std::vector<uint8_t> &bytes, size_t offset, const std::string &text)
{
    std::memcpy(bytes.data() + offset, text.data(), text.size());
}

// The bytes of a record written by hand, offset by offset.
std::vector<uint8_t> HandBuiltRecord()
{
    std::vector<uint8_t> bytes(892, 0);
    PutText(bytes, 512, "ja-JP");
    PutLe32(bytes, 600, 100);
    PutLe32(bytes, 604, 0xFFFFFFE2u); // -30
    PutLe32(bytes, 608, 1380);
    PutLe32(bytes, 612, 0x01020304u);
    PutLe32(bytes, 616, 1);
    PutLe32(bytes, 620, 0);
    PutLe32(bytes, 624, 1);
    PutText(bytes, 628, "/home/user/videos/trip.twproj");
    PutLe32(bytes, 888, 2);
    return bytes;
}

core::AppSettingsRecord HandBuiltValues()
{
    core::AppSettingsRecord record;
    record.language = "ja-JP";
    record.rcMainWindow = {100, -30, 1380, 0x01020304};
    record.bUseCuda = 1;
    record.bAutoSave = 0;
    record.bReopenLast = 1;
    record.lastProject = "/home/user/videos/trip.twproj";
    record.nEncodePreset = 2;
    return record;
}

void ExpectSameRecord(const core::AppSettingsRecord &a, const core::AppSettingsRecord &b)
{
    EXPECT_EQ(a.language, b.language);
    EXPECT_EQ(a.rcMainWindow.left, b.rcMainWindow.left);
    EXPECT_EQ(a.rcMainWindow.top, b.rcMainWindow.top);
    EXPECT_EQ(a.rcMainWindow.right, b.rcMainWindow.right);
    EXPECT_EQ(a.rcMainWindow.bottom, b.rcMainWindow.bottom);
    EXPECT_EQ(a.bUseCuda, b.bUseCuda);
    EXPECT_EQ(a.bAutoSave, b.bAutoSave);
    EXPECT_EQ(a.bReopenLast, b.bReopenLast);
    EXPECT_EQ(a.lastProject, b.lastProject);
    EXPECT_EQ(a.nEncodePreset, b.nEncodePreset);
}

// Sets one environment variable for the length of a test.
class EnvOverride
{
public:
    EnvOverride(const char *name, const char *value)
        : m_name(name)
    {
        const char *old = std::getenv(name);
        if (old != nullptr) {
            m_old = old;
        }
        setenv(name, value, 1);
    }
    ~EnvOverride()
    {
        if (m_old) {
            setenv(m_name.c_str(), m_old->c_str(), 1);
        } else {
            unsetenv(m_name.c_str());
        }
    }

private:
    std::string m_name;
    std::optional<std::string> m_old;
};

} // namespace

TEST(AppSettingsRecord, SerializesAtTheDesignedOffsets)
{
    std::vector<uint8_t> bytes = core::SerializeSettings(HandBuiltValues());
    ASSERT_EQ(bytes.size(), core::kAppSettingsSize);
    EXPECT_EQ(bytes, HandBuiltRecord());
}

TEST(AppSettingsRecord, ReadsTheDesignedOffsets)
{
    ExpectSameRecord(core::DeserializeSettings(HandBuiltRecord()), HandBuiltValues());
}

TEST(AppSettingsRecord, RoundTripToTheByte)
{
    std::vector<uint8_t> bytes = HandBuiltRecord();
    EXPECT_EQ(core::SerializeSettings(core::DeserializeSettings(bytes)), bytes);
    core::AppSettingsRecord record = HandBuiltValues();
    record.language = "de-DE";
    record.lastProject = "/tmp/プロジェクト/a b.twproj";
    ExpectSameRecord(core::DeserializeSettings(core::SerializeSettings(record)), record);
}

TEST(AppSettingsRecord, EmptyRecordIsAllZero)
{
    EXPECT_EQ(core::SerializeSettings(core::AppSettingsRecord()), std::vector<uint8_t>(892, 0));
    ExpectSameRecord(core::DeserializeSettings(std::vector<uint8_t>()), core::AppSettingsRecord());
}

TEST(AppSettingsRecord, ShorterInputIsZeroExtended)
{
    std::vector<uint8_t> bytes = HandBuiltRecord();
    bytes.resize(622); // ends inside bAutoSave, before bReopenLast
    core::AppSettingsRecord record = core::DeserializeSettings(bytes);
    EXPECT_EQ(record.language, "ja-JP");
    EXPECT_EQ(record.rcMainWindow.left, 100);
    EXPECT_EQ(record.rcMainWindow.top, -30);
    EXPECT_EQ(record.bUseCuda, 1);
    EXPECT_EQ(record.bAutoSave, 0);
    EXPECT_EQ(record.bReopenLast, 0);
    EXPECT_EQ(record.lastProject, "");
    EXPECT_EQ(record.nEncodePreset, 0);

    bytes = HandBuiltRecord();
    PutLe32(bytes, 620, 0x00000201u);
    bytes.resize(621); // only the low byte of bAutoSave survives
    EXPECT_EQ(core::DeserializeSettings(bytes).bAutoSave, 1);
}

TEST(AppSettingsRecord, LongerInputIsCutAt892)
{
    std::vector<uint8_t> bytes = HandBuiltRecord();
    bytes.resize(1000, 0xFF);
    core::AppSettingsRecord record = core::DeserializeSettings(bytes);
    ExpectSameRecord(record, HandBuiltValues());
    EXPECT_EQ(core::SerializeSettings(record), HandBuiltRecord());
}

TEST(AppSettingsRecord, ReservedAndPaddingBytesAreIgnored)
{
    std::vector<uint8_t> bytes = HandBuiltRecord();
    for (size_t i = 0; i < 512; ++i) {
        bytes[i] = 0xAB;
    }
    bytes[597] = bytes[598] = bytes[599] = 0xCD;
    core::AppSettingsRecord record = core::DeserializeSettings(bytes);
    ExpectSameRecord(record, HandBuiltValues());
    EXPECT_EQ(core::SerializeSettings(record), HandBuiltRecord());
}

TEST(AppSettingsRecord, StringsEndAtTheFirstNulOfTheirField)
{
    std::vector<uint8_t> bytes = HandBuiltRecord();
    PutText(bytes, 512 + 6, "junk"); // behind the terminator of "ja-JP"
    core::AppSettingsRecord record = core::DeserializeSettings(bytes);
    EXPECT_EQ(record.language, "ja-JP");

    std::vector<uint8_t> full(892, 0);
    PutText(full, 512, std::string(85, 'x')); // no terminator inside the field
    PutText(full, 597, "yyy");
    EXPECT_EQ(core::DeserializeSettings(full).language, std::string(85, 'x'));
}

TEST(AppSettingsRecord, TooLongStringsAreCutKeepingTheNul)
{
    core::AppSettingsRecord record;
    record.language = std::string(100, 'a');
    record.lastProject = std::string(300, 'p');
    std::vector<uint8_t> bytes = core::SerializeSettings(record);
    ASSERT_EQ(bytes.size(), 892u);
    EXPECT_EQ(bytes[512 + 83], 'a');
    EXPECT_EQ(bytes[512 + 84], 0);
    EXPECT_EQ(bytes[597], 0);
    EXPECT_EQ(bytes[628 + 258], 'p');
    EXPECT_EQ(bytes[628 + 259], 0);
    core::AppSettingsRecord back = core::DeserializeSettings(bytes);
    EXPECT_EQ(back.language, std::string(84, 'a'));
    EXPECT_EQ(back.lastProject, std::string(259, 'p'));
}

TEST(AppSettingsRecord, CutNeverSplitsAUtf8Character)
{
    core::AppSettingsRecord record;
    // 258 ASCII bytes and a three-byte character: only 259 bytes fit, so the character goes.
    record.lastProject = std::string(258, 'p') + "無";
    core::AppSettingsRecord back = core::DeserializeSettings(core::SerializeSettings(record));
    EXPECT_EQ(back.lastProject, std::string(258, 'p'));
}

TEST(Settings, SystemLocaleDeDeUsesEnglishTableAndIsPersisted)
{
    EnvOverride lcAll("LC_ALL", "de_DE.UTF-8");
    std::string tag = core::ChooseStartLanguage("");
    EXPECT_EQ(tag, "de-DE");
    std::string error;
    ASSERT_TRUE(core::LoadLanguageFrom(tag, {kSourceTables}, &error)) << error;
    EXPECT_EQ(core::LoadedStringTablePath(), kSourceTables + "/TarnwickMP4Res_ENG.json");
    EXPECT_EQ(core::GetLanguage(), "de-DE");
    EXPECT_FALSE(core::IsJapanese()); // the language menu checks English
    EXPECT_EQ(core::LoadStringById(core::kIdsUntitled), "Untitled");

    core::CTarnwickData data;
    core::MemoryRecentFileList recent;
    core::AppSettingsRecord record;
    data.CaptureSettings(record, recent);
    EXPECT_EQ(record.language, "de-DE");
    std::vector<uint8_t> bytes = core::SerializeSettings(record);
    EXPECT_EQ(std::string(bytes.begin() + 512, bytes.begin() + 518), std::string("de-DE\0", 6));

    core::SetLanguage("");
    core::CTarnwickData next;
    next.ApplySettings(core::DeserializeSettings(bytes));
    EXPECT_EQ(core::GetLanguage(), "de-DE");
    EXPECT_EQ(core::ChooseStartLanguage(core::GetLanguage()), "de-DE");
}

TEST(ApplySettings, ReopenLastOffLeavesProjectFileAlone)
{
    core::AppSettingsRecord record = HandBuiltValues();
    record.bReopenLast = 0;
    core::CTarnwickData data;
    data.project_file = "/work/current.twproj";
    data.ApplySettings(record);
    EXPECT_EQ(record.lastProject, "/home/user/videos/trip.twproj");
    EXPECT_EQ(data.project_file, "/work/current.twproj");
    EXPECT_EQ(data.bReopenLast, 0);

    core::CTarnwickData fresh;
    std::string before = fresh.project_file;
    fresh.ApplySettings(record);
    EXPECT_EQ(fresh.project_file, before);
}

TEST(ApplySettings, ReopenLastOnTakesTheProjectPath)
{
    core::CTarnwickData data;
    data.ApplySettings(HandBuiltValues());
    EXPECT_EQ(data.project_file, "/home/user/videos/trip.twproj");
}

TEST(ApplySettings, TakesTheSwitchesAndTheWindowRectangle)
{
    core::CTarnwickData data;
    data.bUseCuda = 0;
    core::AppSettingsRecord record = HandBuiltValues();
    record.bAutoSave = 1;
    data.ApplySettings(record);
    EXPECT_EQ(data.rcMainWindow.left, 100);
    EXPECT_EQ(data.rcMainWindow.top, -30);
    EXPECT_EQ(data.rcMainWindow.right, 1380);
    EXPECT_EQ(data.rcMainWindow.bottom, 0x01020304);
    EXPECT_EQ(data.bUseCuda, 1); // the stored switch wins, device or not
    EXPECT_EQ(data.bAutoSave, 1);
    EXPECT_EQ(data.bReopenLast, 1);
    EXPECT_EQ(data.nEncodePreset, 2);
}

TEST(ApplySettings, LanguageTakenOnlyWhenNotEmpty)
{
    core::SetLanguage("en-US");
    core::CTarnwickData data;
    core::AppSettingsRecord record;
    data.ApplySettings(record);
    EXPECT_EQ(core::GetLanguage(), "en-US");
    record.language = "ja-JP";
    data.ApplySettings(record);
    EXPECT_EQ(core::GetLanguage(), "ja-JP");
}

TEST(CaptureSettings, GoneFirstRecentFileIsRemovedAndTheListWrittenOut)
{
    testsupport::TempDir dir;
    std::string kept = dir.file("kept.twproj");
    ASSERT_TRUE(testsupport::WriteFile(kept, "{}"));
    core::MemoryRecentFileList recent({dir.file("gone.twproj"), kept});
    core::CTarnwickData data;
    data.project_file.clear();
    core::AppSettingsRecord record;
    data.CaptureSettings(record, recent);
    EXPECT_EQ(record.lastProject, "");
    EXPECT_EQ(recent.Entries(), std::vector<std::string>{kept});
    EXPECT_EQ(recent.WriteCount(), 1);
}

TEST(CaptureSettings, EmptyFirstRecentEntryIsRemoved)
{
    core::MemoryRecentFileList recent({"", "/nowhere/b.twproj"});
    core::CTarnwickData data;
    data.project_file.clear();
    core::AppSettingsRecord record;
    data.CaptureSettings(record, recent);
    EXPECT_EQ(record.lastProject, "");
    EXPECT_EQ(recent.Entries(), std::vector<std::string>{"/nowhere/b.twproj"});
    EXPECT_EQ(recent.WriteCount(), 1);
}

TEST(CaptureSettings, ExistingFirstRecentFileIsTaken)
{
    testsupport::TempDir dir;
    std::string last = dir.file("last.twproj");
    ASSERT_TRUE(testsupport::WriteFile(last, "{}"));
    core::MemoryRecentFileList recent({last, "/nowhere/b.twproj"});
    core::CTarnwickData data;
    data.project_file.clear();
    core::AppSettingsRecord record;
    data.CaptureSettings(record, recent);
    EXPECT_EQ(record.lastProject, last);
    EXPECT_EQ(recent.Entries().size(), 2u);
    EXPECT_EQ(recent.WriteCount(), 0);
}

TEST(CaptureSettings, ProjectFileWinsAndTheListStaysUntouched)
{
    core::MemoryRecentFileList recent({"/nowhere/a.twproj"});
    core::CTarnwickData data;
    data.project_file = "/nowhere/current.twproj";
    core::AppSettingsRecord record;
    data.CaptureSettings(record, recent);
    EXPECT_EQ(record.lastProject, "/nowhere/current.twproj");
    EXPECT_EQ(recent.Entries(), std::vector<std::string>{"/nowhere/a.twproj"});
    EXPECT_EQ(recent.WriteCount(), 0);
}

TEST(CaptureSettings, ClearsTheRecordAndFillsItFromTheData)
{
    core::SetLanguage("ja-JP");
    core::CTarnwickData data;
    data.project_file.clear();
    data.rcMainWindow = {5, 6, 7, 8};
    data.bUseCuda = 1;
    data.bAutoSave = 1;
    data.bReopenLast = 0;
    data.nEncodePreset = 1;
    core::AppSettingsRecord record = HandBuiltValues();
    core::MemoryRecentFileList recent;
    data.CaptureSettings(record, recent);
    EXPECT_EQ(record.language, "ja-JP");
    EXPECT_EQ(record.rcMainWindow.left, 5);
    EXPECT_EQ(record.rcMainWindow.top, 6);
    EXPECT_EQ(record.rcMainWindow.right, 7);
    EXPECT_EQ(record.rcMainWindow.bottom, 8);
    EXPECT_EQ(record.bUseCuda, 1);
    EXPECT_EQ(record.bAutoSave, 1);
    EXPECT_EQ(record.bReopenLast, 0);
    EXPECT_EQ(record.lastProject, "");
    EXPECT_EQ(record.nEncodePreset, 1);
    EXPECT_EQ(recent.WriteCount(), 0);
}

TEST(MemoryRecentFileList, AddPutsThePathFirstWithoutDuplicatesAndKeepsFive)
{
    core::MemoryRecentFileList recent;
    for (const char *path : {"/a", "/b", "/c", "/d", "/e", "/f"}) {
        recent.Add(path);
    }
    EXPECT_EQ(recent.Entries(), (std::vector<std::string>{"/f", "/e", "/d", "/c", "/b"}));
    recent.Add("/c");
    EXPECT_EQ(recent.Entries(), (std::vector<std::string>{"/c", "/f", "/e", "/d", "/b"}));
    recent.RemoveEntry(1);
    recent.RemoveEntry(9);
    EXPECT_EQ(recent.Entries(), (std::vector<std::string>{"/c", "/e", "/d", "/b"}));
}
