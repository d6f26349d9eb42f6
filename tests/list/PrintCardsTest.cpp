#include <gtk/gtk.h>
#include <wx/gtk/print.h>
#include <wx/print.h>
#include <wx/utils.h>

#include "list/ListFixture.h"
#include "list/PrintCards.h"
#include "media/MediaFolder.h"

namespace {

const wxSize kA4(5953, 8419);
const wxSize kA4Landscape(8419, 5953);

// In the place of what fronts begin with, for fronts without text.
const wxString kNoText("-");

// Cards "f0" and "b0" and so on; a letter is half as wide as its font is high.
PrintLayout MakeLayout(PrintForm form, size_t count, const wxString& before = wxString(),
                       const std::vector<wxSize>& pictures = {}) {
    PrintLayout::Source source;
    source.Count = count;
    source.Heading = "French";
    source.Read = [before, pictures](size_t first, size_t most) {
        EXPECT_LE(most, 100U) << "more cards in memory than a page takes";
        std::vector<PrintLayout::Sides> cards;
        for (size_t i = first; i < first + most; ++i) {
            const auto number = static_cast<unsigned>(i);
            cards.push_back({before == kNoText ? "" : before + wxString::Format("f%u", number),
                             wxString::Format("b%u", number)});
            for (const wxSize& size : pictures) {
                cards.back().FrontPictures.push_back({"x.png", size});
            }
        }
        return cards;
    };
    source.Measure = [](const wxString& text, const PrintFont& font) {
        return wxSize(static_cast<int>(text.length()) * font.Points * 5, font.Points * 12);
    };
    return PrintLayout(form, std::move(source));
}

const PrintLine* FindLine(const PrintPage& page, const wxString& text) {
    const auto found = std::find_if(page.Lines.begin(), page.Lines.end(),
                                    [&](const PrintLine& line) { return line.Text == text; });
    return found != page.Lines.end() ? &*found : nullptr;
}

wxPoint Middle(const PrintLine& line) {
    return line.Place.GetTopLeft() + line.Place.GetSize() / 2;
}

// The texts of a file in the order in which they stand on its pages.
std::string ReadPdf(const wxString& path) {
    wxArrayString lines;
    EXPECT_EQ(wxExecute("pdftotext -enc UTF-8 -layout " + path + " -", lines, wxEXEC_SYNC), 0);
    return wxJoin(lines, '\n', '\0').utf8_string();
}

}  // namespace

TEST(PrintLayout, APageHasTheCardsAndPicturesThatFitOnIt) {
    const wxString sentence("word word word word word word word word word word word word word ");
    wxString novel;
    for (int i = 0; i < 200; ++i) {
        novel += sentence;
    }
    const std::vector<wxSize> photograph = {{30000, 20000}};
    const struct {
        PrintForm Form;
        wxSize Paper;
        size_t Cards;
        // What each front begins with, and the first back of each page.
        wxString Before;
        std::vector<const char*> Backs;
        // The pictures of each front, and how high the first one is.
        std::vector<wxSize> Pictures{};
        int Height = 0;
    } rows[] = {
        {PrintForm::kList, kA4, 0, "", {}},
        {PrintForm::kList, kA4, 41, "", {"b0"}},
        {PrintForm::kList, kA4, 100, "", {"b0", "b41", "b82"}},
        {PrintForm::kList, kA4Landscape, 30, "", {"b0", "b27"}},
        {PrintForm::kList, kA4, 30, sentence, {"b0", "b24"}},
        // A card longer than a page has one of its own, and an ellipsis.
        {PrintForm::kList, kA4, 3, novel, {"b0", "b1", "b2"}},
        {PrintForm::kList, kA4, 3, novel, {"b0", "b1", "b2"}, photograph, 1196},
        {PrintForm::kList, kA4, 9, "", {"b0", "b5"}, photograph, 1196},
        {PrintForm::kList, kA4, 20, "", {"b0"}, {{90000, 900}}, 26},
        {PrintForm::kList, kA4, 26, kNoText, {"b0", "b25"}, {{300, 200}}, 200},
        {PrintForm::kCutOut, kA4, 0, "", {}},
        {PrintForm::kCutOut, kA4, 10, "", {"", "b0"}},
        {PrintForm::kCutOut, kA4, 11, "", {"", "b0", "", "b10"}},
        {PrintForm::kCutOut, kA4Landscape, 10, novel, {"", "b0", "", "b9"}},
        {PrintForm::kCutOut, kA4, 10, "", {"", "b0"}, photograph, 1053},
        {PrintForm::kCutOut, kA4, 10, novel, {"", "b0"}, {{9, 90000}}, 645},
        {PrintForm::kCutOut, kA4, 10, "", {"", "b0"}, {{300, 200}, {30000, 20000}}, 200},
    };
    for (const auto& row : rows) {
        PrintLayout layout = MakeLayout(row.Form, row.Cards, row.Before, row.Pictures);
        layout.SetPaper(row.Paper);
        ASSERT_EQ(layout.CountPages(), static_cast<int>(row.Backs.size()))
            << row.Cards << row.Before.Left(9) << row.Height;
        for (int number = 1; number <= layout.CountPages(); ++number) {
            const PrintPage page = layout.MakePage(number);
            const wxString back = row.Backs[static_cast<size_t>(number) - 1];
            const auto first =
                std::find_if(page.Lines.begin(), page.Lines.end(),
                             [](const PrintLine& line) { return line.Text.StartsWith("b"); });
            EXPECT_EQ(first != page.Lines.end() ? first->Text : wxString(), back) << number;
            std::vector<wxRect> places;
            for (const PrintLine& line : page.Lines) {
                places.push_back(line.Place);
                EXPECT_LE(static_cast<int>(line.Text.length()) * line.Font.Points * 5,
                          line.Place.width);
            }
            for (size_t i = 0; i < page.Pictures.size(); ++i) {
                const wxRect& place = places.emplace_back(page.Pictures[i].Place);
                const wxSize& own = row.Pictures[i % row.Pictures.size()];
                EXPECT_TRUE(i > 0 || place.height == row.Height) << place.height;
                EXPECT_NEAR(place.width, 1.0 * own.x * place.height / own.y, 60);
            }
            for (size_t i = 0; i < places.size(); ++i) {
                EXPECT_TRUE(wxRect(row.Paper).Contains(places[i])) << i;
                for (size_t j = 0; j < i; ++j) {
                    EXPECT_FALSE(places[i].Intersects(places[j])) << i;
                }
            }
        }
    }
}

// Measuring each text would take half a minute for 100,000 sentences.
TEST(PrintLayout, PagesAreFoundByLettersThatAreMeasuredOnce) {
    int measured = 0;
    PrintLayout::Source source;
    source.Count = 5000;
    source.Read = [](size_t, size_t count) {
        const wxString text(L"a sentence that goes over two lines, \u65E5\u672C\u8A9E\u3002 ");
        return std::vector<PrintLayout::Sides>(count, {text + text, text});
    };
    source.Measure = [&measured](const wxString& text, const PrintFont& font) {
        ++measured;
        return wxSize(static_cast<int>(text.length()) * font.Points * 5, font.Points * 12);
    };
    PrintLayout layout(PrintForm::kList, std::move(source));
    layout.SetPaper(kA4);
    EXPECT_EQ(layout.CountPages(), 209);
    EXPECT_LT(measured, 100);
}

TEST(PrintLayout, FrontAndBackOfACardMeetWhenTheSheetIsTurnedOverItsLongEdge) {
    for (const wxSize& paper : {kA4, kA4Landscape}) {
        PrintLayout layout = MakeLayout(PrintForm::kCutOut, 3);
        layout.SetPaper(paper);
        const PrintPage fronts = layout.MakePage(1);
        const PrintPage backs = layout.MakePage(2);
        for (const char* const number : {"0", "1", "2"}) {
            const PrintLine* const front = FindLine(fronts, wxString("f") + number);
            const PrintLine* const back = FindLine(backs, wxString("b") + number);
            ASSERT_TRUE(front != nullptr && back != nullptr);
            wxPoint turned = Middle(*back);
            (paper == kA4 ? turned.x : turned.y) =
                paper == kA4 ? paper.x - turned.x : paper.y - turned.y;
            const wxPoint apart = Middle(*front) - turned;
            EXPECT_LE(std::max(std::abs(apart.x), std::abs(apart.y)), 4) << number;
        }
    }
}

struct PrintCardsTest : ListTest {
    // Presses Print in the desktop's dialog as soon as it has found its printers.
    static gboolean PressPrint(gpointer) {
        GList* const windows = gtk_window_list_toplevels();
        bool isPressed = false;
        for (const GList* item = windows; item != nullptr; item = item->next) {
            if (wxString(G_OBJECT_TYPE_NAME(item->data)) == "GtkPrintUnixDialog") {
                auto* const dialog = GTK_DIALOG(item->data);
                GtkWidget* const button =
                    gtk_dialog_get_widget_for_response(dialog, GTK_RESPONSE_OK);
                isPressed = gtk_widget_is_sensitive(button) != FALSE;
                if (isPressed) {
                    gtk_dialog_response(dialog, GTK_RESPONSE_OK);
                }
            }
        }
        g_list_free(windows);
        return isPressed ? G_SOURCE_REMOVE : G_SOURCE_CONTINUE;
    }

    wxString PathOf(PrintForm form) const {
        return mDirectory.Path(wxString::Format("cards%i.pdf", static_cast<int>(form)));
    }

    // Prints the cards of the row ids, and returns the texts of the file.
    std::string Print(PrintForm form, const std::vector<int64_t>& rowIds) {
        // The only printer is the one that writes a file.
        g_object_set(gtk_settings_get_default(), "gtk-print-backends", "file", nullptr);
        const wxString path = PathOf(form);
        wxPrintDialogData data;
        wxPrintData& settings = data.GetPrintData();
        settings.SetPaperId(wxPAPER_A4);
        settings.SetPrinterName("Print to File");
        settings.ConvertToNative();
        auto& native = dynamic_cast<wxGtkPrintNativeData&>(*settings.GetNativeData());
        gtk_print_settings_set(native.GetPrintConfig(), GTK_PRINT_SETTINGS_OUTPUT_URI,
                               ("file://" + path).utf8_str());
        wxPrinter printer(&data);
        CardPrintout printout("Cards", LayOutCards(mDatabase, rowIds, "Default", form));
        g_timeout_add(20, PressPrint, nullptr);
        EXPECT_TRUE(printer.Print(nullptr, &printout, true));
        EXPECT_TRUE(WaitFor([&path] { return wxFileExists(path); }));
        return ReadPdf(path);
    }
};

TEST_F(PrintCardsTest, TextsAreAsLargeWhateverTheResolutionOfTheScreen) {
    Insert(MakeCard("one", "x"));
    for (const int resolution : {96, 240}) {
        g_object_set(gtk_settings_get_default(), "gtk-xft-dpi", resolution * 1024, nullptr);
        const PrintedCards cards = LayOutCards(mDatabase, {1}, "Default", PrintForm::kList);
        cards.Layout->SetPaper(kA4);
        // A line of 14 points on paper of 720 units an inch, with the room above and below letters.
        EXPECT_NEAR(cards.Layout->MakePage(1).Lines.front().Place.height, 204, 25) << resolution;
    }
    gtk_settings_reset_property(gtk_settings_get_default(), "gtk-xft-dpi");
}

TEST_F(PrintCardsTest, AFileHasTheTextsOfAllScriptsAndPicturesAndNamesWhatIsMissing) {
    const MediaFolder folder(mDatabase.GetPath());
    const wxString corpus(wxString(VELOMIND_CORPUS) + "/");
    for (const char* const file : {"good.png", "cut.gif", "text.png", "good.svg"}) {
        wxString name;
        ASSERT_EQ(folder.Add(ToPath(corpus + file), file, name), 0);
    }
    const wxString japanese(L"\u65E5\u672C\u8A9E");
    const wxString hebrew(L"\u05E2\u05D1\u05E8\u05D9\u05EA");
    Insert(MakeCard(japanese + "\n[picture: good.png]\n[sound: x.ogg]",
                    "Japanese\n[picture: good.svg]"));
    Insert(MakeCard(hebrew + "\n[picture: none.png]",
                    "Hebrew\n[picture: text.png]\n[picture: cut.gif]"));
    // A card that is gone leaves its place empty.
    for (const PrintForm form : {PrintForm::kList, PrintForm::kCutOut}) {
        const std::string text = Print(form, {2, 1, 99});
        const auto place = [&text](const wxString& word) {
            EXPECT_NE(text.find(word.utf8_string()), std::string::npos) << word << " in " << text;
            return text.find(word.utf8_string());
        };
        for (const char* const name : {"none.png", "text.png", "cut.gif"}) {
            place(name);
        }
        EXPECT_EQ(text.find("good"), std::string::npos) << text;
        EXPECT_EQ(text.find("["), std::string::npos) << text;
        if (form == PrintForm::kList) {
            place("Default");
            place("Page 1 of 1");
            EXPECT_LT(place(hebrew), place(japanese));
            EXPECT_LT(place("Hebrew"), place("Japanese"));
        } else {
            // The backs are on the second page.
            EXPECT_LT(place(japanese), place("\f"));
            EXPECT_GT(place("Hebrew"), place("\f"));
            EXPECT_LT(place("Japanese"), place("Hebrew")) << "the columns are not mirrored";
        }
        wxArrayString pictures;
        wxExecute("pdfimages -list " + PathOf(form), pictures, wxEXEC_SYNC);
        EXPECT_GE(pictures.size(), 2U + 2U) << wxJoin(pictures, '\n', '\0');
    }
}

TEST_F(PrintCardsTest, TheCommandPrintsTheCardsInViewOrTheSelectedOnes) {
    Open();
    EXPECT_EQ(Rule(wxID_PRINT), "off");
    Command(wxID_PRINT);
    for (const char* const front : {"one", "two", "three"}) {
        Insert(MakeCard(front, "x"));
    }
    mDatabase.Notify();
    EXPECT_EQ(Rule(wxID_PRINT), "on");
    for (const auto& [selected, count] :
         {std::pair(std::vector<long>{}, "3 cards"), std::pair(std::vector<long>{1}, "3 cards"),
          std::pair(std::vector<long>{0, 2}, "2 cards")}) {
        Select(selected);
        ModalAnswers answers;
        answers.Expect([count = count](wxDialog& dialog) {
            const auto& about = Find<wxStaticText>(dialog, "staticText");
            EXPECT_TRUE(about.GetLabel().Contains(count)) << about.GetLabel();
            return int{wxID_CANCEL};
        });
        Command(wxID_PRINT);
    }
    // The preview goes before its store does.
    ModalAnswers answers;
    answers.Expect(wxID_PREVIEW);
    Command(wxID_PRINT);
    const auto preview = [] {
        return std::any_of(
            wxTopLevelWindows.begin(), wxTopLevelWindows.end(),
            [](wxWindow* window) { return dynamic_cast<wxPreviewFrame*>(window) != nullptr; });
    };
    EXPECT_TRUE(preview());
    EXPECT_FALSE(mpFrame->IsEnabled());
    mpFrame->SetDatabase(nullptr);
    EXPECT_TRUE(WaitFor([&] { return !preview() && mpFrame->IsEnabled(); }));
    mpFrame->SetDatabase(&mDatabase);
}
