#include "base/Time.h"

#include <charconv>
#include <ctime>

#include "base/Numbers.h"

wxDateTime CurrentTime() {
    return wxDateTime(std::time(nullptr));
}

wxDateTime SystemClock::Now() const {
    return CurrentTime();
}

namespace {

constexpr int64_t kSecondsPerDay = 86400;

// A date of the civil calendar, carried on without an end in both directions.
struct CivilDate {
    int64_t year;
    int64_t month;
    int64_t day;
};

int64_t FloorDivide(int64_t number, int64_t divisor) {
    const int64_t quotient = number / divisor;
    return number % divisor < 0 ? quotient - 1 : quotient;
}

// Days since 1970-01-01. Years are counted from March, so that the leap day is the last of its
// year, and in eras of 400 years, which all have the same 146097 days. A day past the end of its
// month is a day of the next.
int64_t DaysFromCivil(const CivilDate& date) {
    const int64_t year = date.month <= 2 ? date.year - 1 : date.year;
    const int64_t era = FloorDivide(year, 400);
    const int64_t yearOfEra = year - era * 400;
    const int64_t monthFromMarch = (date.month + 9) % 12;
    const int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + date.day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

// The way back.
CivilDate CivilFromDays(int64_t days) {
    const int64_t shifted = days + 719468;
    const int64_t era = FloorDivide(shifted, 146097);
    const int64_t dayOfEra = shifted - era * 146097;
    const int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const int64_t day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
    const int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    return {year, month, day};
}

// The separator and a number below 100 in two digits. An export writes two times for each card, for
// which the library's formatting is too slow.
char* WriteTwoDigits(char* out, char separator, int64_t number) {
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

}  // namespace

wxString FormatTimeStamp(const wxDateTime& time) {
    if (!time.IsValid()) {
        return wxString();
    }
    char text[kTimeStampLength];
    const char* const end = WriteTimeStamp(text, FloorDivide(time.GetValue().GetValue(), 1000));
    return wxString::FromAscii(text, static_cast<size_t>(end - text));
}

char* WriteTimeStamp(char* out, int64_t seconds) {
    const int64_t days = FloorDivide(seconds, kSecondsPerDay);
    const int64_t second = seconds - days * kSecondsPerDay;
    const CivilDate date = CivilFromDays(days);
    const auto year = static_cast<uint32_t>(date.year);
    for (uint32_t digit = 1000; digit > 1 && digit > year; digit /= 10) {
        *out++ = '0';
    }
    out = std::to_chars(out, out + kTimeStampLength, year).ptr;
    out = WriteTwoDigits(out, '-', date.month);
    out = WriteTwoDigits(out, '-', date.day);
    out = WriteTwoDigits(out, ' ', second / 3600);
    out = WriteTwoDigits(out, ':', second / 60 % 60);
    out = WriteTwoDigits(out, ':', second % 60);
    *out++ = 'Z';
    return out;
}

int ParseTimeStamp(const wxString& text, wxDateTime& time) {
    uint32_t numbers[6] = {};
    size_t position = 0;
    uint32_t* number = numbers;
    for (const Component& component : kComponents) {
        *number = ReadUnsigned(text, position);
        if (*number < component.least || *number > component.greatest) {
            return -1;
        }
        ++number;
        if (position < text.length() && text[position] == component.separator) {
            ++position;
        } else if (component.separatorMandatory) {
            return -1;
        }
    }
    if (position != text.length()) {
        return -1;
    }
    const int64_t days = DaysFromCivil({numbers[0], numbers[1], numbers[2]});
    const int64_t seconds =
        days * kSecondsPerDay + int64_t{numbers[3]} * 3600 + int64_t{numbers[4]} * 60 + numbers[5];
    time = wxDateTime(wxLongLong(seconds * 1000));
    return 0;
}
