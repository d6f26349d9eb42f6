#include "exchange/SecondText.h"

#include <string_view>

namespace {

constexpr std::wstring_view kOpening = L"\n\u3010";
constexpr wchar_t kClosing = L'\u3011';

std::wstring_view View(const wxString& text) {
    return {text.wc_str(), text.length()};
}

wxString Text(std::wstring_view view) {
    return {view.data(), view.size()};
}

}  // namespace

bool HasSecondText(const wxString& text) {
    const std::wstring_view side = View(text);
    return !side.empty() && side.back() == kClosing &&
           side.find(kOpening) != std::wstring_view::npos;
}

void SplitSecondText(const wxString& text, wxString& main, wxString& second) {
    if (!HasSecondText(text)) {
        main = text;
        second.clear();
        return;
    }
    const std::wstring_view side = View(text);
    const size_t opening = side.find(kOpening);
    const size_t begin = opening + kOpening.size();
    // Both out of the view before either is assigned, as main or second may be the text itself.
    const wxString first = Text(side.substr(0, opening));
    second = Text(side.substr(begin, side.size() - 1 - begin));
    main = first;
}

wxString JoinSecondText(const wxString& main, const wxString& second) {
    if (second.empty()) {
        return main;
    }
    return main + Text(kOpening) + second + wxString(kClosing);
}
