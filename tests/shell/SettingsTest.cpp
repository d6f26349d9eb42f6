#include "shell/Settings.h"

#include <wx/config.h>
#include <wx/frame.h>
#include <wx/listctrl.h>
#include <wx/settings.h>

#include <limits>
#include <string>
#include <vector>

#include "support/GuiTest.h"

class SettingsTest : public GuiTest {};

TEST_F(SettingsTest, ValuesComeBackAsTheyWereWritten) {
    for (const int32_t value :
         {-1, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
        WriteIntegerSetting("EarlyIntroductionInterval", value);
        EXPECT_EQ(ReadIntegerSetting("EarlyIntroductionInterval"), value);
    }
    for (const bool value : {true, false}) {
        WriteBooleanSetting("Test", value);
        EXPECT_EQ(ReadBooleanSetting("Test"), value);
    }
    WriteColourSetting("FontColor", wxColour(1, 20, 255));
    EXPECT_EQ(ReadStringSetting("FontColor"), "R001G020B255");
    EXPECT_EQ(ReadColourSetting("FontColor"), wxColour(1, 20, 255));
    const wxFont font = wxFontInfo(14.5).FaceName("DejaVu Sans Mono").Bold().Italic();
    WriteFontSetting("Font", font);
    EXPECT_EQ(ReadFontSetting("Font").GetNativeFontInfoDesc(), font.GetNativeFontInfoDesc());
}

TEST_F(SettingsTest, OddCharactersOfATextSurvive) {
    for (const char* text :
         {"", "  blanks  ", "\"quoted\"", "half\"", "\\", "C:\\new\\table", "line\nbreak\r\n",
          "\ttab\t", "$HOME/${PATH}", "[Group]", "a=b", "!x", "# none", "\v\f", "\xE6\x97\xA5.vlm",
          "\xC2\xA0\xE3\x80\x80wide\xE3\x80\x80", "\xE2\x80\xA8\xC2\x85"}) {
        WriteStringSetting("DatabasePath", wxString::FromUTF8(text));
        EXPECT_EQ(ReadStringSetting("DatabasePath"), wxString::FromUTF8(text)) << text;
    }
}

TEST_F(SettingsTest, WhatIsAbsentOrMakesNoSenseHasItsDefault) {
    // The first round finds no value at all.
    for (const char* text : {"", "many", "12x", "1.5", "0x10", "1 2", "-2147483649", "9999999999",
                             "99999999999999999999", "yes"}) {
        EXPECT_EQ(ReadIntegerSetting("EarlyIntroductionInterval"), 180) << text;
        EXPECT_FALSE(ReadBooleanSetting("Test")) << text;
        EXPECT_TRUE(OpenSettings()->ReadBool("Test", true)) << text;
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

TEST_F(SettingsTest, AColourIsReadOnlyFromItsExactForm) {
    const struct {
        const char* Text;
        wxColour Expected;
    } cases[] = {
        {"R000G255B128", {0, 255, 128}},
        {"R 12G  3B+45", {12, 3, 45}},
        {"r128G128B128", {}},
        {"R128g128B128", {}},
        {"G128R128B128", {}},
        {"R1G2B3", {}},
        {"R256G000B000", {}},
        {"R-01G000B000", {}},
        {"R0128G128B128", {}},
        {"R 128G128B128", {}},
        {"R128G128B1 2", {}},
        {"R128G128B12", {}},
        {"R128G128B128 ", {}},
        {"R   G128B128", {}},
    };
    for (const auto& row : cases) {
        wxColour colour;
        EXPECT_EQ(ParseColourText(row.Text, colour), row.Expected.IsOk()) << row.Text;
        EXPECT_EQ(colour, row.Expected) << row.Text;
    }
}

TEST_F(SettingsTest, ColumnWidthsAreTakenWhenThereAreAsManyAsColumns) {
    auto* const frame = new wxFrame(nullptr, wxID_ANY, "");
    wxListCtrl list(frame, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxLC_REPORT);
    for (int i = 0; i < 3; ++i) {
        list.AppendColumn("Column");
    }
    const int defaults[] = {30, 90, 90};
    for (const char* text : {"11,22,33", "", "11,22", "11,22,33,44", "11,x,33", "11,22,33x",
                             "-1,22,33", "11,22,99999999999"}) {
        WriteStringSetting("CardListColumns", text);
        ReadColumnWidths("Velomind", "CardListColumns", list, defaults, 3);
        WriteColumnWidths("Velomind", "CardListColumns", list);
        EXPECT_EQ(ReadStringSetting("CardListColumns"),
                  std::string(text) == "11,22,33" ? text : "30,90,90")
            << text;
    }
}
