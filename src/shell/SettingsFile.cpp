#include "shell/SettingsFile.h"

#include <wx/fileconf.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/utils.h>

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace {

wxString ConfigurationDirectory() {
    wxString directory;
    // A relative path is to be ignored by the rules of this variable.
    if (wxGetEnv("XDG_CONFIG_HOME", &directory) && wxIsAbsolutePath(directory)) {
        return directory;
    }
    return wxFileName::GetHomeDir() + "/.config";
}

// A link is followed, since writing replaces the file that it is given.
wxString FilePath(const wxString& application) {
    const std::string path = (ConfigurationDirectory() + "/" + application + ".conf").utf8_string();
    std::error_code error;
    const std::filesystem::path followed = std::filesystem::weakly_canonical(path, error);
    return wxString::FromUTF8(error ? path : followed.string());
}

// Opening a pipe would wait for ever, and a file that cannot be read must not be replaced.
bool IsUsable(const wxString& path) {
    std::error_code error;
    switch (std::filesystem::status(path.utf8_string(), error).type()) {
        case std::filesystem::file_type::regular:
            return wxFileName::IsFileReadable(path);
        case std::filesystem::file_type::not_found:
            return true;
        default:
            return false;
    }
}

void TellOnce(const wxString& path) {
    static bool told = false;
    if (!told) {
        told = true;
        wxLogWarning(_("Your settings cannot be kept: \"%s\" cannot be written."), path);
    }
}

// The toolkit's parser asserts on some lines that make no sense (a value with no name before it)
// but gets over them. A person may write such lines, so they are no fault of the program.
class NoAsserts {
  public:
    NoAsserts() : mFormer(wxSetAssertHandler(nullptr)) {}
    ~NoAsserts() { wxSetAssertHandler(mFormer); }
    NoAsserts(const NoAsserts&) = delete;
    NoAsserts& operator=(const NoAsserts&) = delete;

  private:
    const wxAssertHandler_t mFormer;
};

// A base that comes first outlives the other one's destructor, and so does its silence.
class LateSilence {
  protected:
    std::optional<wxLogNull> mSilence;
};

// The toolkit's file with its many messages brought down to one.
class SettingsFile final : private LateSilence, public wxFileConfig {
  public:
    // With no file named and no style the toolkit's class keeps everything in memory.
    SettingsFile(const wxString& application, const wxString& path, bool usable)
        : wxFileConfig(application, wxString(), usable ? path : wxString(), wxString(),
                       usable ? wxCONFIG_USE_LOCAL_FILE : 0),
          mPath(path),
          mUsable(usable) {
        SetExpandEnvVars(false);
    }

    ~SettingsFile() override {
        SettingsFile::Flush();
        // The base tries once more what has failed.
        mSilence.emplace();
    }

    bool Flush(bool currentOnly = false) override {
        if (!mWritten) {
            return true;
        }
        mWritten = false;
        const bool kept = mUsable && Store(currentOnly);
        if (!kept) {
            TellOnce(mPath);
        }
        return kept;
    }

  protected:
    bool DoReadLong(const wxString& key, long* value) const override {
        const wxLogNull quiet;
        return wxFileConfig::DoReadLong(key, value);
    }

    bool DoReadBool(const wxString& key, bool* value) const override {
        long number = 0;
        if (!DoReadLong(key, &number) || number < 0 || number > 1) {
            return false;
        }
        *value = number != 0;
        return true;
    }

    bool DoWriteString(const wxString& key, const wxString& value) override {
        const wxLogNull quiet;
        mWritten = true;
        return wxFileConfig::DoWriteString(key, value);
    }

    bool DoWriteLong(const wxString& key, long value) override {
        const wxLogNull quiet;
        mWritten = true;
        return wxFileConfig::DoWriteLong(key, value);
    }

  private:
    bool Store(bool currentOnly) {
        const wxLogNull quiet;
        // A directory that cannot be made shows in what follows.
        wxFileName(mPath).Mkdir(wxS_IRUSR | wxS_IWUSR | wxS_IXUSR, wxPATH_MKDIR_FULL);
        return wxFileConfig::Flush(currentOnly);
    }

    const wxString mPath;
    const bool mUsable;
    bool mWritten = false;
};

}  // namespace

std::unique_ptr<wxConfigBase> OpenSettingsFile(const wxString& application) {
    const wxLogNull quiet;
    const NoAsserts calm;
    const wxString path = FilePath(application);
    return std::make_unique<SettingsFile>(application, path, IsUsable(path));
}
