#include "base/Time.h"

#include <wx/intl.h>

#include <charconv>
#include <ctime>
#include <iterator>

#include "base/Text.h"

wxDateTime CurrentTime() {
    return wxDateTime(std::time(nullptr));
}

namespace {

// Rounds towards the past, also before 1970.
int64_t FloorDivide(int64_t number, int64_t divisor) {
    const int64_t quotient = number / divisor;
    return number % divisor < 0 ? quotient - 1 : quotient;
}

// Writes the separator and a number below 100 in two digits. An export writes two times for each
// card, for which the library's formatting is too slow.
char* WriteTwoDigits(char* out, char separator, int number) {
    out[0] = separator;
    out[1] = static_cast<char>('0' + number / 10);
    out[2] = static_cast<char>('0' + number % 10);
    return out + 3;
}

struct Component {
    uint32_t least;
    uint32_t greatest;
    wchar_t separator;
    bool separatorMandatory;
};

constexpr Component kComponents[] = {
    {1970, 9999, L'-', true}, {1, 12, L'-', true}, {1, 31, L' ', true},
    {0, 23, L':', true},      {0, 59, L':', true}, {0, 59, L'Z', false},
};

// In the order of wxDateTime.
constexpr const char* kMonths[] = {wxTRANSLATE("Jan"), wxTRANSLATE("Feb"), wxTRANSLATE("Mar"),
                                   wxTRANSLATE("Apr"), wxTRANSLATE("May"), wxTRANSLATE("Jun"),
                                   wxTRANSLATE("Jul"), wxTRANSLATE("Aug"), wxTRANSLATE("Sep"),
                                   wxTRANSLATE("Oct"), wxTRANSLATE("Nov"), wxTRANSLATE("Dec")};
constexpr const char* kWeekdays[] = {wxTRANSLATE("Sun"), wxTRANSLATE("Mon"), wxTRANSLATE("Tue"),
                                     wxTRANSLATE("Wed"), wxTRANSLATE("Thu"), wxTRANSLATE("Fri"),
                                     wxTRANSLATE("Sat")};

}  // namespace

wxString MonthName(wxDateTime::Month month) {
    return month < std::size(kMonths) ? wxGetTranslation(kMonths[month]) : wxString();
}

wxString WeekdayName(wxDateTime::WeekDay day) {
    return day < std::size(kWeekdays) ? wxGetTranslation(kWeekdays[day]) : wxString();
}

wxString FormatDate(const wxDateTime& time, wxString form) {
    if (!time.IsValid()) {
        return wxString();
    }
    form.Replace("%a", WeekdayName(time.GetWeekDay()));
    form.Replace("%b", MonthName(time.GetMonth()));
    return time.Format(form);
}

wxString FormatTimeStamp(const wxDateTime& time) {
    if (!time.IsValid()) {
        return wxString();
    }
    char text[kTimeStampLength];
    const char* const end = WriteTimeStamp(text, FloorDivide(time.GetValue().GetValue(), 1000));
    return wxString::FromAscii(text, static_cast<size_t>(end - text));
}

char* WriteTimeStamp(char* out, int64_t seconds) {
    const std::time_t moment = seconds;
    std::tm date{};
    // Fails only for a year beyond 32 bits. No time in milliseconds, as ours are, is that far off.
    ::gmtime_r(&moment, &date);
    const auto year = static_cast<uint32_t>(date.tm_year) + 1900U;
    for (uint32_t digit = 1000; digit > 1 && digit > year; digit /= 10) {
        *out++ = '0';
    }
    out = std::to_chars(out, out + kTimeStampLength, year).ptr;
    out = WriteTwoDigits(out, '-', date.tm_mon + 1);
    out = WriteTwoDigits(out, '-', date.tm_mday);
    out = WriteTwoDigits(out, ' ', date.tm_hour);
    out = WriteTwoDigits(out, ':', date.tm_min);
    out = WriteTwoDigits(out, ':', date.tm_sec);
    *out++ = 'Z';
    return out;
}

int ParseTimeStamp(const wxString& text, wxDateTime& time) {
    int numbers[6] = {};
    size_t position = 0;
    int* number = numbers;
    for (const Component& component : kComponents) {
        const uint32_t read = ReadUnsigned(text, position);
        if (read < component.least || read > component.greatest) {
            return -1;
        }
        *number++ = static_cast<int>(read);
        if (position < text.length() && text[position] == component.separator) {
            ++position;
        } else if (component.separatorMandatory) {
            return -1;
        }
    }
    if (position != text.length()) {
        return -1;
    }
    std::tm date{};
    date.tm_year = numbers[0] - 1900;
    date.tm_mon = numbers[1] - 1;
    date.tm_mday = numbers[2];
    date.tm_hour = numbers[3];
    date.tm_min = numbers[4];
    date.tm_sec = numbers[5];
    time = wxDateTime(wxLongLong(int64_t{::timegm(&date)} * 1000));
    return 0;
}

wxString CountOfUnits(unsigned count, int unit) {
    switch (unit) {
        case 6:
            return wxString::Format(wxPLURAL("%u year", "%u years", count), count);
        case 5:
            return wxString::Format(wxPLURAL("%u month", "%u months", count), count);
        case 4:
            return wxString::Format(wxPLURAL("%u week", "%u weeks", count), count);
        case 3:
            return wxString::Format(wxPLURAL("%u day", "%u days", count), count);
        case 2:
            return wxString::Format(wxPLURAL("%u hour", "%u hours", count), count);
        case 1:
            return wxString::Format(wxPLURAL("%u minute", "%u minutes", count), count);
        default:
            return wxString::Format(wxPLURAL("%u second", "%u seconds", count), count);
    }
}
