#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/string.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "base/Files.h"
#include "base/Time.h"
#include "base/Unicode.h"
#include "store/CardUuid.h"

// How the lines of the log of reviews are written and taken apart. Only the readers and writers of
// the log include this.

// A line has about 90 characters, and fewer than 200 with the greatest numbers.
constexpr size_t kLongestLogLine = 512;
constexpr size_t kLogPiece = size_t{1} << 20;

template <class Number>
char* WriteNumber(char* out, Number number) {
    return std::to_chars(out, out + 64, number).ptr;
}
// Writes no exponent, so that a person can read it, and as many digits as it takes to read the same
// number again.
inline char* WriteNumber(char* out, float number) {
    return std::to_chars(out, out + 64, number, std::chars_format::fixed).ptr;
}

// Returns the days from 1 January 1970 to a date of the Gregorian calendar. The year begins in
// March here, so that the leap day is its last.
inline int64_t DaysFromDate(int64_t year, int64_t month, int64_t day) {
    year -= month <= 2 ? 1 : 0;
    const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int64_t leapDays = year / 4 - year / 100 + year / 400;
    return year * 365 + leapDays + dayOfYear - 719468;
}

inline char* WriteTime(char* out, int64_t seconds) {
    char* const end = WriteTimeStamp(out, seconds);
    // Files of cards have a blank between date and time. Here it is the T of ISO 8601, which other
    // programs can read.
    *std::find(out, end, ' ') = 'T';
    return end;
}

// Takes a line apart from its front, in one pass: a log of years has a million lines, and the
// library's readers of numbers and times would take several times as long. Each operation returns
// false where the line has something else.
class LineReader {
  public:
    explicit LineReader(std::string_view line)
        : mpAt(line.data()), mpEnd(line.data() + line.size()) {}

    bool IsDone() const { return mpAt == mpEnd; }
    bool Take(char character) {
        const bool isThere = mpAt != mpEnd && *mpAt == character;
        mpAt += isThere ? 1 : 0;
        return isThere;
    }

    bool Take(std::string_view text) {
        const auto length = static_cast<std::ptrdiff_t>(text.size());
        const bool isThere = mpEnd - mpAt >= length && std::equal(text.begin(), text.end(), mpAt);
        mpAt += isThere ? length : 0;
        return isThere;
    }

    // Accepts only the exact form that is written.
    bool TakeTime(int64_t& seconds) {
        int year = 0;
        int month = 0;
        int day = 0;
        int hour = 0;
        int minute = 0;
        int second = 0;
        if (!TakeDigits(4, year) || !Take('-') || !TakeDigits(2, month) || !Take('-') ||
            !TakeDigits(2, day) || !Take('T') || !TakeDigits(2, hour) || !Take(':') ||
            !TakeDigits(2, minute) || !Take(':') || !TakeDigits(2, second) || !Take('Z') ||
            year < 1970 || month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 ||
            minute > 59 || second > 59) {
            return false;
        }
        seconds = DaysFromDate(year, month, day) * int64_t{86400} + int64_t{hour} * 3600 +
                  int64_t{minute} * 60 + second;
        return true;
    }

    bool TakeId(CardUuid& id) {
        constexpr std::ptrdiff_t kLength = 36;
        if (mpEnd - mpAt < kLength || ParseUuidUtf8({mpAt, kLength}, id) != 0) {
            return false;
        }
        mpAt += kLength;
        return true;
    }

    // Takes a number of at most 18 digits, which fit.
    bool TakeWhole(int64_t& number) {
        const char* const begin = mpAt;
        number = 0;
        for (unsigned digit = 0; mpAt != mpEnd && mpAt - begin < 18 && IsDigit(digit); ++mpAt) {
            number = number * 10 + digit;
        }
        return mpAt != begin;
    }
    bool TakeSmall(int64_t greatest, uint8_t& number) {
        int64_t whole = 0;
        const bool isRead = TakeWhole(whole) && whole <= greatest;
        number = static_cast<uint8_t>(whole);
        return isRead;
    }

    // Takes a number of any sign within these limits.
    bool TakeNumber(int64_t least, int64_t greatest, int64_t& number) {
        const std::from_chars_result result = std::from_chars(mpAt, mpEnd, number);
        mpAt = result.ptr;
        return result.ec == std::errc() && number >= least && number <= greatest;
    }
    // Takes 16 digits of base 16.
    bool TakeSession(uint64_t& session) {
        constexpr std::ptrdiff_t kLength = 16;
        const char* const begin = mpAt;
        if (mpEnd - begin < kLength) {
            return false;
        }
        const std::from_chars_result result = std::from_chars(begin, begin + kLength, session, 16);
        mpAt = result.ptr;
        return result.ec == std::errc() && mpAt == begin + kLength;
    }
    // Takes a number that is finite.
    bool TakeFloat(float& number) {
        const std::from_chars_result result = std::from_chars(mpAt, mpEnd, number);
        mpAt = result.ptr;
        return result.ec == std::errc() && std::isfinite(number);
    }

    // Takes an interval, which ends with a tab.
    bool TakeInterval(float& number) {
        const char* const begin = mpAt;
        int64_t whole = 0;
        if (TakeWhole(whole) && mpAt != mpEnd && *mpAt == '\t') {
            number = static_cast<float>(whole);
            return true;
        }
        const char* const end = std::find(begin, mpEnd, '\t');
        const std::from_chars_result result = std::from_chars(begin, end, number);
        mpAt = end;
        return result.ec == std::errc() && result.ptr == end && number >= 0 && number <= 1e30f;
    }

  private:
    bool IsDigit(unsigned& digit) const {
        digit = static_cast<unsigned char>(*mpAt) - unsigned{'0'};
        return digit <= 9;
    }
    bool TakeDigits(int count, int& number) {
        number = 0;
        for (unsigned digit = 0; count > 0 && mpAt != mpEnd && IsDigit(digit); --count, ++mpAt) {
            number = number * 10 + static_cast<int>(digit);
        }
        return count == 0;
    }

    const char* mpAt;
    const char* mpEnd;
};

// Files of other systems end their lines with two characters.
inline std::string_view WithoutReturn(std::string_view line) {
    return !line.empty() && line.back() == '\r' ? line.substr(0, line.size() - 1) : line;
}

// Splits pieces of text into lines, and tells where the next line begins in the piece. The rest at
// the end has no line end.
template <class Visit>
void SplitLines(std::string_view bytes, std::string& rest, const Visit& visit) {
    // A line that never ends must not fill the memory; once cut it is no review.
    const auto keep = [&rest](std::string_view part) {
        rest.append(part.substr(0, kLongestLogLine - std::min(rest.size(), kLongestLogLine)));
    };
    for (size_t begin = 0; begin < bytes.size();) {
        const size_t end = bytes.find('\n', begin);
        if (end == std::string_view::npos) {
            keep(bytes.substr(begin));
            return;
        }
        if (rest.empty()) {
            visit(bytes.substr(begin, end - begin), end + 1);
        } else {
            keep(bytes.substr(begin, end - begin));
            visit(std::string_view(std::exchange(rest, std::string())), end + 1);
        }
        begin = end + 1;
    }
}

// Calls take with each piece of the file from the offset on, and advances the offset. Returns false
// when take does.
template <class Take>
bool ReadPieces(int descriptor, int64_t& offset, const Take& take) {
    std::vector<char> buffer(kLogPiece);
    for (;;) {
        const ssize_t count = ::pread(descriptor, buffer.data(), buffer.size(), offset);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return true;
        }
        offset += count;
        if (!take(std::string_view(buffer.data(), static_cast<size_t>(count)))) {
            return false;
        }
    }
}

// Opens the log, which must be a plain file: a pipe would wait for ever.
inline FileDescriptor OpenForReading(const wxString& path, struct stat& status) {
    FileDescriptor file(::open(ToUtf8(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.IsOpen() && (::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode))) {
        file.Close();
    }
    return file;
}
