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
#include "base/Unicode.h"
#include "formats/MediaSource.h"

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
    kSource,
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
    {L"audio", TagKind::kSound},      {L"source", TagKind::kSource}, {L"style", TagKind::kSkipped},
    {L"script", TagKind::kSkipped},   {L"ruby", TagKind::kRuby},     {L"rt", TagKind::kReading},
    {L"rp", TagKind::kAside},
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

// Returns the text of the value of an attribute, which may stand in quotes of either kind or in
// none.
std::wstring AttributeValue(Text tag, size_t at) {
    const wchar_t quote =
        at < tag.size() && (tag[at] == L'"' || tag[at] == L'\'') ? tag[at] : L'\0';
    at += quote != L'\0' ? 1 : 0;
    std::wstring value;
    for (; at < tag.size(); ++at) {
        const wchar_t character = tag[at];
        const bool isEnd =
            quote != L'\0' ? character == quote : IsSourceSpace(character) || character == L'>';
        if (isEnd) {
            break;
        }
        wchar_t decoded = character;
        const size_t length = character == L'&' ? ReadEntity(tag.substr(at), decoded) : 0;
        at += length > 0 ? length - 1 : 0;
        value += decoded;
    }
    return value;
}

// Returns the address that a tag names; empty for none.
std::wstring SourceOf(Text tag) {
    constexpr Text kName = L"src";
    for (size_t at = 1; at + kName.size() < tag.size(); ++at) {
        const Text found = tag.substr(at, kName.size());
        if (!IsSourceSpace(tag[at - 1]) ||
            !std::equal(found.begin(), found.end(), kName.begin(), kName.end(),
                        [](wchar_t one, wchar_t other) { return LowerWide(one) == other; })) {
            continue;
        }
        size_t value = at + kName.size();
        while (value < tag.size() && IsSourceSpace(tag[value])) {
            ++value;
        }
        if (value < tag.size() && tag[value] == L'=') {
            ++value;
            while (value < tag.size() && IsSourceSpace(tag[value])) {
                ++value;
            }
            return AttributeValue(tag, value);
        }
    }
    return std::wstring();
}

// Returns an address with its percent signs and numbers as characters.
wxString DecodeAddress(const wxString& address) {
    const std::string bytes = ToUtf8(address);
    std::string decoded;
    const auto digit = [](char character) {
        const Text digits = L"0123456789abcdef";
        return digits.find(LowerWide(static_cast<wchar_t>(character)));
    };
    for (size_t at = 0; at < bytes.size(); ++at) {
        if (bytes[at] == '%' && at + 2 < bytes.size() && digit(bytes[at + 1]) != Text::npos &&
            digit(bytes[at + 2]) != Text::npos) {
            decoded += static_cast<char>(digit(bytes[at + 1]) * 16 + digit(bytes[at + 2]));
            at += 2;
        } else {
            decoded += bytes[at];
        }
    }
    return FromUtf8(decoded);
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
    // A blank or a tab that stays.
    void AddHard(wchar_t blank) {
        AddBlank();
        Append(blank);
    }
    void AddBlankBetween() { mIsBlankDue = true; }
    void Break() {
        mIsBlankDue = false;
        mIsLineDue = false;
        mText += L'\n';
        mReading += L'\n';
    }
    void Block() {
        if (!mText.empty() && mText.back() != L'\n') {
            Break();
        }
        mIsBlankDue = false;
    }
    // A line of its own, as it stands.
    void AddLine(const wxString& line) {
        Block();
        mText += line.ToStdWstring();
        mReading += line.ToStdWstring();
        mIsLineDue = true;
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
        if (mIsLineDue) {
            Break();
        }
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
    // Whether what follows begins a line.
    bool mIsLineDue = false;
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
    Reader(Text html, bool lineFeedsBreak, HtmlLosses& losses, MediaSource* media)
        : mHtml(html), mLineFeedsBreak(lineFeedsBreak), mLosses(losses), mpMedia(media) {}

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
                const std::wstring name(TrimView(mHtml.substr(begin, end - begin)));
                mLosses.Sounds += AddFile(MediaKind::kSound, name) ? 0 : 1;
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
        Obey(name, isEnd, rest.substr(0, length));
        return true;
    }

    // Adds the line of a file, unless there is none. The name may be written as an address.
    bool AddFile(MediaKind kind, const std::wstring& source) {
        if (mpMedia == nullptr || source.empty() || mWriter.IsReading()) {
            return false;
        }
        wxString name = mpMedia->NameOf(kind, source);
        if (name.empty()) {
            name = mpMedia->NameOf(kind, DecodeAddress(source));
        }
        if (!name.empty()) {
            mWriter.AddLine(MakeMediaLine(kind, name));
        }
        return !name.empty();
    }

    void Obey(const std::wstring& name, bool isEnd, Text tag) {
        const auto* const row =
            std::find_if(std::begin(kTags), std::end(kTags),
                         [&name](const TagRow& known) { return known.Name == name; });
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
                if (!isEnd && !(name == L"img" && AddFile(MediaKind::kPicture, SourceOf(tag)))) {
                    ++mLosses.Pictures;
                }
                if (!isEnd && name != L"img") {
                    SkipTo(name);
                }
                break;
            case TagKind::kSound:
                if (!isEnd && !AddFile(MediaKind::kSound, SourceOf(tag))) {
                    ++mLosses.Sounds;
                }
                break;
            case TagKind::kSource:
                // The sound around it was counted as lost for want of an address.
                if (!isEnd && AddFile(MediaKind::kSound, SourceOf(tag)) && mLosses.Sounds > 0) {
                    --mLosses.Sounds;
                }
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
            mWriter.AddHard(L' ');
        } else if (length > 0 && decoded == L'\t') {
            mWriter.AddHard(L'\t');
        } else if (length == 0 && mLineFeedsBreak && character == L'\n') {
            mWriter.Break();
        } else {
            mWriter.Add(decoded == L'\0' ? L'\uFFFD' : decoded);
        }
    }

    Text mHtml;
    bool mLineFeedsBreak;
    HtmlLosses& mLosses;
    MediaSource* mpMedia;
    Writer mWriter;
    size_t mAt = 0;
    Missing mMissing;
};

}  // namespace

HtmlText ReadHtml(const wxString& html, bool lineFeedsBreak, HtmlLosses& losses,
                  MediaSource* media) {
    const Text text(html.wc_str(), html.length());
    // Most fields are words with blanks between them.
    if (text.find_first_of(L"<&[\\\n\t\v\f\r\u00A0") == Text::npos &&
        text.find(L"  ") == Text::npos && text.find(L'\0') == Text::npos) {
        HtmlText plain;
        plain.Text = TrimWide(html);
        return plain;
    }
    return Reader(text, lineFeedsBreak, losses, media).Read();
}

bool IsEmptyHtml(const wxString& html) {
    HtmlLosses losses;
    return ReadHtml(html, false, losses).Text.empty() && losses.Pictures == 0 && losses.Sounds == 0;
}
