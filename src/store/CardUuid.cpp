#include "store/CardUuid.h"

#include <sys/random.h>
#include <uuid/uuid.h>

#include <cerrno>
#include <type_traits>
#include <utility>

namespace {

// The operating system's cryptographic source.
bool ReadSystemRandom(uint8_t* bytes, size_t count) {
    while (count > 0) {
        const ssize_t got = getrandom(bytes, count, 0);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        bytes += got;
        count -= static_cast<size_t>(got);
    }
    return true;
}

constexpr std::array<int8_t, 128> MakeHexDigits() {
    std::array<int8_t, 128> digits{};
    for (size_t i = 0; i < digits.size(); ++i) {
        digits[i] = -1;
    }
    for (size_t i = 0; i < 10; ++i) {
        digits['0' + i] = static_cast<int8_t>(i);
    }
    for (size_t i = 0; i < 6; ++i) {
        digits['a' + i] = digits['A' + i] = static_cast<int8_t>(10 + i);
    }
    return digits;
}

// The processor would mispredict half of all comparisons, and a log of reviews has a million
// identities.
constexpr std::array<int8_t, 128> kHexDigits = MakeHexDigits();

template <class Character>
int HexDigit(Character character) {
    const auto code = static_cast<std::make_unsigned_t<Character>>(character);
    return code < kHexDigits.size() ? kHexDigits[code] : -1;
}
int HexDigit(wchar_t character) {
    return HexDigit(static_cast<uint32_t>(character));
}
int HexDigit(char16_t character) {
    return HexDigit(static_cast<uint16_t>(character));
}

// Returns whether a dash stands before that byte.
bool HasDash(size_t byte) {
    return byte == 4 || byte == 6 || byte == 8 || byte == 10;
}

template <class Character>
bool IsEnclosed(std::basic_string_view<Character> text) {
    return (text.front() == '{' && text.back() == '}') ||
           (text.front() == '(' && text.back() == ')');
}

template <class Character>
bool ReadUuid(std::basic_string_view<Character> text, CardUuid& uuid) {
    constexpr size_t kDashedLength = 36;
    if (text.size() == kDashedLength + 2 && IsEnclosed(text)) {
        text = text.substr(1, kDashedLength);
    }
    const bool isDashed = text.size() == kDashedLength;
    if (!isDashed && text.size() != 2 * uuid.Bytes.size()) {
        return false;
    }
    CardUuid parsed;
    size_t at = 0;
    for (size_t i = 0; i < parsed.Bytes.size(); ++i) {
        if (isDashed && HasDash(i) && text[at++] != '-') {
            return false;
        }
        const int high = HexDigit(text[at++]);
        const int low = HexDigit(text[at++]);
        if (high < 0 || low < 0) {
            return false;
        }
        parsed.Bytes[i] = static_cast<uint8_t>(high * 16 + low);
    }
    uuid = parsed;
    return true;
}

constexpr int kNoIdentity = 3;

}  // namespace

std::array<char, 36> UuidText(const CardUuid& uuid) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::array<char, 36> text{};
    size_t at = 0;
    for (size_t i = 0; i < uuid.Bytes.size(); ++i) {
        if (HasDash(i)) {
            text[at++] = '-';
        }
        text[at++] = kDigits[uuid.Bytes[i] >> 4];
        text[at++] = kDigits[uuid.Bytes[i] & 0x0F];
    }
    return text;
}

wxString FormatUuid(const CardUuid& uuid) {
    const std::array<char, 36> text = UuidText(uuid);
    return wxString::FromAscii(text.data(), text.size());
}

int ParseUuid(const wxString& text, CardUuid& uuid) {
    return ReadUuid(std::wstring_view(text.wc_str(), text.length()), uuid) ? 0 : kNoIdentity;
}

int ParseUuid(std::u16string_view text, CardUuid& uuid) {
    return ReadUuid(text, uuid) ? 0 : kNoIdentity;
}

int ParseUuidUtf8(std::string_view text, CardUuid& uuid) {
    return ReadUuid(text, uuid) ? 0 : kNoIdentity;
}

int GenerateUuid(CardUuid& uuid) {
    return GenerateUuid(uuid, ReadSystemRandom);
}

int GenerateUuid(CardUuid& uuid, RandomSource source) {
    CardUuid made;
    auto& bytes = made.Bytes;
    if (!source(bytes.data(), bytes.size())) {
        return 2;
    }
    // The bytes are a little-endian GUID: version 4 and variant 1 are set there, and only then do
    // the first three fields turn around into network order.
    bytes[7] = static_cast<uint8_t>((bytes[7] & 0x0F) | 0x40);
    bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3F) | 0x80);
    std::swap(bytes[0], bytes[3]);
    std::swap(bytes[1], bytes[2]);
    std::swap(bytes[4], bytes[5]);
    std::swap(bytes[6], bytes[7]);
    uuid = made;
    return 0;
}

CardUuid NamedUuid(const std::string& name) {
    // Chosen once at random.
    static const uuid_t kNamespace = {0x6b, 0x1f, 0x3c, 0x52, 0x9d, 0x0e, 0x4a, 0x77,
                                      0xb2, 0x48, 0x51, 0xe6, 0x0a, 0xc9, 0x8d, 0x34};
    CardUuid uuid;
    uuid_generate_sha1(uuid.Bytes.data(), kNamespace, name.data(), name.size());
    return uuid;
}
