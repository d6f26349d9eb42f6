#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>

// Times are whole seconds.

// Returns the present moment by the computer's clock.
wxDateTime CurrentTime();

// Tells the time wherever it decides something. This one is the computer's clock; a test replaces
// it and runs a year of study in a second.
class Clock {
  public:
    virtual ~Clock() = default;
    virtual wxDateTime Now() const { return CurrentTime(); }
};

// Return the short name of a month or a day in the language that the program shows. The C library
// would name them in that of the user's locale, which may be another, or not be installed.
wxString MonthName(wxDateTime::Month month);
wxString WeekdayName(wxDateTime::WeekDay day);

// Returns a time of the local clock by a form of strftime, whose %a and %b are the names above.
wxString FormatDate(const wxDateTime& time, wxString form);

// The last second of the year 9999. Files and the store hold times from 1970 to there.
constexpr int64_t kLastTimeStamp = 253402300799;

// Returns the text of a time in files: UTC, "2005-01-02 03:04:05Z"; empty for an invalid time.
wxString FormatTimeStamp(const wxDateTime& time);
// Writes the same for a time in seconds since 1970 into a buffer of this length, and returns the
// end.
constexpr size_t kTimeStampLength = 32;
char* WriteTimeStamp(char* out, int64_t seconds);

// Reads such a text; the digits of a component are not counted and the final Z may be missing.
// A day past the end of its month rolls over into the next. Returns 0, or -1 with time unchanged.
int ParseTimeStamp(const wxString& text, wxDateTime& time);

// Returns a number of units of time in words, "3 weeks". The units are 0 seconds, 1 minutes, 2
// hours, 3 days, 4 weeks, 5 months, 6 years.
wxString CountOfUnits(unsigned count, int unit);
