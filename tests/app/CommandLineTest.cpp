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
    const std::tuple<const char*, bool, CommandLineOutcome, std::vector<std::string>> cases[] = {
        {"", true, CommandLineOutcome::StartProgram, {}},
        {"--desktop_folder=/d --program_menu_folder /p --add_desktop_shortcut 1 "
         "--add_quicklaunch_shortcut 1",
         true,
         CommandLineOutcome::StartProgram,
         {}},
        {"--community_join 0", true, CommandLineOutcome::AllDone, {}},
        {"--uninstall", true, CommandLineOutcome::AllDone, {}},
        {"--uninstall --community_join 1 --browse b --messagebox m --import f",
         true,
         CommandLineOutcome::AllDone,
         {"import f", "message m", "open b", joinPage}},
        {"--messagebox m --import f", false, CommandLineOutcome::Refused, {"import f"}},
    };
    for (const auto& [line, hasStore, outcome, done] : cases) {
        SCOPED_TRACE(line);
        wxCmdLineParser parser(line);
        DescribeCommandLine(parser);
        ASSERT_EQ(parser.Parse(false), 0);
        RecordingActions actions;
        actions.HasStore = hasStore;
        EXPECT_EQ(RunCommandLine(parser, actions), outcome);
        EXPECT_EQ(actions.Done, done);
    }
}

}  // namespace
