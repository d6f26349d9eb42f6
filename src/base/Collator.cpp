#include "base/Collator.h"

#include <unicode/ucol.h>

#include <algorithm>
#include <cstdlib>

#include "base/IcuLibrary.h"
#include "base/Unicode.h"

namespace {

struct Library {
    decltype(&ucol_open) Open = FIND_ICU(ucol_open);
    decltype(&ucol_close) Close = FIND_ICU(ucol_close);
    decltype(&ucol_setAttribute) SetAttribute = FIND_ICU(ucol_setAttribute);
    decltype(&ucol_getSortKey) GetSortKey = FIND_ICU(ucol_getSortKey);
    decltype(&ucol_strcoll) Compare = FIND_ICU(ucol_strcoll);
    bool IsLoaded = Open != nullptr && Close != nullptr && SetAttribute != nullptr &&
                    GetSortKey != nullptr && Compare != nullptr;
};

const Library& GetLibrary() {
    static const Library library;
    return library;
}

// Returns the locale of the environment for sorting. Where that is the plain C locale, whose order
// of bytes nobody reads by, the language of the messages counts.
std::string FindLocale() {
    const auto get = [](const char* name) {
        const char* const value = std::getenv(name);
        return std::string(value == nullptr ? "" : value);
    };
    std::string locale;
    for (const char* const name : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        if (locale.empty()) {
            locale = get(name);
        }
    }
    const std::string language = locale.substr(0, locale.find('.'));
    const bool isPlain = language.empty() || language == "C" || language == "POSIX";
    const std::string languages = isPlain ? get("LANGUAGE") : std::string();
    return isPlain ? languages.substr(0, languages.find(':')) : locale;
}

UCollator* OpenCollator(const std::string& locale) {
    const Library& library = GetLibrary();
    if (!library.IsLoaded) {
        return nullptr;
    }
    // The library knows no names of encodings. One that it does not know gets the common order of
    // all languages.
    const std::string language = locale.substr(0, locale.find_first_of(".@"));
    UErrorCode error = U_ZERO_ERROR;
    UCollator* const collator = library.Open(language.c_str(), &error);
    if (collator != nullptr) {
        library.SetAttribute(collator, UCOL_NUMERIC_COLLATION, UCOL_ON, &error);
    }
    return collator;
}

}  // namespace

Collator::Collator() : Collator(FindLocale()) {}

Collator::Collator(const std::string& locale)
    : mpCollator(OpenCollator(locale), GetLibrary().Close) {}

void Collator::AppendKey(std::u16string_view text, std::string& keys) const {
    const size_t end = keys.size();
    if (!IsLoaded()) {
        keys.push_back('\0');
        return;
    }
    const auto length = static_cast<int32_t>(std::min(text.size(), kMostUnits));
    const auto append = [&](size_t room) {
        keys.resize(end + room);
        const int32_t size = GetLibrary().GetSortKey(mpCollator.get(), text.data(), length,
                                                     reinterpret_cast<uint8_t*>(keys.data() + end),
                                                     static_cast<int32_t>(room));
        return static_cast<size_t>(std::max(size, 1));
    };
    // Nearly every key has this room; a longer one is made again.
    constexpr size_t kPerUnit = 4;
    const size_t room = kPerUnit * (static_cast<size_t>(length) + 1);
    const size_t size = append(room);
    if (size > room) {
        append(size);
    }
    keys.resize(end + size);
    keys.back() = '\0';
}

bool Collator::IsLess(const wxString& a, const wxString& b) const {
    const std::u16string left = ToUtf16(a);
    const std::u16string right = ToUtf16(b);
    return IsLoaded() &&
           GetLibrary().Compare(mpCollator.get(), left.data(), static_cast<int32_t>(left.size()),
                                right.data(), static_cast<int32_t>(right.size())) == UCOL_LESS;
}
