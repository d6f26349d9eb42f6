#include "exchange/AttributeTable.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/WideText.h"

namespace {

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
