#include "study/CardLayout.h"

#include <gtest/gtest.h>

namespace {

TEST(CardLayout, TheDividerLeavesTheMiddleOnlyForATextThatNeedsIt) {
    const wxSize client(200, 101);
    // The heights of both texts, of the room of the first one, and of all.
    const std::tuple<const char*, int32_t, int32_t, int32_t, int32_t> rows[] = {
        {"two short texts", 20, 30, 50, 101},
        {"a long first text", 60, 20, 60, 101},
        {"a long second text", 20, 60, 40, 101},
        {"both too long", 60, 60, 60, 121},
        {"a short first and an endless second text", 20, 300, 20, 321},
    };
    for (const auto& [what, first, second, firstHeight, height] : rows) {
        SCOPED_TRACE(what);
        const CardLayout layout = ArrangeCard(wxVERTICAL, client, first, second);
        EXPECT_EQ(layout.VirtualHeight, height);
        EXPECT_EQ(layout.First, wxRect(0, 0, 200, firstHeight));
        EXPECT_EQ(layout.Second, wxRect(0, firstHeight + 1, 200, height - firstHeight - 1));
        EXPECT_EQ(CardHeightNeeded(wxVERTICAL, first, second) <= client.y, height == client.y);
    }
    const CardLayout columns = ArrangeCard(wxHORIZONTAL, wxSize(201, 101), 20, 300);
    EXPECT_EQ(columns.First, wxRect(0, 0, 100, 300));
    EXPECT_EQ(columns.Second, wxRect(101, 0, 100, 300));
}

}  // namespace
