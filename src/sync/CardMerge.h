#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "reviews/EditNotes.h"
#include "reviews/ScheduleEvents.h"
#include "sync/CardUnions.h"
#include "sync/CategoryNames.h"
#include "sync/Exchange.h"
#include "sync/ExchangeFile.h"
#include "sync/Outgoing.h"
#include "sync/SyncState.h"
#include "sync/SyncedCard.h"

// Makes one of what this store has, what it had at the last exchange, and what other computers have
// sent. Everything happens within one transaction, in these steps:
//
//     CollectCategories    tells the others what became of the categories here
//     ReadOwnEvents        tells them of the new reviews
//     Collect              tells them of each card that differs from the copy
//     ExplainSchedules     writes down schedules that no review explains
//     Apply                takes in the records of each file
//     JoinEqualCards       finds the cards that computers had before they met
//     Settle               writes the store: schedules, categories, cards
//
// A card is collected before anything is applied to it, wherever it is met first.
class CardMerge {
  public:
    struct Context {
        SyncState& State;
        Outgoing& Out;
        HybridClock& Time;
        // This computer.
        uint64_t Machine = 0;
        // Milliseconds since 1970.
        int64_t Now = 0;
        // The latest time, in seconds, that another computer has told; far in the future where
        // there is none.
        int64_t LatestNews = 0;
        // The first exchange of this store.
        bool IsJoining = false;
        ExchangeAnswer Answer = ExchangeAnswer::kAsk;
        const ExchangeRules& Rules;
        wxString LogPath;
        // How many cards are in memory at once.
        size_t MostCards;
        const std::atomic<bool>& IsCancelled;
    };

    CardMerge(const Context& context, const std::vector<EditNote>& notes);

    void CollectCategories();
    // Reads the log from where the last exchange ended. With isWhole the end was not found again,
    // and all of it counts as new. Returns where it ends now.
    int64_t ReadOwnEvents(int64_t offset, bool isWhole);
    // Collects a card that may differ from the copy.
    void Collect(const CardUuid& id);
    void ExplainSchedules();

    // How a file's machine stands to this one.
    struct Sender {
        uint64_t Machine = 0;
        bool IsWhole = false;
        // The latest time of which anybody but the sender is known to know, in seconds.
        int64_t LatestElsewhere = 0;
    };
    // Takes in one record. What is no record that this version knows is passed over.
    void Apply(const Sender& sender, const ExchangeFields& record);
    // Forgets the names that a file gave to cards and machines.
    void EndFile();

    // Finds pairs of equal cards, one that came with this exchange and one that was here. Returns
    // how many there are; unless an answer is known, the caller asks and nothing is done yet.
    int64_t JoinEqualCards(std::optional<bool> answer);

    void Settle();

    // Cards that this store deleted, or turned back in time, since the last exchange.
    int64_t CountLostHere() const { return mLostHere; }
    // Cards that others have deleted.
    int64_t CountLostThere() const { return mLostThere; }
    int64_t CountReceived() const { return mReceived; }
    int64_t CountConflicts() const { return mConflicts; }
    // True once a card or category of the store has been or is to be changed.
    bool ChangesStore() const { return mChangesStore; }
    // True when something here was changed a moment ago and is left for the next exchange.
    bool LeavesSomething() const { return mLeavesSomething; }
    // Returns the key of the last own event, as FormatEventKey writes it; empty without one.
    const std::string& GetLastEvent() const { return mLastEvent; }
    // Reviews that were dated by a clock that is ahead.
    int64_t CountAhead() const { return mAheadCount; }

  private:
    using Place = std::pair<CardUuid, ReviewDirection>;
    struct IdHash {
        size_t operator()(const CardUuid& id) const;
    };
    // What has been seen of a card in this exchange.
    enum Mark : unsigned {
        kCollected = 1,
        // It has to be written to the store.
        kTouched = 2,
        // It came with this exchange and was not known here.
        kNew = 4,
        // Its schedules have to be worked out from its reviews.
        kFolded = 8,
        // A schedule of it is not explained.
        kUnexplained = 16,
        // Its events were read from the log.
        kGathered = 32
    };
    enum class Base { kKnown, kUnknown, kBothChanged };

    // What is known of a card, and whether the copy has it so.
    struct Loaded {
        SyncedCard State;
        bool IsSaved = true;
    };

    Loaded& Find(const CardUuid& id);
    const SyncedCard& Look(const CardUuid& id) { return Find(id).State; }
    // The same for a caller that changes the card.
    SyncedCard& Load(const CardUuid& id);
    void FlushCache();
    // Returns false for a card that is neither here nor in the copy.
    bool CollectCard(SyncedCard& state);
    void CollectNew(SyncedCard& state, const SyncedCard& live);
    void CollectFields(SyncedCard& state, const SyncedCard& live);
    void CollectSchedule(SyncedCard& state, const SyncedCard& live, ReviewDirection direction);
    Stamp StampFor(const CardUuid& id, CardField field, const Stamp& replaced);
    bool HasNote(const CardUuid& id, EditedField field) const;
    void TouchOwn(SyncedCard& state);
    void TakeNewEvent(const ScheduleEvent& event);
    void AddSet(ScheduleEvent event);
    void KeepEvent(const CardUuid& card, const std::string& text);
    std::vector<ScheduleEvent> EventsOf(const CardUuid& id, ReviewDirection direction);
    void MoveUnitedEvents();
    void GatherEvents(Mark mark);

    void ApplyCard(const Sender& sender, const ExchangeFields& record);
    void ApplyField(SyncedCard& state, CardField field, const Stamp& at, const Stamp& replaced,
                    Base base, const std::string& value);
    void ApplyDeletion(const ExchangeFields& record);
    void ApplyEvent(const Sender& sender, const ExchangeFields& record);
    void ApplyCategory(const ExchangeFields& record);
    CardUuid UnionOf(const CardUuid& id) const { return mUnions.Find(id); }
    void Unite(const CardUuid& one, const CardUuid& other);
    void ApplyUnion(const CardUuid& gone, const CardUuid& stays);
    void ApplyLostText(const ExchangeFields& record);
    SyncedCard* CurrentCard();
    void Touch(const CardUuid& id);
    void SetMark(const CardUuid& id, Mark mark) { mMarks[id] |= mark; }
    bool HasMark(const CardUuid& id, Mark mark) const;

    void TouchCardsOf(const std::set<std::string>& names);
    void SettleCategories();
    void SettleCard(const CardUuid& id);
    bool SettleSchedule(const CardUuid& id, ReviewDirection direction,
                        const std::vector<ScheduleEvent>& events);
    void DropEmptyCategories();
    CategoryNames& Names();
    std::string CategoryNow(const SyncedCard& state);
    static std::string CategoryIn(const CategoryNames& names, const SyncedCard& state);
    bool IsAhead(const ScheduleEvent& event) const;

    const Context mContext;
    SyncState& mState;
    Outgoing& mOut;
    // What marks the cards that this computer has changed. One for all of an exchange, so that all
    // know the same.
    const Stamp mOwnTouch;
    // The times of edits, by card and field.
    std::map<std::pair<CardUuid, size_t>, int64_t> mNotes;
    CategoryNames mNames;
    // True when there are events that mNames does not know yet.
    bool mHasNewNames = false;
    // The same before anything was taken in: what the categories of the store are called.
    CategoryNames mNamesHere;
    // The states of the cards that were loaded last.
    std::unordered_map<CardUuid, Loaded, IdHash> mCache;
    size_t mCacheBytes = 0;
    std::unordered_map<CardUuid, unsigned, IdHash> mMarks;
    int64_t mNewCount = 0;

    // The schedule after the last own event of a card, and that from which the event began.
    struct LastEvent {
        CardSchedule From;
        CardSchedule After;
    };
    std::map<Place, LastEvent> mLastEvents;
    // An own review that began from another schedule than the event before it had left.
    struct Break {
        ScheduleEvent Event;
        // True for the first own event of the card since the last exchange.
        bool IsFirst;
    };
    std::vector<Break> mBreaks;
    // Cards with such reviews in a log whose events may come from several computers.
    std::set<Place> mDoubtful;
    // Schedules that the last event does not explain.
    std::vector<std::pair<Place, CardSchedule>> mUnexplained;
    CardUnions mUnions;
    // Cards that have become one with another in this exchange.
    std::vector<CardUuid> mUnited;
    std::set<std::pair<uint64_t, int64_t>> mAhead;
    std::vector<CategoryEvent> mNewCategoryEvents;
    // How many of them the store's categories follow.
    size_t mSettledEvents = 0;

    // The names that the present file has given.
    MachineNumbers mFileMachines;
    CardUuid mFileCard;

    std::string mLastEvent;
    int64_t mLostHere = 0;
    int64_t mLostThere = 0;
    int64_t mReceived = 0;
    int64_t mConflicts = 0;
    int64_t mAheadCount = 0;
    // What there was before this exchange: cards in the copy, in the store, in either.
    bool mHasCopy = false;
    bool mHasLive = false;
    bool mHasCardsHere = false;
    bool mReadsWholeLog = false;
    bool mRestoresCategories = false;
    bool mChangesStore = false;
    bool mLeavesSomething = false;
};
