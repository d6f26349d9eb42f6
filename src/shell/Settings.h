#pragma once

#include <wx/colour.h>
#include <wx/font.h>
#include <wx/string.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "base/SettingsFile.h"

class wxConfigBase;
class wxListCtrl;
class wxTopLevelWindow;

// The key of each value in the settings file beside those of SettingsFile.h. Settings.cpp has the
// defaults.
constexpr char kSettingFont[] = "Font";
constexpr char kSettingFontColor[] = "FontColor";
constexpr char kSettingStudyBgColor[] = "StudyBgColor";
constexpr char kSettingBrowseFont[] = "BrowseFont";
constexpr char kSettingCardLayout[] = "CardLayout";
constexpr char kSettingCompactScoring[] = "CompactScoring";
constexpr char kSettingStudyTextStep[] = "StudyTextStep";
constexpr char kSettingTypeAnswerForward[] = "TypeAnswerForward";
constexpr char kSettingTypeAnswerReverse[] = "TypeAnswerReverse";
// Which sides of a card are spoken; see StudySpeech.h, which has the keys of the voices, too.
constexpr char kSettingSpeakSides[] = "SpeakSides";
// Whether the sounds of a side are played when it comes up.
constexpr char kSettingPlaySounds[] = "PlaySounds";
constexpr char kSettingExactSearch[] = "ExactSearch";
constexpr char kSettingFollowSavedCards[] = "FollowSavedCards";
constexpr char kSettingLastWindow[] = "LastWindow";
constexpr char kSettingEarlyIntroduction[] = "EarlyIntroduction";
constexpr char kSettingEarlyIntroductionInterval[] = "EarlyIntroductionInterval";
constexpr char kSettingRelearnShare[] = "RelearnShare";
// 0 sets no limit.
constexpr char kSettingNewCardsPerDay[] = "NewCardsPerDay";
constexpr char kSettingNewCardsPerCategory[] = "NewCardsPerCategory";
constexpr char kSettingEnoughForToday[] = "EnoughForToday";
constexpr char kSettingEnoughIsMinutes[] = "EnoughIsMinutes";
constexpr char kSettingHideRelearnHint[] = "HideRelearnHint";
constexpr char kSettingHidePassHint[] = "HidePassHint";
// The minute of the day at which due cards are told of, -1 for never, and the day of the last time.
constexpr char kSettingReminderMinute[] = "ReminderMinute";
constexpr char kSettingReminderDay[] = "ReminderDay";
constexpr char kSettingCardListColumns[] = "CardListColumns";
constexpr char kSettingCardListShown[] = "CardListShown";
constexpr char kSettingCardListOrder[] = "CardListOrder";
constexpr char kSettingImportDialogColumnWidths[] = "ImportDialogColumnWidths";
// The beginnings of several keys each, which end with a number.
constexpr char kSettingRecentSearch[] = "RecentSearch";
constexpr char kSettingRecentStore[] = "RecentStore";
constexpr char kSettingImportLayout[] = "ImportLayout";
constexpr char kSettingQuickHelp[] = "QuickHelp";
constexpr char kSettingTest[] = "Test";
constexpr char kSettingStudyFramePosition[] = "StudyFramePosition";
constexpr char kSettingEditFramePosition[] = "EditFramePosition";
constexpr char kSettingBrowseFramePosition[] = "BrowseFramePosition";
constexpr char kSettingStatisticsFramePosition[] = "StatisticsFramePosition";
constexpr char kSettingImportDialogPosition[] = "ImportDialogPosition";

// The named values of the user's configuration. Each access opens the configuration, does its work
// and closes it, so the next read sees a write at once and nothing is cached. Reading never fails:
// a text that makes no sense gives the default. Main thread only.

// Returns a fresh configuration object, for keys that have no accessor of their own.
std::unique_ptr<wxConfigBase> OpenSettings();

// Chooses what a new installation begins with. Call it before anything else is written: where
// there are settings already it does nothing, so that an update changes no window.
void BeginSettings();

bool HasSetting(const wxString& key);
// Removes a value, so that its default holds again.
void RemoveSetting(const wxString& key);

// Return what holds where no value is stored: the desktop's own.
wxFont DefaultFontSetting();
wxColour DefaultColourSetting(const wxString& key);
// Returns the system's default GUI font when the value is absent or no font.
wxFont ReadFontSetting(const wxString& key);
void WriteFontSetting(const wxString& key, const wxFont& font);
// Returns the key's system colour when the value is absent or no colour, and an invalid colour for
// an unknown key.
wxColour ReadColourSetting(const wxString& key);
void WriteColourSetting(const wxString& key, const wxColour& colour);
// Returns the key's default when the value is absent, or 0 if it has none.
int32_t ReadIntegerSetting(const wxString& key);
void WriteIntegerSetting(const wxString& key, int32_t value);
// Returns the key's default when the value is absent, or false if it has none.
bool ReadBooleanSetting(const wxString& key);
void WriteBooleanSetting(const wxString& key, bool value);
// Returns the key's default when the value is absent, or the empty text if it has none.
wxString ReadStringSetting(const wxString& key);
void WriteStringSetting(const wxString& key, const wxString& value);

// Texts that were used last, the newest first, under numbered keys from 1 on. Empty ones end the
// list.
std::vector<wxString> ReadRecentTexts(const wxString& key);
void WriteRecentTexts(const wxString& key, const std::vector<wxString>& texts);

// Returns the text form of a colour, "R128G128B128".
wxString FormatColourText(const wxColour& colour);
// Returns false, with colour unchanged, unless the text is exactly of that form.
bool ParseColourText(const wxString& text, wxColour& colour);

// The place of a window on the screen (WindowPlace.h): its corner and size under its key, where the
// desktop tells them, and its size and whether it is maximised under the key that has "Size" in
// place of "Position". Restore brings it onto a screen that exists and returns false when neither
// is stored. The application names the settings.
bool RestoreWindowPosition(const wxString& key, const wxString& application,
                           wxTopLevelWindow& window);
void SaveWindowPosition(const wxString& key, const wxString& application,
                        const wxTopLevelWindow& window);

// Column widths in pixels, joined by commas. They are applied when there are as many as columns;
// otherwise nothing changes and the result is false.
bool ReadColumnWidths(const wxString& application, const wxString& key, wxListCtrl& list);
void WriteColumnWidths(const wxString& application, const wxString& key, const wxListCtrl& list);
