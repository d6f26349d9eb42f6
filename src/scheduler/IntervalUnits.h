#pragma once

#include <wx/string.h>

// The units in which a length of time is shown: 0 seconds, 1 minutes, 2 hours, 3 days, 4 weeks,
// 5 months, 6 years. An unknown index counts as seconds.
constexpr int kIntervalUnitCount = 7;
float IntervalUnitSeconds(int unit);
// The unit's word, translated.
wxString IntervalUnitName(int unit);

// A length of time as a value of one unit.
struct IntervalInUnits {
    float Value;
    int Unit;
};
// The largest unit of which the time is more than twice, else seconds.
IntervalInUnits SplitInterval(float seconds);
