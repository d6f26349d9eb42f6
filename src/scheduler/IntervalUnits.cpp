#include "scheduler/IntervalUnits.h"

#include <wx/translation.h>

#include <array>
#include <cstddef>

namespace {

struct IntervalUnit {
    float Seconds;
    const char* Name;
};

constexpr std::array<IntervalUnit, kIntervalUnitCount> kUnits{{
    {1.0f, wxTRANSLATE("seconds")},
    {60.0f, wxTRANSLATE("minutes")},
    {3600.0f, wxTRANSLATE("hours")},
    {86400.0f, wxTRANSLATE("days")},
    {604800.0f, wxTRANSLATE("weeks")},
    {2628000.0f, wxTRANSLATE("months")},
    {31536000.0f, wxTRANSLATE("years")},
}};

const IntervalUnit& UnitAt(int unit) {
    const bool known = unit >= 0 && unit < kIntervalUnitCount;
    return kUnits.at(known ? static_cast<size_t>(unit) : 0U);
}

}  // namespace

float IntervalUnitSeconds(int unit) {
    return UnitAt(unit).Seconds;
}

wxString IntervalUnitName(int unit) {
    return wxGetTranslation(UnitAt(unit).Name);
}

IntervalInUnits SplitInterval(float seconds) {
    int unit = kIntervalUnitCount - 1;
    while (unit > 0 && !(seconds > 2.0f * IntervalUnitSeconds(unit))) {
        --unit;
    }
    return {seconds / IntervalUnitSeconds(unit), unit};
}
