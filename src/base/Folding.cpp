// One unit of a text folds to one unit by a table, at about the speed of a copy. The table says for
// some units that there is more to do: the unit disappears, becomes several units, or depends on
// the units around it, as the voiced sound mark in か + ゛ does. A text with one of the last kind
// is normalised first, after which each character folds by itself.
//
// What the table holds is decided by ICU: compatible forms of a character are one, marks are taken
// off Latin, Greek and Cyrillic, and letters such as ø and œ, quotation marks and dashes become
// what one would type for them. A collator of ICU that ignores accents takes が for か and クラス
// for くらす alike, knows no wild cards, and needs ten times as long for a text.

#include "base/Folding.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utrans.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <unordered_map>

#include "base/IcuLibrary.h"
#include "base/Unicode.h"

namespace {

// What ICU does with a character. The first filter names the scripts that lose their marks; the
// second the marks: combining ones, those of Cyrillic numbers, vowel points of Hebrew and Arabic
// with its stretching stroke, and characters that are not seen, such as a soft hyphen.
constexpr char16_t kRules[] =
    u"NFKC;"
    u"[[:Latin:][:Greek:][:Cyrillic:]] NFD;"
    u"[\u0300-\u036F\u1AB0-\u1ACE\u1DC0-\u1DFF\uFE20-\uFE2F\u0483-\u0487\u0591-\u05BD\u05BF\u05C1"
    u"\u05C2\u05C4\u05C5\u05C7\u0640\u064B-\u0652\u0670[:DI:]] Remove;"
    u"Lower;"
    u"[[:Latin:][:Pd:][:Pi:][:Pf:]] Latin-ASCII;"
    u"[:Katakana:] Katakana-Hiragana;"
    u"NFC";

// Values of the table that stand for no unit. Texts cannot have them: they are no characters.
constexpr char16_t kNothing = 0xFDD0;
constexpr char16_t kSeveral = 0xFDD1;
constexpr char16_t kByContext = 0xFDD2;
constexpr char16_t kNoCharacter = 0xFFFD;

// Crosses out a sign of mathematics: ≠ is no accented =.
constexpr char16_t kStroke = 0x0338;

constexpr size_t kUnits = 0x10000;
// More than the longest folded form of one unit, which has 18.
constexpr int32_t kMostUnits = 64;

constexpr bool IsSpecial(char16_t value) {
    return value - kNothing < 3;
}

// Scripts with nothing to fold: Chinese characters, Korean syllables, and private characters.
constexpr bool IsPlain(char32_t unit) {
    return (unit >= 0x3400 && unit < 0xA000) || (unit >= 0xAC00 && unit < 0xD7A4) ||
           (unit >= 0xE000 && unit < 0xF900);
}

constexpr bool IsNoCharacter(char32_t unit) {
    return U16_IS_SURROGATE(unit) || (unit >= 0xFDD0 && unit <= 0xFDEF) || unit >= 0xFFFE;
}

std::u16string FoldCase(const std::u16string& text) {
    std::array<char16_t, kMostUnits> folded{};
    UErrorCode error = U_ZERO_ERROR;
    const int32_t length = u_strFoldCase(folded.data(), kMostUnits, text.data(),
                                         static_cast<int32_t>(text.size()), 0, &error);
    return U_FAILURE(error) != 0 ? text
                                 : std::u16string(folded.data(), static_cast<size_t>(length));
}

const UNormalizer2* GetNormalizer() {
    UErrorCode error = U_ZERO_ERROR;
    return unorm2_getNFKCInstance(&error);
}

// Where the library is missing, only the case is folded.
class Rules {
  public:
    Rules() {
        UErrorCode error = U_ZERO_ERROR;
        if (mOpen != nullptr && mClose != nullptr && mApply != nullptr) {
            mpRules = mOpen(kRules, -1, UTRANS_FORWARD, nullptr, 0, nullptr, &error);
        }
    }
    ~Rules() {
        if (mpRules != nullptr) {
            mClose(mpRules);
        }
    }
    Rules(const Rules&) = delete;
    Rules& operator=(const Rules&) = delete;

    std::u16string Apply(char16_t unit) const {
        std::array<char16_t, kMostUnits> text{unit};
        int32_t length = 1;
        int32_t limit = 1;
        UErrorCode error = U_ZERO_ERROR;
        if (mpRules != nullptr) {
            mApply(mpRules, text.data(), &length, kMostUnits, 0, &limit, &error);
        }
        return U_FAILURE(error) != 0 ? std::u16string(1, unit)
                                     : std::u16string(text.data(), static_cast<size_t>(length));
    }

  private:
    decltype(&utrans_openU) mOpen = FIND_ICU(utrans_openU);
    decltype(&utrans_close) mClose = FIND_ICU(utrans_close);
    decltype(&utrans_transUChars) mApply = FIND_ICU(utrans_transUChars);
    UTransliterator* mpRules = nullptr;
};

class FoldTable {
  public:
    FoldTable();

    char16_t operator[](char16_t unit) const { return mValues[unit]; }
    const std::u16string& GetSeveral(char16_t unit) const { return mSeveral.at(unit); }

  private:
    void Fill(const Rules& rules, char16_t unit);
    void Put(char16_t unit, const std::u16string& folded);

    std::array<char16_t, kUnits> mValues;
    std::unordered_map<char16_t, std::u16string> mSeveral;
};

FoldTable::FoldTable() {
    const Rules rules;
    for (size_t unit = 0; unit < kUnits; ++unit) {
        const auto value = static_cast<char16_t>(unit);
        mValues[unit] = IsNoCharacter(value) ? kNoCharacter : value;
        if (U16_IS_SURROGATE(value)) {
            mValues[unit] = kByContext;
        } else if (!IsNoCharacter(value) && !IsPlain(value)) {
            Fill(rules, value);
        }
    }
}

void FoldTable::Fill(const Rules& rules, char16_t unit) {
    Put(unit, FoldCase(rules.Apply(unit)));
    const bool standsAlone = unorm2_hasBoundaryBefore(GetNormalizer(), unit) != 0;
    if ((!standsAlone && mValues[unit] != kNothing) || unit == kStroke) {
        mValues[unit] = kByContext;
    }
}

void FoldTable::Put(char16_t unit, const std::u16string& folded) {
    if (folded.size() == 1) {
        mValues[unit] = folded.front();
    } else {
        mValues[unit] = folded.empty() ? kNothing : kSeveral;
        mSeveral.emplace(unit, folded);
    }
}

// Made when it is first needed: a start of the program does not fold anything.
const FoldTable& GetTable() {
    static const auto table = std::make_unique<const FoldTable>();
    return *table;
}

char16_t ReadUnit(const void* units, size_t index) {
    char16_t unit = 0;
    std::memcpy(&unit, static_cast<const char*>(units) + index * sizeof unit, sizeof unit);
    return unit;
}

// Folds a character beyond the table. Normalised text has none that changes but for its case.
void AppendFar(char32_t character, std::u16string& folded) {
    if (u_hasBinaryProperty(static_cast<UChar32>(character), UCHAR_DEFAULT_IGNORABLE_CODE_POINT) !=
        0) {
        return;
    }
    const auto point =
        static_cast<char32_t>(u_foldCase(static_cast<UChar32>(character), U_FOLD_CASE_DEFAULT));
    folded += U16_LEAD(point);
    folded += U16_TRAIL(point);
}

std::u16string Normalise(const void* units, size_t count) {
    std::u16string text(count, 0);
    std::memcpy(text.data(), units, count * sizeof(char16_t));
    UErrorCode error = U_ZERO_ERROR;
    const auto length = static_cast<int32_t>(count);
    if (unorm2_isNormalized(GetNormalizer(), text.data(), length, &error) != 0) {
        return text;
    }
    error = U_ZERO_ERROR;
    const int32_t needed =
        unorm2_normalize(GetNormalizer(), text.data(), length, nullptr, 0, &error);
    std::u16string normal(static_cast<size_t>(needed), 0);
    error = U_ZERO_ERROR;
    unorm2_normalize(GetNormalizer(), text.data(), length, normal.data(), needed, &error);
    return U_FAILURE(error) != 0 ? text : normal;
}

void FoldByContext(const void* units, size_t count, std::u16string& folded) {
    const FoldTable& table = GetTable();
    const std::u16string text = Normalise(units, count);
    folded.clear();
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t value = table[text[i]];
        if (value == kSeveral) {
            folded += table.GetSeveral(text[i]);
        } else if (value != kByContext && value != kNothing) {
            folded += value;
        } else if (U16_IS_LEAD(text[i]) && i + 1 < text.size() && U16_IS_TRAIL(text[i + 1])) {
            AppendFar(static_cast<char32_t>(U16_GET_SUPPLEMENTARY(text[i], text[i + 1])), folded);
            ++i;
        } else if (value == kByContext && text[i] != kStroke) {
            folded += U16_IS_SURROGATE(text[i]) ? kNoCharacter : text[i];
        }
    }
}

// Goes on from a unit that disappears or becomes several.
void FoldRest(const void* units, size_t from, size_t count, std::u16string& folded) {
    const FoldTable& table = GetTable();
    folded.resize(from);
    for (size_t i = from; i < count; ++i) {
        const char16_t unit = ReadUnit(units, i);
        const char16_t value = table[unit];
        if (value == kByContext) {
            FoldByContext(units, count, folded);
            return;
        }
        if (value == kSeveral) {
            folded += table.GetSeveral(unit);
        } else if (value != kNothing) {
            folded += value;
        }
    }
}

}  // namespace

void FoldUnits(const void* units, size_t count, std::u16string& folded) {
    const FoldTable& table = GetTable();
    folded.resize(count);
    for (size_t i = 0; i < count; ++i) {
        const char16_t value = table[ReadUnit(units, i)];
        if (IsSpecial(value)) {
            FoldRest(units, i, count, folded);
            return;
        }
        folded[i] = value;
    }
}

std::u16string FoldText(std::u16string_view text) {
    std::u16string folded;
    FoldUnits(text.data(), text.size(), folded);
    return folded;
}

std::u16string FoldText(const wxString& text) {
    return FoldText(ToUtf16(text));
}

bool IsLetterMark(char16_t unit) {
    constexpr uint8_t kNukta = 7;
    constexpr uint8_t kVoicing = 8;
    const uint8_t place = u_getCombiningClass(unit);
    return place == kNukta || place == kVoicing;
}
