#include "shell/Settings.h"

#include <wx/config.h>
#include <wx/listctrl.h>
#include <wx/settings.h>
#include <wx/tokenzr.h>
#include <wx/toplevel.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <vector>

#include "base/Text.h"
#include "shell/ProgramInfo.h"
#include "shell/Toolkit.h"
#include "shell/WindowPlace.h"

namespace {

// The largest font that is taken, in points. A greater one can only come from an accident in the
// file, and one letter of it would fill the screen.
constexpr double kLargestFont = 999.0;
// The widest column that is taken, in pixels: the width of the widest window.
constexpr long kWidestColumn = 32767;

template <typename Value>
struct DefaultRow {
    const char* Key;
    Value Default;
};

constexpr DefaultRow<wxSystemColour> kColourDefaults[] = {
    {kSettingFontColor, wxSYS_COLOUR_WINDOWTEXT}, {kSettingStudyBgColor, wxSYS_COLOUR_WINDOW}};
constexpr DefaultRow<int32_t> kIntegerDefaults[] = {{kSettingEarlyIntroductionInterval, 180},
                                                    {kSettingLeastBackups, 10},
                                                    {kSettingReminderMinute, -1}};
constexpr DefaultRow<bool> kBooleanDefaults[] = {{kSettingBackups, true},
                                                 {kSettingEarlyIntroduction, false},
                                                 {kSettingFollowSavedCards, true},
                                                 {kSettingPlaySounds, true},
                                                 {kSettingTest, false}};
constexpr DefaultRow<const char*> kStringDefaults[] = {{"Dummy", "Dummy"},
                                                       {kSettingCardListShown, "Category"}};

// Returns the row of a key, or null.
template <typename Value, size_t kCount>
const DefaultRow<Value>* FindDefault(const DefaultRow<Value> (&table)[kCount],
                                     const wxString& key) {
    const auto* const row =
        std::find_if(std::begin(table), std::end(table),
                     [&key](const DefaultRow<Value>& candidate) { return key == candidate.Key; });
    return row == std::end(table) ? nullptr : row;
}

template <typename Value, size_t kCount>
Value DefaultOf(const DefaultRow<Value> (&table)[kCount], const wxString& key, Value otherwise) {
    const DefaultRow<Value>* const row = FindDefault(table, key);
    return row == nullptr ? otherwise : row->Default;
}

// Reads one third of a colour text: its letter, and three characters that are a number of at most
// 255.
bool ParseColourGroup(const wxString& text, size_t position, char letter, unsigned char& part) {
    int32_t value = 0;
    size_t used = 0;
    if (position >= text.length() || text[position] != letter ||
        !ParseLeadingInteger(text.Mid(position + 1), value, used) || used != 3 || value < 0 ||
        value > 255) {
        return false;
    }
    part = static_cast<unsigned char>(value);
    return true;
}

// Returns the key beside a window's place that tells its size and whether it is maximised, such as
// "StudyFrameSize" for "StudyFramePosition".
wxString SizeKey(wxString key) {
    key.Replace("Position", "Size");
    return key;
}

// Returns the widths before the first token that is not a width.
std::vector<int> ParseWidths(const wxString& text) {
    std::vector<int> widths;
    wxStringTokenizer tokens(text, ",", wxTOKEN_RET_EMPTY_ALL);
    while (tokens.HasMoreTokens()) {
        long width = 0;
        if (!tokens.GetNextToken().ToLong(&width) || width < 0 || width > kWidestColumn) {
            break;
        }
        widths.push_back(static_cast<int>(width));
    }
    return widths;
}

}  // namespace

std::unique_ptr<wxConfigBase> OpenSettings() {
    return OpenSettingsFile(kApplicationName);
}

void BeginSettings() {
    // Seven steps of a tenth make the text of the cards about twice as large as the desktop's.
    constexpr int32_t kFirstTextStep = 7;
    if (OpenSettings()->GetNumberOfEntries() == 0) {
        WriteIntegerSetting(kSettingStudyTextStep, kFirstTextStep);
    }
}

bool HasSetting(const wxString& key) {
    return OpenSettings()->HasEntry(key);
}

void RemoveSetting(const wxString& key) {
    OpenSettings()->DeleteEntry(key);
}

wxFont DefaultFontSetting() {
    static const wxFont standard = wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT);
    return standard;
}

wxColour DefaultColourSetting(const wxString& key) {
    const DefaultRow<wxSystemColour>* const row = FindDefault(kColourDefaults, key);
    return row == nullptr ? wxColour() : wxSystemSettings::GetColour(row->Default);
}

wxFont ReadFontSetting(const wxString& key) {
    wxFont font;
    const wxString text = OpenSettings()->Read(key, wxString());
    const bool taken = font.SetNativeFontInfo(text) && font.IsOk();
    return taken && font.GetFractionalPointSize() <= kLargestFont ? font : DefaultFontSetting();
}

void WriteFontSetting(const wxString& key, const wxFont& font) {
    OpenSettings()->Write(key, font.GetNativeFontInfoDesc());
}

wxColour ReadColourSetting(const wxString& key) {
    wxColour colour;
    const bool taken = ParseColourText(OpenSettings()->Read(key, wxString()), colour);
    return taken ? colour : DefaultColourSetting(key);
}

void WriteColourSetting(const wxString& key, const wxColour& colour) {
    OpenSettings()->Write(key, FormatColourText(colour));
}

int32_t ReadIntegerSetting(const wxString& key) {
    long value = 0;
    const bool taken = OpenSettings()->Read(key, &value) &&
                       value >= std::numeric_limits<int32_t>::min() &&
                       value <= std::numeric_limits<int32_t>::max();
    return taken ? static_cast<int32_t>(value) : DefaultOf(kIntegerDefaults, key, 0);
}

void WriteIntegerSetting(const wxString& key, int32_t value) {
    OpenSettings()->Write(key, static_cast<long>(value));
}

bool ReadBooleanSetting(const wxString& key) {
    return OpenSettings()->ReadBool(key, DefaultOf(kBooleanDefaults, key, false));
}

void WriteBooleanSetting(const wxString& key, bool value) {
    OpenSettings()->Write(key, value);
}

wxString ReadStringSetting(const wxString& key) {
    return OpenSettings()->Read(key, wxString(DefaultOf(kStringDefaults, key, "")));
}

void WriteStringSetting(const wxString& key, const wxString& value) {
    OpenSettings()->Write(key, value);
}

namespace {

// The most texts of one kind: the five last stores beside the open one.
constexpr size_t kMostRecent = 6;

wxString RecentKey(const wxString& key, size_t place) {
    return key + wxString::Format("%zu", place + 1);
}

}  // namespace

std::vector<wxString> ReadRecentTexts(const wxString& key) {
    std::vector<wxString> texts;
    const auto settings = OpenSettings();
    while (texts.size() < kMostRecent) {
        const wxString text = settings->Read(RecentKey(key, texts.size()), wxString());
        if (text.empty()) {
            break;
        }
        texts.push_back(text);
    }
    return texts;
}

void WriteRecentTexts(const wxString& key, const std::vector<wxString>& texts) {
    const auto settings = OpenSettings();
    for (size_t i = 0; i < kMostRecent; ++i) {
        settings->Write(RecentKey(key, i), i < texts.size() ? texts[i] : wxString());
    }
}

wxString FormatColourText(const wxColour& colour) {
    return wxString::Format("R%03iG%03iB%03i", colour.Red(), colour.Green(), colour.Blue());
}

bool ParseColourText(const wxString& text, wxColour& colour) {
    unsigned char red = 0;
    unsigned char green = 0;
    unsigned char blue = 0;
    if (text.length() != 12 || !ParseColourGroup(text, 0, 'R', red) ||
        !ParseColourGroup(text, 4, 'G', green) || !ParseColourGroup(text, 8, 'B', blue)) {
        return false;
    }
    colour.Set(red, green, blue);
    return true;
}

bool RestoreWindowPosition(const wxString& key, const wxString& application,
                           wxTopLevelWindow& window) {
    WatchPlace(window);
    const auto settings = OpenSettingsFile(application);
    WindowPlace place;
    const bool hasCorner = ParsePlace(settings->Read(key, wxString()), place.Free);
    if (!ParseSize(settings->Read(SizeKey(key), wxString()), place) && !hasCorner) {
        return false;
    }
    const std::vector<wxRect> screens = ScreenAreas();
    if (!hasCorner && !screens.empty()) {
        place.Free = place.Free.CentreIn(screens.front());
    }
    // A maximised or tiled window keeps its part of the screen.
    if (!window.IsMaximized() && !window.IsFullScreen() && !IsTiled(window)) {
        place.Free = ClampPlace(place.Free, screens);
        MoveToPlace(window, place);
    }
    return true;
}

void SaveWindowPosition(const wxString& key, const wxString& application,
                        const wxTopLevelWindow& window) {
    const WindowPlace place = GetPlace(window);
    const auto settings = OpenSettingsFile(application);
    settings->Write(SizeKey(key), FormatSize(place));
    if (HasWindowPlaces()) {
        settings->Write(key, FormatPlace(place.Free));
    }
}

bool ReadColumnWidths(const wxString& application, const wxString& key, wxListCtrl& list) {
    const int columns = list.GetColumnCount();
    const std::vector<int> stored =
        ParseWidths(OpenSettingsFile(application)->Read(key, wxString()));
    if (columns == 0 || stored.size() != static_cast<size_t>(columns)) {
        return false;
    }
    for (int i = 0; i < columns; ++i) {
        list.SetColumnWidth(i, stored[static_cast<size_t>(i)]);
    }
    return true;
}

void WriteColumnWidths(const wxString& application, const wxString& key, const wxListCtrl& list) {
    wxString text;
    for (int i = 0; i < list.GetColumnCount(); ++i) {
        text << (i == 0 ? "" : ",") << list.GetColumnWidth(i);
    }
    OpenSettingsFile(application)->Write(key, text);
}
