#include "formats/decks/AnkiTemplate.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/Text.h"

namespace {

using Text = std::wstring_view;
constexpr size_t kNoField = static_cast<size_t>(-1);

Text ViewOf(const wxString& text) {
    return {text.wc_str(), text.length()};
}

wxString StringOf(Text text) {
    return {text.data(), text.size()};
}

// Removes comments, whose contents are not shown.
std::wstring WithoutComments(Text source) {
    std::wstring kept;
    size_t at = 0;
    for (;;) {
        const size_t begin = source.find(L"<!--", at);
        kept += source.substr(at, begin == Text::npos ? begin : begin - at);
        const size_t end = begin == Text::npos ? begin : source.find(L"-->", begin + 4);
        if (end == Text::npos) {
            return kept;
        }
        at = end + 3;
    }
}

class TemplateParser {
  public:
    explicit TemplateParser(const std::vector<wxString>& names) {
        for (size_t i = 0; i < std::min(names.size(), FieldBits().size()); ++i) {
            mPlaces.emplace(names[i].ToStdWstring(), i);
        }
    }

    std::vector<ShownField> Parse(const wxString& source) {
        const std::wstring text = WithoutComments(ViewOf(source));
        Text rest = text;
        SwitchDelimiters(rest);
        for (;;) {
            const size_t begin = rest.find(mOpen);
            const size_t end =
                begin == Text::npos ? begin : rest.find(mClose, begin + mOpen.size());
            if (end == Text::npos) {
                return std::move(mFields);
            }
            Text tag = rest.substr(begin + mOpen.size(), end - begin - mOpen.size());
            // The innermost opening braces count.
            const size_t nested = tag.rfind(mOpen);
            tag.remove_prefix(nested == Text::npos ? 0 : nested + mOpen.size());
            ReadTag(tag);
            rest.remove_prefix(end + mClose.size());
        }
    }

  private:
    struct Section {
        size_t Field;
        bool IsEmpty;
    };

    void SwitchDelimiters(Text& rest) {
        if (rest.substr(0, 3) == L"{{=") {
            mOpen = L"<%";
            mClose = L"%>";
            rest.remove_prefix(std::min(rest.size(), rest.find(L'\n')));
        }
    }

    size_t FieldOf(Text name) const {
        const auto found = mPlaces.find(std::wstring(TrimView(name)));
        return found == mPlaces.end() ? kNoField : found->second;
    }

    void ReadTag(Text tag) {
        while (!tag.empty() && (tag.front() == L'{' || IsWideSpace(tag.front()))) {
            tag.remove_prefix(1);
        }
        if (tag.empty()) {
            return;
        }
        const wchar_t first = tag.front();
        if (first == L'#' || first == L'^') {
            mOpenSections.push_back({FieldOf(tag.substr(1)), first == L'^'});
            NoteSection(mOpenSections.back(), 1);
        } else if (first == L'/') {
            if (!mOpenSections.empty()) {
                NoteSection(mOpenSections.back(), -1);
                mOpenSections.pop_back();
            }
        } else {
            ReadField(tag);
        }
    }

    // Counts how often a section of that kind is open. Within one, another one says nothing new.
    void NoteSection(const Section& section, int step) {
        if (section.Field == kNoField) {
            return;
        }
        int& count = mCounts[section.IsEmpty ? 1 : 0][section.Field];
        count += step;
        FieldBits& bits = section.IsEmpty ? mConditions.Empty : mConditions.Filled;
        if (bits[section.Field] != (count > 0)) {
            bits[section.Field] = count > 0;
            mpShared = nullptr;
        }
    }

    void ReadField(Text tag) {
        ShownField shown;
        const size_t nameAt = tag.rfind(L':');
        shown.Field = FieldOf(nameAt == Text::npos ? tag : tag.substr(nameAt + 1));
        if (shown.Field == kNoField) {
            return;
        }
        Text filters = tag.substr(0, nameAt == Text::npos ? 0 : nameAt);
        while (!filters.empty()) {
            const size_t colon = filters.rfind(L':');
            AddFilter(shown, TrimView(colon == Text::npos ? filters : filters.substr(colon + 1)));
            filters = filters.substr(0, colon == Text::npos ? 0 : colon);
        }
        if (mpShared == nullptr && (mConditions.Filled | mConditions.Empty).any()) {
            mpShared = std::make_shared<ShownField::Conditions>(mConditions);
        }
        shown.Within = mpShared;
        mFields.push_back(std::move(shown));
    }

    static void AddFilter(ShownField& shown, Text filter) {
        using Filter = ShownField::Filter;
        constexpr std::pair<Text, Filter> kFilters[] = {{L"furigana", Filter::kFurigana},
                                                        {L"kana", Filter::kKana},
                                                        {L"kanji", Filter::kKanji},
                                                        {L"cloze", Filter::kCloze},
                                                        {L"cloze-only", Filter::kCloze}};
        for (const auto& [name, how] : kFilters) {
            if (filter == name && shown.How == Filter::kNone) {
                shown.How = how;
            }
        }
        shown.IsHint = shown.IsHint || filter.substr(0, 4) == L"hint";
        shown.IsTyped = shown.IsTyped || filter == L"type";
    }

    // The fields by their names.
    std::unordered_map<std::wstring, size_t> mPlaces;
    Text mOpen = L"{{";
    Text mClose = L"}}";
    std::vector<Section> mOpenSections;
    // How many sections are open for each field, filled and empty.
    std::array<std::array<int, static_cast<size_t>(kMostFields.Most)>, 2> mCounts{};
    ShownField::Conditions mConditions;
    // A copy of the conditions, until they change.
    std::shared_ptr<const ShownField::Conditions> mpShared;
    std::vector<ShownField> mFields;
};

// The opening and the closing of a deletion, as places in the text.
struct ClozeSpan {
    size_t Begin = 0;
    size_t TextBegin = 0;
    // The place of the closing braces.
    size_t TextEnd = 0;
    std::vector<int> Numbers;
};

constexpr size_t kDeepest = 10;

// Reads "{{c1::" or "{{c1,2::" at that place. Returns its length, or 0.
size_t ReadClozeOpening(Text text, size_t at, std::vector<int>& numbers) {
    size_t next = at + 3;
    numbers.clear();
    if (text.substr(at, 3) != L"{{c") {
        return 0;
    }
    for (;;) {
        int number = 0;
        const size_t first = next;
        while (next < text.size() && next - first < 4 && text[next] >= L'0' && text[next] <= L'9') {
            number = number * 10 + static_cast<int>(text[next++] - L'0');
        }
        if (next == first) {
            return 0;
        }
        numbers.push_back(number);
        if (next < text.size() && text[next] == L',') {
            ++next;
        } else {
            return text.substr(next, 2) == L"::" ? next + 2 - at : 0;
        }
    }
}

// Returns the deletions in the order of their openings. One that is not closed is ordinary text.
std::vector<ClozeSpan> FindSpans(Text text) {
    std::vector<ClozeSpan> spans;
    std::vector<size_t> open;
    std::vector<int> numbers;
    for (size_t at = 0; at < text.size();) {
        const size_t length = text[at] == L'{' ? ReadClozeOpening(text, at, numbers) : 0;
        if (length > 0 && open.size() < kDeepest) {
            open.push_back(spans.size());
            spans.push_back({at, at + length, Text::npos, numbers});
            at += length;
        } else if (!open.empty() && text.substr(at, 2) == L"}}") {
            spans[open.back()].TextEnd = at;
            open.pop_back();
            at += 2;
        } else {
            ++at;
        }
    }
    spans.erase(std::remove_if(spans.begin(), spans.end(),
                               [](const ClozeSpan& span) { return span.TextEnd == Text::npos; }),
                spans.end());
    return spans;
}

class ClozeWriter {
  public:
    ClozeWriter(Text text, int number) : mText(text), mNumber(number), mSpans(FindSpans(text)) {}

    ClozeCard Make() {
        size_t span = 0;
        Write(0, mText.size(), span, true);
        return std::move(mCard);
    }

  private:
    // Writes a part of the text with the deletions that begin in it, from that one on.
    void Write(size_t at, size_t end, size_t& span, bool isShown) {
        while (span < mSpans.size() && mSpans[span].Begin < end) {
            const ClozeSpan& next = mSpans[span];
            Add(mText.substr(at, next.Begin - at), isShown);
            at = next.TextEnd + 2;
            WriteDeletion(span, isShown);
        }
        Add(mText.substr(at, end - at), isShown);
    }

    void WriteDeletion(size_t& index, bool isShown) {
        const ClozeSpan& span = mSpans[index++];
        // The hint follows the first pair of colons that belongs to no inner deletion.
        size_t hint = mText.find(L"::", span.TextBegin);
        for (size_t inner = index; inner < mSpans.size() && mSpans[inner].Begin < span.TextEnd;
             ++inner) {
            if (hint >= mSpans[inner].Begin && hint < mSpans[inner].TextEnd + 2) {
                hint = mText.find(L"::", mSpans[inner].TextEnd + 2);
            }
        }
        const size_t end = std::min(hint, span.TextEnd);
        const bool isHidden = isShown && std::find(span.Numbers.begin(), span.Numbers.end(),
                                                   mNumber) != span.Numbers.end();
        const size_t hiddenAt = mCard.Whole.length();
        Write(span.TextBegin, end, index, isShown && !isHidden);
        if (isHidden) {
            mCard.Hidden.push_back(mCard.Whole.Mid(hiddenAt));
            const Text words = hint < span.TextEnd ? mText.substr(hint + 2, span.TextEnd - hint - 2)
                                                   : Text(L"...");
            mCard.Question += L"[" + StringOf(words) + L"]";
        }
        while (index < mSpans.size() && mSpans[index].Begin < span.TextEnd) {
            ++index;
        }
    }

    void Add(Text text, bool isShown) {
        mCard.Whole += StringOf(text);
        if (isShown) {
            mCard.Question += StringOf(text);
        }
    }

    Text mText;
    int mNumber;
    std::vector<ClozeSpan> mSpans;
    ClozeCard mCard;
};

}  // namespace

std::vector<ShownField> ParseTemplate(const wxString& source,
                                      const std::vector<wxString>& fieldNames) {
    return TemplateParser(fieldNames).Parse(source);
}

// The base of a bracket goes back to a blank, which only marks its beginning and is not shown.
FuriganaText ReadFurigana(const wxString& text) {
    const Text source = ViewOf(text);
    std::wstring base;
    std::wstring reading;
    bool hasReading = false;
    // The next bracket that closes, and the next line feed, looked for again once they are passed.
    size_t nextEnd = 0;
    size_t nextLine = 0;
    const auto find = [&source](wchar_t wanted, size_t from, size_t& next) {
        if (next != Text::npos && next <= from) {
            next = source.find(wanted, from);
        }
        return next;
    };
    size_t wordAt = 0;
    size_t wordInReading = 0;
    const auto beginWord = [&] {
        wordAt = base.size();
        wordInReading = reading.size();
    };
    for (size_t at = 0; at < source.size(); ++at) {
        const wchar_t character = source[at];
        const size_t end = character == L'[' ? find(L']', at, nextEnd) : Text::npos;
        const Text inner = end == Text::npos ? Text() : source.substr(at + 1, end - at - 1);
        const bool isReading =
            !inner.empty() && base.size() > wordAt && find(L'\n', at, nextLine) > end;
        if (isReading) {
            // Drops the blank that marks the beginning of the base.
            if (wordAt > 0 && base[wordAt - 1] == L' ') {
                base.erase(wordAt - 1, 1);
                reading.erase(wordInReading - 1);
            } else {
                reading.resize(wordInReading);
            }
            reading += inner;
            hasReading = true;
            at = end;
            beginWord();
            continue;
        }
        base += character;
        reading += character;
        if (IsWideSpace(character)) {
            beginWord();
        }
    }
    return {base, hasReading ? wxString(reading) : wxString()};
}

ClozeCard MakeClozeCard(const wxString& text, int number) {
    return ClozeWriter(ViewOf(text), number).Make();
}

std::set<int> FindClozeNumbers(const wxString& text) {
    std::set<int> numbers;
    for (const ClozeSpan& span : FindSpans(ViewOf(text))) {
        numbers.insert(span.Numbers.begin(), span.Numbers.end());
    }
    return numbers;
}
