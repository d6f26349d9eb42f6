#include "revise/MediaDialog.h"

#include "support/GuiTest.h"

namespace {

using Id = MediaDialog;

struct MediaDialogTest : GuiStoreTest {
    static std::vector<std::string> Rows(wxWindow& dialog) {
        const auto& list = Find<wxListCtrl>(dialog, Id::kListId);
        std::vector<std::string> rows;
        for (long row = 0; row < list.GetItemCount(); ++row) {
            rows.push_back((list.GetItemText(row, 0) + "|" + list.GetItemText(row, 1) + "|" +
                            list.GetItemText(row, 2))
                               .utf8_string());
        }
        return rows;
    }
};

TEST_F(MediaDialogTest, TellsWhatIsUnusedOrMissingAndDeletesAfterAQuestion) {
    Insert(MakeCard("tit\n[picture: tit.png]", "[sound: none.ogg]"));
    const MediaFolder folder(StorePath());
    wxString name;
    ASSERT_EQ(folder.AddBytes("tit", "tit.png", name), 0);
    ASSERT_EQ(folder.AddBytes(std::string(2048, 'x'), "owl.png", name), 0);
    ModalAnswers answers;
    answers.Then([&](wxDialog& dialog) {
        EXPECT_THAT(Rows(dialog), testing::ElementsAre("none.ogg|missing|", "owl.png|unused|2 KB"));
        answers.Expect(wxID_CANCEL);
        Send(*FindById(dialog, Id::kDeleteId));
        EXPECT_EQ(Rows(dialog).size(), 2U);
        answers.Expect(wxID_OK);
        Send(*FindById(dialog, Id::kDeleteId));
        EXPECT_THAT(Rows(dialog), testing::ElementsAre("none.ogg|missing|"));
        EXPECT_FALSE(FindById(dialog, Id::kDeleteId)->IsEnabled());
        dialog.EndModal(wxID_CLOSE);
    });
    MediaDialog(nullptr, mDatabase).ShowModal();
    EXPECT_EQ(ReadBytes(StorePath() + ".media/unused/owl.png"), std::string(2048, 'x'));
    EXPECT_EQ(ReadBytes(StorePath() + ".media/tit.png"), "tit");
}

}  // namespace
