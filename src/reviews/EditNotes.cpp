#include "reviews/EditNotes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/Files.h"
#include "base/Process.h"
#include "base/Time.h"
#include "base/Unicode.h"
#include "files/StoreFiles.h"
#include "reviews/LogFile.h"
#include "reviews/LogLines.h"
#include "reviews/ScheduleEvents.h"
#include "store/CardParts.h"
#include "store/UndoHistory.h"

namespace {

constexpr std::string_view kLetters = "FBCAHOXYNfrD";
static_assert(kLetters.size() == kEditedFieldCount);

void AddField(EditedFields& fields, EditedField field) {
    fields.set(static_cast<size_t>(field));
}

EditedFields OneField(EditedField field) {
    EditedFields fields;
    AddField(fields, field);
    return fields;
}

EditedFields FieldsOfCard(bool isThere) {
    const EditedFields deletion = OneField(EditedField::kDeletion);
    return isThere ? ~deletion : deletion;
}

std::string FormatNote(const EditNote& note) {
    std::string line = std::to_string(note.Time) + '\t';
    const std::array<char, 36> id = UuidText(note.CardId);
    line.append(id.data(), id.size()) += '\t';
    for (size_t field = 0; field < kEditedFieldCount; ++field) {
        if (note.Fields.test(field)) {
            line += kLetters[field];
        }
    }
    return line += '\n';
}

bool ParseNote(std::string_view line, EditNote& note) {
    LineReader reader(line);
    if (!reader.TakeWhole(note.Time) || !reader.Take('\t') || !reader.TakeId(note.CardId) ||
        !reader.Take('\t')) {
        return false;
    }
    note.Fields.reset();
    for (size_t field = 0; field < kEditedFieldCount; ++field) {
        note.Fields.set(field, reader.Take(kLetters[field]));
    }
    return note.Fields.any() && reader.IsDone();
}

void ReadNotes(const std::string& path, std::vector<EditNote>& notes) {
    struct stat status {};
    const FileDescriptor file = OpenForReading(FromUtf8(path), status);
    if (!file.IsOpen()) {
        return;
    }
    std::string rest;
    int64_t offset = 0;
    ReadPieces(file.Get(), offset, [&](std::string_view piece) {
        SplitLines(piece, rest, [&notes](std::string_view line, size_t) {
            EditNote note;
            if (ParseNote(line, note)) {
                notes.push_back(note);
            }
        });
        return true;
    });
}

// Sets the notes aside. A kill in between leaves them in both files, which harms nobody.
int SetAside(const std::string& notes, const std::string& taken) {
    const FileDescriptor file(::open(notes.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) {
        return errno == ENOENT ? 0 : errno;
    }
    // A note that is added meanwhile waits for the lock, and then goes into a new file.
    if (!S_ISREG(status.st_mode) || LockFile(file.Get()) == EBUSY) {
        return EBUSY;
    }
    if (::access(taken.c_str(), F_OK) != 0) {
        return std::rename(notes.c_str(), taken.c_str()) == 0 ? 0 : errno;
    }
    const FileDescriptor target(
        ::open(taken.c_str(), O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC));
    if (!target.IsOpen()) {
        return errno;
    }
    // The last line there may be torn.
    int error = WriteAll(target.Get(), "\n");
    error = error == 0 ? CopyBytes(file.Get(), target.Get()) : error;
    return error == 0 && ::unlink(notes.c_str()) != 0 ? errno : error;
}

std::string PathOf(const wxString& storePath, const char* suffix) {
    return ToUtf8(storePath) + suffix;
}

// The parts of a card that stand first have a field each.
constexpr EditedField kFieldsOfParts[] = {
    EditedField::kFront,
    EditedField::kBack,
    EditedField::kCategory,
    EditedField::kAuthor,
    EditedField::kChapter,
    EditedField::kNotes,
    EditedField::kIntroductionOrder,
    EditedField::kForwardX,
    EditedField::kReverseX,
};
constexpr EditedField kFieldsOfTexts[] = {EditedField::kFront, EditedField::kBack,
                                          EditedField::kNotes, EditedField::kAuthor,
                                          EditedField::kChapter};
static_assert(std::size(kFieldsOfParts) == static_cast<size_t>(CardPart::kIntroduced));
static_assert(std::size(kFieldsOfTexts) == kCardTextCount);

// The ERC is no change by itself.
EditedFields FieldsOfParts(CardParts parts) {
    parts.reset(static_cast<size_t>(CardPart::kErc));
    parts.reset(static_cast<size_t>(CardPart::kReverseErc));
    EditedFields fields;
    for (size_t part = 0; part < kCardPartCount; ++part) {
        if (parts.test(part)) {
            AddField(fields, part < std::size(kFieldsOfParts) ? kFieldsOfParts[part]
                             : part < static_cast<size_t>(CardPart::kReverseIntroduced)
                                 ? EditedField::kForward
                                 : EditedField::kReverse);
        }
    }
    return fields;
}

}  // namespace

bool IsExchanged(const wxString& storePath) {
    return ::access(PathOf(storePath, kExchangeSuffix).c_str(), F_OK) == 0;
}

int AddEditNotes(const wxString& storePath, const std::vector<EditNote>& notes) {
    std::string lines;
    for (const EditNote& note : notes) {
        if (note.Fields.any() && !note.CardId.IsZero()) {
            lines += FormatNote(note);
        }
    }
    return lines.empty() || !IsExchanged(storePath)
               ? 0
               : AppendLines(PathOf(storePath, kEditNotesSuffix), ToUtf8(storePath), "",
                             std::move(lines));
}

std::vector<EditNote> TakeEditNotes(const wxString& storePath) {
    const std::string taken = PathOf(storePath, kTakenEditNotesSuffix);
    if (const int error = SetAside(PathOf(storePath, kEditNotesSuffix), taken)) {
        VELOMIND_TRACE("Edit notes: error %i", error);
    }
    std::vector<EditNote> notes;
    ReadNotes(taken, notes);
    return notes;
}

void DropEditNotes(const wxString& storePath) {
    ::unlink(PathOf(storePath, kTakenEditNotesSuffix).c_str());
}

namespace {

// Collects what a step has changed.
class StepContents {
  public:
    explicit StepContents(int64_t milliseconds) : mTime(milliseconds) {}

    void Take(const StoreChange& change) {
        const bool isThere = change.IsTakenBack == (change.What == StoreChange::Kind::kDeletion);
        switch (change.What) {
            case StoreChange::Kind::kDeletion:
            case StoreChange::Kind::kPaste:
            case StoreChange::Kind::kNewCard:
                for (const FlashCard& card : change.Cards) {
                    Note(card.CardId, FieldsOfCard(isThere));
                }
                break;
            case StoreChange::Kind::kEdit:
                for (size_t i = 0; i + 1 < change.Cards.size(); i += 2) {
                    TakeEdit(change.Cards[i], change.Cards[i + 1]);
                }
                break;
            case StoreChange::Kind::kUnion:
                TakeUnion(change);
                break;
            default:
                break;
        }
        for (const StoreChange::Moved& moved : change.MovedCards) {
            Note(moved.CardId, OneField(EditedField::kCategory));
        }
        for (const CardTextChange& texts : change.Texts) {
            EditedFields fields;
            for (const CardTextChange::Text& text : texts.Texts) {
                AddField(fields, kFieldsOfTexts[static_cast<size_t>(text.Which)]);
            }
            Note(texts.CardId, fields);
        }
        for (const CardRenumbering& order : change.Orders) {
            Note(order.CardId, OneField(EditedField::kIntroductionOrder));
        }
    }

    const std::vector<EditNote>& Notes() const { return mNotes; }
    const std::vector<ScheduleEvent>& Events() const { return mEvents; }

  private:
    void Note(const CardUuid& card, const EditedFields& fields) {
        mNotes.push_back({mTime, card, fields});
    }

    void TakeEdit(const FlashCard& before, const FlashCard& after) {
        const EditedFields fields = FieldsOfParts(FindDifferences(before, after));
        Note(before.CardId, fields);
        for (const ReviewDirection direction : kEachDirection) {
            if (HasField(fields, direction == kReviewForward ? EditedField::kForward
                                                             : EditedField::kReverse)) {
                mEvents.push_back(MakeSetEvent(TimeAfter(ScheduleOf(before, direction)),
                                               before.CardId, direction,
                                               ScheduleOf(after, direction)));
            }
        }
    }

    void TakeUnion(const StoreChange& change) {
        for (const StoreChange& one : change.Unions) {
            TakeUnion(one);
        }
        if (change.Cards.size() < StoreChange::kCardsOfUnion) {
            return;
        }
        const std::vector<FlashCard>& kept = change.Present.empty() ? change.Cards : change.Present;
        TakeEdit(kept[0], kept[1]);
        Note(change.Cards[2].CardId, FieldsOfCard(change.IsTakenBack));
    }

    // The clock may be behind the review that the schedule had until now. What was set after it
    // must also stand after it in the order of time.
    int64_t TimeAfter(const CardSchedule& before) const {
        const int64_t now = mTime / 1000;
        if (!before.Introduced || !before.LastReview.IsValid()) {
            return now;
        }
        const int64_t last = before.LastReview.GetValue().GetValue() / 1000;
        return last < now || last >= kLastTimeStamp ? now : last + 1;
    }

    int64_t mTime;
    std::vector<EditNote> mNotes;
    std::vector<ScheduleEvent> mEvents;
};

}  // namespace

void StepNotes::Take(const wxString& storePath, const StoreChange& change, int64_t milliseconds) {
    StepContents contents(milliseconds);
    contents.Take(change);
    mLog.SetPath(ReviewLogPath(storePath));
    mLog.Append(contents.Events());
    const int error = AddEditNotes(storePath, contents.Notes());
    if (error != 0 && !std::exchange(mHasFailed, true)) {
        VELOMIND_TRACE("Edit notes: error %i", error);
    }
}
