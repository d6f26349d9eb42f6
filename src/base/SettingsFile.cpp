#include "base/SettingsFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/fileconf.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/mstream.h>
#include <wx/utils.h>
#include <wx/wfstream.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "base/Files.h"
#include "base/Unicode.h"

// The settings lie in one text file of lines "Key=value" in a single section, for example
//
//     Font=1;Sans Bold 12
//     StudyBgColor=R255G255B255
//     StudyFramePosition=100,80,640,480
//
// in ~/.config/Velomind.conf. Every access parses the file, does one thing and, after a write,
// replaces the file. That is too slow for a thousand values and right for twenty: nothing is
// cached, so two windows, or an editor of the user's, never disagree with the program. The user may
// edit the file, copy it from another computer or keep it behind a link, so whatever stands in it
// counts as input: a value that makes no sense gives its default, and a file that is not ours to
// use (a pipe, a directory, one without the right to read) is left alone.

namespace {

wxString ConfigurationDirectory() {
    wxString directory;
    // The rules of this variable say to ignore a relative path.
    if (wxGetEnv("XDG_CONFIG_HOME", &directory) && wxIsAbsolutePath(directory)) {
        return directory;
    }
    return wxFileName::GetHomeDir() + "/.config";
}

// Returns a link's target, since writing replaces the file that it is given.
wxString FilePath(const wxString& application) {
    const wxString path = ConfigurationDirectory() + "/" + application + ".conf";
    std::error_code error;
    const std::filesystem::path followed = std::filesystem::weakly_canonical(ToPath(path), error);
    return error ? path : FromPath(followed);
}

// Tells whether the file may be read and replaced. Opening a pipe would wait for ever, and
// replacing a file that cannot be read would lose the settings in it.
bool IsUsable(const wxString& path) {
    std::error_code error;
    switch (std::filesystem::status(ToPath(path), error).type()) {
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

// The library's parser asserts on some lines that make no sense (a value with no name before it)
// and gets over them. Users may write such lines, so they are no fault of the program.
class NoAsserts {
  public:
    NoAsserts() : mFormer(wxSetAssertHandler(nullptr)) {}
    ~NoAsserts() { wxSetAssertHandler(mFormer); }
    NoAsserts(const NoAsserts&) = delete;
    NoAsserts& operator=(const NoAsserts&) = delete;

  private:
    const wxAssertHandler_t mFormer;
};

// The library's configuration over the text of the file. The library can open and write the file by
// itself too, but then complains several times about a file that it cannot use, and writes it in
// place. This class reads the text once, and at its end writes the changed text to a temporary file
// that takes the other's name, so that a crash leaves the old settings or the new ones.
class SettingsFile final : public wxFileConfig {
  public:
    // A file that is not usable counts as empty and is never written.
    SettingsFile(wxInputStream& content, const wxString& path, bool usable)
        : wxFileConfig(content), mPath(path), mUsable(usable) {
        SetExpandEnvVars(false);
    }

    ~SettingsFile() override {
        if (mWritten && !(mUsable && Store())) {
            TellOnce(mPath);
        }
    }

    bool DeleteEntry(const wxString& key, bool deleteGroupIfEmpty) override {
        mWritten = true;
        return wxFileConfig::DeleteEntry(key, deleteGroupIfEmpty);
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
        mWritten = true;
        return wxFileConfig::DoWriteString(key, value);
    }

    bool DoWriteLong(const wxString& key, long value) override {
        mWritten = true;
        return wxFileConfig::DoWriteLong(key, value);
    }

  private:
    bool Store() {
        const wxLogNull quiet;
        // A failure to make the directory shows in the next step.
        wxFileName(mPath).Mkdir(wxS_IRUSR | wxS_IWUSR | wxS_IXUSR, wxPATH_MKDIR_FULL);
        wxMemoryOutputStream text;
        const wxStreamBuffer* const bytes = text.GetOutputStreamBuffer();
        return Save(text) &&
               Replace(static_cast<const char*>(bytes->GetBufferStart()), bytes->GetIntPosition());
    }

    // The library's temporary file deletes the old one before the new one has its name, and does
    // not wait for the disk: a power cut could leave no settings, or an empty file.
    bool Replace(const char* bytes, size_t size) const {
        const std::string name = ToUtf8(mPath);
        std::string temporary = name + "-XXXXXX";
        const FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
        if (!file.IsOpen()) {
            return false;
        }
        struct stat status {};
        if (::stat(name.c_str(), &status) == 0) {
            ::fchmod(file.Get(), status.st_mode & 0777);
        }
        while (size > 0) {
            const ssize_t written = ::write(file.Get(), bytes, size);
            if (written <= 0) {
                break;
            }
            bytes += written;
            size -= static_cast<size_t>(written);
        }
        if (size > 0 || ::fsync(file.Get()) != 0 ||
            std::rename(temporary.c_str(), name.c_str()) != 0) {
            ::unlink(temporary.c_str());
            return false;
        }
        SyncDirectory(ToPath(mPath));
        return true;
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
    const bool usable = IsUsable(path);
    if (usable && wxFileName::FileExists(path)) {
        wxFileInputStream content(path);
        return std::make_unique<SettingsFile>(content, path, content.IsOk());
    }
    wxMemoryInputStream nothing("", 0);
    return std::make_unique<SettingsFile>(nothing, path, usable);
}
