// The command "Import", and before it the store that version 1.0 may have left.

#include "app/ImportCommand.h"

#include <wx/filedlg.h>
#include <wx/filename.h>
#include <wx/utils.h>

#include "app/Version1Import.h"
#include "support/FakeRowSource.h"
#include "support/FakeServices.h"
#include "support/GuiTest.h"

namespace {

constexpr wchar_t kId[] = L"9b1deb4d-3b7d-4bad-9bdd-2b0d7b3dcb6d";

// Counts what the listeners of the store are told.
class Listener : public Observer {
  public:
    explicit Listener(Subject& subject) : mAttachment(&subject, this) {}
    void Update(Subject*) override { ++Calls; }
    int Calls = 0;

  private:
    SubjectAttachment mAttachment;
};

class ImportCommandTest : public GuiStoreTest {
  protected:
    bool Offer() {
        const std::vector<wxString> places = {mDirectory.Path("nothing here"), mOldStore};
        return OfferVersion1Import(nullptr, mDatabase, mReport, places, mEngine.Maker());
    }
    void Run() { RunImportCommand(nullptr, mServices, mDatabase, mReport, {mOldStore}); }

    // The file dialog takes its time to look into the directory.
    void ExpectChoice(const wxString& path) {
        mAnswers.Expect([path](wxDialog& dialog) {
            auto& chooser = dynamic_cast<wxFileDialog&>(dialog);
            chooser.SetPath(path);
            EXPECT_TRUE(WaitFor([&] { return chooser.GetPath() == path; }));
            return wxID_OK;
        });
    }
    Strings Fronts() { return Query("SELECT Front FROM Cards"); }

    const wxString mOldStore = mDirectory.Path("FlashCards.vls");
    FakeEngine mEngine;
    FakeServices mServices;
    ModalAnswers mAnswers;
    Listener mListener{mDatabase};
};

}  // namespace

TEST_F(ImportCommandTest, LooksForAnOldStoreInTheDocumentsAndAtTheRoot) {
    wxString before;
    wxGetEnv("HOME", &before);
    wxSetEnv("HOME", "/home/me");
    EXPECT_EQ(GetVersion1StorePlaces(),
              (std::vector<wxString>{"/home/me/Velomind Classic/FlashCards.vls",
                                     "/Velomind Classic/FlashCards.vls"}));
    wxSetEnv("HOME", before);
    EXPECT_FALSE(Offer()) << "none is there, and nobody is asked";
}

TEST_F(ImportCommandTest, ImportsAnOldStoreOnceItsEngineIsThere) {
    WriteBytes(mOldStore, "old");
    mAnswers.Expect(wxID_NO);
    EXPECT_FALSE(Offer());
    EXPECT_EQ(mAnswers.Dialogs[0].Title, "Import");
    EXPECT_TRUE(mAnswers.Dialogs[0].Message.EndsWith("import them now?\n" + mOldStore));

    mEngine.Cards = {{kId}};
    mEngine.Missing = 2;
    mAnswers.Expect(wxID_YES);
    mAnswers.Expect(wxOK);
    mAnswers.Expect(wxOK);
    mAnswers.Expect(wxID_NONE);
    mAnswers.Expect(wxID_OK);
    EXPECT_TRUE(Offer());
    EXPECT_EQ(mAnswers.Dialogs[2].Title, "Velomind");
    EXPECT_EQ(mAnswers.Dialogs[5].Title, "Import Failed");
    EXPECT_TRUE(wxFileName::FileExists(mOldStore)) << "what was not imported stays";
    EXPECT_EQ(mListener.Calls, 1);

    mEngine.Cards = {{kId, L"q", L"a", L"true", L"2004-02-03 04:05:06", L"5", L"16", L"3"}};
    mAnswers.Expect(wxID_YES);
    mAnswers.Expect(wxID_NONE);
    EXPECT_TRUE(Offer());
    EXPECT_EQ(Fronts(), Strings{"q"});
    EXPECT_FALSE(wxFileName::FileExists(mOldStore));
    EXPECT_EQ(mListener.Calls, 2);
}

// The engine exists on no platform that the program runs on today.
TEST_F(ImportCommandTest, EndsWithAnOldStoreThatCannotBeRead) {
    WriteBytes(mOldStore, "old");
    mAnswers.Expect(wxID_YES);
    mAnswers.Expect([](wxDialog& dialog) {
        dialog.CallAfter([&dialog] { dialog.Close(); });
        return wxID_NONE;
    });
    Run();
    EXPECT_EQ(mAnswers.Dialogs.size(), 2U) << "no file is asked for";
    EXPECT_TRUE(wxFileName::FileExists(mOldStore));
    EXPECT_EQ(mListener.Calls, 0);
}

TEST_F(ImportCommandTest, MakesTheFirstTouchedCategoryCurrent) {
    const wxString path = mDirectory.Path("cards.txt");
    WriteBytes(path, "f,b,c\na,b,New\nc,d,Newer\n");
    mServices.CurrentCategory = 0;
    mAnswers.Expect(wxID_CANCEL);
    Run();
    EXPECT_EQ(mListener.Calls, 0);

    ExpectChoice(path);
    mAnswers.Expect(wxCANCEL);
    Run();
    EXPECT_EQ(mServices.CurrentCategory, 0);
    EXPECT_EQ(mListener.Calls, 1);

    ExpectChoice(path);
    mAnswers.Expect([](wxDialog& dialog) {
        dialog.CallAfter([&dialog] {
            wxCommandEvent ok(wxEVT_BUTTON, wxID_OK);
            dialog.ProcessWindowEvent(ok);
        });
        return wxID_NONE;
    });
    mAnswers.Expect(wxID_NONE);
    mAnswers.Expect(wxID_YES);
    mAnswers.Expect(wxID_YES);
    mAnswers.Expect(wxID_OK);
    Run();
    EXPECT_EQ(mAnswers.Dialogs.back().Title, "Import Complete");
    EXPECT_EQ(mServices.CurrentCategory, 1);
    EXPECT_EQ(mListener.Calls, 2);
}
