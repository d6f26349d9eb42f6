#pragma once

#include <wx/string.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/Files.h"
#include "formats/CardRecord.h"
#include "formats/decks/DeckBounds.h"
#include "store/FlashCard.h"

class Database;
class MediaSource;

// Decks of other programs as records for the import. A deck is opened from its file, gives its
// cards one by one, and counts what is lost.

// Kinds of things that are left out or changed. Their numbers are shown before anything is written.
enum class DeckLoss : size_t {
    kPictures,
    kSounds,
    kFormulas,
    kEmptySides,
    kOcclusions,
    kTemplatesDropped,
    kTemplatesSplit,
    kClozesSplit,
    kHints,
    kSuspended,
    kBuried,
    kFiltered,
    kSistersApart,
    kReviews,
    kClamped,
    kNotesSkipped,
    kCount
};

using DeckLosses = std::array<int64_t, static_cast<size_t>(DeckLoss::kCount)>;

// What a field of a note becomes.
enum class FieldRole { kFront, kFront2, kBack, kBack2, kNotes, kIgnore };

// A kind of note, its fields, and what becomes of each by default.
struct DeckNoteType {
    wxString Id;
    wxString Name;
    std::vector<wxString> Fields;
    std::vector<FieldRole> Roles;
    // The user cannot choose the roles of a text with deletions.
    bool IsCloze = false;
};

struct DeckOptions {
    // False makes every card a new one.
    bool WithSchedules = true;
    // True makes the whole name "A::B" the category, false its last part.
    bool WholeDeckNames = true;
    // The roles of fields that the user has chosen, by the type's Id.
    std::map<wxString, std::vector<FieldRole>> Roles;
    // Returns whether the store has a card. Stored cards keep their category and schedules. May be
    // empty.
    std::function<bool(const CardUuid& id)> IsStored;
    // Whether somebody has agreed that the deck may go beyond the bounds that are asked about.
    bool MayBeLarge = false;
    // The size of the deck's file.
    int64_t FileSize = 0;
    // Where the pictures and sounds are; null leaves them out. DeckFile sets it.
    std::shared_ptr<MediaSource> Media;
    // Ends the opening early, with any message, once it is true. Not owned; may be null.
    const std::atomic<bool>* IsCancelled = nullptr;
};

// A card of a deck, with parts that a FlashCard does not keep apart.
struct DeckCard {
    FlashCard Card;
    // Another identity that the store may have the card under; zero for none.
    CardUuid OtherId;
    wxString Front2;
    wxString Back2;
    wxString Category;
};

// An open deck. Reads from a file of its own, on any one thread.
class Deck {
  public:
    explicit Deck(DeckOptions options);
    virtual ~Deck() = default;

    virtual std::vector<DeckNoteType> GetNoteTypes() const = 0;
    // Reads the next card, in the order of introduction. Returns false at the end, and on a
    // failure, which GetFailure then tells.
    bool ReadCard(DeckCard& card);
    virtual float GetProgress() const = 0;

    // Returns a sentence for the user; empty if all is well.
    const wxString& GetFailure() const { return mFailure; }
    // Returns whether the failure is that the deck goes beyond a bound that a person is asked
    // about.
    bool IsTooLarge() const { return mRoom.GetPassed() != nullptr; }
    int64_t CountNotes() const { return mNotes; }
    // Counts what was read so far.
    const DeckLosses& GetLosses() const { return mLosses; }

  protected:
    // Pushes the next card of a note that can make many, or the cards of the next note, which may
    // be none. Returns false as ReadCard does.
    virtual bool ReadNote() = 0;
    // Takes a card, or counts it as lost where a side has no text.
    void Push(DeckCard&& card);
    void Count(DeckLoss loss, int64_t count = 1) { mLosses[static_cast<size_t>(loss)] += count; }
    bool Fail(const wxString& message) {
        mFailure = message;
        return false;
    }

    const DeckOptions mOptions;
    DeckRoom mRoom;
    wxString mFailure;
    int64_t mNotes = 0;

  private:
    DeckLosses mLosses{};
    // Cards of the notes read so far, not yet delivered.
    std::deque<DeckCard> mReady;
};

// How to prepare a deck's file.
struct DeckFileOptions {
    // A package that unpacks to more bytes is refused. They are counted while they come.
    int64_t MostBytes = kMostUnpacked.Most;
    // Ends the work early, with any message, once it is true. Not owned; may be null.
    const std::atomic<bool>* IsCancelled = nullptr;
    // Receives the part that is done, in thousandths. Not owned; may be null.
    std::atomic<int32_t>* Position = nullptr;
};

// A deck's file, ready to read: a package unpacked, a database copied, both into a private
// directory that is deleted with this object. Several decks may be opened from it one after
// another.
class DeckFile {
  public:
    DeckFile(const DeckFile&) = delete;
    DeckFile& operator=(const DeckFile&) = delete;

    // Returns true for a package, or a database of one of the programs. Looks only at the contents.
    static bool IsDeck(const wxString& path);
    // Returns null, with the reason as a sentence, when the file cannot be prepared.
    static std::shared_ptr<DeckFile> Open(const wxString& path, wxString& message,
                                          const DeckFileOptions& options = {});

    // Returns a deck that begins with its first card, or null and the reason.
    std::unique_ptr<Deck> OpenDeck(const DeckOptions& wanted, wxString& message) const;
    // The pictures and sounds of the deck. Those that its cards name are known once a deck was read
    // to its end.
    const std::shared_ptr<MediaSource>& GetMedia() const { return mpMedia; }

  private:
    enum class Kind { kAnki, kMnemosyneXml, kMnemosyneStore };

    DeckFile();
    bool Unpack(const wxString& path, const DeckFileOptions& options, wxString& message);
    bool Copy(const wxString& path, const DeckFileOptions& options, wxString& message);
    wxString DataPath() const;

    int64_t mSize = 0;
    std::shared_ptr<MediaSource> mpMedia;
    TemporaryDirectory mDirectory;
    // The name for a deck that does not name itself.
    wxString mName;
    Kind mKind = Kind::kAnki;
};

// Delivers the cards of a deck as records for the import.
class DeckReader : public CardRecordReader {
  public:
    DeckReader(std::unique_ptr<Deck> deck, const DeckOptions& options);

    int32_t GetLineNumber() const override { return mCardNumber; }
    int32_t GetError() const override { return kNoError; }
    uint32_t GetAttributeCount() const override;
    const CardAttribute& GetAttribute(uint32_t index) const override;
    bool ReadRecord() override;
    // Reads a card without making a record.
    bool SkipRecord();
    float GetProgress() const override { return mDeck->GetProgress(); }
    wxString GetFailure() const override { return mDeck->GetFailure(); }

    const Deck& GetDeck() const { return *mDeck; }

  private:
    struct ScheduleNames;
    struct Names;

    void Add(const wxString& name, const wxString& value);
    void AddSchedule(const ScheduleNames& names, const CardSchedule& schedule);

    std::unique_ptr<Deck> mDeck;
    DeckOptions mOptions;
    AttributeList mAttributes;
    int32_t mCardNumber = 0;
};

// Opens the deck for an import into the database, which is not owned. Returns null and the reason
// when that fails; a null file is a failure too.
std::unique_ptr<DeckReader> MakeDeckReader(const std::shared_ptr<DeckFile>& file,
                                           DeckOptions options, Database& database,
                                           wxString& message);

// The decks of both programs share these.

// Returns seconds as the store keeps them: at most the exact number, at least 1, and with a next
// review before the end of the year 9999, for which clamped tells whether they were cut.
float StoredInterval(int64_t lastReview, double seconds, bool& clamped);
// Returns the difficulty of an ease, where 2.5 is neutral; 0 when it is unknown.
uint8_t DifficultyOfEase(double ease);
// Returns a number of the first review block, always the same for a card.
int32_t DeckErc(const CardUuid& id);
