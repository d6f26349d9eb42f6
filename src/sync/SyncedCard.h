#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "store/CardUuid.h"
#include "store/FlashCard.h"
#include "sync/Stamp.h"

// What an exchange knows of a card: the values that all computers have agreed on so far, and for
// each field the stamp of the change that it comes from.

// The fields that travel. An exchange file names them by their letters, in this order.
enum class CardField : uint8_t {
    kFront,
    kBack,
    kCategory,
    kAuthor,
    kChapter,
    kOrder,
    kForwardX,
    kReverseX,
    kNotes
};
constexpr size_t kCardFieldCount = 9;
constexpr char kFieldLetters[] = "FBCAHOXYN";
constexpr size_t IndexOf(CardField field) {
    return static_cast<size_t>(field);
}
// Returns false where no field has the letter.
bool FieldOfLetter(char letter, CardField& field);

using FieldStamps = std::array<Stamp, kCardFieldCount>;
// For each machine the time of the last change that it made to a card, its reviews included. Unlike
// the stamps of the fields these only grow, whichever change stands.
using MachineTimes = std::map<uint64_t, int64_t>;

struct SyncedCard {
    CardUuid Id;
    // UTF-8. Whole numbers and flags in decimal; the category as kNoCategory or the name after
    // kNamedCategory. A category that was renamed since keeps its former name here.
    std::array<std::string, kCardFieldCount> Values;
    FieldStamps Stamps;
    MachineTimes Touched;
    CardSchedule Forward;
    CardSchedule Reverse;
    // The id that the category has in this store; -1 for none.
    int32_t CategoryId = -1;
    // False until the first exchange that knows the card.
    bool IsKnown = false;
    // True once the card became one with another (UnionOf) and is gone for good.
    bool IsUnited = false;
    // The changes that the deletions of this card had seen; none where nobody has deleted it.
    std::optional<MachineTimes> Seen;

    // True unless there is a deletion, and no change that the deletions had not seen.
    bool Exists() const;
    void Touch(const Stamp& stamp);
    std::string& Value(CardField field) { return Values[IndexOf(field)]; }
    const std::string& Value(CardField field) const { return Values[IndexOf(field)]; }
    CardSchedule& Schedule(ReviewDirection direction) {
        return direction == kReviewForward ? Forward : Reverse;
    }
};

constexpr char kNoCategory[] = "-";
constexpr char kNamedCategory = '=';

// Two schedules are the same for an exchange if a score would do the same to both: the number that
// orders early review does not count, nor the time of a review that never was.
bool IsSameSchedule(const CardSchedule& one, const CardSchedule& other);
// True for a card that was never scored and whose schedule nobody has set.
bool IsUntouched(const CardSchedule& schedule);

// A schedule as a text with blanks: introduced, last review ("-" for none), score, interval,
// difficulty, number for early review. The second returns false for any other text.
std::string FormatSchedule(const CardSchedule& schedule);
bool ParseSchedule(std::string_view text, CardSchedule& schedule);

// Reads a whole number, with a sign if it has one, and nothing else.
bool ParseInt64(std::string_view text, int64_t& number);
// Returns the 36 characters of an identity.
std::string IdText(const CardUuid& id);

// Short numbers for machines in stored and sent stamps.
class MachineNumbers {
  public:
    // Returns the number of a machine, a new one for a new machine.
    int64_t NumberOf(uint64_t machine);
    // Returns false for a number that stands for no machine.
    bool MachineOf(int64_t number, uint64_t& machine) const;
    void Set(int64_t number, uint64_t machine);
    int64_t GetCount() const { return static_cast<int64_t>(mMachines.size()); }

  private:
    std::map<uint64_t, int64_t> mNumbers;
    std::map<int64_t, uint64_t> mMachines;
};

// Stamps as text: "0" for none, else time, ".", number of the machine. Several stand with commas,
// and a stamp that is the one before it is left empty.
std::string FormatStamp(const Stamp& stamp, MachineNumbers& numbers);
bool ParseStamp(std::string_view text, const MachineNumbers& numbers, Stamp& stamp);
std::string FormatStamps(const FieldStamps& stamps, MachineNumbers& numbers);
bool ParseStamps(std::string_view text, const MachineNumbers& numbers, FieldStamps& stamps);
std::string FormatTimes(const MachineTimes& times, MachineNumbers& numbers);
bool ParseTimes(std::string_view text, const MachineNumbers& numbers, MachineTimes& times);
