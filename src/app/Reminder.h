#pragma once

#include <wx/datetime.h>
#include <wx/timer.h>

class Clock;
class Database;
class OpenDialogs;

// Returns the moment of a reminder that has come between two looks at the clock, or an invalid time
// when none has. The minute counts from the midnight of the user's day. A clock that was set back
// between the looks counts as one look; a program that slept over the moment still finds it, even
// after midnight.
wxDateTime PassedReminder(const wxDateTime& before, const wxDateTime& now, int minuteOfDay);

// Tells of due cards by a notification of the desktop, once a day at the time that the settings
// have, while the program runs. The day is kept in the settings, so that neither a clock set back
// nor a new start tells it again. Main thread only.
class Reminder : private wxTimer {
  public:
    // None of them is owned, and all must outlive this object. While a dialog is open, which may
    // be changing the store, the reminder waits.
    Reminder(Database& database, const Clock& clock, const OpenDialogs& dialogs);

    // Looks at the clock every few seconds from now on.
    void Start();
    // Looks once, if no dialog is open. Returns whether the user was told.
    bool Look();

  private:
    void Notify() override { Look(); }

    Database& mDatabase;
    const Clock& mClock;
    const OpenDialogs& mDialogs;
    wxDateTime mBefore;
};
