#include "study/CardLayout.h"

#include <algorithm>

namespace {

constexpr int32_t kDivider = 1;

// Half of the window for each side, unless one of the texts needs more.
int32_t FirstHeightOf(int32_t clientHeight, int32_t firstHeight, int32_t secondHeight) {
    const int32_t half = (clientHeight - kDivider) / 2;
    if (firstHeight < half && secondHeight < half) {
        return half;
    }
    if (firstHeight + secondHeight >= 2 * half) {
        return firstHeight;
    }
    if (firstHeight <= half) {
        return clientHeight - secondHeight - kDivider;
    }
    return firstHeight;
}

}  // namespace

int32_t CardColumnWidth(wxOrientation orientation, int32_t width) {
    return orientation == wxHORIZONTAL ? (width - kDivider) / 2 : width;
}

int32_t CardHeightNeeded(wxOrientation orientation, int32_t firstHeight, int32_t secondHeight) {
    return orientation == wxHORIZONTAL ? std::max(firstHeight, secondHeight)
                                       : firstHeight + secondHeight + kDivider;
}

CardLayout ArrangeCard(wxOrientation orientation, const wxSize& client, int32_t firstHeight,
                       int32_t secondHeight) {
    const int32_t column = CardColumnWidth(orientation, client.x);
    const int32_t needed = CardHeightNeeded(orientation, firstHeight, secondHeight);
    CardLayout layout;
    layout.VirtualHeight = std::max(client.y, needed);
    if (orientation == wxHORIZONTAL) {
        const int32_t second = column + kDivider;
        layout.First = wxRect(0, 0, column, layout.VirtualHeight);
        layout.Second = wxRect(second, 0, client.x - second, layout.VirtualHeight);
    } else {
        const int32_t first = FirstHeightOf(client.y, firstHeight, secondHeight);
        const int32_t second = first + kDivider;
        layout.First = wxRect(0, 0, column, first);
        layout.Second = wxRect(0, second, column, layout.VirtualHeight - second);
    }
    return layout;
}
