#include "transfer/ImportRun.h"

#include "support/FakeServices.h"
#include "transfer/DialogTest.h"

namespace {

struct ImportRunTest : DialogTest {
    // Imports a file. The progress window runs its course, and each further dialog gets an answer.
    bool Import(const std::string& text, wxWindow* parent, std::initializer_list<int> answers) {
        const ImportInput input{mDirectory.Path("import.txt")};
        WriteBytes(input.FileName, text);
        mAnswers.Dialogs.clear();
        mAnswers.ThenWatch();
        mAnswers.Expect(answers);
        return ImportWithProgress(parent, mServices, input, mDatabase, mOrdered);
    }

    FakeServices mServices;
    wxFrame* mpFrame = new wxFrame(nullptr, wxID_ANY, "parent");
};

TEST_F(ImportRunTest, ADeclinedCategoryStopsTheImportWithoutAMessage) {
    // Any code but those of the two Yes buttons declines.
    for (const int answer : {wxID_CANCEL, wxID_OK}) {
        EXPECT_FALSE(Import("f: a\nb: b\nc: Words\n", mpFrame, {answer}));
        EXPECT_EQ(mAnswers.Dialogs.back().Title, "New Category");
        EXPECT_TRUE(mDatabase.IsEmpty());
    }
}

TEST_F(ImportRunTest, ARunWithoutAParentIsSilentUntilItFails) {
    EXPECT_TRUE(Import("f: a\nb: b\nc: Words\n", nullptr, {}));
    EXPECT_EQ(mAnswers.Dialogs.size(), 1U);
    EXPECT_EQ(Query("SELECT Name FROM Categories WHERE Id > 0"), Strings{"Words"});
    EXPECT_FALSE(Import("f: e\n", nullptr, {wxID_OK}));
    EXPECT_EQ(mAnswers.Dialogs.back().Title, "Import Failed");
    EXPECT_EQ(mOrdered.DialogsBefore, 1U) << "the store's own failure comes before any box";
}

}  // namespace
