#include "shell/Speech.h"

#include <wx/filename.h>
#include <wx/utils.h>

#include <csignal>

#include "support/GuiTest.h"

namespace {

// A speech service of its own, with the silent module that comes with it and one that writes what
// it is to say into a file and then speaks for a minute. The program starts the service itself.
struct SpeechTest : GuiTest {
    SpeechTest() {
        wxSetEnv("XDG_CONFIG_HOME", mFiles.Path("."));
        Configure("recorder");
    }
    ~SpeechTest() override {
        Tell(SIGCONT);
        Tell(SIGTERM);
        wxUnsetEnv("XDG_CONFIG_HOME");
    }

    void Configure(const std::string& module) {
        const wxString place = mFiles.Path("speech-dispatcher");
        wxFileName::Mkdir(place + "/modules", wxS_DIR_DEFAULT, wxPATH_MKDIR_FULL);
        WriteBytes(place + "/speechd.conf",
                   "LogLevel 0\nAudioOutputMethod \"libao\"\nAddModule \"recorder\" \"sd_generic\" "
                   "\"recorder.conf\"\n"
                   "AddModule \"dummy\" \"sd_dummy\" \"\"\nDefaultModule " +
                       module + "\n");
        WriteBytes(place + "/modules/recorder.conf",
                   "GenericExecuteSynth \"echo '$LANGUAGE|$VOICE|$DATA' >> " +
                       mFiles.Path("said").utf8_string() +
                       "; exec sleep 60\"\n"
                       "GenericLanguage \"en\" \"en\" \"utf-8\"\n"
                       "GenericLanguage \"ja\" \"ja\" \"utf-8\"\n"
                       "GenericDefaultCharset \"utf-8\"\nDefaultVoice \"Alice\"\n"
                       "AddVoice \"en\" \"MALE1\" \"Alice\"\nAddVoice \"ja\" \"MALE1\" \"Hana\"\n"
                       "AddVoice \"ja\" \"FEMALE1\" \"Yui\"\n");
    }

    // Sends a signal to the service, if it runs.
    static void Tell(int signal) {
        wxString runtime;
        wxGetEnv("XDG_RUNTIME_DIR", &runtime);
        const wxString path = runtime + "/speech-dispatcher/pid/speech-dispatcher.pid";
        const int pid = wxFileExists(path) ? std::atoi(ReadBytes(path).c_str()) : 0;
        if (pid > 1) {
            kill(pid, signal);
        }
    }

    bool HasSaid(const std::string& text) {
        const wxString path = mFiles.Path("said");
        return wxFileExists(path) && ReadBytes(path).find(text) != std::string::npos;
    }
    bool WaitForSaid(const std::string& text) {
        return WaitFor([this, text] { return HasSaid(text); }, 20000);
    }

    TestDirectory mFiles;
    Speech mSpeech;
};

TEST_F(SpeechTest, TheNextTextSilencesTheOneThatIsSpoken) {
    mSpeech.Silence();
    EXPECT_FALSE(mSpeech.IsWithoutAnswer()) << "there is no connection yet";
    mSpeech.Say(wxString::FromUTF8("日本\n.\nit's"), {"ja", "Yui"});
    EXPECT_TRUE(WaitForSaid("ja|Yui|日本"));
    mSpeech.Say("plain", {});
    EXPECT_TRUE(WaitForSaid("|Alice|plain")) << "no minute later, and with the service's own voice";
    mSpeech.Say("unknown voice", {"xx", "Nobody"});
    EXPECT_TRUE(WaitForSaid("unknown voice"));
}

TEST_F(SpeechTest, VoicesAreThoseOfTheModule) {
    Configure("dummy");
    mSpeech.Say("something", {});
    mSpeech.AskForVoices();
    ASSERT_TRUE(WaitFor([this] { return mSpeech.HasVoices(); }, 20000));
    EXPECT_EQ(mSpeech.GetVoices(), std::vector<SpeechVoice>({{"en", "dummy"}}));
    EXPECT_FALSE(mSpeech.IsWithoutAnswer());
}

TEST_F(SpeechTest, AServiceThatIsKilledIsStartedAgain) {
    mSpeech.Say("before", {});
    ASSERT_TRUE(WaitForSaid("before"));
    Tell(SIGKILL);
    mSpeech.Say("after", {});
    EXPECT_TRUE(WaitForSaid("after"));
    EXPECT_FALSE(mSpeech.IsWithoutAnswer());
}

TEST_F(SpeechTest, AServiceThatHangsIsNotWaitedForAndSaysNothingOldLater) {
    mSpeech.Say("first", {});
    ASSERT_TRUE(WaitForSaid("first"));
    Tell(SIGSTOP);
    for (const char* const text : {"second", "third", "fourth"}) {
        mSpeech.Say(text, {});
    }
    {
        Speech other;
        other.Say("of a window that closes", {});
    }
    EXPECT_TRUE(WaitFor([this] { return mSpeech.IsWithoutAnswer(); }, 20000));
    Tell(SIGCONT);
    EXPECT_TRUE(WaitForSaid("fourth"));
    EXPECT_FALSE(HasSaid("third"));
    EXPECT_TRUE(WaitFor([this] { return !mSpeech.IsWithoutAnswer(); }));
}

TEST_F(SpeechTest, WithoutAServiceNothingIsSaid) {
    wxSetEnv("SPEECHD_ADDRESS", "unix_socket:/nowhere/at/all");
    mSpeech.Say("nobody hears it", {});
    EXPECT_TRUE(WaitFor([this] { return mSpeech.IsWithoutAnswer(); }, 20000));
    wxUnsetEnv("SPEECHD_ADDRESS");
}

}  // namespace
