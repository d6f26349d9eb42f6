#pragma once

#include <wx/string.h>

struct CardSchedule;

// The forms of attribute values that are not plain text. Each sets the field and gives the empty
// text, or leaves the field alone and gives what is wrong with the value of that name.

wxString SetIntroductionOrder(const wxString& name, const wxString& value, int32_t& order);
wxString SetFlag(const wxString& name, const wxString& value, bool& flag);
// An attribute of the schedule, by its code.
wxString SetScheduleValue(int code, const wxString& name, const wxString& value,
                          CardSchedule& schedule);
