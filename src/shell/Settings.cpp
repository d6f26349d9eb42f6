#include "shell/Settings.h"

#include <wx/config.h>
#include <wx/fileconf.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/listctrl.h>
#include <wx/log.h>
#include <wx/mstream.h>
#include <wx/settings.h>
#include <wx/tokenzr.h>
#include <wx/toplevel.h>
#include <wx/utils.h>
#include <wx/wfstream.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <limits>
#include <string>
#include <system_error>
#include <vector>

#include "base/Text.h"
#include "shell/ProgramInfo.h"
#include "shell/Toolkit.h"
#include "shell/WindowPlace.h"

// The settings lie in one text file of lines "Key=value" in a single section, for example
//
//     Font=1;Sans Bold 12
//     StudyBgColor=R255G255B255
//     StudyFramePosition=100,80,640,480
//
// in ~/.config/Velomind.conf. Every access parses the file, does one thing and, after a write,
// replaces the file. That is slow for a thousand values and right for twenty: nothing is cached, so
// two windows, or an editor of the user's, never disagree with the program. The user may edit the
// file, copy it from another computer or keep it behind a link, so whatever stands in it counts as
// input: a value that makes no sense gives its default, and a file that is not ours to use (a pipe,
// a directory, one without the right to read) is left alone.

namespace {

wxString ConfigurationDirectory() {
    wxString directory;
    // The rules of this variable want a relative path ignored.
    if (wxGetEnv("XDG_CONFIG_HOME", &directory) && wxIsAbsolutePath(directory)) {
        return directory;
    }
    return wxFileName::GetHomeDir() + "/.config";
}

// Returns the file itself where its name is a link, since writing replaces what it is given.
wxString FilePath(const wxString& application) {
    const std::string path = (ConfigurationDirectory() + "/" + application + ".conf").utf8_string();
    std::error_code error;
    const std::filesystem::path followed = std::filesystem::weakly_canonical(path, error);
    return wxString::FromUTF8(error ? path : followed.string());
}

// Tells whether the file may be read and replaced. Opening a pipe would wait for ever, and
// replacing a file that cannot be read would lose the settings in it.
bool IsUsable(const wxString& path) {
    std::error_code error;
    switch (std::filesystem::status(path.utf8_string(), error).type()) {
        case std::filesystem::file_type::regular:
            return wxFileName::IsFileReadable(path);
        case std::filesystem::file_type::not_found:
            return true;
        default:
            return false;
    }
}

void TellOnce(const wxString& path) {
    static bool told = false;
    if (!told) {
        told = true;
        wxLogWarning(_("Your settings cannot be kept: \"%s\" cannot be written."), path);
    }
}

// The library's parser asserts on some lines that make no sense (a value with no name before it)
// and gets over them. Users may write such lines, so they are no fault of the program.
class NoAsserts {
  public:
    NoAsserts() : mFormer(wxSetAssertHandler(nullptr)) {}
    ~NoAsserts() { wxSetAssertHandler(mFormer); }
    NoAsserts(const NoAsserts&) = delete;
    NoAsserts& operator=(const NoAsserts&) = delete;

  private:
    const wxAssertHandler_t mFormer;
};

// The library's configuration over the text of the file. The library can open and write the file by
// itself too, but then speaks up several times about a file that it cannot use, and writes it in
// place. This class reads the text once, and at its end writes the changed text to a temporary file
// that takes the other's name, so that a crash leaves the old settings or the new ones.
class SettingsFile final : public wxFileConfig {
  public:
    // A file that is not usable counts as empty and is never written.
    SettingsFile(wxInputStream& content, const wxString& path, bool usable)
        : wxFileConfig(content), mPath(path), mUsable(usable) {
        SetExpandEnvVars(false);
    }

    ~SettingsFile() override {
        if (mWritten && !(mUsable && Store())) {
            TellOnce(mPath);
        }
    }

  protected:
    bool DoReadLong(const wxString& key, long* value) const override {
        const wxLogNull quiet;
        return wxFileConfig::DoReadLong(key, value);
    }

    bool DoReadBool(const wxString& key, bool* value) const override {
        long number = 0;
        if (!DoReadLong(key, &number) || number < 0 || number > 1) {
            return false;
        }
        *value = number != 0;
        return true;
    }

    bool DoWriteString(const wxString& key, const wxString& value) override {
        mWritten = true;
        return wxFileConfig::DoWriteString(key, value);
    }

    bool DoWriteLong(const wxString& key, long value) override {
        mWritten = true;
        return wxFileConfig::DoWriteLong(key, value);
    }

  private:
    bool Store() {
        const wxLogNull quiet;
        // A directory that cannot be made shows in what follows.
        wxFileName(mPath).Mkdir(wxS_IRUSR | wxS_IWUSR | wxS_IXUSR, wxPATH_MKDIR_FULL);
        wxTempFileOutputStream file(mPath);
        return file.IsOk() && Save(file) && file.Commit();
    }

    const wxString mPath;
    const bool mUsable;
    bool mWritten = false;
};

}  // namespace

std::unique_ptr<wxConfigBase> OpenSettingsFile(const wxString& application) {
    const wxLogNull quiet;
    const NoAsserts calm;
    const wxString path = FilePath(application);
    const bool usable = IsUsable(path);
    if (usable && wxFileName::FileExists(path)) {
        wxFileInputStream content(path);
        return std::make_unique<SettingsFile>(content, path, content.IsOk());
    }
    wxMemoryInputStream nothing("", 0);
    return std::make_unique<SettingsFile>(nothing, path, usable);
}

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
constexpr DefaultRow<int32_t> kIntegerDefaults[] = {{kSettingEarlyIntroductionInterval, 180}};
constexpr DefaultRow<bool> kBooleanDefaults[] = {{kSettingEarlyIntroduction, false},
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

wxColour DefaultColour(const wxString& key) {
    const DefaultRow<wxSystemColour>* const row = FindDefault(kColourDefaults, key);
    return row == nullptr ? wxColour() : wxSystemSettings::GetColour(row->Default);
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

// Returns the widths that stand before the first token that is none.
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

wxFont ReadFontSetting(const wxString& key) {
    static const wxFont standard = wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT);
    wxFont font;
    const wxString text = OpenSettings()->Read(key, wxString());
    const bool taken = font.SetNativeFontInfo(text) && font.IsOk();
    return taken && font.GetFractionalPointSize() <= kLargestFont ? font : standard;
}

void WriteFontSetting(const wxString& key, const wxFont& font) {
    OpenSettings()->Write(key, font.GetNativeFontInfoDesc());
}

wxColour ReadColourSetting(const wxString& key) {
    wxColour colour;
    const bool taken = ParseColourText(OpenSettings()->Read(key, wxString()), colour);
    return taken ? colour : DefaultColour(key);
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
