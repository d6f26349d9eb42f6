#include "transfer/ImportCommand.h"

#include <wx/filename.h>

#include "support/FakeRowSource.h"
#include "support/FakeServices.h"
#include "support/GuiTest.h"

namespace {

// The offer of version 1.0's store. The end-to-end tests run the command on a system without the
// engine.
struct ImportCommandTest : GuiStoreTest {
    bool Offer() {
        const std::vector<wxString> places = {mDirectory.Path("nothing here"), mOldStore};
        return OfferVersion1Import(nullptr, mServices, mDatabase, mReport, places, mEngine.Maker());
    }

    FakeServices mServices;
    const wxString mOldStore = mDirectory.Path("FlashCards.vls");
    FakeEngine mEngine;
    ModalAnswers mAnswers;
    CountingObserver mListener{mDatabase};
};

}  // namespace

TEST_F(ImportCommandTest, AnOldStoreIsImportedOnceItsEngineIsThere) {
    WriteBytes(mOldStore, "old");
    mAnswers.Expect(wxID_NO);
    EXPECT_FALSE(Offer());
    EXPECT_EQ(mAnswers.Dialogs[0].Title, "Import");
    EXPECT_TRUE(mAnswers.Dialogs[0].Message.EndsWith("import them now?\n" + mOldStore));

    constexpr wchar_t kId[] = L"9b1deb4d-3b7d-4bad-9bdd-2b0d7b3dcb6d";
    mEngine.Cards = {{kId}};
    mEngine.Missing = 2;
    mAnswers.Expect({wxID_YES, wxOK, wxOK, wxID_NONE, wxID_OK});
    EXPECT_TRUE(Offer());
    EXPECT_EQ(mAnswers.Dialogs[2].Title, "Velomind");
    EXPECT_EQ(mAnswers.Dialogs[5].Title, "Import Failed");
    EXPECT_TRUE(wxFileName::FileExists(mOldStore)) << "what was not imported stays";
    EXPECT_EQ(mListener.Calls, 1);

    mEngine.Cards = {{kId, L"q", L"a", L"true", L"2004-02-03 04:05:06", L"5", L"16", L"3"}};
    mAnswers.Expect({wxID_YES, wxID_NONE});
    EXPECT_TRUE(Offer());
    EXPECT_EQ(Query("SELECT Front FROM Cards"), Strings{"q"});
    EXPECT_FALSE(wxFileName::FileExists(mOldStore));
    EXPECT_EQ(mListener.Calls, 2);
}
