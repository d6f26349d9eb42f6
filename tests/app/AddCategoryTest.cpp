#include "app/AddCategory.h"

#include <gtest/gtest.h>
#include <wx/msgdlg.h>
#include <wx/textdlg.h>

#include "support/GuiTest.h"

namespace {

TEST_F(GuiStoreTest, ANewCategoryIsNotOneThatTheStoreSeesAsPresent) {
    for (const char* const name : {"7", "Default", "007", "Latin"}) {
        ModalAnswers answers;
        answers.Expect([name](wxDialog& dialog) {
            dynamic_cast<wxTextEntryDialog&>(dialog).SetValue(name);
            return wxID_OK;
        });
        std::list<Category> same;
        ASSERT_EQ(mDatabase.SelectCategoryByName(name, same), 0);
        if (!same.empty()) {
            answers.Expect([](wxDialog& dialog) {
                EXPECT_TRUE(
                    dynamic_cast<wxMessageDialogBase&>(dialog).GetMessage().Contains("already"));
                return wxID_OK;
            });
        }
        AddCategory(nullptr, mDatabase);
    }
    EXPECT_EQ(Query("SELECT Id,Name FROM Categories"),
              (std::vector<std::string>{"0|Default", "1|7", "2|Latin"}));
}

}  // namespace
