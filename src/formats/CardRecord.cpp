#include "formats/CardRecord.h"

#include <wx/intl.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "base/Text.h"
#include "base/Time.h"
#include "store/FlashCard.h"

namespace {

// A name and what it stands for.
struct Row {
    std::wstring_view Name;
    bool IsSchedule;
    bool IsReverse;
    int Code;
};

constexpr Row kRows[] = {
    {L"id", false, false, kAttributeId},
    {L"cardid", false, false, kAttributeId},
    {L"front", false, false, kAttributeFront},
    {L"f", false, false, kAttributeFront},
    {L"q", false, false, kAttributeFront},
    {L"question", false, false, kAttributeFront},
    {L"front2", false, false, kAttributeFront2},
    {L"back", false, false, kAttributeBack},
    {L"b", false, false, kAttributeBack},
    {L"a", false, false, kAttributeBack},
    {L"answer", false, false, kAttributeBack},
    {L"back2", false, false, kAttributeBack2},
    {L"author", false, false, kAttributeAuthor},
    {L"category", false, false, kAttributeCategory},
    {L"c", false, false, kAttributeCategory},
    {L"chapter", false, false, kAttributeChapter},
    {L"introductionorder", false, false, kAttributeIntroductionOrder},
    {L"forwardx", false, false, kAttributeForwardX},
    {L"reversex", false, false, kAttributeReverseX},
    {L"notes", false, false, kAttributeNotes},
    {L"active", true, false, kAttributeIntroduced},
    {L"introduced", true, false, kAttributeIntroduced},
    {L"lastreview", true, false, kAttributeLastReview},
    {L"lastscore", true, false, kAttributeLastScore},
    {L"reviewinterval", true, false, kAttributeReviewInterval},
    {L"difficulty", true, false, kAttributeDifficulty},
    {L"erc", true, false, kAttributeErc},
    {L"rintroduced", true, true, kAttributeIntroduced},
    {L"rlastreview", true, true, kAttributeLastReview},
    {L"rlastscore", true, true, kAttributeLastScore},
    {L"rreviewinterval", true, true, kAttributeReviewInterval},
    {L"rdifficulty", true, true, kAttributeDifficulty},
    {L"rerc", true, true, kAttributeErc},
};

constexpr size_t LongestName() {
    size_t longest = 0;
    for (const Row& row : kRows) {
        longest = row.Name.size() > longest ? row.Name.size() : longest;
    }
    return longest;
}

bool Find(std::wstring_view name, AttributeInfo& info) {
    for (const Row& row : kRows) {
        if (row.Name == name) {
            info = {row.IsSchedule, row.IsReverse, row.Code,
                    AttributeMask(row.IsSchedule, row.IsReverse, row.Code)};
            return true;
        }
    }
    return false;
}

}  // namespace

bool HasDeckName(const wxString& path) {
    const wxString lower = path.Lower();
    const char* const endings[] = {".apkg", ".colpkg", ".cards", ".anki2", ".anki21"};
    return std::any_of(std::begin(endings), std::end(endings),
                       [&lower](const char* ending) { return lower.EndsWith(ending); });
}

CardUuid NoteCardId(const std::string& noteId, const std::string& part) {
    CardUuid id;
    const bool isUuid = part.empty() && ParseUuidUtf8(noteId, id) == 0 && !id.IsZero();
    return isUuid ? id : NamedUuid(noteId + '\n' + part);
}

bool LookupAttribute(const wxString& name, AttributeInfo& info) {
    const size_t length = name.length();
    std::array<wchar_t, LongestName()> lower{};
    if (length > lower.size()) {
        return false;
    }
    std::transform(name.wc_str(), name.wc_str() + length, lower.begin(),
                   [](wchar_t character) { return LowerWide(character); });
    return Find({lower.data(), length}, info);
}

namespace {

// No attribute has a longer name. A longer one may be a whole file without line breaks.
constexpr size_t kLongestName = 200;

constexpr int32_t kGreatestScore = 5;
constexpr int32_t kGreatestDifficulty = 32;
constexpr int32_t kGreatestErc = 2147418112;

bool ParseNumberUpTo(const wxString& text, int32_t greatest, int32_t& number) {
    int32_t parsed = 0;
    if (!ParseWholeNumber(text, parsed) || parsed < 0 || parsed > greatest) {
        return false;
    }
    number = parsed;
    return true;
}

wxString RangeMessage(const wxString& name, int32_t greatest) {
    const wxString format = wxString::Format(
        _("\"%%s\" must be followed by whole number between %i and %i"), 0, greatest);
    return NamedMessage(format, name);
}

wxString SetLastReview(const wxString& name, const wxString& value, wxDateTime& time) {
    if (ParseTimeStamp(value, time) != 0) {
        return NamedMessage(
            _("\"%s\" must be followed by a valid date in this format YYYY-MM-DD hh:mm:ss"), name);
    }
    return wxString();
}

wxString SetLastScore(const wxString& name, const wxString& value, uint8_t& score) {
    int32_t number = 0;
    if (!ParseNumberUpTo(value, kGreatestScore, number)) {
        return NamedMessage(_("\"%s\" must be followed by whole number between 0 and 5"), name);
    }
    score = static_cast<uint8_t>(number);
    return wxString();
}

wxString SetReviewInterval(const wxString& name, const wxString& value, float& interval) {
    double seconds = 0.0;
    if (!ParseDecimal(value, seconds) || seconds < 0.0 ||
        seconds > static_cast<double>(std::numeric_limits<float>::max())) {
        return NamedMessage(_("\"%s\" must be followed by a valid number of seconds."), name);
    }
    interval = static_cast<float>(seconds);
    return wxString();
}

wxString SetDifficulty(const wxString& name, const wxString& value, uint8_t& difficulty) {
    int32_t number = 0;
    if (!ParseNumberUpTo(value, kGreatestDifficulty, number)) {
        return RangeMessage(name, kGreatestDifficulty);
    }
    difficulty = static_cast<uint8_t>(number);
    return wxString();
}

}  // namespace

wxString SetIntroductionOrder(const wxString& name, const wxString& value, int32_t& order) {
    if (!ParseWholeNumber(value, order)) {
        return NamedMessage(_("\"%s\" must be followed by a whole number"), name);
    }
    return wxString();
}

wxString SetFlag(const wxString& name, const wxString& value, bool& flag) {
    const wxString lower = LowerWide(value);
    if (lower != L"true" && lower != L"false") {
        return NamedMessage(_("\"%s\" must be followed by either \"true\" or \"false\""), name);
    }
    flag = lower == L"true";
    return wxString();
}

wxString SetScheduleValue(int code, const wxString& name, const wxString& value,
                          CardSchedule& schedule) {
    switch (code) {
        case kAttributeIntroduced:
            return SetFlag(name, value, schedule.Introduced);
        case kAttributeLastReview:
            return SetLastReview(name, value, schedule.LastReview);
        case kAttributeLastScore:
            return SetLastScore(name, value, schedule.LastScore);
        case kAttributeReviewInterval:
            return SetReviewInterval(name, value, schedule.ReviewInterval);
        case kAttributeDifficulty:
            return SetDifficulty(name, value, schedule.Difficulty);
        default:
            return ParseNumberUpTo(value, kGreatestErc, schedule.ERC)
                       ? wxString()
                       : RangeMessage(name, kGreatestErc);
    }
}

namespace {

constexpr std::u16string_view kOpening = u"\n\u3010";
constexpr char16_t kClosing = u'\u3011';

}  // namespace

bool HasSecondText(std::u16string_view side) {
    return !side.empty() && side.back() == kClosing &&
           side.find(kOpening) != std::u16string_view::npos;
}

SplitSide SplitSecondText(std::u16string_view side) {
    if (!HasSecondText(side)) {
        return {side, {}};
    }
    const size_t opening = side.find(kOpening);
    const size_t begin = opening + kOpening.size();
    return {side.substr(0, opening), side.substr(begin, side.size() - 1 - begin)};
}

wxString JoinSecondText(const wxString& main, const wxString& second) {
    if (second.empty()) {
        return main;
    }
    return main + L"\n\u3010" + second + L"\u3011";
}

wxString NamedMessage(const wxString& format, const wxString& name) {
    return wxString::Format(format, CutWithEllipsis(name, kLongestName));
}

wxString UnknownAttributeMessage(const wxString& name) {
    return NamedMessage(_("\"%s\" is not a valid attribute name."), name);
}

wxString RepeatedAttributeMessage() {
    return _(
        "This card attribute has already been specified.  Individual cards must be separated by a "
        "blank line.");
}
