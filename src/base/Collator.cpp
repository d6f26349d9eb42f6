#include "base/Collator.h"

#include <dlfcn.h>
#include <unicode/ucol.h>

#include <algorithm>
#include <cstdlib>

#include "base/Unicode.h"

namespace {

// The functions of the library have its version in their names, which its headers add.
#define NAME_AS_TEXT(name) #name
#define LIBRARY_NAME(name) NAME_AS_TEXT(name)

struct Library {
    Library() {
        // Its texts and tables are large, but they are read only as far as they are used.
        void* const library = dlopen("libicui18n.so." U_ICU_VERSION_SHORT, RTLD_LAZY | RTLD_LOCAL);
        if (library != nullptr) {
            const auto find = [library](auto& function, const char* name) {
                function = reinterpret_cast<std::decay_t<decltype(function)>>(dlsym(library, name));
                return function != nullptr;
            };
            IsLoaded = find(Open, LIBRARY_NAME(ucol_open)) &&
                       find(Close, LIBRARY_NAME(ucol_close)) &&
                       find(SetAttribute, LIBRARY_NAME(ucol_setAttribute)) &&
                       find(GetSortKey, LIBRARY_NAME(ucol_getSortKey)) &&
                       find(Compare, LIBRARY_NAME(ucol_strcoll));
        }
    }
    decltype(&ucol_open) Open = nullptr;
    decltype(&ucol_close) Close = nullptr;
    decltype(&ucol_setAttribute) SetAttribute = nullptr;
    decltype(&ucol_getSortKey) GetSortKey = nullptr;
    decltype(&ucol_strcoll) Compare = nullptr;
    bool IsLoaded = false;
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
