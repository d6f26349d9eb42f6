#include "sync/MediaExchange.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/intl.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

#include "base/Files.h"
#include "base/Unicode.h"
#include "media/ContentHash.h"
#include "media/MediaLines.h"

namespace {

// What the tables have is written after so many files, so that a kill costs no more work.
constexpr int kFilesBetweenWrites = 64;
// More sentences help nobody.
constexpr int kMostTold = 3;
// Where the number of this computer's last file stands.
constexpr char kLastNumber[] = "media-number";
// The digits of a sum that a new name has, and those after which there is room for no more.
constexpr size_t kShortSum = 8;
constexpr size_t kLongestExtension = 16;

bool Contains(const std::vector<std::string>& contents, const std::string& content) {
    return std::find(contents.begin(), contents.end(), content) != contents.end();
}

const MediaPart& MediaOf(const FoundFile* file) {
    return *file->Header.Media;
}

// Returns whether one content took the place of another one. Where each once took the other's
// place, as after a change that was taken back, the edition tells which was the last.
bool Replaces(const std::vector<std::string>& before, int64_t edition, const std::string& content,
              int64_t otherEdition) {
    return edition > otherEdition && Contains(before, content);
}

// Returns the name that a file gets when its own is another file's.
wxString NameWithSum(const wxString& name, const std::string& content) {
    const wxString end = "-" + FromUtf8(content.substr(0, kShortSum)) + "." + name.AfterLast('.');
    wxString stem = name.BeforeLast('.');
    while (ToUtf8(stem).size() + kShortSum + 1 > kLongestMediaName - kLongestExtension) {
        stem.RemoveLast();
    }
    return stem + end;
}

// Returns the sum of an open file's bytes, which are counted; empty when they cannot be read.
std::string SumOfFile(int file, int64_t& bytes, const std::atomic<bool>& isCancelled) {
    ContentHash hash;
    std::vector<char> block(size_t{1} << 16);
    for (bytes = 0; !isCancelled;) {
        const ssize_t count = ::pread(file, block.data(), block.size(), bytes);
        if (count <= 0) {
            return count == 0 ? hash.Get() : std::string();
        }
        hash.Add({block.data(), static_cast<size_t>(count)});
        bytes += count;
    }
    return std::string();
}

bool IsGoodSize(int64_t bytes) {
    // An empty file is one that is being written, or that a full disk has left.
    return bytes > 0 && bytes <= kMostMediaBytes;
}

}  // namespace

MediaExchange::MediaExchange(SyncState& state, ExchangeFolder& folder, const wxString& storePath,
                             const std::atomic<bool>& isCancelled,
                             std::function<void(const wxString&)> say)
    : mState(state),
      mFolder(folder),
      mMediaFolder(storePath),
      mTables(state),
      mIsCancelled(isCancelled),
      mSay(std::move(say)) {}

void MediaExchange::Remember() {
    if (!mState.Sql().IsOpen()) {
        return;
    }
    // The sum of the folder stands after that of the store's own one.
    const std::string sums = mTables.GetSums();
    uint64_t sum = 0;
    ParseHexText(sums.substr(std::min<size_t>(sums.size(), 16)), sum);
    mFolder.RememberMedia(sum, [this] {
        KnownFiles files = mTables.AreThere() ? mTables.ReadSeen() : KnownFiles();
        struct stat folder {};
        ::stat(mFolder.GetPath().c_str(), &folder);
        for (auto& [name, known] : files) {
            // The number of a device may be another one after a start of the system.
            known.Status.st_dev = folder.st_dev;
        }
        return files;
    });
}

void MediaExchange::Tell(const wxString& sentence) {
    mIsUnsettled = true;
    if (++mTold <= kMostTold) {
        mSay(sentence);
    }
}

void MediaExchange::ReadLocalFolder() {
    mPresent.clear();
    mLocalSum = 0;
    mMediaFolder.Visit([this](const std::string& name, const struct stat& status) {
        mPresent.emplace_back(name, status);
        mLocalSum += StatusSum(name, status);
    });
    mIsListed = true;
}

// Returns true for a store without pictures and sounds where nobody else has any.
bool MediaExchange::IsUnconcerned() {
    if (!mIsListed) {
        ReadLocalFolder();
    }
    return mPresent.empty() && !mFolder.HasMedia() && mTables.GetSums().empty();
}

std::string MediaExchange::FindSums() {
    return HexText(mLocalSum) + HexText(mFolder.GetMediaSum());
}

bool MediaExchange::IsAsItWas() {
    return mTables.GetSums() == FindSums();
}

// Brings what is known of both folders up to what they are now.
bool MediaExchange::Load(uint64_t machine) {
    mMachine = machine;
    mLocal.clear();
    mOffers.clear();
    mChanged.clear();
    if (!mTables.Make()) {
        return false;
    }
    LocalMediaFiles known = mTables.ReadLocal();
    for (const auto& [name, status] : mPresent) {
        if (!IsSafeMediaName(FromUtf8(name))) {
            continue;
        }
        LocalMedia& file = mLocal[name];
        const auto former = known.find(name);
        if (former != known.end()) {
            file = std::move(former->second);
            known.erase(former);
        }
        file.IsRead = !file.Content.empty() && IsSameStatus(file.Status, status);
        file.Status = status;
    }
    for (const auto& [name, file] : known) {
        mChanged.insert(name);
    }
    mNumber = std::max(mNumber, mState.GetNumber(kLastNumber));
    // The last file that a machine has sent for a name counts.
    std::map<std::pair<std::string, uint64_t>, const FoundFile*> last;
    for (const FoundFile& file : mFolder.GetMedia()) {
        // A stranger may have written the last number that there is.
        const bool isOwn = file.Header.Machine == mMachine && file.Header.Number < INT64_MAX / 2;
        mNumber = std::max(mNumber, isOwn ? file.Header.Number : 0);
        const FoundFile*& place = last[{MediaOf(&file).File, file.Header.Machine}];
        if (place == nullptr || place->Header.Number < file.Header.Number) {
            place = &file;
        }
    }
    for (const auto& [key, file] : last) {
        if (IsSafeMediaName(FromUtf8(key.first))) {
            mOffers[key.first].push_back(file);
        }
    }
    return !mState.Sql().HasFailed();
}

// Finds out what a file is, which is read if it is new or was written to. Returns false where that
// cannot be told now.
bool MediaExchange::FindContent(const std::string& name, LocalMedia& file) {
    if (file.IsRead) {
        return true;
    }
    const FileDescriptor opened = mMediaFolder.Open(FromUtf8(name));
    int64_t bytes = 0;
    if (!opened.IsOpen() || ::fstat(opened.Get(), &file.Status) != 0 ||
        !IsGoodSize(file.Status.st_size)) {
        return false;
    }
    const std::string content = SumOfFile(opened.Get(), bytes, mIsCancelled);
    if (content.empty() || bytes != file.Status.st_size) {
        return false;
    }
    if (content != file.Content || file.What == LocalMedia::kGivenUp) {
        const bool isChange = !file.Content.empty() && file.What != LocalMedia::kGivenUp;
        LocalMedia found;
        found.Status = file.Status;
        found.Content = content;
        if (isChange) {
            found.Edition = std::min(file.Edition + 1, kMostEditions);
            found.Before = file.Before;
            found.Before.insert(found.Before.begin(), file.Content);
            found.Before.resize(std::min(found.Before.size(), kMostReplaced));
        }
        // A kill may have come between the file and the note of it.
        for (const FoundFile* const offer : mOffers[name]) {
            if (MediaOf(offer).Content == content && MediaOf(offer).Edition >= found.Edition) {
                found.Edition = MediaOf(offer).Edition;
                found.Before = MediaOf(offer).Replaces;
                const bool isOwn = offer->Header.Machine == mMachine;
                found.What = isOwn ? LocalMedia::kOwn : LocalMedia::kTaken;
                found.Origin = isOwn ? 0 : offer->Header.Machine;
            }
        }
        file = std::move(found);
    }
    file.IsRead = true;
    mChanged.insert(name);
    return true;
}

// Returns the files of a name that no other one replaces. What this computer has sent itself counts
// as long as it has that content, or none.
MediaExchange::Offers MediaExchange::FindAlive(const std::string& name, const LocalMedia* pLocal) {
    const auto found = mOffers.find(name);
    Offers alive;
    if (found == mOffers.end()) {
        return alive;
    }
    for (const FoundFile* const file : found->second) {
        const MediaPart& media = MediaOf(file);
        const bool isStale = file->Header.Machine == mMachine && pLocal != nullptr &&
                             media.Content != pLocal->Content;
        const bool isReplaced =
            std::any_of(found->second.begin(), found->second.end(), [&](const FoundFile* other) {
                return Replaces(MediaOf(other).Replaces, MediaOf(other).Edition, media.Content,
                                media.Edition);
            });
        if (!isStale && !isReplaced && IsGoodSize(media.Bytes)) {
            alive.push_back(file);
        }
    }
    std::sort(alive.begin(), alive.end(), [](const FoundFile* one, const FoundFile* other) {
        return one->Header.Machine < other->Header.Machine;
    });
    return alive;
}

// Decides what becomes of a name, by what is in the two folders alone.
MediaExchange::Decision MediaExchange::Decide(const std::string& name, const LocalMedia* pLocal) {
    const Offers alive = FindAlive(name, pLocal);
    if (pLocal == nullptr) {
        return alive.empty() ? Decision() : Decision{Step::kTake, alive.front()};
    }
    const FoundFile* pSame = nullptr;
    const FoundFile* pOther = nullptr;
    for (const FoundFile* const file : alive) {
        const MediaPart& media = MediaOf(file);
        if (media.Content == pLocal->Content) {
            pSame = pSame == nullptr ? file : pSame;
        } else if (!Replaces(pLocal->Before, pLocal->Edition, media.Content, media.Edition)) {
            pOther = pOther == nullptr ? file : pOther;
        }
    }
    const Decision stays = {pSame == nullptr ? Step::kSend : Step::kNone, nullptr};
    if (pOther == nullptr) {
        return stays;
    }
    if (Replaces(MediaOf(pOther).Replaces, MediaOf(pOther).Edition, pLocal->Content,
                 pLocal->Edition)) {
        return {Step::kTake, pOther};
    }
    uint64_t owner = pSame == nullptr ? UINT64_MAX : pSame->Header.Machine;
    if (pLocal->What == LocalMedia::kOwn) {
        owner = std::min(owner, mMachine);
    }
    return owner < pOther->Header.Machine ? stays : Decision{Step::kGiveWay, pOther};
}

bool MediaExchange::ReadUsed() {
    const int64_t counter = mState.ReadChangeCounter();
    if (mUsedCounter == counter) {
        return true;
    }
    mUsed = mTables.ReadUsed();
    if (mTables.GetCounter() != counter) {
        mUsed.clear();
        const auto take = [this](const std::string&, CardField, std::u16string_view text) {
            for (const MediaLine& line : FindMediaLines(FromUtf16(text))) {
                mUsed.insert(ToUtf8(line.Name));
            }
        };
        if (!VisitMediaTexts(mState, take, mIsCancelled)) {
            return false;
        }
    }
    mUsedCounter = counter;
    return true;
}

bool MediaExchange::MustGiveWay(uint64_t machine) {
    mGivingWay.clear();
    if (IsUnconcerned() || IsAsItWas() || !Load(machine)) {
        return false;
    }
    FindGivingWay();
    if (!mChanged.empty()) {
        mState.Sql().Execute("BEGIN");
        SaveLocal();
        mState.Commit();
    }
    return !mGivingWay.empty();
}

void MediaExchange::FindGivingWay() {
    for (const auto& [name, offers] : mOffers) {
        const auto local = mLocal.find(name);
        if (local != mLocal.end() && FindContent(name, local->second) &&
            local->second.What != LocalMedia::kGivenUp &&
            Decide(name, &local->second).What == Step::kGiveWay) {
            mGivingWay.insert(name);
        }
    }
    if (mGivingWay.empty() || !ReadUsed()) {
        mGivingWay.clear();
        return;
    }
    for (auto name = mGivingWay.begin(); name != mGivingWay.end();) {
        name = mUsed.count(*name) == 0 ? mGivingWay.erase(name) : std::next(name);
    }
}

// A text with lines that mean a file of this computer.
struct MediaExchange::Hit {
    std::string CardId;
    CardField Field = CardField::kFront;
    wxString Text;
    std::set<std::string> Names;
};

// A line means the file that the computer had which wrote the text last. Where that was another
// one, and somebody here has changed the text since, it is the same file if it came from there.
bool MediaExchange::IsOwnLine(const Hit& hit, const std::string& name) {
    CardUuid id;
    SyncedCard copy;
    if (ParseUuidUtf8(hit.CardId, id) != 0) {
        return true;
    }
    mState.LoadCopy(id, copy);
    const std::string& former = copy.Value(hit.Field);
    const std::vector<MediaLine> lines = FindMediaLines(FromUtf8(former));
    const bool wasThere = std::any_of(lines.begin(), lines.end(), [&name](const MediaLine& line) {
        return ToUtf8(line.Name) == name;
    });
    const uint64_t writer = copy.Stamps[IndexOf(hit.Field)].Machine;
    return !copy.IsKnown || !wasThere || writer == mMachine ||
           (writer == mLocal[name].Origin && ToUtf8(hit.Text) != former);
}

std::vector<MediaExchange::Hit> MediaExchange::FindOwnLines() {
    std::vector<Hit> hits;
    const auto take = [&](const std::string& cardId, CardField field, std::u16string_view text) {
        Hit hit = {cardId, field, FromUtf16(text), {}};
        for (const MediaLine& line : FindMediaLines(hit.Text)) {
            const std::string name = ToUtf8(line.Name);
            if (mGivingWay.count(name) != 0 && IsOwnLine(hit, name)) {
                hit.Names.insert(name);
            }
        }
        if (!hit.Names.empty()) {
            hits.push_back(std::move(hit));
        }
    };
    if (!VisitMediaTexts(mState, take, mIsCancelled)) {
        hits.clear();
        mGivingWay.clear();
    }
    return hits;
}

// Gives the files their second names. The first ones go when the change of the cards is certain.
std::map<std::string, wxString> MediaExchange::MakeWay(const std::vector<Hit>& hits) {
    std::map<std::string, wxString> names;
    for (const std::string& name : mGivingWay) {
        LocalMedia& file = mLocal[name];
        const bool hasLines = std::any_of(hits.begin(), hits.end(), [&name](const Hit& hit) {
            return hit.Names.count(name) != 0;
        });
        // What came from elsewhere and is not named here can come again.
        if (file.What == LocalMedia::kOwn || hasLines) {
            const wxString former = FromUtf8(name);
            wxString given;
            const int error = mMediaFolder.Add(mMediaFolder.GetPath() / name,
                                               NameWithSum(former, file.Content), given);
            if (error != 0) {
                Tell(wxString::Format(_("The file \"%s\" could not be renamed: %s"), former,
                                      SystemErrorText(error)));
                continue;
            }
            if (!hasLines) {
                Tell(wxString::Format(_("The file \"%s\" was changed on two computers; that of "
                                        "this one is now called \"%s\"."),
                                      former, given));
            }
            names[name] = given;
        }
        file.What = LocalMedia::kGivenUp;
        mTables.SaveLocal(name, file);
    }
    return names;
}

void MediaExchange::GiveWay(uint64_t machine, std::vector<CardUuid>& changed) {
    mHasChangedCards = false;
    if (mGivingWay.empty() || machine != mMachine) {
        return;
    }
    const std::vector<Hit> hits = FindOwnLines();
    const std::map<std::string, wxString> names = MakeWay(hits);
    for (const Hit& hit : hits) {
        const wxString text = ReplaceMediaLines(hit.Text, [&](const MediaLine& line) {
            const std::string name = ToUtf8(line.Name);
            const auto given = names.find(name);
            return given == names.end() || hit.Names.count(name) == 0
                       ? hit.Text.Mid(line.Begin, line.End - line.Begin)
                       : MakeMediaLine(line.Kind, given->second);
        });
        CardUuid id;
        if (text != hit.Text && ParseUuidUtf8(hit.CardId, id) == 0) {
            WriteText(mState, hit.CardId, hit.Field, ToUtf8(text));
            changed.push_back(id);
            mHasChangedCards = true;
        }
    }
    mTables.SetSums(std::string());
}

bool MediaExchange::Run(const ExchangeHeader& own) {
    if (IsUnconcerned() || (IsAsItWas() && mState.ReadChangeCounter() == mTables.GetCounter())) {
        return false;
    }
    if (!mGivingWay.empty()) {
        ReadLocalFolder();
    }
    if (!Load(own.Machine) || !ReadUsed()) {
        return false;
    }
    DropGivenUp();
    int handled = 0;
    for (const std::string& name : mUsed) {
        if (mIsCancelled) {
            mIsUnsettled = true;
            break;
        }
        Handle(name, own);
        if (++handled % kFilesBetweenWrites == 0) {
            Save();
        }
    }
    if (!mIsCancelled) {
        RemoveOwn();
    }
    Save();
    // What was not whole is told again, and looked at.
    const bool isSettled = !mIsUnsettled && !mFolder.HasSpoiledMedia();
    mTables.SetSums(isSettled ? FindSums() : std::string());
    return mHasTaken || mHasChangedCards;
}

void MediaExchange::DropGivenUp() {
    for (auto file = mLocal.begin(); file != mLocal.end();) {
        if (file->second.What != LocalMedia::kGivenUp || !file->second.IsRead) {
            ++file;
            continue;
        }
        mIsUnsettled = true;
        if (mMediaFolder.Remove(FromUtf8(file->first)) != 0) {
            ++file;
            continue;
        }
        mChanged.insert(file->first);
        file = mLocal.erase(file);
    }
}

void MediaExchange::Handle(const std::string& name, const ExchangeHeader& own) {
    const auto found = mLocal.find(name);
    LocalMedia* const pLocal = found == mLocal.end() ? nullptr : &found->second;
    if (pLocal != nullptr && (pLocal->What == LocalMedia::kGivenUp && pLocal->IsRead)) {
        return;
    }
    const auto isTooLarge = [](const FoundFile* file) {
        return MediaOf(file).Bytes > kMostMediaBytes;
    };
    const auto offers = mOffers.find(name);
    const bool isTooLargeThere =
        pLocal == nullptr && offers != mOffers.end() &&
        std::any_of(offers->second.begin(), offers->second.end(), isTooLarge);
    if (isTooLargeThere || (pLocal != nullptr && pLocal->Status.st_size > kMostMediaBytes)) {
        Tell(wxString::Format(_("The file \"%s\" is larger than %i MB and is not exchanged."),
                              FromUtf8(name), static_cast<int>(kMostMediaBytes >> 20)));
    }
    if (pLocal != nullptr && !FindContent(name, *pLocal)) {
        mIsUnsettled = true;
        return;
    }
    const Decision decision = Decide(name, pLocal);
    if (decision.What == Step::kSend) {
        Send(name, *pLocal, own);
    } else if (decision.What == Step::kTake) {
        Take(name, *decision.pWith, pLocal);
    } else if (decision.What == Step::kGiveWay) {
        mIsUnsettled = true;
    }
}

void MediaExchange::Send(const std::string& name, LocalMedia& file, const ExchangeHeader& own) {
    mIsUnsettled = true;
    const FileDescriptor source = mMediaFolder.Open(FromUtf8(name));
    if (!mCanSend || !source.IsOpen()) {
        return;
    }
    ExchangeHeader header = own;
    header.Media = {name, file.Status.st_size, file.Content, file.Edition, file.Before};
    // A file that was cut or is gone is written once more under its number.
    header.Number = file.Number > 0 ? file.Number : ++mNumber;
    int error = mFolder.PutMedia(header, source.Get(), mIsCancelled);
    if (error == EEXIST) {
        header.Number = ++mNumber;
        error = mFolder.PutMedia(header, source.Get(), mIsCancelled);
    }
    if (error == 0) {
        file.Number = header.Number;
        mChanged.insert(name);
    } else if (error != ECANCELED && error != ESTALE && error != EEXIST) {
        mCanSend = false;
        Tell(wxString::Format(_("The file \"%s\" could not be sent: %s"), FromUtf8(name),
                              SystemErrorText(error)));
    }
}

void MediaExchange::Take(const std::string& name, const FoundFile& file,
                         const LocalMedia* pFormer) {
    mIsUnsettled = true;
    int error = 0;
    const FileDescriptor source = OpenPlainFile(AT_FDCWD, file.Path.c_str(), error);
    if (!mCanTake || !source.IsOpen()) {
        return;
    }
    NewMediaFile copy(mMediaFolder);
    const ExchangeSink sink = [&copy](std::string_view bytes) {
        return copy.Write(bytes.data(), bytes.size());
    };
    ExchangeSurvey survey;
    if (copy.GetError() == 0) {
        survey = ReadMediaFile(source.Get(), sink, &mIsCancelled);
    }
    LocalMedia taken;
    if (copy.GetError() == 0) {
        const bool isThat = survey.State == FileState::kWhole &&
                            survey.Header.Media->File == name &&
                            survey.Header.Media->Content == MediaOf(&file).Content;
        if (survey.State == FileState::kDamaged) {
            mFolder.NoteDamaged(file);
            Tell(wxString::Format(_("The file \"%s\" is damaged and was left."),
                                  FromPath(file.Path.filename())));
        }
        if (!isThat) {
            return;
        }
        error = copy.KeepAs(FromUtf8(name), pFormer == nullptr ? nullptr : &pFormer->Status,
                            taken.Status);
    } else {
        error = copy.GetError();
    }
    // Somebody has put another file there meanwhile.
    if (error == EEXIST) {
        return;
    }
    if (error != 0) {
        mCanTake = false;
        Tell(wxString::Format(_("The file \"%s\" could not be taken: %s"), FromUtf8(name),
                              SystemErrorText(error)));
        return;
    }
    taken.IsRead = true;
    taken.Content = MediaOf(&file).Content;
    taken.Edition = MediaOf(&file).Edition;
    taken.Before = MediaOf(&file).Replaces;
    taken.What = LocalMedia::kTaken;
    taken.Origin = file.Header.Machine;
    mLocal[name] = std::move(taken);
    mChanged.insert(name);
    mHasTaken = true;
}

// Takes this computer's files away that no card names any more, or that are not what is in the
// store's folder now. One that is lost there stays, and comes back from here.
void MediaExchange::RemoveOwn() {
    std::vector<ExchangeFileId> gone;
    for (const FoundFile& file : mFolder.GetMedia()) {
        const auto local = mLocal.find(MediaOf(&file).File);
        const bool isOther = local != mLocal.end() && local->second.IsRead &&
                             local->second.Content != MediaOf(&file).Content;
        if (file.Header.Machine == mMachine && (isOther || mUsed.count(MediaOf(&file).File) == 0)) {
            gone.push_back(IdOf(file.Header));
        }
    }
    if (!gone.empty()) {
        mIsUnsettled = true;
        // What cannot be removed now will be later.
        mFolder.Remove(gone);
    }
}

void MediaExchange::SaveLocal() {
    for (const std::string& name : std::exchange(mChanged, {})) {
        const auto file = mLocal.find(name);
        if (file == mLocal.end()) {
            mTables.DropLocal(name);
        } else {
            mTables.SaveLocal(name, file->second);
        }
    }
}

void MediaExchange::Save() {
    if (mIsUnsettled) {
        // What is noted has to be there.
        SyncDirectory(mMediaFolder.GetPath() / "any");
        SyncDirectory(mFolder.GetPath() / "any");
    }
    mState.Sql().Execute("BEGIN");
    SaveLocal();
    mTables.SaveSeen(mFolder.GetKnown());
    mTables.SaveUsed(mUsed, mUsedCounter);
    if (mNumber != mState.GetNumber(kLastNumber)) {
        mState.SetNumber(kLastNumber, mNumber);
    }
    mState.Commit();
}
