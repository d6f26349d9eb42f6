#include <gtest/gtest.h>
#include <wx/cshelp.h>
#include <wx/evtloop.h>
#include <wx/wx.h>

#include <clocale>
#include <cstdlib>

#include "base/Process.h"

namespace {

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
    // Trace texts are built, so that a format that does not fit its values is found.
    gTraceHook = [](const wxString&) {};
    ::testing::InitGoogleTest(&argc, argv);
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
