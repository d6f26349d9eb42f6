#include "app/CommandLine.h"

#include <gmock/gmock.h>
#include <wx/cmdline.h>

namespace {

struct RecordingActions : CommandLineActions {
    bool ImportFile(const wxString& path) override {
        Done.push_back("import " + path.utf8_string());
        return HasStore;
    }
    void ShowMessage(const wxString& text) override {
        Done.push_back("message " + text.utf8_string());
    }
    void OpenAddress(const wxString& page) override {
        Done.push_back("open " + page.utf8_string());
    }

    bool HasStore = true;
    std::vector<std::string> Done;
};

TEST(CommandLine, EachOptionDoesItsWorkInAFixedOrder) {
    const std::string joinPage = "open https://community.example.org/?q=join";
    const struct {
        const char* Line;
        CommandLineOutcome Outcome;
        std::vector<std::string> Done;
        bool HasStore = true;
    } cases[] = {
        {"", CommandLineOutcome::StartProgram, {}},
        {"--desktop_folder=/d --program_menu_folder /p --add_desktop_shortcut 1 "
         "--add_quicklaunch_shortcut 1",
         CommandLineOutcome::StartProgram,
         {}},
        {"--community_join 0", CommandLineOutcome::AllDone, {}},
        {"--uninstall", CommandLineOutcome::AllDone, {}},
        {"--uninstall --community_join 1 --browse b --messagebox m --import f",
         CommandLineOutcome::AllDone,
         {"import f", "message m", "open b", joinPage}},
        {"--messagebox m --import f", CommandLineOutcome::Refused, {"import f"}, false},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.Line);
        wxCmdLineParser parser(expected.Line);
        DescribeCommandLine(parser);
        ASSERT_EQ(parser.Parse(false), 0);
        RecordingActions actions;
        actions.HasStore = expected.HasStore;
        EXPECT_EQ(RunCommandLine(parser, actions), expected.Outcome);
        EXPECT_EQ(actions.Done, expected.Done);
    }
}

}  // namespace
