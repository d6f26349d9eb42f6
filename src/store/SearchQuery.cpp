#include "store/SearchQuery.h"

#include <wx/intl.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "base/Folding.h"
#include "base/Text.h"

namespace {

using Field = SearchTerm::Field;
using Kind = SearchTerm::Kind;

struct FieldName {
    const char16_t* Name;
    Field In;
};
constexpr FieldName kFields[] = {{u"front", Field::kFront},     {u"back", Field::kBack},
                                 {u"notes", Field::kNotes},     {u"author", Field::kAuthor},
                                 {u"chapter", Field::kChapter}, {u"category", Field::kCategory}};

struct Unit {
    const char16_t* Name;
    int64_t Seconds;
};
// Months and years are those of the review intervals in the editor.
constexpr Unit kUnits[] = {{u"", 86400},   {u"min", 60},    {u"h", 3600},    {u"d", 86400},
                           {u"w", 604800}, {u"m", 2628000}, {u"y", 31536000}};

// Beyond it a number means the same as this one.
constexpr int32_t kGreatestNumber = 1000000;

// Signs as they are typed in any width.
constexpr bool IsSign(wchar_t character, wchar_t sign) {
    return character == sign || character == sign - 0x20 + 0xFF00;
}

template <typename Rows>
auto Find(const Rows& rows, std::u16string_view name) {
    return std::find_if(std::begin(rows), std::end(rows),
                        [name](const auto& row) { return name == row.Name; });
}

// Reads the words of a search from left to right.
class WordReader {
  public:
    explicit WordReader(const wxString& text) : mText(text.ToStdWstring()) {}

    // Returns false at the end.
    bool Next(SearchTerm& term);
    // Says what is wrong with the last word.
    const wxString& GetProblem() const { return mProblem; }

  private:
    bool HasMore() const { return mAt < mText.size(); }
    bool IsAtBlank() const { return !HasMore() || IsWideSpace(mText[mAt]); }
    bool Take(wchar_t sign);
    std::u16string ReadName();
    wxString ReadText();
    bool ReadField(const std::u16string& name, SearchTerm& term);
    bool ReadState(const std::u16string& name, SearchTerm& term);
    bool ReadHardest(const std::u16string& name, SearchTerm& term);
    bool ReadTime(const std::u16string& name, SearchTerm& term);
    bool ReadDirection(const std::u16string& name, SearchTerm& term);
    void ReadSpan(SearchTerm& term);

    std::wstring mText;
    size_t mAt = 0;
    wxString mProblem;
};

// Returns true for the word that the tick of a state puts in.
bool IsTick(const SearchTerm& term, CardState state) {
    return term.What == Kind::kState && term.State == state && !term.IsExcluded &&
           !term.Direction.has_value();
}

bool WordReader::Take(wchar_t sign) {
    const bool isThere = HasMore() && IsSign(mText[mAt], sign);
    mAt += isThere ? 1 : 0;
    return isThere;
}

// Returns what stands before the first sign that could end a name, folded.
std::u16string WordReader::ReadName() {
    const size_t begin = mAt;
    const auto goesOn = [](wchar_t character) {
        return !IsWideSpace(character) && character != '"' && !IsSign(character, ':') &&
               !IsSign(character, '<') && !IsSign(character, '>');
    };
    while (HasMore() && goesOn(mText[mAt])) {
        ++mAt;
    }
    return FoldText(wxString(mText.substr(begin, mAt - begin)));
}

wxString WordReader::ReadText() {
    if (HasMore() && mText[mAt] == '"') {
        const size_t begin = mAt + 1;
        const size_t end = std::min(mText.find('"', begin), mText.size());
        mAt = std::min(end + 1, mText.size());
        return mText.substr(begin, end - begin);
    }
    const size_t begin = mAt;
    while (!IsAtBlank()) {
        ++mAt;
    }
    return mText.substr(begin, mAt - begin);
}

bool WordReader::ReadField(const std::u16string& name, SearchTerm& term) {
    const auto* const field = Find(kFields, name);
    if (field == std::end(kFields) || !Take(':')) {
        return false;
    }
    term.In = field->In;
    term.Text = ReadText();
    if (term.Text.empty()) {
        mProblem = wxString::Format(_("A text is missing after \"%s\"."),
                                    wxString(mText.substr(term.Begin, mAt - term.Begin)));
    }
    return true;
}

bool WordReader::ReadState(const std::u16string& name, SearchTerm& term) {
    if (name != u"is" || !Take(':')) {
        return false;
    }
    term.What = Kind::kState;
    const wxString word = ReadText();
    const std::u16string folded = FoldText(word);
    const auto& states = CardStateWords();
    const auto* const state = std::find_if(states.begin(), states.end(), [&](const char* known) {
        return FoldText(wxString(known)) == folded;
    });
    if (state == states.end()) {
        mProblem = wxString::Format(
            _("There is no \"is:%s\". After \"is:\" stands due, new, failed, excluded, duplicate "
              "or hard."),
            word);
    } else {
        term.State = static_cast<CardState>(state - states.begin());
    }
    return true;
}

bool WordReader::ReadHardest(const std::u16string& name, SearchTerm& term) {
    if (name != u"hard" || !Take(':')) {
        return false;
    }
    term.What = Kind::kState;
    term.State = CardState::kHard;
    const wxString word = ReadText();
    const std::u16string folded = FoldText(word);
    const bool isNumber =
        ParseWholeNumber(wxString(std::wstring(folded.begin(), folded.end())), term.Hardest);
    if (!isNumber || term.Hardest < 1 || term.Hardest > SearchQuery::kMostHardest) {
        mProblem = wxString::Format(
            _("\"hard:%s\" is no number of cards. After \"hard:\" stands a whole number from 1 to "
              "%i."),
            word, int{SearchQuery::kMostHardest});
    }
    return true;
}

bool WordReader::ReadTime(const std::u16string& name, SearchTerm& term) {
    const bool isInterval = name == u"interval";
    if (!isInterval && name != u"due") {
        return false;
    }
    const bool isLess = Take('<');
    if (!isLess && !Take('>')) {
        return false;
    }
    term.What = isInterval ? Kind::kInterval : Kind::kDue;
    const bool isEqual = Take('=');
    term.Comparison = isLess ? (isEqual ? "<=" : "<") : (isEqual ? ">=" : ">");
    ReadSpan(term);
    return true;
}

void WordReader::ReadSpan(SearchTerm& term) {
    const wxString word = ReadText();
    const std::u16string folded = FoldText(word);
    size_t rest = 0;
    int32_t number = 0;
    const bool isNumber =
        ParseLeadingInteger(wxString(std::wstring(folded.begin(), folded.end())), number, rest);
    const auto* const unit = Find(kUnits, std::u16string_view(folded).substr(rest));
    if (!isNumber || unit == std::end(kUnits)) {
        mProblem = wxString::Format(
            _("\"%s\" is no length of time. Write it like 7d, with min, h, d, w, m or y after the "
              "number."),
            word);
        return;
    }
    term.Seconds = std::clamp(number, -kGreatestNumber, kGreatestNumber) * unit->Seconds;
}

// Reads a state or a time of one direction.
bool WordReader::ReadDirection(const std::u16string& name, SearchTerm& term) {
    const bool isForward = name == u"forward";
    if ((!isForward && name != u"reverse") || !Take(':')) {
        return false;
    }
    const std::u16string word = ReadName();
    if (!ReadState(word, term) && !ReadHardest(word, term) && !ReadTime(word, term)) {
        return false;
    }
    term.Direction = isForward ? kReviewForward : kReviewReverse;
    if (term.What == Kind::kState && term.State == CardState::kHard) {
        mProblem = _("The hardest cards can only be asked of the direction that you study.");
    }
    return true;
}

bool WordReader::Next(SearchTerm& term) {
    while (HasMore() && IsAtBlank()) {
        ++mAt;
    }
    if (!HasMore()) {
        return false;
    }
    term.Begin = mAt;
    term.IsExcluded = Take('-') && !IsAtBlank();
    const size_t begin = term.IsExcluded ? mAt : term.Begin;
    mAt = begin;
    const std::u16string name = ReadName();
    if (!ReadField(name, term) && !ReadState(name, term) && !ReadHardest(name, term) &&
        !ReadTime(name, term) && !ReadDirection(name, term)) {
        mAt = begin;
        term.Text = ReadText();
    }
    term.End = mAt;
    return true;
}

}  // namespace

const std::array<const char*, 6>& CardStateWords() {
    static constexpr std::array<const char*, 6> kWords = {"due",      "new",       "failed",
                                                          "excluded", "duplicate", "hard"};
    return kWords;
}

SearchQuery SearchQuery::Exact(const wxString& text) {
    SearchQuery query;
    query.mIsExact = true;
    query.mText = text;
    return query;
}

SearchQuery SearchQuery::Words(const wxString& text) {
    SearchQuery query;
    query.mText = text;
    const auto refuse = [&query](const wxString& problem) {
        query.mTerms.clear();
        query.mProblem = problem;
    };
    const wxString tooLong =
        wxString::Format(_("A search has at most %i characters and %i words."),
                         static_cast<int>(kMostCharacters), static_cast<int>(kMostWords));
    if (text.length() > kMostCharacters) {
        refuse(tooLong);
        return query;
    }
    WordReader reader(text);
    for (SearchTerm term; reader.Next(term) && query.mProblem.empty(); term = SearchTerm()) {
        if (!reader.GetProblem().empty()) {
            refuse(reader.GetProblem());
        } else if (query.mTerms.size() == kMostWords) {
            refuse(tooLong);
        } else if (term.What != Kind::kText || !term.Text.empty()) {
            query.mTerms.push_back(term);
        }
    }
    return query;
}

size_t SearchQuery::CountHardest() const {
    size_t most = 0;
    for (const SearchTerm& term : mTerms) {
        if (term.What == Kind::kState && term.State == CardState::kHard) {
            most = std::max(most, static_cast<size_t>(term.Hardest));
        }
    }
    return most;
}

bool SearchQuery::Requires(CardState state) const {
    return std::any_of(mTerms.begin(), mTerms.end(),
                       [state](const SearchTerm& term) { return IsTick(term, state); });
}

wxString SearchQuery::WithState(CardState state, bool required) const {
    wxString text = mText;
    for (auto term = mTerms.rbegin(); term != mTerms.rend(); ++term) {
        if (IsTick(*term, state)) {
            text.erase(term->Begin, term->End - term->Begin);
        }
    }
    text = TrimWide(text);
    if (required) {
        text += wxString(text.empty() ? "" : " ") +
                "is:" + CardStateWords()[static_cast<size_t>(state)];
    }
    return text;
}
