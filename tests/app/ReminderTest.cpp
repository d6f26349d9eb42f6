#include "app/Reminder.h"

#include <wx/utils.h>

#include <cstdlib>
#include <ctime>

#include "app/MainWindows.h"
#include "support/GuiTest.h"

namespace {

wxDateTime At(const wxString& text) {
    wxDateTime time;
    time.ParseISOCombined(text, ' ');
    return time;
}

struct ReminderTest : GuiStoreTest {
    // A time zone whose clocks change in the night of the last Sundays of March and October.
    ReminderTest() {
        setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
        tzset();
    }
    ~ReminderTest() override {
        unsetenv("TZ");
        tzset();
    }

    OpenDialogs mDialogs;
};

TEST_F(ReminderTest, AReminderIsDueWhenItsTimePassesBetweenTwoLooks) {
    struct Row {
        const char* What;
        const char* Before;
        const char* Now;
        int Minute;
        const char* Moment;
    };
    const Row rows[] = {
        {"never", "2026-11-25 00:00:00", "2026-11-26 23:00:00", -1, ""},
        {"no minute of a day", "2026-11-25 00:00:00", "2026-11-26 23:00:00", 1440, ""},
        {"too early", "2026-11-26 17:59:20", "2026-11-26 17:59:59", 1080, ""},
        {"to the second", "2026-11-26 17:59:40", "2026-11-26 18:00:00", 1080,
         "2026-11-26 18:00:00"},
        {"only once", "2026-11-26 18:00:00", "2026-11-26 18:00:20", 1080, ""},
        {"slept over it", "2026-11-26 12:00:00", "2026-11-26 20:00:00", 1080,
         "2026-11-26 18:00:00"},
        {"slept over it and over midnight", "2026-11-26 12:00:00", "2026-11-27 07:00:00", 1080,
         "2026-11-26 18:00:00"},
        {"slept for a week", "2026-11-19 12:00:00", "2026-11-26 19:00:00", 1080,
         "2026-11-26 18:00:00"},
        {"at midnight", "2026-11-26 23:59:50", "2026-11-27 00:00:10", 0, "2026-11-27 00:00:00"},
        {"clock set back", "2026-11-26 18:30:00", "2026-11-26 17:30:00", 1080, ""},
        {"clock set forward", "2026-11-26 17:30:00", "2026-11-28 18:30:00", 1080,
         "2026-11-28 18:00:00"},
        {"the day of the longer night", "2026-10-25 17:59:50", "2026-10-25 18:00:10", 1080,
         "2026-10-25 18:00:00"},
        {"the day of the shorter night", "2026-03-29 17:59:50", "2026-03-29 18:00:10", 1080,
         "2026-03-29 18:00:00"},
        {"in the hour that is left out", "2026-03-29 01:59:50", "2026-03-29 03:40:00", 150,
         "2026-03-29 03:30:00"}};
    for (const Row& row : rows) {
        const wxDateTime moment = PassedReminder(At(row.Before), At(row.Now), row.Minute);
        EXPECT_EQ(moment.IsValid() ? moment.FormatISOCombined(' ') : wxString(), row.Moment)
            << row.What;
    }
}

TEST_F(ReminderTest, TheDesktopTellsOnceADayOfDueCards) {
    TestDirectory files;
    const wxString address = files.Path("address");
    const wxString told = files.Path("told");
    const long service = wxExecute(
        wxString::Format("/usr/bin/python3 -B %s %s %s", VELOMIND_NOTIFICATIONS, address, told));
    ASSERT_GT(service, 0);

    FakeClock clock(At("2026-11-26 17:00:00").GetTicks());
    Reminder reminder(mDatabase, clock, mDialogs);
    WriteIntegerSetting(kSettingReminderMinute, 18 * 60);
    clock.Advance(2 * 3600);
    EXPECT_FALSE(reminder.Look()) << "no card is due";
    FlashCard card = MakeCard("f", "b");
    card.Forward.Introduced = true;
    card.Forward.LastReview = clock.Now();
    Insert(card);
    clock.Advance(24 * 3600);
    EXPECT_FALSE(reminder.Look()) << "there is no service, and nothing is said of that";

    ASSERT_TRUE(WaitFor([&address] { return wxFileExists(address); }, 20000));
    wxSetEnv("DBUS_SESSION_BUS_ADDRESS", wxString::FromUTF8(ReadBytes(address)));
    clock.Advance(24 * 3600);
    EXPECT_TRUE(reminder.Look());
    EXPECT_FALSE(reminder.Look());
    EXPECT_EQ(ReadBytes(told), "Velomind|1 card is due.\n");
    // The clock goes back, and the time comes again on the same day.
    clock.Advance(-3 * 3600);
    EXPECT_FALSE(reminder.Look());
    clock.Advance(3 * 3600);
    EXPECT_FALSE(Reminder(mDatabase, clock, mDialogs).Look());
    EXPECT_FALSE(reminder.Look());
}

}  // namespace
