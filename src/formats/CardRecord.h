#pragma once

#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "store/CardUuid.h"

struct CardSchedule;

// A record is how a card travels: a list of attributes, each a name with a text. This file has the
// record itself, the interfaces to whoever reads and writes records in some form, and what the
// attributes mean for a card.

// One attribute of a record as a reader delivers it.
struct CardAttribute {
    wxString Name;
    wxString Value;
    // The line in the file, from 1.
    int32_t Line = 0;
};

// The attributes of a reader's current record. Entries keep their memory from one record to the
// next, so that reading stops allocating once the longest record has been seen.
class AttributeList {
  public:
    size_t Count() const { return mCount; }
    CardAttribute& operator[](size_t index) { return mEntries[index]; }
    const CardAttribute& operator[](size_t index) const { return mEntries[index]; }

    void Clear() { mCount = 0; }
    // Adds an entry at the end and returns it. It still holds what an earlier record left in it.
    CardAttribute& Append() {
        if (mCount == mEntries.size()) {
            mEntries.emplace_back();
        }
        return mEntries[mCount++];
    }

  private:
    // A deque grows without copying its entries.
    std::deque<CardAttribute> mEntries;
    size_t mCount = 0;
};

// What a person should know about a source that was read all the same, with its line, from 1.
struct SourceNotice {
    int32_t Line = -1;
    wxString Text;
};

// A source of records. The import owns it and reads it once to its end, on the import's thread.
class CardRecordReader {
  public:
    enum Error : int32_t {
        kNoError = 0,
        kMissingSeparator = 1,
        kRepeatedAttribute = 2,
        kOpenQuote = 3
    };

    virtual ~CardRecordReader() = default;

    // Returns the current line or row of the source, from 1.
    virtual int32_t GetLineNumber() const = 0;
    virtual int32_t GetError() const = 0;
    // Says in a sentence why the source could not be read to its end; empty if nothing kept it.
    virtual wxString GetFailure() const { return wxString(); }
    // Returns how many records so far had no text, such as cards with only pictures.
    virtual int32_t CountLeftOut() const { return 0; }
    // Returns what was odd about the source so far.
    virtual std::vector<SourceNotice> GetNotices() const { return {}; }
    // Returns how many lines the longest quoted field of the current record goes over; 0 for none.
    virtual int32_t CountFieldLines() const { return 0; }
    virtual uint32_t GetAttributeCount() const = 0;
    // Returns an attribute of the current record; valid until the next ReadRecord.
    virtual const CardAttribute& GetAttribute(uint32_t index) const = 0;
    // Reads the next record, which may have no attributes. Returns false at the end of the source
    // and on an error.
    virtual bool ReadRecord() = 0;
    // Returns the part of the source that has been read, 0 to 1.
    virtual float GetProgress() const = 0;
};

// The name of an attribute, as a writer takes it. What a writer has to know of a name is found when
// the name is made: at compile time for the constants that an export writes 24 times a card.
class AttributeName {
  public:
    // Implicit, so that any text serves as a name. It is not copied.
    constexpr AttributeName(std::u16string_view text)
        : mText(text),
          mIsMistakable(text.find(u':') != std::u16string_view::npos ||
                        (!text.empty() && text.front() == u'#')) {}
    constexpr AttributeName(const char16_t* text) : AttributeName(std::u16string_view(text)) {}

    constexpr std::u16string_view Text() const { return mText; }
    // Returns whether a reader of lines "Name: value" would cut the name or take it for a comment.
    constexpr bool IsMistakable() const { return mIsMistakable; }

  private:
    std::u16string_view mText;
    bool mIsMistakable;
};

// A sink of records, which takes the attributes of a record and then its end. Texts are UTF-16, as
// the store keeps them, so that an export copies no text only to convert it.
class CardRecordWriter {
  public:
    virtual ~CardRecordWriter() = default;

    // Returns 0, or -1 when this form has no place for an attribute of that name.
    virtual int WriteAttribute(const AttributeName& name, std::u16string_view value) = 0;
    // The same for an ASCII value without a line break, such as a number; an export has 18 a card.
    virtual int WritePlain(const AttributeName& name, std::string_view value) {
        return WriteAttribute(name, std::u16string(value.begin(), value.end()));
    }
    virtual void EndRecord() = 0;
    // Hands on the records that have ended.
    virtual void Flush() = 0;
};

// A stored card side may hold a second text, such as a reading, after the main text: on a line of
// its own in the brackets U+3010 and U+3011. With square brackets in their place, the side
// "sushi\n[su-shi]" has the main text "sushi" and the second text "su-shi".

// The two texts of a side, as views into it.
struct SplitSide {
    std::u16string_view Main;
    std::u16string_view Second;
};

bool HasSecondText(std::u16string_view side);
// Returns the whole side as the main text when there is no second text, which is then empty.
SplitSide SplitSecondText(std::u16string_view side);
// Returns the side of the two texts; the main text alone when the second is empty.
wxString JoinSecondText(const wxString& main, const wxString& second);

// Returns true for the name of another program's deck, whatever is in the file. Such a file is
// never read as a list.
bool HasDeckName(const wxString& path);

// Returns the identity of a card that is made of a note of another program, whether the note comes
// in a package or in a table: the note's own identity where that is a UUID, else one made of it. A
// note can make several cards, each with a part of its own; that of the first is empty.
CardUuid NoteCardId(const std::string& noteId, const std::string& part);

// What an attribute means for the card. The attributes of a schedule have codes from 0 too, and one
// code serves both directions of study.
enum CardAttributeCode : int {
    kAttributeId = 0,
    kAttributeFront = 1,
    kAttributeFront2 = 2,
    kAttributeBack = 3,
    kAttributeBack2 = 4,
    kAttributeAuthor = 5,
    kAttributeCategory = 6,
    kAttributeChapter = 7,
    kAttributeIntroductionOrder = 8,
    kAttributeForwardX = 9,
    kAttributeReverseX = 10,
    kAttributeNotes = 11,

    kAttributeIntroduced = 0,
    kAttributeLastReview = 1,
    kAttributeLastScore = 2,
    kAttributeReviewInterval = 3,
    kAttributeDifficulty = 4,
    kAttributeErc = 5
};

// A known attribute. Several names may mean the same attribute, such as "Front", "F" and "Q"; they
// share its code and its mask.
struct AttributeInfo {
    bool IsSchedule = false;
    bool IsReverse = false;
    int Code = kAttributeId;
    // One bit, for sets of attributes.
    uint32_t Mask = 0;
};

// Returns the bit of an attribute.
constexpr uint32_t AttributeMask(bool schedule, bool reverse, int code) {
    return uint32_t{1} << (code + (schedule ? 12 : 0) + (schedule && reverse ? 6 : 0));
}

// Finds the attribute of a name, whatever the case of its letters. Returns false for a name that no
// attribute has.
bool LookupAttribute(const wxString& name, AttributeInfo& info);

// Set a field of a card from the text of an attribute. Each returns the empty text on success. For
// a value in the wrong form it leaves the field alone and returns a message that names the
// attribute.
wxString SetIntroductionOrder(const wxString& name, const wxString& value, int32_t& order);
wxString SetFlag(const wxString& name, const wxString& value, bool& flag);
// The code says which field of the schedule to set.
wxString SetScheduleValue(int code, const wxString& name, const wxString& value,
                          CardSchedule& schedule);

// The texts of failures that several steps of an import share. A name from the file fills a place
// in such a text and is never a format itself; an absurdly long one is cut.
wxString NamedMessage(const wxString& format, const wxString& name);
wxString UnknownAttributeMessage(const wxString& name);
wxString RepeatedAttributeMessage();
