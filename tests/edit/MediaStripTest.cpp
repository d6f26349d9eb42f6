#include "edit/MediaStrip.h"

#include <gtk/gtk.h>
#include <wx/clipbrd.h>
#include <wx/uiaction.h>

#include "support/GuiTest.h"

namespace {

struct MediaStripTest : GuiTest {
    MediaStripTest() {
        ShowAndWait(mFrame);
        mStrip.SetStore(mDirectory.Path("a.vlm"));
    }
    static wxString Corpus(const char* name) { return wxString(VELOMIND_CORPUS) + "/" + name; }
    bool Add(const char* name) {
        wxArrayString paths;
        paths.push_back(Corpus(name));
        return mStrip.AddFiles(paths);
    }

    static GtkWidget* ViewOf(wxTextCtrl& field) {
        return gtk_bin_get_child(GTK_BIN(field.GetHandle()));
    }
    // Drags from one place of the screen to another with the mouse.
    static void Drag(GtkWidget* source, const wxPoint& from, GtkWidget* target, const wxPoint& to) {
        bool isBegun = false;
        bool isThere = false;
        const auto note = [](GtkWidget* widget, const char* signal, bool& flag) {
            gboolean (*const set)(bool*) = [](bool* seen) {
                *seen = true;
                return FALSE;
            };
            g_signal_connect_swapped(widget, signal, G_CALLBACK(set), &flag);
        };
        note(source, "drag-begin", isBegun);
        note(target, "drag-motion", isThere);
        wxUIActionSimulator mouse;
        mouse.MouseMove(from);
        DrainEvents();
        mouse.MouseDown();
        DrainEvents();
        mouse.MouseMove(from + wxSize(5, 5));
        mouse.MouseMove(from + wxSize(20, 5));
        EXPECT_TRUE(WaitFor([&] { return isBegun; }));
        mouse.MouseMove(to - wxSize(3, 0));
        mouse.MouseMove(to);
        EXPECT_TRUE(WaitFor([&] { return isThere; }));
        mouse.MouseUp();
        g_signal_handlers_disconnect_by_data(source, &isBegun);
        g_signal_handlers_disconnect_by_data(target, &isThere);
    }

    TestDirectory mDirectory;
    wxFrame& mFrame = *new wxFrame(nullptr, wxID_ANY, "Editor");
    wxPanel& mPanel = *new wxPanel(&mFrame);
    wxTextCtrl& mField = *new wxTextCtrl(&mPanel, wxID_ANY, wxString(), wxDefaultPosition,
                                         wxSize(200, 80), wxTE_MULTILINE);
    MediaStrip& mStrip = *new MediaStrip(&mPanel, mField);
};

TEST_F(MediaStripTest, AFileBecomesALineBelowTheOneWithTheCursor) {
    const struct {
        const char* Before;
        long Cursor;
        const char* After;
    } rows[] = {{"", 0, "[picture: good.png]"},
                {"bird", 2, "bird\n[picture: good.png]"},
                {"bird\nmore", 1, "bird\n[picture: good.png]\nmore"},
                {"bird\n", 5, "bird\n[picture: good.png]"}};
    for (const auto& row : rows) {
        mField.ChangeValue(row.Before);
        mField.SetInsertionPoint(row.Cursor);
        EXPECT_TRUE(Add("good.png"));
        EXPECT_EQ(mField.GetValue(), row.After);
    }
    EXPECT_TRUE(mStrip.IsShown());
    EXPECT_EQ(mStrip.GetChildren().size(), 1U);
    mField.SetValue("bird");
    EXPECT_FALSE(mStrip.IsShown());
    // The line is gone and the file stays.
    EXPECT_TRUE(MediaFolder(mDirectory.Path("a.vlm")).Open("good.png").IsOpen());
}

TEST_F(MediaStripTest, WhatIsNoPictureIsToldAndAPastedOneIsTaken) {
    ModalAnswers answers;
    answers.Expect({wxID_OK, wxID_OK});
    EXPECT_FALSE(Add("text.png"));
    EXPECT_FALSE(Add("huge.png"));
    EXPECT_TRUE(mField.IsEmpty());
    EXPECT_TRUE(Add("good.ogg"));
    EXPECT_EQ(mField.GetValue(), "[sound: good.ogg]");

    wxImage image(3, 2);
    {
        const wxClipboardLocker lock;
        ASSERT_TRUE(wxTheClipboard->SetData(new wxBitmapDataObject(wxBitmap(image))));
    }
    mField.Paste();
    EXPECT_TRUE(WaitFor([this] { return mField.GetNumberOfLines() == 2; }));
    EXPECT_EQ(mField.GetValue(), "[sound: good.ogg]\n[picture: picture.png]");
    EXPECT_EQ(mStrip.GetChildren().size(), 2U);
    const wxClipboardLocker lock;
    wxTheClipboard->Clear();
}

TEST_F(MediaStripTest, WhatIsDroppedIsTakenOnce) {
    auto& other = *new wxTextCtrl(&mPanel, wxID_ANY, "word", wxPoint(0, 200), wxSize(200, 80),
                                  wxTE_MULTILINE);
    other.SetSelection(0, 4);
    const wxPoint within(mField.ClientToScreen(wxPoint(60, 10)));
    Drag(ViewOf(other), other.ClientToScreen(wxPoint(12, 10)), ViewOf(mField), within);
    EXPECT_TRUE(WaitFor([this] { return !mField.IsEmpty(); }));
    DrainEvents();
    EXPECT_EQ(mField.GetValue(), "word");

    GtkWidget* const window = gtk_window_new(GTK_WINDOW_POPUP);
    gtk_window_move(GTK_WINDOW(window), 20, 600);
    gtk_window_resize(GTK_WINDOW(window), 100, 100);
    gtk_drag_source_set(window, GDK_BUTTON1_MASK, nullptr, 0, GDK_ACTION_COPY);
    gtk_drag_source_add_uri_targets(window);
    std::vector<std::string> addresses;
    for (const char* const name : {"good.png", "text.png", "good.ogg"}) {
        addresses.push_back("file://" + Corpus(name).utf8_string());
    }
    const auto give = +[](GtkWidget*, GdkDragContext*, GtkSelectionData* data, guint, guint,
                          std::vector<std::string>* uris) {
        gchar* list[] = {(*uris)[0].data(), (*uris)[1].data(), (*uris)[2].data(), nullptr};
        gtk_selection_data_set_uris(data, list);
    };
    g_signal_connect(window, "drag-data-get", G_CALLBACK(give), &addresses);
    gtk_widget_show_all(window);
    DrainEvents();
    ModalAnswers answers;
    answers.Expect(wxID_OK);
    Drag(window, wxPoint(40, 640), ViewOf(mField), within);
    // The good ones are taken, and the other one is told of once the drag is over.
    EXPECT_TRUE(WaitFor([&answers] { return answers.Dialogs.size() == 1; }));
    EXPECT_EQ(mField.GetValue(), "word\n[picture: good.png]\n[sound: good.ogg]");
    EXPECT_THAT(answers.Dialogs[0].Message.utf8_string(), testing::HasSubstr("\"text.png\""));
    gtk_widget_destroy(window);
}

}  // namespace
