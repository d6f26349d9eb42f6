#include "shell/Settings.h"

#include "support/GuiTest.h"

using SettingsTest = GuiTest;

TEST_F(SettingsTest, ValuesComeBackAsTheyWereWritten) {
    for (const int32_t value : {-1, INT32_MIN, INT32_MAX}) {
        WriteIntegerSetting("EarlyIntroductionInterval", value);
        EXPECT_EQ(ReadIntegerSetting("EarlyIntroductionInterval"), value);
    }
    WriteColourSetting("FontColor", wxColour(1, 20, 255));
    EXPECT_EQ(ReadStringSetting("FontColor"), "R001G020B255");
    EXPECT_EQ(ReadColourSetting("FontColor"), wxColour(1, 20, 255));
}

TEST_F(SettingsTest, WhatIsAbsentOrMakesNoSenseHasItsDefault) {
    // The first round finds no value at all.
    for (const char* text : {"", "many", "12x", "1.5", "-2147483649", "99999999999999999999"}) {
        EXPECT_EQ(ReadIntegerSetting("EarlyIntroductionInterval"), 180) << text;
        EXPECT_FALSE(ReadBooleanSetting("Test")) << text;
        EXPECT_EQ(ReadColourSetting("StudyBgColor"),
                  wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW));
        for (const char* key : {"EarlyIntroductionInterval", "Test", "StudyBgColor"}) {
            WriteStringSetting(key, text);
        }
    }
    for (const char* text : {"", "Sans 99999"}) {
        EXPECT_EQ(ReadFontSetting("Font"), wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
        WriteStringSetting("Font", text);
    }
    EXPECT_EQ(ReadFontSetting("Font"), wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
    WriteIntegerSetting("Test", 2);
    EXPECT_FALSE(ReadBooleanSetting("Test"));
    EXPECT_EQ(ReadIntegerSetting("Other"), 0);
    EXPECT_EQ(ReadStringSetting("Dummy"), "Dummy");
    EXPECT_FALSE(ReadColourSetting("Other").IsOk());
}

TEST_F(SettingsTest, OnlyANewInstallationBeginsWithLargeCards) {
    BeginSettings();
    EXPECT_EQ(ReadIntegerSetting(kSettingStudyTextStep), 7);
    RemoveSetting(kSettingStudyTextStep);
    WriteStringSetting(kSettingLastWindow, "Study");
    BeginSettings();
    EXPECT_EQ(ReadIntegerSetting(kSettingStudyTextStep), 0);
}

TEST_F(SettingsTest, AColourIsReadOnlyFromItsExactForm) {
    wxColour colour;
    EXPECT_TRUE(ParseColourText("R 12G  3B+45", colour));
    EXPECT_EQ(colour, wxColour(12, 3, 45));
    for (const char* text :
         {"r128G128B128", "R128g128B128", "R1G2B3", "R256G000B000", "R-01G000B000", "R0128G128B128",
          "R128G128B1 2", "R128G128B128 ", "R   G128B128"}) {
        EXPECT_FALSE(ParseColourText(text, colour)) << text;
    }
    EXPECT_EQ(colour, wxColour(12, 3, 45));
}
