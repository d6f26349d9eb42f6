#include "base/TextPattern.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>
#include <wx/translation.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "base/Unicode.h"

namespace {

// Steps that one search may take: some hundredths of a second.
constexpr uint32_t kMostSteps = 1000000;
constexpr size_t kFirstStack = 32 << 10;
constexpr size_t kLargestStack = 1 << 20;

template <auto kFree>
struct Free {
    template <typename Value>
    void operator()(Value* value) const {
        kFree(value);
    }
};

PCRE2_SPTR16 Units(std::u16string_view text) {
    return reinterpret_cast<PCRE2_SPTR16>(text.data());
}

wxString DescribeError(int code) {
    char16_t text[256] = {};
    pcre2_get_error_message_16(code, reinterpret_cast<PCRE2_UCHAR16*>(text), std::size(text));
    return FromUtf16(text);
}

// Returns the number of characters in the front of a text.
size_t CountCharacters(std::u16string_view text, size_t units) {
    const std::u16string_view front = text.substr(0, std::min(units, text.size()));
    return static_cast<size_t>(std::count_if(
        front.begin(), front.end(), [](char16_t unit) { return unit < 0xDC00 || unit > 0xDFFF; }));
}

// Writes a plain text as an expression that matches just that text.
std::u16string Quote(const std::u16string& text, bool wholeWords) {
    std::u16string quoted = u"\\Q";
    for (size_t from = 0; from < text.size();) {
        const size_t end = std::min(text.find(u"\\E", from), text.size());
        quoted += text.substr(from, end - from);
        quoted += end < text.size() ? u"\\E\\\\E\\Q" : u"\\E";
        from = end + 2;
    }
    // A word boundary beside a mark, as in "C++", would ask for a letter after the mark.
    return wholeWords ? u"(?<!\\w)" + quoted + u"(?!\\w)" : quoted;
}

// Finds out whether a hit begins with several capitals, the first group, or with one, the second.
constexpr char16_t kCapitals[] = u"(?:(?-i:(?=(\\p{Lu}{2})|(\\p{Lu})))|)";

// Writes a plain text as one that takes over the capitals of the hit.
std::u16string WithCapitals(const std::u16string& text) {
    std::u16string result = u"${1:+\\U:}${2:+\\u:}";
    for (const char16_t unit : text) {
        const bool isWord = unit > u'\x7f' || (unit >= u'0' && unit <= u'9') ||
                            (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
        result += isWord ? u"" : u"\\";
        result += unit;
    }
    return result + u"\\E";
}

// Writes \1 as ${1}, which is the engine's form.
std::u16string WithEngineGroups(const std::u16string& text) {
    std::u16string groups;
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t next = i + 1 < text.size() ? text[i + 1] : u'\0';
        if (text[i] == u'\\' && next >= u'0' && next <= u'9') {
            groups += {u'$', u'{', next, u'}'};
            ++i;
        } else {
            groups += text[i];
            if (text[i] == u'\\' && next != u'\0') {
                groups += next;
                ++i;
            }
        }
    }
    return groups;
}

}  // namespace

struct TextPattern::Engine {
    std::unique_ptr<pcre2_code_16, Free<pcre2_code_free_16>> Code;
    std::unique_ptr<pcre2_match_data_16, Free<pcre2_match_data_free_16>> Match;
    std::unique_ptr<pcre2_match_context_16, Free<pcre2_match_context_free_16>> Limits{
        pcre2_match_context_create_16(nullptr)};
    std::unique_ptr<pcre2_jit_stack_16, Free<pcre2_jit_stack_free_16>> Stack{
        pcre2_jit_stack_create_16(kFirstStack, kLargestStack, nullptr)};
};

TextPattern::TextPattern() = default;
TextPattern::~TextPattern() = default;

bool TextPattern::Set(const wxString& wanted, const wxString& replacement, const Options& options,
                      Fault& fault) {
    auto engine = std::make_unique<Engine>();
    const std::unique_ptr<pcre2_compile_context_16, Free<pcre2_compile_context_free_16>> context(
        pcre2_compile_context_create_16(nullptr));
    const std::u16string given = ToUtf16(wanted);
    const bool keepsCapitals = options.KeepCapitals && !options.MatchCase && !options.IsExpression;
    const std::u16string pattern =
        options.IsExpression ? given
                             : (keepsCapitals ? kCapitals : u"") + Quote(given, options.WholeWords);
    if (options.IsExpression && options.WholeWords) {
        pcre2_set_compile_extra_options_16(context.get(), PCRE2_EXTRA_MATCH_WORD);
    }
    const uint32_t flags = PCRE2_UTF | PCRE2_UCP | PCRE2_MATCH_INVALID_UTF |
                           PCRE2_NEVER_BACKSLASH_C | (options.MatchCase ? 0 : PCRE2_CASELESS);
    int code = 0;
    PCRE2_SIZE place = 0;
    engine->Code.reset(
        pcre2_compile_16(Units(pattern), pattern.size(), flags, &code, &place, context.get()));
    if (engine->Code == nullptr) {
        fault = {DescribeError(code), false, CountCharacters(pattern, place)};
        return false;
    }
    // Without its compiler, which some machines forbid, the engine is only slower.
    pcre2_jit_compile_16(engine->Code.get(), PCRE2_JIT_COMPLETE);
    pcre2_jit_stack_assign_16(engine->Limits.get(), nullptr, engine->Stack.get());
    pcre2_set_match_limit_16(engine->Limits.get(), kMostSteps);
    engine->Match.reset(pcre2_match_data_create_from_pattern_16(engine->Code.get(), nullptr));
    mpEngine = std::move(engine);
    mIsTemplate = options.IsExpression || keepsCapitals;
    mReplacement = ToUtf16(replacement);
    if (options.IsExpression) {
        mReplacement = WithEngineGroups(mReplacement);
    } else if (keepsCapitals) {
        mReplacement = WithCapitals(mReplacement);
    }
    return true;
}

TextPattern::Outcome TextPattern::Replace(std::u16string_view text, std::u16string& result,
                                          Fault& fault) const {
    const uint32_t flags = PCRE2_SUBSTITUTE_GLOBAL | PCRE2_SUBSTITUTE_OVERFLOW_LENGTH |
                           (mIsTemplate ? PCRE2_SUBSTITUTE_EXTENDED | PCRE2_SUBSTITUTE_UNSET_EMPTY
                                        : PCRE2_SUBSTITUTE_LITERAL);
    result.resize(text.size() + mReplacement.size() + 64);
    // The second try has the room that the first one asked for.
    for (int tries = 0;; ++tries) {
        PCRE2_SIZE length = result.size();
        const int hits = pcre2_substitute_16(
            mpEngine->Code.get(), Units(text), text.size(), 0, flags, mpEngine->Match.get(),
            mpEngine->Limits.get(), Units(mReplacement), mReplacement.size(),
            reinterpret_cast<PCRE2_UCHAR16*>(result.data()), &length);
        if (hits == PCRE2_ERROR_NOMEMORY && tries == 0 && length != PCRE2_UNSET) {
            result.resize(length);
            continue;
        }
        if (hits >= 0) {
            result.resize(length);
            return hits == 0 ? Outcome::kNoHit : Outcome::kReplaced;
        }
        const bool runsAway = hits == PCRE2_ERROR_MATCHLIMIT || hits == PCRE2_ERROR_DEPTHLIMIT ||
                              hits == PCRE2_ERROR_HEAPLIMIT || hits == PCRE2_ERROR_JIT_STACKLIMIT;
        fault.IsInReplacement = !runsAway;
        fault.Message = runsAway ? _("The expression takes too long.") : DescribeError(hits);
        fault.Place = runsAway ? 0 : CountCharacters(mReplacement, length);
        return Outcome::kFault;
    }
}
