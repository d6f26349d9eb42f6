#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>

// The source of "now". Everything that decides by the time takes a Clock, so that a test can run a
// year of study in a second. Times are whole seconds.
class Clock {
  public:
    virtual ~Clock() = default;
    virtual wxDateTime Now() const = 0;
};

// The computer's own clock.
class SystemClock : public Clock {
  public:
    wxDateTime Now() const override;
};

// The present moment by the computer's clock, in whole seconds.
wxDateTime CurrentTime();

// The last second of the year 9999. Files and the store hold times from 1970 to there.
constexpr int64_t kLastTimeStamp = 253402300799;

// The text of a time in files: UTC, "2005-01-02 03:04:05Z".
wxString FormatTimeStamp(const wxDateTime& time);
// The same of a time in seconds since 1970, into room for the longest. Gives the end.
constexpr size_t kTimeStampLength = 32;
char* WriteTimeStamp(char* out, int64_t seconds);

// Reads such a text; the digits of a component are not counted and the final Z may be missing.
// A day past the end of its month rolls over into the next. Returns 0, or -1 with time unchanged.
int ParseTimeStamp(const wxString& text, wxDateTime& time);
