#pragma once

#include <string_view>

#include "base/WideText.h"

// The part of a text between the white space at both of its ends.
inline std::wstring_view TrimView(std::wstring_view text) {
    while (!text.empty() && IsWideSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsWideSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}
