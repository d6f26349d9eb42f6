#pragma once

#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "base/Files.h"
#include "media/MediaFolder.h"
#include "media/MediaLines.h"

// Pictures and sounds that come along with cards from elsewhere. While the cards are read, each
// file that one names gets the name of its line. Once all are known the files are brought into the
// store's folder, where one may get another name; the cards are then read again with the names that
// hold. Each call on one thread at a time.
class MediaSource {
  public:
    // What the line of a file that is not there becomes: none, or the same line, since the store
    // may have the file.
    enum class Missing { kDropped, kKept };

    explicit MediaSource(Missing missing) : mMissing(missing) {}
    virtual ~MediaSource() = default;

    // Returns the name for the line of a file, and notes the file as wanted. Empty for one that is
    // not there, is too large or cannot be shown.
    wxString NameOf(MediaKind kind, const wxString& source);

    int64_t CountFiles() const { return static_cast<int64_t>(mWanted.size()); }
    int64_t CountBytes() const { return mBytes; }
    // Counts the lines' files that are neither there nor in the folder of the store.
    int CountMissing(const MediaFolder& folder) const;
    // Returns a sentence when the files go beyond a bound that a person is asked about, else an
    // empty text.
    wxString FindPassedBound() const;
    // Once somebody has agreed to a passed bound.
    void AllowMany() { mMayBeMany = true; }

    // Brings all wanted files into the folder. What cannot be read is left out. Returns false, with
    // the reason, when a file cannot be written, a bound is passed, or the flag ends the work.
    bool Bring(const MediaFolder& folder, const std::atomic<bool>& isCancelled,
               std::atomic<float>& progress, wxString& message);

  protected:
    // Takes the bytes of one wanted file after another.
    class Sink {
      public:
        Sink(MediaSource& source, const MediaFolder& folder, const std::atomic<bool>& isCancelled,
             std::atomic<float>& progress)
            : mSource(source), mFolder(folder), mIsCancelled(isCancelled), mProgress(progress) {}

        // Returns whether the file is still wanted.
        bool Begin(const wxString& source);
        // Returns false when nothing more of the file is to be read.
        bool Write(const char* bytes, size_t count);
        void End();
        // Gives the present file up, which turned out to be damaged.
        void Drop() { mFile.reset(); }
        // Returns false when no file at all is to be read any more.
        bool GoesOn() const { return mError == 0 && !mIsCancelled; }
        int GetError() const { return mError; }

      private:
        MediaSource& mSource;
        const MediaFolder& mFolder;
        const std::atomic<bool>& mIsCancelled;
        std::atomic<float>& mProgress;
        wxString mName;
        std::unique_ptr<NewMediaFile> mFile;
        int64_t mFileBytes = 0;
        int64_t mBytes = 0;
        int mError = 0;
    };

    // Returns the size of a file, or -1 for one that is not there.
    virtual int64_t Find(const wxString& source) = 0;
    // Gives all wanted files to the sink, in any order.
    virtual void ReadAll(const std::set<wxString>& wanted, Sink& sink) = 0;

  private:
    struct File {
        // Empty for one that is not there.
        wxString Name;
        bool IsBrought = false;
    };

    const Missing mMissing;
    std::map<wxString, File> mFiles;
    std::set<wxString> mWanted;
    int64_t mBytes = 0;
    bool mMayBeMany = false;
};

// Files below a directory. Links are not followed, and nothing above it is read. For a text, which
// keeps its lines, a copy that somebody has made of a store's folder with files counts too, such as
// "cards.vlm.media" without "cards.vlm" beside it.
class DirectoryMedia : public MediaSource {
  public:
    DirectoryMedia(std::filesystem::path directory, Missing missing);

  protected:
    int64_t Find(const wxString& source) override;
    void ReadAll(const std::set<wxString>& wanted, Sink& sink) override;

  private:
    FileDescriptor Open(const wxString& source) const;

    // The directory, and then the copies.
    std::vector<std::filesystem::path> mDirectories;
};
