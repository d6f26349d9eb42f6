#include "exchange/VlmTextWriter.h"

#include <string_view>

#include "exchange/TextSink.h"

namespace {

constexpr wchar_t kComment = L'#';
constexpr wchar_t kSeparator = L':';

std::wstring_view View(const wxString& text) {
    return {text.wc_str(), text.length()};
}

}  // namespace

int VlmTextWriter::WriteAttribute(const wxString& name, const wxString& value) {
    const std::wstring_view label = View(name);
    if (label.find(kSeparator) != std::wstring_view::npos ||
        (!label.empty() && label.front() == kComment)) {
        return -1;
    }
    if (value.empty()) {
        return 0;
    }
    std::wstring_view rest = View(value);
    for (;;) {
        const size_t lineFeed = rest.find(L'\n');
        mRecord.append(label).append(L": ").append(rest.substr(0, lineFeed)).append(L"\n");
        if (lineFeed == std::wstring_view::npos) {
            return 0;
        }
        rest.remove_prefix(lineFeed + 1);
    }
}

void VlmTextWriter::EndRecord() {
    mRecord.append(L"\n");
    mSink.Write(mRecord);
    mRecord.clear();
}
