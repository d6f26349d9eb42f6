#include "shell/SettingsFile.h"

#include <sys/stat.h>
#include <wx/config.h>
#include <wx/filename.h>
#include <wx/log.h>
#include <wx/utils.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "shell/Settings.h"
#include "support/GuiTest.h"

namespace {

// Takes the messages of the log for as long as it lives.
class LogWitness : public wxLog {
  public:
    LogWitness() : mpFormer(wxLog::SetActiveTarget(this)) {}
    ~LogWitness() override { wxLog::SetActiveTarget(mpFormer); }

    std::vector<wxString> Messages;

  protected:
    void DoLogText(const wxString& text) override { Messages.push_back(text); }

  private:
    wxLog* const mpFormer;
};

class SettingsFileTest : public GuiTest {
  protected:
    wxString FilePath() const { return mSettingsDirectory.Path("config/Velomind.conf"); }

    // Makes the directory, but no file in it.
    void MakeDirectory() { std::filesystem::create_directory(ConfigDirectory()); }
    std::string ConfigDirectory() const { return mSettingsDirectory.Path("config").utf8_string(); }

    // Reads and writes in every way; with a place that takes nothing the defaults come back.
    void ExpectDefaultsAfterWrites() {
        WriteStringSetting("DatabasePath", "/somewhere");
        WriteIntegerSetting("EarlyIntroductionInterval", 7);
        WriteBooleanSetting("Test", true);
        EXPECT_EQ(ReadStringSetting("DatabasePath"), "");
        EXPECT_EQ(ReadIntegerSetting("EarlyIntroductionInterval"), 180);
        EXPECT_FALSE(ReadBooleanSetting("Test"));
    }

    LogWitness mLog;
};

}  // namespace

TEST_F(SettingsFileTest, TheFirstWriteMakesTheDirectory) {
    EXPECT_EQ(ReadStringSetting("LastWindow"), "");
    EXPECT_FALSE(std::filesystem::exists(ConfigDirectory()));
    WriteStringSetting("LastWindow", "Study");
    EXPECT_EQ(ReadBytes(FilePath()), "LastWindow=Study\n");

    // A relative directory does not count.
    wxString home;
    ASSERT_TRUE(wxGetEnv("HOME", &home));
    wxSetEnv("HOME", mSettingsDirectory.Path("home"));
    wxSetEnv("XDG_CONFIG_HOME", "relative/path");
    WriteStringSetting("LastWindow", "Browse");
    wxSetEnv("HOME", home);
    EXPECT_EQ(ReadBytes(mSettingsDirectory.Path("home/.config/Velomind.conf")),
              "LastWindow=Browse\n");
}

TEST_F(SettingsFileTest, WhatAPersonWroteAroundOurKeysStays) {
    MakeDirectory();
    WriteBytes(FilePath(),
               "# mine\nnonsense\n=no name\n[\nTest=1\nTest=0\n\xFF\n[Other]\nTest=5\n");
    WriteIntegerSetting("CurrentCategoryId", 3);
    EXPECT_EQ(ReadIntegerSetting("CurrentCategoryId"), 3);
    const std::string text = ReadBytes(FilePath());
    for (const char* kept : {"# mine\n", "nonsense\n", "[Other]\nTest=5\n"}) {
        EXPECT_NE(text.find(kept), std::string::npos) << text;
    }
    EXPECT_TRUE(mLog.Messages.empty()) << mLog.Messages.front();
}

TEST_F(SettingsFileTest, ALinkToTheFileStaysALink) {
    MakeDirectory();
    const wxString target = mSettingsDirectory.Path("kept-elsewhere.conf");
    WriteBytes(target, "Test=1\n");
    std::filesystem::create_symlink(target.utf8_string(), FilePath().utf8_string());
    WriteIntegerSetting("CurrentCategoryId", 3);
    EXPECT_TRUE(std::filesystem::is_symlink(FilePath().utf8_string()));
    EXPECT_NE(ReadBytes(target).find("CurrentCategoryId=3"), std::string::npos);
}

// One test for all of them, as the one message is said once while the program runs.
TEST_F(SettingsFileTest, APlaceThatTakesNothingIsToldOnce) {
    // A directory that cannot be made, since a file has its name.
    WriteBytes(mSettingsDirectory.Path("config"), "in the way");
    ExpectDefaultsAfterWrites();
    ASSERT_EQ(mLog.Messages.size(), 1U);
    EXPECT_NE(mLog.Messages.front().Find(FilePath()), wxNOT_FOUND) << mLog.Messages.front();

    // A directory in the file's place.
    std::filesystem::remove(ConfigDirectory());
    std::filesystem::create_directories(FilePath().utf8_string());
    ExpectDefaultsAfterWrites();
    EXPECT_TRUE(std::filesystem::is_directory(FilePath().utf8_string()));

    // A pipe: opening one waits until somebody writes.
    std::filesystem::remove(FilePath().utf8_string());
    ASSERT_EQ(mkfifo(FilePath().utf8_str(), 0600), 0);
    ExpectDefaultsAfterWrites();
    EXPECT_TRUE(std::filesystem::is_fifo(FilePath().utf8_string()));
    EXPECT_EQ(mLog.Messages.size(), 1U);
}
