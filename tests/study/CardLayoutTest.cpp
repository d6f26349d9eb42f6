#include "study/CardLayout.h"

#include <gtest/gtest.h>

namespace {

TEST(CardLayout, TheDividerLeavesTheMiddleOnlyForATextThatNeedsIt) {
    const wxSize client(200, 101);
    const struct {
        const char* What;
        int32_t FirstText, SecondText, FirstHeight, VirtualHeight;
    } rows[] = {
        {"two short texts", 20, 30, 50, 101},
        {"a long first text", 60, 20, 60, 101},
        {"a long second text", 20, 60, 40, 101},
        {"both too long", 60, 60, 60, 121},
        {"a short first and an endless second text", 20, 300, 20, 321},
    };
    for (const auto& row : rows) {
        const CardLayout layout = ArrangeCard(wxVERTICAL, client, row.FirstText, row.SecondText);
        EXPECT_EQ(layout.VirtualHeight, row.VirtualHeight) << row.What;
        EXPECT_EQ(layout.First, wxRect(0, 0, 200, row.FirstHeight)) << row.What;
        EXPECT_EQ(layout.Second,
                  wxRect(0, row.FirstHeight + 1, 200, row.VirtualHeight - row.FirstHeight - 1))
            << row.What;
        EXPECT_EQ(CardHeightNeeded(wxVERTICAL, row.FirstText, row.SecondText) <= client.y,
                  row.VirtualHeight == client.y);
    }
    const CardLayout columns = ArrangeCard(wxHORIZONTAL, wxSize(201, 101), 20, 300);
    EXPECT_EQ(columns.First, wxRect(0, 0, 100, 300));
    EXPECT_EQ(columns.Second, wxRect(101, 0, 100, 300));
}

}  // namespace
