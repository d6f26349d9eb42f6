#include "formats/HtmlText.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <array>
#include <cwctype>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>

#include "base/Text.h"

namespace {

using Text = std::wstring_view;

// What a tag does to the text. Other tags leave no trace.
enum class TagKind {
    kNone,
    kBreak,
    kBlock,
    kItem,
    kCell,
    kPicture,
    kSound,
    kSkipped,
    kRuby,
    kReading,
    kAside
};

struct TagRow {
    Text Name;
    TagKind Kind;
};

constexpr TagRow kTags[] = {
    {L"br", TagKind::kBreak},         {L"div", TagKind::kBlock},     {L"p", TagKind::kBlock},
    {L"ul", TagKind::kBlock},         {L"ol", TagKind::kBlock},      {L"tr", TagKind::kBlock},
    {L"table", TagKind::kBlock},      {L"hr", TagKind::kBlock},      {L"h1", TagKind::kBlock},
    {L"h2", TagKind::kBlock},         {L"h3", TagKind::kBlock},      {L"h4", TagKind::kBlock},
    {L"h5", TagKind::kBlock},         {L"h6", TagKind::kBlock},      {L"pre", TagKind::kBlock},
    {L"blockquote", TagKind::kBlock}, {L"section", TagKind::kBlock}, {L"dl", TagKind::kBlock},
    {L"dt", TagKind::kBlock},         {L"dd", TagKind::kBlock},      {L"center", TagKind::kBlock},
    {L"li", TagKind::kItem},          {L"td", TagKind::kCell},       {L"th", TagKind::kCell},
    {L"img", TagKind::kPicture},      {L"svg", TagKind::kPicture},   {L"video", TagKind::kPicture},
    {L"audio", TagKind::kSound},      {L"style", TagKind::kSkipped}, {L"script", TagKind::kSkipped},
    {L"ruby", TagKind::kRuby},        {L"rt", TagKind::kReading},    {L"rp", TagKind::kAside},
};

struct MarkRow {
    Text Begin;
    Text End;
    bool IsSound;
};

constexpr MarkRow kMarks[] = {
    {L"[sound:", L"]", true},   {L"[latex]", L"[/latex]", false}, {L"[$$]", L"[/$$]", false},
    {L"[$]", L"[/$]", false},   {L"\\(", L"\\)", false},          {L"\\[", L"\\]", false},
    {L"<$$>", L"</$$>", false}, {L"<$>", L"</$>", false},         {L"<latex>", L"</latex>", false},
};

bool BeginsWith(Text text, Text beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

bool IsAsciiLetter(wchar_t character) {
    return (character >= L'a' && character <= L'z') || (character >= L'A' && character <= L'Z');
}

bool IsSourceSpace(wchar_t character) {
    return character == L' ' || (character >= L'\t' && character <= L'\r');
}

// Returns the character of a number, or U+FFFD for a number that is no character.
wchar_t NumberedCharacter(uint32_t number) {
    const bool isSurrogate = number >= 0xD800 && number < 0xE000;
    return number == 0 || number > 0x10FFFF || isSurrogate ? L'\uFFFD'
                                                           : static_cast<wchar_t>(number);
}

// Reads an entity at the front. Returns its length, or 0 when there is none.
size_t ReadEntity(Text text, wchar_t& character) {
    constexpr size_t kLongest = 32;
    size_t at = 1;
    if (at < text.size() && text[at] == L'#') {
        ++at;
        const bool isHex = at < text.size() && (text[at] == L'x' || text[at] == L'X');
        at += isHex ? 1 : 0;
        const size_t first = at;
        uint32_t number = 0;
        while (at < text.size() && text[at] < 0x80 &&
               (isHex ? std::iswxdigit(static_cast<wint_t>(text[at]))
                      : std::iswdigit(static_cast<wint_t>(text[at]))) != 0) {
            const uint32_t digit = wxUniChar(text[at]).GetValue();
            const uint32_t value = digit <= L'9' ? digit - L'0' : (digit | 0x20U) - L'a' + 10;
            number = std::min<uint32_t>(number * (isHex ? 16U : 10U) + value, 0x110000);
            ++at;
        }
        if (at == first) {
            return 0;
        }
        character = NumberedCharacter(number);
        return at < text.size() && text[at] == L';' ? at + 1 : at;
    }
    std::string name;
    while (at < text.size() && name.size() < kLongest && text[at] < 0x80 &&
           std::iswalnum(static_cast<wint_t>(text[at])) != 0) {
        name += static_cast<char>(text[at++]);
    }
    if (at >= text.size() || text[at] != L';') {
        return 0;
    }
    if (name == "apos") {
        character = L'\'';
        return at + 1;
    }
    const auto* const known = htmlEntityLookup(reinterpret_cast<const xmlChar*>(name.c_str()));
    if (known == nullptr) {
        return 0;
    }
    character = NumberedCharacter(known->value);
    return at + 1;
}

// Returns the place after a tag's ">", which quotes may hold too; npos when it does not end or a
// quote is never closed.
size_t QuotedTagEnd(Text text) {
    wchar_t quote = L'\0';
    for (size_t at = 1; at < text.size(); ++at) {
        const wchar_t character = text[at];
        if (quote != L'\0') {
            quote = character == quote ? L'\0' : quote;
        } else if ((character == L'"' || character == L'\'') && text[at - 1] == L'=') {
            quote = character;
        } else if (character == L'>') {
            return at + 1;
        }
    }
    return Text::npos;
}

// Writes the text and, where there are readings, a second one with the readings.
class Writer {
  public:
    void Add(wchar_t character) {
        if (IsSourceSpace(character)) {
            mIsBlankDue = true;
            return;
        }
        AddBlank();
        Append(character);
    }
    // A blank that stays.
    void AddHardBlank() {
        AddBlank();
        Append(L' ');
    }
    void AddBlankBetween() { mIsBlankDue = true; }
    void Break() {
        mIsBlankDue = false;
        mText += L'\n';
        mReading += L'\n';
    }
    void Block() {
        if (!mText.empty() && mText.back() != L'\n') {
            Break();
        }
        mIsBlankDue = false;
    }
    void BeginBase() {
        AddBlank();
        mBase = mReading.size();
    }
    void BeginReading() {
        mReading.resize(std::min(mBase, mReading.size()));
        mIsReading = true;
        mHasReading = true;
    }
    void EndReading() {
        mIsReading = false;
        mBase = mReading.size();
    }
    bool IsReading() const { return mIsReading; }

    HtmlText Finish() const {
        HtmlText result;
        result.Text = TrimLines(mText);
        if (mHasReading) {
            result.Reading = TrimLines(mReading);
        }
        return result;
    }

  private:
    void AddBlank() {
        const bool isWithin = !mText.empty() && mText.back() != L'\n' && mText.back() != L' ';
        if (std::exchange(mIsBlankDue, false) && isWithin && !mIsReading) {
            Append(L' ');
        }
    }
    void Append(wchar_t character) {
        if (!mIsReading) {
            mText += character;
        }
        mReading += character;
    }
    static wxString TrimLines(const std::wstring& text) {
        std::wstring trimmed;
        size_t at = 0;
        while (at <= text.size()) {
            const size_t end = std::min(text.find(L'\n', at), text.size());
            trimmed += TrimView(Text(text).substr(at, end - at));
            trimmed += L'\n';
            at = end + 1;
        }
        return TrimWide(trimmed);
    }

    std::wstring mText;
    std::wstring mReading;
    size_t mBase = 0;
    bool mIsBlankDue = false;
    bool mIsReading = false;
    bool mHasReading = false;
};

class Reader {
    static constexpr size_t kCommentEnd = std::size(kMarks);

    // What the rest of the text does not have, so that it is looked for once and not at each place
    // that could have used it.
    struct Missing {
        std::array<bool, kCommentEnd + 1> Ends{};
        bool TagEnd = false;
        // Whether a quote in a tag was never closed; tags then end at their first ">".
        bool QuoteEnd = false;
        std::set<std::wstring> Unclosed;
    };

  public:
    Reader(Text html, bool lineFeedsBreak, HtmlLosses& losses)
        : mHtml(html), mLineFeedsBreak(lineFeedsBreak), mLosses(losses) {}

    HtmlText Read() {
        while (mAt < mHtml.size()) {
            if (!ReadMark() && !ReadTag()) {
                ReadCharacter();
            }
        }
        return mWriter.Finish();
    }

  private:
    Text Rest() const { return mHtml.substr(mAt); }

    size_t FindEnd(size_t which, Text end, size_t from) {
        if (mMissing.Ends[which]) {
            return Text::npos;
        }
        const size_t found = mHtml.find(end, from);
        mMissing.Ends[which] = found == Text::npos;
        return found;
    }

    size_t FindTagEnd(Text rest) {
        if (mMissing.TagEnd) {
            return Text::npos;
        }
        if (!mMissing.QuoteEnd) {
            const size_t end = QuotedTagEnd(rest);
            if (end != Text::npos) {
                return end;
            }
            mMissing.QuoteEnd = true;
        }
        const size_t end = rest.find(L'>');
        mMissing.TagEnd = end == Text::npos;
        return end == Text::npos ? end : end + 1;
    }

    bool ReadMark() {
        const wchar_t first = mHtml[mAt];
        if (first != L'[' && first != L'\\' && first != L'<') {
            return false;
        }
        for (size_t i = 0; i < std::size(kMarks); ++i) {
            const MarkRow& mark = kMarks[i];
            if (!BeginsWith(Rest(), mark.Begin)) {
                continue;
            }
            const size_t begin = mAt + mark.Begin.size();
            const size_t end = FindEnd(i, mark.End, begin);
            if (end == Text::npos) {
                return false;
            }
            if (mark.IsSound) {
                ++mLosses.Sounds;
            } else {
                ++mLosses.Formulas;
                ReadFormula(begin, end);
            }
            mAt = end + mark.End.size();
            return true;
        }
        return false;
    }

    // The source of a formula has entities and breaks like any other text. What it lacks, such as
    // the end of "a<b", the text after it may have.
    void ReadFormula(size_t begin, size_t end) {
        const Text whole = mHtml;
        Missing missing = std::exchange(mMissing, Missing());
        mHtml = whole.substr(0, end);
        mAt = begin;
        while (mAt < mHtml.size()) {
            if (!ReadTag()) {
                ReadCharacter();
            }
        }
        mHtml = whole;
        mMissing = std::move(missing);
    }

    bool ReadTag() {
        const Text rest = Rest();
        if (rest.size() < 2 || rest[0] != L'<') {
            return false;
        }
        if (BeginsWith(rest, L"<!--")) {
            const size_t end = FindEnd(kCommentEnd, L"-->", mAt + 4);
            mAt = end == Text::npos ? mHtml.size() : end + 3;
            return true;
        }
        const bool isEnd = rest[1] == L'/';
        const size_t nameAt = isEnd ? 2 : 1;
        if (nameAt >= rest.size() || !(IsAsciiLetter(rest[nameAt]) || rest[1] == L'!')) {
            return false;
        }
        const size_t length = FindTagEnd(rest);
        if (length == Text::npos) {
            return false;
        }
        std::wstring name;
        for (size_t at = nameAt; at < length && std::iswalnum(static_cast<wint_t>(rest[at])) != 0;
             ++at) {
            name += LowerWide(rest[at]);
        }
        mAt += length;
        Obey(name, isEnd);
        return true;
    }

    void Obey(const std::wstring& name, bool isEnd) {
        const auto* const row =
            std::find_if(std::begin(kTags), std::end(kTags),
                         [&name](const TagRow& tag) { return tag.Name == name; });
        switch (row == std::end(kTags) ? TagKind::kNone : row->Kind) {
            case TagKind::kNone:
                break;
            case TagKind::kBreak:
                mWriter.Break();
                break;
            case TagKind::kBlock:
                mWriter.Block();
                break;
            case TagKind::kItem:
                mWriter.Block();
                if (!isEnd) {
                    mWriter.Add(L'-');
                    mWriter.AddBlankBetween();
                }
                break;
            case TagKind::kCell:
                mWriter.AddBlankBetween();
                break;
            case TagKind::kPicture:
                mLosses.Pictures += isEnd ? 0 : 1;
                if (!isEnd && name != L"img") {
                    SkipTo(name);
                }
                break;
            case TagKind::kSound:
                mLosses.Sounds += isEnd ? 0 : 1;
                break;
            case TagKind::kSkipped:
            case TagKind::kAside:
                if (!isEnd) {
                    SkipTo(name);
                }
                break;
            case TagKind::kRuby:
                mWriter.EndReading();
                mWriter.BeginBase();
                break;
            case TagKind::kReading:
                if (isEnd) {
                    mWriter.EndReading();
                } else {
                    mWriter.BeginReading();
                }
                break;
        }
    }

    // Skips the content of an element; one that does not end has none.
    void SkipTo(const std::wstring& name) {
        if (mMissing.Unclosed.count(name) != 0) {
            return;
        }
        const std::wstring end = L"</" + name;
        size_t at = mAt;
        while ((at = mHtml.find(L"</", at)) != Text::npos) {
            const Text found = mHtml.substr(at, end.size());
            if (std::equal(found.begin(), found.end(), end.begin(), end.end(),
                           [](wchar_t one, wchar_t other) { return LowerWide(one) == other; })) {
                mAt = at;
                return;
            }
            ++at;
        }
        mMissing.Unclosed.insert(name);
    }

    void ReadCharacter() {
        const wchar_t character = mHtml[mAt];
        wchar_t decoded = character;
        const size_t length = character == L'&' ? ReadEntity(Rest(), decoded) : 0;
        mAt += std::max<size_t>(length, 1);
        if (decoded == L'\u00A0') {
            mWriter.AddHardBlank();
        } else if (length == 0 && mLineFeedsBreak && character == L'\n') {
            mWriter.Break();
        } else {
            mWriter.Add(decoded == L'\0' ? L'\uFFFD' : decoded);
        }
    }

    Text mHtml;
    bool mLineFeedsBreak;
    HtmlLosses& mLosses;
    Writer mWriter;
    size_t mAt = 0;
    Missing mMissing;
};

}  // namespace

HtmlText ReadHtml(const wxString& html, bool lineFeedsBreak, HtmlLosses& losses) {
    const Text text(html.wc_str(), html.length());
    // Most fields are words with blanks between them.
    if (text.find_first_of(L"<&[\\\n\t\v\f\r\u00A0") == Text::npos &&
        text.find(L"  ") == Text::npos && text.find(L'\0') == Text::npos) {
        HtmlText plain;
        plain.Text = TrimWide(html);
        return plain;
    }
    return Reader(text, lineFeedsBreak, losses).Read();
}

bool IsEmptyHtml(const wxString& html) {
    HtmlLosses losses;
    return ReadHtml(html, false, losses).Text.empty() && losses.Pictures == 0 && losses.Sounds == 0;
}
