#pragma once

#include <wx/string.h>

#include <memory>

class wxConfigBase;

// The file in which the user's choices are kept between runs, and the choices that do not concern
// windows. Those of the windows are in shell/Settings.h.

// The name that the settings are kept under.
constexpr const char* kApplicationName = "Velomind";

// The keys of the store's path, of the category under study, and of the backups.
constexpr char kSettingDatabasePath[] = "DatabasePath";
constexpr char kSettingCurrentCategoryId[] = "CurrentCategoryId";
constexpr char kSettingBackups[] = "Backups";
// Empty for the usual directory.
constexpr char kSettingBackupDirectory[] = "BackupDirectory";
constexpr char kSettingLeastBackups[] = "LeastBackups";

// Opens the configuration file of an application for a single access; the end of the object writes
// the changes. The file lies in the user's configuration directory (XDG_CONFIG_HOME, else
// ~/.config), which the first write makes. A file that is not a plain, readable one counts as empty
// and is never replaced. Unreadable content is ignored silently; a failure to keep settings is
// logged once while the program runs.
std::unique_ptr<wxConfigBase> OpenSettingsFile(const wxString& application);
