#pragma once

#include <wx/srchctrl.h>

#include "categories/CategoryList.h"
#include "categories/DropDown.h"
#include "list/BrowseFrame.h"
#include "list/CardList.h"
#include "list/CardListCtrl.h"
#include "support/GuiTest.h"

// The list window, with a person's keys.
struct ListTest : FrameTest<BrowseFrame> {
    using Texts = std::vector<wxString>;

    void Open() { OpenFrame(new BrowseFrame(mServices)); }

    wxWindow& CardPanel() { return *FindById(*mpFrame, kCardListId); }
    CardListCtrl& Cards() { return Find<CardListCtrl>(CardPanel(), "listCtrl"); }
    wxDropDownButton& Button() { return Find<wxDropDownButton>(*mpFrame, "dropDownButton"); }
    wxDropDownWindow& DropDown() { return *Button().GetPopup(); }
    CategoryList& Categories() { return Find<CategoryList>(DropDown(), "listCtrl"); }
    wxSearchCtrl& SearchField() { return Find<wxSearchCtrl>(*mpFrame, "searchCtrl"); }

    void OpenDropDown(int key = WXK_SPACE) {
        Button().SetFocus();
        EXPECT_TRUE(WaitFor([this] { return Button().HasFocus(); }));
        SendKey(Button(), key);
        EXPECT_TRUE(WaitFor([this] { return IsFocusIn(Categories()); })) << key;
    }
    bool IsFocusIn(wxWindow& window) { return window.IsDescendant(wxWindow::FindFocus()); }
    void Search(const wxString& text) {
        SearchField().SetValue(text);
        Send(SearchField(), wxEVT_TEXT_ENTER);
    }
    Texts Headings() {
        Texts headings;
        for (const ListColumn column : Cards().GetColumns()) {
            headings.push_back(TraitsOf(column).Heading);
        }
        return headings;
    }
    void Sort(int column) {
        wxListEvent click(wxEVT_LIST_COL_CLICK, Cards().GetId());
        click.SetEventObject(&Cards());
        click.m_col = column;
        Cards().ProcessWindowEvent(click);
    }
    void Select(const std::vector<long>& rows) { Cards().SetSelectedRows(rows); }

    // The texts of a column, or of every row of the categories.
    Texts Column(int column) {
        Texts texts;
        for (long row = 0; row < Cards().GetItemCount(); ++row) {
            texts.push_back(Cards().OnGetItemText(row, column));
        }
        return texts;
    }
    Texts Rows() {
        Texts texts;
        for (long row = 0; row < Categories().GetItemCount(); ++row) {
            texts.push_back(Categories().GetItemText(row));
        }
        return texts;
    }
};
