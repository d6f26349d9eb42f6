#include "store/CardUuid.h"

#include <sys/random.h>

#include <cerrno>
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

int HexDigit(wchar_t character) {
    if (character >= L'0' && character <= L'9') {
        return character - L'0';
    }
    if (character >= L'a' && character <= L'f') {
        return character - L'a' + 10;
    }
    if (character >= L'A' && character <= L'F') {
        return character - L'A' + 10;
    }
    return -1;
}

bool IsEnclosed(const wxString& text) {
    const wchar_t first = text[0];
    const wchar_t last = text[text.length() - 1];
    return (first == L'{' && last == L'}') || (first == L'(' && last == L')');
}

}  // namespace

wxString FormatUuid(const CardUuid& uuid) {
    constexpr char kDigits[] = "0123456789abcdef";
    wxString text;
    text.reserve(36);
    for (size_t i = 0; i < uuid.Bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += '-';
        }
        text += kDigits[uuid.Bytes[i] >> 4];
        text += kDigits[uuid.Bytes[i] & 0x0F];
    }
    return text;
}

int ParseUuid(const wxString& text, CardUuid& uuid) {
    constexpr int kInvalid = 3;
    wxString digits = text;
    if (digits.length() > 38) {
        return kInvalid;
    }
    if (digits.length() == 38) {
        if (!IsEnclosed(digits)) {
            return kInvalid;
        }
        digits = digits.Mid(1, 36);
    }
    if (digits.length() == 36) {
        for (const size_t dash : {8U, 13U, 18U, 23U}) {
            if (digits[dash] != '-') {
                return kInvalid;
            }
        }
        digits.Replace("-", "");
    }
    CardUuid parsed;
    if (digits.length() != 2 * parsed.Bytes.size()) {
        return kInvalid;
    }
    const wchar_t* digit = digits.wc_str();
    for (uint8_t& byte : parsed.Bytes) {
        const int high = HexDigit(*digit++);
        const int low = HexDigit(*digit++);
        if (high < 0 || low < 0) {
            return kInvalid;
        }
        byte = static_cast<uint8_t>(high * 16 + low);
    }
    uuid = parsed;
    return 0;
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
