// The function of the list's search, on UTF-16.
//
// A search for "Hund" asks of each card whether one of its texts contains that. The engine would
// answer with LOWER(Front) LIKE '%hund%' OR LOWER(Back) LIKE '%hund%' and so on. Its functions work
// on UTF-8, while the store has its texts in UTF-16: each text would be turned into the other form
// and back, five times a card, which is most of a search's time. CONTAINS('%hund%', Front, Back,
// ...) reads all texts of a card in one call, as they are stored. It must give the engine's
// results, or a search would find other cards: only the letters A to Z have a lower case, "%"
// stands for any text and "_" for one character, and a text that is not well-formed is seen as the
// engine sees it after its own conversion. The tests compare both on random texts.
//
// RESEMBLES(pattern, text, ...) forgives accents and much else: it compares folded texts
// (base/Folding.h). Its pattern comes from MakeFoldedPattern, folded already and with units of its
// own for the wild cards, so that a "％" in a text is a sign like any other. A wild card for one
// character counts the folded ones, of which "ß" has two.

#include <sqlite3.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "base/Folding.h"
#include "store/Database.h"
#include "store/SearchQuery.h"

namespace {

constexpr uint32_t kEnd = 0;
constexpr uint32_t kReplacement = 0xFFFD;
// In UTF-8.
constexpr size_t kMostBytesOfUnit = 3;

constexpr bool IsUpper(uint32_t character) {
    return character - 'A' < 26;
}

constexpr uint32_t ToLower(uint32_t character) {
    return IsUpper(character) ? character | 0x20U : character;
}

constexpr uint32_t ToUpper(uint32_t character) {
    return character - 'a' < 26 ? character & ~0x20U : character;
}

// Returns true for a unit that is a character by itself, and not the end of a text.
constexpr bool IsPlain(uint32_t unit) {
    return unit - 1 < 0xD7FF;
}

// The text of a value, whatever its type; Data is null for NULL.
struct Units {
    const void* Data;
    size_t Count;
};

bool IsNativeText(sqlite3_value* value) {
#if SQLITE_VERSION_NUMBER >= 3040000
    const uint16_t one = 1;
    unsigned char firstByte = 0;
    std::memcpy(&firstByte, &one, 1);
    const int native = firstByte == 1 ? SQLITE_UTF16LE : SQLITE_UTF16BE;
    return sqlite3_value_type(value) == SQLITE_TEXT && sqlite3_value_encoding(value) == native;
#else
    return value == nullptr;
#endif
}

Units GetUnits(sqlite3_value* value) {
    if (IsNativeText(value)) {
        // Asked for a text, the engine would copy it to append a NUL.
        const void* const data = sqlite3_value_blob(value);
        return {data == nullptr ? "" : data, static_cast<size_t>(sqlite3_value_bytes(value)) / 2};
    }
    const void* const data = sqlite3_value_text16(value);
    return {data, static_cast<size_t>(sqlite3_value_bytes16(value)) / 2};
}

// The characters of a UTF-16 text of the machine's byte order, which may lie at an odd address.
// Sees an ill-formed text as the engine sees it through UTF-8. A copy marks a place to return to.
class Characters {
  public:
    explicit Characters(const Units& units)
        : mpAt(static_cast<const unsigned char*>(units.Data)), mpEnd(mpAt + 2 * units.Count) {}

    bool HasMore() const { return mpAt != mpEnd; }

    // Returns the next character, and NUL at the end, so that a NUL in the text counts as its end.
    uint32_t Next() {
        if (!HasMore()) {
            return kEnd;
        }
        const uint32_t unit = ReadUnit();
        if (unit < 0xD800) {
            return unit;
        }
        return unit < 0xE000 ? ReadPair(unit) : unit < 0xFFFE ? unit : kReplacement;
    }

    bool IsAtEnd() const {
        Characters rest(*this);
        return rest.Next() == kEnd;
    }

    // Moves past the next character that is the given one in either case. Returns false at the end.
    // Most of a search's time is spent here.
    bool Find(uint32_t lower) {
        const uint32_t upper = ToUpper(lower);
        while (HasMore()) {
            const uint32_t unit = ReadUnit();
            if (unit == lower || unit == upper) {
                return true;
            }
            if (!IsPlain(unit)) {
                mpAt -= sizeof(uint16_t);
                const uint32_t character = Next();
                if (character == lower || character == kEnd) {
                    return character != kEnd;
                }
            }
        }
        return false;
    }

  private:
    uint32_t ReadUnit() {
        uint16_t unit = 0;
        std::memcpy(&unit, mpAt, sizeof unit);
        mpAt += sizeof unit;
        return unit;
    }

    // Like the engine, makes a pair of any half and the unit after it.
    uint32_t ReadPair(uint32_t half) {
        if (!HasMore()) {
            return kReplacement;
        }
        const uint32_t other = ReadUnit();
        return (other & 0x3FF) + ((half & 0x3F) << 10) + (((half & 0x3C0) + 0x40) << 10);
    }

    const unsigned char* mpAt;
    const unsigned char* mpEnd;
};

enum class Match {
    kYes,
    kNo,
    // No match, and none further right either: the caller may stop trying.
    kNever
};

Match Compare(Characters pattern, Characters text);

// Compares what follows a "%": the rest of the pattern may begin anywhere.
Match CompareAnywhere(Characters pattern, Characters text) {
    uint32_t first = pattern.Next();
    while (first == '%' || first == '_') {
        if (first == '_' && text.Next() == kEnd) {
            return Match::kNever;
        }
        first = pattern.Next();
    }
    if (first == kEnd) {
        return Match::kYes;
    }
    const uint32_t lower = ToLower(first);
    while (text.Find(lower)) {
        const Match match = Compare(pattern, text);
        if (match != Match::kNo) {
            return match;
        }
    }
    return Match::kNever;
}

Match Compare(Characters pattern, Characters text) {
    for (uint32_t wanted = pattern.Next(); wanted != kEnd; wanted = pattern.Next()) {
        if (wanted == '%') {
            return CompareAnywhere(pattern, text);
        }
        const uint32_t found = text.Next();
        const bool isSame = ToLower(wanted) == ToLower(found);
        if (!isSame && (wanted != '_' || found == kEnd)) {
            return Match::kNo;
        }
    }
    return text.IsAtEnd() ? Match::kYes : Match::kNo;
}

size_t CountUtf8Bytes(Characters text) {
    size_t bytes = 0;
    while (text.HasMore()) {
        const uint32_t character = text.Next();
        bytes += character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
    }
    return bytes;
}

bool IsTooComplex(sqlite3_context* context, const Units& pattern) {
    const auto limit = static_cast<size_t>(
        sqlite3_limit(sqlite3_context_db_handle(context), SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1));
    return pattern.Count * kMostBytesOfUnit > limit && CountUtf8Bytes(Characters(pattern)) > limit;
}

void Contains(sqlite3_context* context, int count, sqlite3_value** arguments) {
    const Units pattern = GetUnits(arguments[0]);
    if (IsTooComplex(context, pattern)) {
        sqlite3_result_error(context, "LIKE or GLOB pattern too complex", -1);
        return;
    }
    const auto matches = [&](sqlite3_value* value) {
        const Units text = GetUnits(value);
        return pattern.Data != nullptr && text.Data != nullptr &&
               Compare(Characters(pattern), Characters(text)) == Match::kYes;
    };
    sqlite3_result_int(context, std::any_of(arguments + 1, arguments + count, matches) ? 1 : 0);
}

constexpr char16_t kAnyUnits = kFirstFreeUnit;
constexpr char16_t kAnyUnit = kFirstFreeUnit + 1;

constexpr bool IsWild(char16_t unit) {
    return unit == kAnyUnits || unit == kAnyUnit;
}

// Compares a pattern with a folded text, from left to right. After kAnyUnits the next part of the
// pattern is looked for; a part that was found once need not be found further right.
class FoldedComparison {
  public:
    FoldedComparison(std::u16string_view pattern, std::u16string_view text)
        : mPattern(pattern), mText(text) {}

    bool Run() {
        while (mNext < mPattern.size()) {
            const char16_t wanted = mPattern[mNext];
            const bool goesOn = wanted == kAnyUnits ? BeginPart() : TakeOne(wanted) || TryFurther();
            if (!goesOn) {
                return false;
            }
        }
        return true;
    }

  private:
    bool BeginPart() {
        // A search for क does not find the first half of क़.
        const bool cutsLetter = mNext > 0 && !IsWild(mPattern[mNext - 1]) && mAt < mText.size() &&
                                IsLetterMark(mText[mAt]);
        if (cutsLetter) {
            return TryFurther();
        }
        mPart = ++mNext;
        return FindPart(mAt);
    }

    bool TakeOne(char16_t wanted) {
        if (mAt == mText.size() || (wanted != kAnyUnit && wanted != mText[mAt])) {
            return false;
        }
        const bool isPair = wanted == kAnyUnit && (mText[mAt] & 0xFC00) == 0xD800;
        mAt = std::min(mAt + (isPair ? 2 : 1), mText.size());
        ++mNext;
        return true;
    }

    bool TryFurther() {
        mNext = mPart;
        return mFrom < mText.size() && FindPart(mFrom + 1);
    }

    // Goes to the next place where the part's first unit stands.
    bool FindPart(size_t from) {
        mFrom = from;
        if (mNext < mPattern.size() && !IsWild(mPattern[mNext])) {
            mFrom = mText.find(mPattern[mNext], from);
        }
        mAt = mFrom;
        return mFrom != std::u16string_view::npos;
    }

    std::u16string_view mPattern;
    std::u16string_view mText;
    size_t mNext = 0;
    size_t mAt = 0;
    // Where the part begins in the pattern, and where it is tried in the text.
    size_t mPart = 0;
    size_t mFrom = 0;
};

void Resembles(sqlite3_context* context, int count, sqlite3_value** arguments) {
    thread_local std::u16string pattern;
    thread_local std::u16string folded;
    const Units wanted = GetUnits(arguments[0]);
    pattern.resize(wanted.Count);
    std::memcpy(pattern.data(), wanted.Data, 2 * wanted.Count);
    const auto matches = [&](sqlite3_value* value) {
        const Units text = GetUnits(value);
        if (text.Data == nullptr) {
            return false;
        }
        FoldUnits(text.Data, text.Count, folded);
        return FoldedComparison(pattern, folded).Run();
    };
    sqlite3_result_int(context, std::any_of(arguments + 1, arguments + count, matches) ? 1 : 0);
}

// FOLDED(text) is the folded text, which is the same for cards that count as equal.
void Folded(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
    const Units text = GetUnits(arguments[0]);
    std::u16string folded;
    FoldUnits(text.Data, text.Data == nullptr ? 0 : text.Count, folded);
    sqlite3_result_text16(context, folded.data(), static_cast<int>(2 * folded.size()),
                          SQLITE_TRANSIENT);
}

}  // namespace

std::u16string MakeFoldedPattern(const wxString& text) {
    std::u16string pattern(1, kAnyUnits);
    wxString part;
    const auto endPart = [&] {
        pattern += FoldText(part);
        part.clear();
    };
    for (const wxUniChar character : text) {
        if (character == '%' || character == '_') {
            endPart();
            pattern += character == '%' ? kAnyUnits : kAnyUnit;
        } else {
            part += character;
        }
    }
    endPart();
    return pattern + kAnyUnits;
}

int RegisterSearchFunction(sqlite3* handle) {
    constexpr int kFlags = SQLITE_UTF16 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    struct Function {
        const char* Name;
        int Arguments;
        void (*Run)(sqlite3_context*, int, sqlite3_value**);
    };
    static constexpr Function kFunctions[] = {
        {"CONTAINS", -1, Contains}, {"RESEMBLES", -1, Resembles}, {"FOLDED", 1, Folded}};
    int result = SQLITE_OK;
    for (const Function& function : kFunctions) {
        if (result == SQLITE_OK) {
            result = sqlite3_create_function(handle, function.Name, function.Arguments, kFlags,
                                             nullptr, function.Run, nullptr, nullptr);
        }
    }
    return result;
}
