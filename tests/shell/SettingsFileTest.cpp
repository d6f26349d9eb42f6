#include "shell/Settings.h"

#include <filesystem>

#include "support/GuiTest.h"

namespace {

struct SettingsFileTest : GuiTest {
    wxString FilePath() const { return mSettingsDirectory.Path("config/Velomind.conf"); }

    std::string ConfigDirectory() const { return mSettingsDirectory.Path("config").utf8_string(); }
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

TEST_F(SettingsFileTest, WhatAPersonWroteAroundOurKeysStaysBehindALinkToo) {
    std::filesystem::create_directory(ConfigDirectory());
    const wxString target = mSettingsDirectory.Path("kept-elsewhere.conf");
    std::filesystem::create_symlink(target.utf8_string(), FilePath().utf8_string());
    WriteBytes(target, "# mine\nnonsense\n=no name\n[\nTest=1\nTest=0\n\xFF\n[Other]\nTest=5\n");
    WriteIntegerSetting("CurrentCategoryId", 3);
    EXPECT_EQ(ReadIntegerSetting("CurrentCategoryId"), 3);
    EXPECT_TRUE(std::filesystem::is_symlink(FilePath().utf8_string()));
    const std::string text = ReadBytes(target);
    for (const char* kept : {"# mine\n", "nonsense\n", "[Other]\nTest=5\n"}) {
        EXPECT_NE(text.find(kept), std::string::npos) << text;
    }
}
