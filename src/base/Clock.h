#pragma once

#include <wx/datetime.h>

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
