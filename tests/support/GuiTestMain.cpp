#include <gtest/gtest.h>
#include <wx/cshelp.h>
#include <wx/evtloop.h>
#include <wx/filename.h>
#include <wx/thread.h>
#include <wx/wx.h>

#include <clocale>
#include <cstdlib>
#include <string>

#include "base/Process.h"
#include "media/PictureProcess.h"
#include "support/FailureReport.h"

namespace {

// Tells the windows that are shown, and takes a picture of the screen where a directory for it is
// named.
std::string DescribeScreen(const std::string& test) {
    std::string seen = "windows on the screen:";
    if (wxThread::IsMain()) {
        for (const wxWindow* const window : wxTopLevelWindows) {
            if (window->IsShown()) {
                seen += " \"" + window->GetLabel().utf8_string() + "\"";
            }
        }
    }
    const char* const directory = std::getenv("VELOMIND_SCREENS");
    if (directory != nullptr) {
        wxString name = wxString::FromUTF8(test);
        name.Replace("/", "-");
        const wxString picture = wxString::FromUTF8(directory) + "/" + name + ".png";
        const bool isX11 = wxGetenv("WAYLAND_DISPLAY") == nullptr;
        wxFileName::Mkdir(wxString::FromUTF8(directory), wxS_DIR_DEFAULT, wxPATH_MKDIR_FULL);
        const wxString command = (isX11 ? "import -window root '" : "grim '") + picture + "'";
        if (std::system(command.utf8_str()) == 0) {
            seen += "\na picture of the screen: " + picture.utf8_string();
        }
    }
    return seen + "\n";
}

// Runs the tests inside an active event loop, so that windows behave as in the program.
struct TestApp : wxApp {
    bool OnInit() override {
        SetVendorName("Ostrel");
        SetAppName("Velomind");
        SetExitOnFrameDelete(false);
        // Messages of the library go to the test's output and not into a dialog.
        delete wxLog::SetActiveTarget(new wxLogStderr);
        wxImage::AddHandler(new wxPNGHandler);
        wxHelpProvider::Set(new wxSimpleHelpProvider);
        return true;
    }

    int OnRun() override {
        wxEventLoop loop;
        const wxEventLoopActivator activator(&loop);
        return RUN_ALL_TESTS();
    }

    void OnAssertFailure(const wxChar* file, int line, const wxChar* function,
                         const wxChar* condition, const wxChar* message) override {
        ADD_FAILURE() << "toolkit assertion " << wxString(condition) << " in " << wxString(function)
                      << " (" << wxString(file) << ":" << line
                      << "): " << (message == nullptr ? wxString() : wxString(message));
    }
};

}  // namespace

int main(int argc, char** argv) {
    if (const int drawn = DrawIfAsked(argc, argv); drawn >= 0) {
        return drawn;
    }
    // Trace texts are built, so that a format that does not fit its values is found.
    gTraceHook = [](const wxString&) {};
    ::testing::InitGoogleTest(&argc, argv);
    FailureReport::Install(DescribeScreen);
    // Listing needs no display.
    if (::testing::GTEST_FLAG(list_tests)) {
        return RUN_ALL_TESTS();
    }
    if (std::setlocale(LC_CTYPE, "") == nullptr || MB_CUR_MAX == 1) {
        // A run that brings its own locales is about one of them.
        if (std::getenv("LOCPATH") != nullptr) {
            return 1;
        }
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
    wxApp::SetInstance(new TestApp);
    return wxEntry(argc, argv);
}
