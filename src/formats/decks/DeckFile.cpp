// Prepares the files that decks come in: unpacks packages and copies databases.

#include <signal.h>
#include <unistd.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/wfstream.h>
#include <wx/zipstrm.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <utility>

#include "base/Files.h"
#include "base/Unicode.h"
#include "files/ForeignDatabase.h"
#include "files/StoreFiles.h"
#include "formats/CardRecord.h"
#include "formats/decks/Deck.h"
#include "formats/decks/DeckFormats.h"
#include "formats/decks/DeckMedia.h"

namespace {

namespace fs = std::filesystem;

constexpr size_t kBlock = size_t{1} << 16;
constexpr char kDataName[] = "deck";

wxString DamagedMessage(const wxString& why) {
    return wxString::Format(_("The package is damaged.  (%s)"), why);
}

// Takes the bytes of a deck and writes them to a file, up to the limit.
class BoundedFile {
  public:
    BoundedFile(const wxString& path, const DeckFileOptions& options)
        : mFile(ToPath(path), std::ios::binary | std::ios::trunc), mOptions(options) {}

    // Returns false, with a message, when it is too much, the disk is full or the deck is no longer
    // wanted.
    bool Write(const char* bytes, size_t count, wxString& message) {
        mWritten += static_cast<int64_t>(count);
        if (mWritten > mOptions.MostBytes) {
            message = BoundMessage(kMostUnpacked, mOptions.MostBytes);
            return false;
        }
        if (mOptions.IsCancelled != nullptr && *mOptions.IsCancelled) {
            message = _("Cancelled");
            return false;
        }
        if (!mFile.write(bytes, static_cast<std::streamsize>(count))) {
            message = _("The deck could not be copied to the directory for temporary files.");
            return false;
        }
        return true;
    }
    bool Finish(wxString& message) {
        mFile.close();
        if (mFile.fail()) {
            message = _("The deck could not be copied to the directory for temporary files.");
            return false;
        }
        return true;
    }

  private:
    std::ofstream mFile;
    DeckFileOptions mOptions;
    int64_t mWritten = 0;
};

// What may stand in a package of one of the programs. All other members are passed over.
constexpr const char* kMembers[] = {
    "cards.xml", "collection.anki2", "collection.anki21", "collection.anki21b", "meta", "media"};

// The members of a package, by name. Names are only compared, never used as paths.
class Package {
  public:
    explicit Package(const wxString& path) : mFile(path), mZip(mFile) {
        while (mFile.IsOk()) {
            std::unique_ptr<wxZipEntry> entry(mZip.GetNextEntry());
            if (entry == nullptr) {
                break;
            }
            mIsEmpty = false;
            const wxString name = entry->GetInternalName();
            if (!entry->IsDir() && mSizes.size() < kMostMembers) {
                mSizes[name] = entry->GetSize();
            }
            if (std::find(std::begin(kMembers), std::end(kMembers), name) != std::end(kMembers)) {
                mMembers.emplace(name, std::move(entry));
            }
        }
    }

    bool IsEmpty() const { return mIsEmpty; }
    // Whether a collection or a list of cards is in it.
    bool HasDeck() const {
        return mMembers.size() > mMembers.count("meta") + mMembers.count("media");
    }
    bool Has(const wxString& name) const { return mMembers.count(name) != 0; }
    // The sizes of all members, as the package tells them.
    const std::map<wxString, int64_t>& GetSizes() const { return mSizes; }

    // Gives the bytes of a member to a function, which returns false to stop with a message.
    template <class Function>
    bool Read(const wxString& name, wxString& message, Function take) {
        if (!mZip.OpenEntry(*mMembers.at(name))) {
            message = DamagedMessage(name);
            return false;
        }
        std::vector<char> block(kBlock);
        for (;;) {
            mZip.Read(block.data(), block.size());
            const size_t count = mZip.LastRead();
            if (count > 0 && !take(block.data(), count)) {
                return false;
            }
            if (mZip.GetLastError() == wxSTREAM_EOF) {
                return true;
            }
            if (!mZip.IsOk() || count == 0) {
                message = DamagedMessage(name);
                return false;
            }
        }
    }

    // Returns the part of the file that was read, in thousandths.
    int32_t GetPosition() const {
        const wxFileOffset length = std::max<wxFileOffset>(mFile.GetLength(), 1);
        return static_cast<int32_t>(mFile.TellI() * 1000 / length);
    }

    // Returns a small member as a whole; empty when it is missing or large.
    std::string ReadSmall(const wxString& name, size_t most = 4096) {
        std::string bytes;
        wxString message;
        const bool isRead = Has(name) && Read(name, message, [&](const char* part, size_t count) {
                                bytes.append(part, count);
                                return bytes.size() <= most;
                            });
        return isRead ? bytes : std::string();
    }

  private:
    static constexpr size_t kMostMembers = 1000000;

    wxFileInputStream mFile;
    wxZipInputStream mZip;
    std::map<wxString, int64_t> mSizes;
    bool mIsEmpty = true;
    std::map<wxString, std::unique_ptr<wxZipEntry>> mMembers;
};

// Returns the member that holds the collection. Others exist for older programs and hold one
// sentence.
wxString CollectionName(Package& package, wxString& message) {
    const char* const kNames[] = {"collection.anki2", "collection.anki21", "collection.anki21b"};
    if (!package.Has("meta")) {
        return package.Has(kNames[1]) ? kNames[1] : kNames[0];
    }
    const std::string meta = package.ReadSmall("meta");
    const size_t version = meta.size() >= 2 && meta[0] == '\x08' ? static_cast<size_t>(meta[1]) : 0;
    if (version < 1 || version > std::size(kNames)) {
        message = _("The deck comes from a version of Anki that is not known here.");
        return wxString();
    }
    return kNames[version - 1];
}

// Returns the pictures and sounds of a package. Names of members are only compared.
std::shared_ptr<MediaSource> OpenPackageMedia(Package& package, const wxString& path,
                                              const wxString& collection) {
    constexpr size_t kMostList = size_t{8} << 20;
    if (collection == "cards.xml") {
        std::map<wxString, PackageMedia::Member> members;
        for (const auto& [name, size] : package.GetSizes()) {
            members[name] = {name, size};
        }
        return std::make_shared<PackageMedia>(path, std::move(members), false);
    }
    const bool isCompressed = collection == "collection.anki21b";
    std::string list = package.ReadSmall("media", kMostList);
    if (isCompressed) {
        std::string entries;
        Decompressor().Write(list.data(), list.size(), [&](const char* bytes, size_t count) {
            entries.append(bytes, count);
            return entries.size() <= kMostList;
        });
        list = std::move(entries);
    }
    return std::make_shared<PackageMedia>(path,
                                          isCompressed ? ReadMediaEntries(list, package.GetSizes())
                                                       : ReadMediaNames(list, package.GetSizes()),
                                          isCompressed);
}

// The number of the process follows in the name of a temporary directory.
constexpr char kDirectoryStart[] = "velomind-deck-";

// Removes the directories that crashed processes have left.
void RemoveLeftDirectories() {
    std::error_code error;
    for (fs::directory_iterator entry(TemporaryPlace(), error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().u8string();
        if (name.rfind(kDirectoryStart, 0) != 0) {
            continue;
        }
        const int process = std::atoi(name.c_str() + std::size(kDirectoryStart) - 1);
        if (process > 0 && kill(process, 0) != 0 && errno == ESRCH) {
            std::error_code ignored;
            fs::remove_all(entry->path(), ignored);
        }
    }
}

// The name of the first member as it stands in front of its bytes, for a package without its list.
std::string FirstMemberName(const wxString& path) {
    constexpr size_t kHead = 30;
    std::string head(kHead, '\0');
    std::ifstream file(ToPath(path), std::ios::binary);
    if (!file.read(head.data(), kHead)) {
        return std::string();
    }
    const auto byte = [&head](size_t at) { return static_cast<unsigned char>(head[at]); };
    std::string name(byte(26) + size_t{256} * byte(27), '\0');
    file.read(name.data(), static_cast<std::streamsize>(name.size()));
    return name;
}

// Whether a package that was cut was one of a deck.
bool WasDeck(const wxString& path) {
    const std::string first = FirstMemberName(path);
    return HasDeckName(path) ||
           std::find(std::begin(kMembers), std::end(kMembers), first) != std::end(kMembers);
}

// What the engine keeps beside a database that its program has open, or has not closed.
wxString LogPath(const wxString& path) {
    return path + "-wal";
}

bool HasLog(const wxString& path) {
    const wxULongLong size = wxFileName::GetSize(LogPath(path));
    return size != wxInvalidSize && size != 0;
}

bool HasJournal(const wxString& path) {
    return FileBeginsWith(ToPath(path + "-journal"), "\xD9\xD5\x05\xF9");
}

// What changes when a program writes to a database: sizes and times of the file and of its log.
using Stamp = std::array<int64_t, 4>;

Stamp StampOf(const wxString& path) {
    Stamp stamp{};
    for (size_t i = 0; i < 2; ++i) {
        std::error_code error;
        const fs::path file = ToPath(i == 0 ? path : LogPath(path));
        stamp[2 * i] = static_cast<int64_t>(fs::file_size(file, error));
        stamp[2 * i + 1] =
            static_cast<int64_t>(fs::last_write_time(file, error).time_since_epoch().count());
    }
    return stamp;
}

bool CopyFile(const wxString& from, const wxString& to, const DeckFileOptions& options,
              wxString& message) {
    std::ifstream in(ToPath(from), std::ios::binary);
    BoundedFile out(to, options);
    std::vector<char> block(kBlock);
    while (in.read(block.data(), static_cast<std::streamsize>(block.size())) || in.gcount() > 0) {
        if (!out.Write(block.data(), static_cast<size_t>(in.gcount()), message)) {
            return false;
        }
    }
    return out.Finish(message);
}

bool HasDeckTables(ForeignDatabase& database) {
    return (database.HasTable("col") && database.HasTable("notes")) ||
           (database.HasTable("facts") && database.HasTable("data_for_fact"));
}

bool IsPackage(const wxString& path) {
    return FileBeginsWith(ToPath(path), "PK\x03\x04");
}

}  // namespace

bool DeckFile::IsDeck(const wxString& path) {
    if (!wxFileName::FileExists(path)) {
        return false;
    }
    if (IsPackage(path)) {
        // A package without members was cut off, and our message says so.
        const wxLogNull silence;
        const Package package(path);
        return package.HasDeck() || (package.IsEmpty() && WasDeck(path));
    }
    if (!IsDatabaseFile(path)) {
        return false;
    }
    ForeignDatabase database;
    const bool isOpen = database.Open(path) == 0;
    return (isOpen && HasDeckTables(database)) || (HasDeckName(path) && HasLog(path));
}

DeckFile::DeckFile()
    : mDirectory(TemporaryPlace() / (kDirectoryStart + std::to_string(getpid()))) {}

std::shared_ptr<DeckFile> DeckFile::Open(const wxString& path, wxString& message,
                                         const DeckFileOptions& options) {
    // Our message alone tells what is wrong.
    const wxLogNull silence;
    RemoveLeftDirectories();
    std::shared_ptr<DeckFile> file(new DeckFile);
    file->mName = wxFileName(path).GetName();
    const wxULongLong size = wxFileName::GetSize(path);
    file->mSize = size == wxInvalidSize ? 0 : static_cast<int64_t>(size.GetValue());
    if (file->mDirectory.GetError() != 0) {
        message = _("The deck could not be copied to the directory for temporary files.");
        return nullptr;
    }
    const bool isReady =
        IsPackage(path) ? file->Unpack(path, options, message) : file->Copy(path, options, message);
    return isReady ? file : nullptr;
}

wxString DeckFile::DataPath() const {
    return mDirectory.Path(kDataName);
}

bool DeckFile::Unpack(const wxString& path, const DeckFileOptions& options, wxString& message) {
    Package package(path);
    wxString name = "cards.xml";
    mKind = package.Has(name) ? Kind::kMnemosyneXml : Kind::kAnki;
    if (mKind == Kind::kAnki) {
        name = CollectionName(package, message);
        if (name.empty()) {
            return false;
        }
    }
    if (!package.Has(name)) {
        message = DamagedMessage(name);
        return false;
    }
    mpMedia = OpenPackageMedia(package, path, name);
    BoundedFile file(DataPath(), options);
    const bool isCompressed = name == "collection.anki21b";
    Decompressor decompressor;
    const bool isRead = package.Read(name, message, [&](const char* bytes, size_t count) {
        if (options.Position != nullptr) {
            *options.Position = package.GetPosition();
        }
        const auto write = [&](const char* part, size_t length) {
            return file.Write(part, length, message);
        };
        const char* const error = isCompressed ? decompressor.Write(bytes, count, write) : nullptr;
        if (error != nullptr) {
            message = DamagedMessage(error);
        }
        return error == nullptr && message.empty() && (isCompressed || write(bytes, count));
    });
    if (isRead && isCompressed && !decompressor.IsComplete()) {
        message = DamagedMessage(name);
        return false;
    }
    return isRead && file.Finish(message);
}

// A log beside the database has what its program wrote last. It is played back into the copy, so
// that the file of the person stays as it is.
bool DeckFile::Copy(const wxString& path, const DeckFileOptions& options, wxString& message) {
    if (!IsDatabaseFile(path)) {
        message = _("The file is no deck of Anki or Mnemosyne.");
        return false;
    }
    const Stamp before = StampOf(path);
    const bool hasLog = HasLog(path);
    if (!CopyFile(path, DataPath(), options, message) ||
        (hasLog && !CopyFile(LogPath(path), LogPath(DataPath()), options, message))) {
        return false;
    }
    if (HasJournal(path) || StampOf(path) != before) {
        message =
            _("Another program is writing to the deck, or was ended while it did.  Open the "
              "deck there, close it, and import it again.");
        return false;
    }
    ForeignDatabase database;
    if ((hasLog && ForeignDatabase::PlayBackLog(DataPath()) < 0) || database.Open(DataPath()) < 0) {
        message = wxString::Format(_("The deck is damaged.  (%s)"), database.GetError());
        return false;
    }
    const wxULongLong size = wxFileName::GetSize(DataPath());
    if (size == wxInvalidSize || size.GetValue() > static_cast<uint64_t>(options.MostBytes)) {
        message = BoundMessage(kMostUnpacked, options.MostBytes);
        return false;
    }
    mSize = static_cast<int64_t>(size.GetValue());
    mKind = database.HasTable("facts") ? Kind::kMnemosyneStore : Kind::kAnki;
    // Both programs keep their files in a folder beside the database.
    fs::path folder = ToPath(path);
    mpMedia = std::make_shared<DirectoryMedia>(
        mKind == Kind::kMnemosyneStore ? folder += "_media" : folder.replace_extension("media"),
        MediaSource::Missing::kDropped);
    return true;
}

std::unique_ptr<Deck> DeckFile::OpenDeck(const DeckOptions& wanted, wxString& message) const {
    DeckOptions options = wanted;
    options.FileSize = mSize;
    options.Media = mpMedia;
    if (options.MayBeLarge && mpMedia != nullptr) {
        mpMedia->AllowMany();
    }
    switch (mKind) {
        case Kind::kMnemosyneXml:
            return OpenMnemosyneXml(DataPath(), mName, options, message);
        case Kind::kMnemosyneStore:
            return OpenMnemosyneStore(DataPath(), mName, options, message);
        case Kind::kAnki:
            break;
    }
    return OpenAnkiDeck(DataPath(), options, message);
}
