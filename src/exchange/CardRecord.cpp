#include "exchange/CardRecord.h"

namespace {

constexpr std::u16string_view kOpening = u"\n\u3010";
constexpr char16_t kClosing = u'\u3011';

}  // namespace

bool HasSecondText(std::u16string_view side) {
    return !side.empty() && side.back() == kClosing &&
           side.find(kOpening) != std::u16string_view::npos;
}

SplitSide SplitSecondText(std::u16string_view side) {
    if (!HasSecondText(side)) {
        return {side, {}};
    }
    const size_t opening = side.find(kOpening);
    const size_t begin = opening + kOpening.size();
    return {side.substr(0, opening), side.substr(begin, side.size() - 1 - begin)};
}

wxString JoinSecondText(const wxString& main, const wxString& second) {
    if (second.empty()) {
        return main;
    }
    return main + L"\n\u3010" + second + L"\u3011";
}
