#include "app/Reminder.h"

#include <wx/intl.h>
#include <wx/log.h>
#include <wx/notifmsg.h>

#include "app/MainWindows.h"
#include "base/Time.h"
#include "scheduler/Scheduler.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "store/Database.h"

namespace {

constexpr int kLookMilliseconds = 20000;
constexpr int kMinutesOfDay = 24 * 60;

wxDateTime MomentOfDay(const wxDateTime& day, int minuteOfDay) {
    // Built from its parts, since days on which the clock changes have other lengths.
    return wxDateTime(day.GetDay(), day.GetMonth(), day.GetYear(),
                      static_cast<wxDateTime::wxDateTime_t>(minuteOfDay / 60),
                      static_cast<wxDateTime::wxDateTime_t>(minuteOfDay % 60));
}

}  // namespace

wxDateTime PassedReminder(const wxDateTime& before, const wxDateTime& now, int minuteOfDay) {
    if (minuteOfDay < 0 || minuteOfDay >= kMinutesOfDay) {
        return wxInvalidDateTime;
    }
    wxDateTime moment = MomentOfDay(now, minuteOfDay);
    if (moment > now) {
        moment = MomentOfDay(now - wxDateSpan::Day(), minuteOfDay);
    }
    return before < moment ? moment : wxInvalidDateTime;
}

Reminder::Reminder(Database& database, const Clock& clock, const OpenDialogs& dialogs)
    : mDatabase(database), mClock(clock), mDialogs(dialogs), mBefore(clock.Now()) {}

void Reminder::Start() {
    wxTimer::Start(kLookMilliseconds);
}

bool Reminder::Look() {
    if (mDialogs.IsAnyOpen()) {
        return false;
    }
    const wxDateTime now = mClock.Now();
    const wxDateTime moment =
        PassedReminder(mBefore, now, ReadIntegerSetting(kSettingReminderMinute));
    mBefore = now;
    const wxString day = moment.IsValid() ? moment.FormatISODate() : wxString();
    if (day.empty() || day == ReadStringSetting(kSettingReminderDay)) {
        return false;
    }
    const StudyOutlook outlook = CountOutlook(mDatabase, now);
    const int due = outlook.Forward.Ready + outlook.Reverse.Ready;
    if (due == 0) {
        return false;
    }
    WriteStringSetting(kSettingReminderDay, day);
    // A desktop without notifications stays quiet.
    const wxLogNull quiet;
    wxNotificationMessage message(
        kApplicationName,
        wxString::Format(
            wxPLURAL("%i card is due.", "%i cards are due.", static_cast<unsigned>(due)), due));
    return message.Show();
}
