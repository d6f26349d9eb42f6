#pragma once

#include <wx/string.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The identity of a card: 16 bytes in the order of its text. All zero means "no card".
class CardUuid {
  public:
    std::array<uint8_t, 16> Bytes{};

    bool IsZero() const { return *this == CardUuid(); }

    bool operator==(const CardUuid& other) const { return Bytes == other.Bytes; }
    bool operator!=(const CardUuid& other) const { return Bytes != other.Bytes; }
    bool operator<(const CardUuid& other) const { return Bytes < other.Bytes; }
};

// Returns Returns 36 characters, lower-case hexadecimal, with dashes.
wxString FormatUuid(const CardUuid& uuid);
std::array<char, 36> UuidText(const CardUuid& uuid);

// Reads 32 bare digits, the dashed form, or the dashed form inside braces or parentheses, in upper
// or lower case. Returns 0, or 3 with uuid unchanged when the text is no identity.
int ParseUuid(const wxString& text, CardUuid& uuid);
int ParseUuid(std::u16string_view text, CardUuid& uuid);
int ParseUuidUtf8(std::string_view text, CardUuid& uuid);

// Fills uuid with a fresh random version 4 value. Returns 0, or 2 with uuid unchanged when the
// platform's random source fails.
int GenerateUuid(CardUuid& uuid);

// Returns the identity of a name: a version 5 value (RFC 4122) in a namespace of this program, the
// same for the same bytes on every machine.
CardUuid NamedUuid(const std::string& name);

// Fills uuid from another source of random bytes, which fills count bytes or returns false.
using RandomSource = bool (*)(uint8_t* bytes, size_t count);
int GenerateUuid(CardUuid& uuid, RandomSource source);
