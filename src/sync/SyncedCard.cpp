#include "sync/SyncedCard.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "base/Time.h"

namespace {

// Takes the text up to the separator off its front.
std::string_view TakePart(std::string_view& text, char separator) {
    const size_t end = text.find(separator);
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return part;
}

template <class Number>
std::string NumberText(Number number) {
    std::array<char, 64> text{};
    const std::to_chars_result result =
        std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), result.ptr};
}

uint32_t BitsOf(float number) {
    uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

int64_t ReviewSeconds(const CardSchedule& schedule) {
    return schedule.LastReview.IsValid() ? schedule.LastReview.GetTicks() : -1;
}

}  // namespace

bool FieldOfLetter(char letter, CardField& field) {
    const char* const found = letter == '\0' ? nullptr : std::strchr(kFieldLetters, letter);
    if (found == nullptr) {
        return false;
    }
    field = static_cast<CardField>(found - kFieldLetters);
    return true;
}

bool SyncedCard::Exists() const {
    if (IsUnited) {
        return false;
    }
    const auto isUnseen = [this](const auto& touch) {
        const auto seen = Seen->find(touch.first);
        return seen == Seen->end() || seen->second < touch.second;
    };
    return !Seen || std::any_of(Touched.begin(), Touched.end(), isUnseen);
}

void SyncedCard::Touch(const Stamp& stamp) {
    int64_t& last = Touched[stamp.Machine];
    last = std::max(last, stamp.Time);
}

bool IsSameSchedule(const CardSchedule& one, const CardSchedule& other) {
    return one.Introduced == other.Introduced &&
           (!one.Introduced ||
            (ReviewSeconds(one) == ReviewSeconds(other) && one.LastScore == other.LastScore)) &&
           BitsOf(one.ReviewInterval) == BitsOf(other.ReviewInterval) &&
           one.Difficulty == other.Difficulty;
}

bool IsUntouched(const CardSchedule& schedule) {
    return IsSameSchedule(schedule, CardSchedule());
}

std::string FormatSchedule(const CardSchedule& schedule) {
    const int64_t review = ReviewSeconds(schedule);
    return std::string(schedule.Introduced ? "1 " : "0 ") +
           (review < 0 ? "-" : NumberText(review)) + " " + NumberText(int{schedule.LastScore}) +
           " " + NumberText(schedule.ReviewInterval) + " " + NumberText(int{schedule.Difficulty}) +
           " " + NumberText(schedule.ERC);
}

bool ParseSchedule(std::string_view text, CardSchedule& schedule) {
    const std::string_view introduced = TakePart(text, ' ');
    const std::string_view review = TakePart(text, ' ');
    int64_t seconds = 0;
    int64_t score = 0;
    int64_t difficulty = 0;
    int64_t erc = 0;
    float interval = 0;
    if ((introduced != "0" && introduced != "1") ||
        (review != "-" &&
         (!ParseInt64(review, seconds) || seconds < 0 || seconds > kLastTimeStamp)) ||
        !ParseInt64(TakePart(text, ' '), score) || score < 0 || score > 5) {
        return false;
    }
    const std::string_view number = TakePart(text, ' ');
    const std::from_chars_result result =
        std::from_chars(number.data(), number.data() + number.size(), interval);
    if (result.ec != std::errc() || result.ptr != number.data() + number.size() ||
        !(interval >= 0 && interval <= 1e30f) || !ParseInt64(TakePart(text, ' '), difficulty) ||
        difficulty < 0 || difficulty > UINT8_MAX || !ParseInt64(text, erc) || erc < INT32_MIN ||
        erc > INT32_MAX) {
        return false;
    }
    schedule.Introduced = introduced == "1";
    schedule.LastReview = review == "-" ? wxDateTime() : wxDateTime(static_cast<time_t>(seconds));
    schedule.LastScore = static_cast<uint8_t>(score);
    schedule.ReviewInterval = interval;
    schedule.Difficulty = static_cast<uint8_t>(difficulty);
    schedule.ERC = static_cast<int32_t>(erc);
    return true;
}

bool ParseInt64(std::string_view text, int64_t& number) {
    const std::from_chars_result result =
        std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

std::string IdText(const CardUuid& id) {
    const std::array<char, 36> text = UuidText(id);
    return {text.data(), text.size()};
}

int64_t MachineNumbers::NumberOf(uint64_t machine) {
    const auto [place, isNew] = mNumbers.emplace(machine, GetCount());
    if (isNew) {
        mMachines.emplace(place->second, machine);
    }
    return place->second;
}

bool MachineNumbers::MachineOf(int64_t number, uint64_t& machine) const {
    const auto found = mMachines.find(number);
    if (found == mMachines.end()) {
        return false;
    }
    machine = found->second;
    return true;
}

void MachineNumbers::Set(int64_t number, uint64_t machine) {
    mNumbers[machine] = number;
    mMachines[number] = machine;
}

std::string FormatStamp(const Stamp& stamp, MachineNumbers& numbers) {
    return stamp.IsNone()
               ? "0"
               : NumberText(stamp.Time) + "." + NumberText(numbers.NumberOf(stamp.Machine));
}

bool ParseStamp(std::string_view text, const MachineNumbers& numbers, Stamp& stamp) {
    if (text == "0") {
        stamp = Stamp();
        return true;
    }
    int64_t number = 0;
    return ParseInt64(TakePart(text, '.'), stamp.Time) && stamp.Time > 0 &&
           stamp.Time <= kLastStampTime && ParseInt64(text, number) &&
           numbers.MachineOf(number, stamp.Machine);
}

std::string FormatStamps(const FieldStamps& stamps, MachineNumbers& numbers) {
    std::string text;
    for (size_t i = 0; i < stamps.size(); ++i) {
        text += i == 0 ? "" : ",";
        if (i == 0 || stamps[i] != stamps[i - 1]) {
            text += FormatStamp(stamps[i], numbers);
        }
    }
    // Most cards have one stamp for all.
    text.erase(text.find_last_not_of(',') + 1);
    return text;
}

bool ParseStamps(std::string_view text, const MachineNumbers& numbers, FieldStamps& stamps) {
    for (size_t i = 0; i < stamps.size(); ++i) {
        const std::string_view part = TakePart(text, ',');
        if (part.empty() ? i == 0 : !ParseStamp(part, numbers, stamps[i])) {
            return false;
        }
        if (part.empty()) {
            stamps[i] = stamps[i - 1];
        }
    }
    return text.empty();
}

std::string FormatTimes(const MachineTimes& times, MachineNumbers& numbers) {
    std::string text;
    for (const auto& [machine, time] : times) {
        text += (text.empty() ? "" : ",") + FormatStamp({time, machine}, numbers);
    }
    return text;
}

bool ParseTimes(std::string_view text, const MachineNumbers& numbers, MachineTimes& times) {
    while (!text.empty()) {
        Stamp stamp;
        if (!ParseStamp(TakePart(text, ','), numbers, stamp) || stamp.IsNone()) {
            return false;
        }
        times[stamp.Machine] = stamp.Time;
    }
    return true;
}
