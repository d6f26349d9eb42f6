#include <gtest/gtest.h>
#include <wx/init.h>

#include <clocale>
#include <cstdlib>

#include "base/Process.h"
#include "media/PictureProcess.h"
#include "support/FailureReport.h"

// The library without windows, in the locale that the program itself sets.
int main(int argc, char** argv) {
    if (const int drawn = DrawIfAsked(argc, argv); drawn >= 0) {
        return drawn;
    }
    // Trace texts are built, so that a format that does not fit its values is found.
    gTraceHook = [](const wxString&) {};
    if (std::setlocale(LC_CTYPE, "") == nullptr || MB_CUR_MAX == 1) {
        // A run that brings its own locales is about one of them.
        if (std::getenv("LOCPATH") != nullptr) {
            return 1;
        }
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
    ::testing::InitGoogleTest(&argc, argv);
    FailureReport::Install();
    const wxInitializer library;
    return library.IsOk() ? RUN_ALL_TESTS() : 1;
}
