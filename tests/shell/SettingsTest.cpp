#include "shell/Settings.h"

#include <wx/config.h>
#include <wx/frame.h>
#include <wx/listctrl.h>
#include <wx/settings.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "support/GuiTest.h"

namespace {

class SettingsTest : public GuiTest {
  protected:
    // Puts a line into the file as a person would by hand.
    void StoreByHand(const std::string& line) {
        OpenSettings()->Write("Made", 1L);
        WriteBytes(mSettingsDirectory.Path("config/Velomind.conf"), line + "\n");
    }
};

wxFont SystemFont() {
    return wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT);
}

}  // namespace

TEST_F(SettingsTest, WhatWasNeverWrittenHasItsDefault) {
    EXPECT_EQ(ReadIntegerSetting("EarlyIntroductionInterval"), 180);
    EXPECT_EQ(ReadIntegerSetting("Other"), 0);
    EXPECT_FALSE(ReadBooleanSetting("EarlyIntroduction"));
    EXPECT_FALSE(ReadBooleanSetting("Other"));
    EXPECT_EQ(ReadStringSetting("Dummy"), "Dummy");
    EXPECT_EQ(ReadStringSetting("Other"), "");
    EXPECT_EQ(ReadColourSetting("FontColor"), wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT));
    EXPECT_EQ(ReadColourSetting("StudyBgColor"), wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW));
    EXPECT_FALSE(ReadColourSetting("Other").IsOk());
    EXPECT_EQ(ReadFontSetting("Font"), SystemFont());
}

TEST_F(SettingsTest, ValuesComeBackAsTheyWereWritten) {
    for (const int32_t value : {0, -1, 999999, std::numeric_limits<int32_t>::min(),
                                std::numeric_limits<int32_t>::max()}) {
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
         {"", "  two blanks before and behind  ", "\"quoted\"", "half\"", "\\", "C:\\new\\table",
          "line\nbreak", "line\r\nbreak\r", "\ttab\t", "$HOME/${PATH}/%PATH%", "[Group]", "a=b",
          "!x", "# no comment", "; none", "/home/\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E.vlm", "\v\f",
          "\xC2\xA0\xE3\x80\x80wide\xE3\x80\x80", "\xE2\x80\xA8\xC2\x85"}) {
        WriteStringSetting("DatabasePath", wxString::FromUTF8(text));
        EXPECT_EQ(ReadStringSetting("DatabasePath"), wxString::FromUTF8(text)) << text;
    }
}

TEST_F(SettingsTest, NonsenseInAWholeNumberGivesTheDefault) {
    for (const char* text : {"", "many", "12x", "1.5", "0x10", "1 2", "2147483648", "-2147483649",
                             "99999999999999999999"}) {
        StoreByHand(std::string("EarlyIntroductionInterval=") + text);
        EXPECT_EQ(ReadIntegerSetting("EarlyIntroductionInterval"), 180) << text;
    }
}

TEST_F(SettingsTest, NonsenseInABooleanGivesTheDefault) {
    for (const char* text : {"", "yes", "true", "2", "-1", "1x"}) {
        StoreByHand(std::string("Test=") + text);
        EXPECT_FALSE(ReadBooleanSetting("Test")) << text;
        EXPECT_TRUE(OpenSettings()->ReadBool("Test", true)) << text;
    }
}

TEST_F(SettingsTest, NonsenseInAFontGivesTheSystemsFont) {
    for (const char* text : {"", "Sans 99999", "0;1;2;3"}) {
        StoreByHand(std::string("Font=") + text);
        EXPECT_EQ(ReadFontSetting("Font"), SystemFont()) << text;
    }
}

TEST_F(SettingsTest, AColourIsReadOnlyFromItsExactForm) {
    const struct {
        const char* Text;
        wxColour Expected;
    } cases[] = {
        {"R128G128B128", wxColour(128, 128, 128)},
        {"R000G255B001", wxColour(0, 255, 1)},
        {"R 12G  3B+45", wxColour(12, 3, 45)},
        {"r128G128B128", wxColour()},
        {"R128g128B128", wxColour()},
        {"R1G2B3", wxColour()},
        {"R256G000B000", wxColour()},
        {"R-01G000B000", wxColour()},
        {"R0128G128B128", wxColour()},
        {"R 128G128B128", wxColour()},
        {"R128G128B1 2", wxColour()},
        {"R128G128B12", wxColour()},
        {"R128G128B128 ", wxColour()},
        {"R128G128B128B128", wxColour()},
        {"R   G128B128", wxColour()},
        {"G128R128B128", wxColour()},
        {"#808080", wxColour()},
        {"", wxColour()},
    };
    for (const auto& row : cases) {
        wxColour colour;
        EXPECT_EQ(ParseColourText(row.Text, colour), row.Expected.IsOk()) << row.Text;
        EXPECT_EQ(colour, row.Expected) << row.Text;
        WriteStringSetting("FontColor", row.Text);
        EXPECT_EQ(ReadColourSetting("FontColor"),
                  row.Expected.IsOk() ? row.Expected
                                      : wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT))
            << row.Text;
    }
}

TEST_F(SettingsTest, ColumnWidthsAreTakenWhenThereAreAsManyAsColumns) {
    auto* const frame = new wxFrame(nullptr, wxID_ANY, "");
    auto* const list =
        new wxListCtrl(frame, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxLC_REPORT);
    for (int i = 0; i < 3; ++i) {
        list->AppendColumn("Column");
    }
    const int defaults[] = {30, 90, 90};
    const auto widths = [list] {
        return std::vector<int>{list->GetColumnWidth(0), list->GetColumnWidth(1),
                                list->GetColumnWidth(2)};
    };
    for (const char* text : {"11,22,33", "", "11,22", "11,22,33,44", "11,x,33", "11,22,33x",
                             "-1,22,33", "11,22,99999999999"}) {
        WriteStringSetting("CardListColumns", text);
        ReadColumnWidths("Velomind", "CardListColumns", *list, defaults, 3);
        const bool taken = std::string(text) == "11,22,33";
        EXPECT_EQ(widths(), (taken ? std::vector<int>{11, 22, 33} : std::vector<int>{30, 90, 90}))
            << text;
    }
    list->SetColumnWidth(1, 77);
    WriteColumnWidths("Velomind", "CardListColumns", *list);
    EXPECT_EQ(ReadStringSetting("CardListColumns"), "30,77,90");
    // With nothing stored and no defaults the widths stay.
    ReadColumnWidths("Velomind", "Other", *list, nullptr, 0);
    EXPECT_EQ(widths(), (std::vector<int>{30, 77, 90}));
}
