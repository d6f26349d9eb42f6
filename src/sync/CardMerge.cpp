// The collecting of what changed here, and the writing of what the store becomes. What comes from
// other computers is taken in by CardMergeApply.cpp.

#include "sync/CardMerge.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "base/Unicode.h"
#include "scheduler/ScheduleFold.h"
#include "sync/StoreScan.h"

namespace {

// How many bytes of cards are kept in memory.
constexpr size_t kMostCacheBytes = size_t{96} << 20;
// A score is written into the store a moment before its line is in the log. A schedule as young as
// this, in seconds, is left for the next exchange unless a line explains it.
constexpr int64_t kYoungReview = 10;
// How far ahead of all news from other computers, in seconds, the clock is believed.
constexpr int64_t kMostAhead = int64_t{60} * 86400;
// Events come in any order. They are read card by card, or all of them in the order of the cards.
constexpr char kIndexEvents[] = "CREATE INDEX IF NOT EXISTS temp.EventsOfCards ON Events(CardId)";

int64_t SecondsOf(const wxDateTime& time) {
    return time.IsValid() ? int64_t{time.GetTicks()} : -1;
}

std::string_view BytesOf(const CardUuid& id) {
    return {reinterpret_cast<const char*>(id.Bytes.data()), id.Bytes.size()};
}

// Notes have the letters of the fields, and two for the schedules.
EditedField NotedField(CardField field) {
    return static_cast<EditedField>(field);
}
EditedField NotedField(ReviewDirection direction) {
    return direction == kReviewForward ? EditedField::kForward : EditedField::kReverse;
}

}  // namespace

size_t CardMerge::IdHash::operator()(const CardUuid& id) const {
    size_t hash = 0;
    std::memcpy(&hash, id.Bytes.data(), sizeof hash);
    return hash;
}

CardMerge::CardMerge(const Context& context, const std::vector<EditNote>& notes)
    : mContext(context),
      mState(context.State),
      mOut(context.Out),
      mOwnTouch{context.IsJoining ? kTimeBeforeExchanges : context.Time.Next(context.Now),
                context.Machine} {
    for (const EditNote& note : notes) {
        for (size_t field = 0; field < kEditedFieldCount; ++field) {
            if (note.Fields.test(field)) {
                mNotes[{note.CardId, field}] = note.Time;
            }
        }
    }
    mState.ReadCategories();
    mNames.Set(mState.ReadCategoryEvents());
    mNamesHere = mNames;
    mUnions = CardUnions(mState.ReadUnions());
    Query ahead(mState.Sql(), "SELECT Session, Number FROM beside.Ahead");
    while (ahead.Step()) {
        uint64_t session = 0;
        ParseHexText(ahead.Text(0), session);
        mAhead.emplace(session, ahead.Int(1));
    }
    mState.Sql().Execute(
        "CREATE TEMP TABLE IF NOT EXISTS Events(CardId BLOB, Text BLOB);"
        "DELETE FROM temp.Events; DROP INDEX IF EXISTS temp.EventsOfCards;");
    Query cards(mState.Sql(), "SELECT 1 FROM beside.Copy LIMIT 1");
    mHasCopy = cards.Step();
    mHasLive = mState.HasLiveCards();
    mHasCardsHere = mHasCopy || mHasLive;
}

bool CardMerge::HasNote(const CardUuid& id, EditedField field) const {
    return mNotes.count({id, static_cast<size_t>(field)}) > 0;
}

// Tells all that this computer has changed the card, whichever of the changes stands.
void CardMerge::TouchOwn(SyncedCard& state) {
    state.Touch(mOwnTouch);
    mOut.BeginCard(state.Id, mOwnTouch);
}

Stamp CardMerge::StampFor(const CardUuid& id, CardField field, const Stamp& replaced) {
    if (mContext.IsJoining) {
        return {kTimeBeforeExchanges, mContext.Machine};
    }
    const auto note = mNotes.find({id, IndexOf(field)});
    if (note == mNotes.end() || !mContext.Rules.KnowsTimesOfEdits) {
        return {mContext.Time.Next(mContext.Now), mContext.Machine};
    }
    // What was changed again later is not older than what it replaced.
    const int64_t time = std::max(note->second, replaced.Time + 1);
    mContext.Time.See(time);
    return {time, mContext.Machine};
}

void CardMerge::CollectCategories() {
    const std::map<int32_t, std::string> before = mState.ReadCopyCategories();
    const std::map<int32_t, std::string> now = mState.Categories();
    std::vector<CategoryEvent> events;
    const bool goesBack = mContext.Answer == ExchangeAnswer::kTakeNewer && !mContext.IsJoining;
    const Stamp at = mContext.IsJoining ? Stamp{kTimeBeforeExchanges, mContext.Machine}
                                        : Stamp{mContext.Time.Next(mContext.Now), mContext.Machine};
    const auto isThere = [&now](const std::string& name) {
        return std::any_of(now.begin(), now.end(),
                           [&](const auto& category) { return category.second == name; });
    };
    std::set<std::string> renamedTo;
    for (const auto& [id, name] : before) {
        const auto found = now.find(id);
        if (found != now.end() && found->second == name) {
            continue;
        }
        // The id of a category that is gone is used again. A rename leaves cards where they were.
        const bool keepsCards = found != now.end() && mState.KeepsCards(id);
        if (goesBack) {
            // An earlier store has no say in what became of its categories since.
            mRestoresCategories = true;
            if (keepsCards && mState.FindCategory(name) == -1) {
                mState.RenameCategory(id, name);
                renamedTo.insert(found->second);
            }
        } else if (keepsCards || (!mContext.Rules.NamesCategories && found != now.end())) {
            events.push_back({CategoryEvent::kRenamed, name, found->second, at});
            renamedTo.insert(found->second);
        } else if (!isThere(name)) {
            events.push_back({CategoryEvent::kDeleted, name, "", at});
        }
    }
    // A name that a category has lost may have been given to another one since.
    const Stamp later =
        mContext.IsJoining ? at : Stamp{mContext.Time.Next(mContext.Now), mContext.Machine};
    for (const auto& [id, name] : now) {
        const auto found = before.find(id);
        const bool isNew = found == before.end() || found->second != name;
        const bool isFree =
            std::any_of(events.begin(), events.end(),
                        [lost = name](const CategoryEvent& event) { return event.Name == lost; });
        if (isNew && renamedTo.count(name) == 0 &&
            (!mNames.IsGiven(name) || isFree || mContext.IsJoining)) {
            events.push_back({CategoryEvent::kAdded, name, "", later});
        }
    }
    for (const CategoryEvent& event : events) {
        if (mState.AddCategoryEvent(event)) {
            mOut.AddCategory(event);
        }
    }
    mNames.Set(mState.ReadCategoryEvents());
    mNamesHere = mNames;
}

int64_t CardMerge::ReadOwnEvents(int64_t offset, bool isWhole) {
    mReadsWholeLog = isWhole || mContext.IsJoining || mContext.Answer != ExchangeAnswer::kAsk;
    return VisitEvents(
        mContext.LogPath, offset, [this](const ScheduleEvent& event) { TakeNewEvent(event); },
        mContext.IsCancelled);
}

void CardMerge::TakeNewEvent(const ScheduleEvent& event) {
    mOut.AddEvent(event);
    mLastEvent = FormatEventKey(event);
    const Place place(event.CardId, event.Direction);
    auto last = mLastEvents.find(place);
    const bool isFirst = last == mLastEvents.end();
    if (isFirst) {
        SyncedCard copy;
        if (!mReadsWholeLog) {
            mState.LoadCopy(event.CardId, copy);
        }
        const CardSchedule known = copy.Schedule(event.Direction);
        last = mLastEvents.emplace(place, LastEvent{known, known}).first;
        if (!copy.IsKnown) {
            // The first event of a card is not held against anything.
            last->second.After = event.From;
        }
    }
    if (!event.IsSet && event.Review.Replaces < 0 &&
        !IsSameSchedule(event.From, last->second.After)) {
        if (mReadsWholeLog) {
            mDoubtful.insert(place);
        } else {
            mBreaks.push_back({event, isFirst});
        }
    }
    last->second = {event.From, event.After};
}

void CardMerge::Collect(const CardUuid& id) {
    Load(id);
}

CardMerge::Loaded& CardMerge::Find(const CardUuid& id) {
    const auto found = mCache.find(id);
    if (found != mCache.end()) {
        return found->second;
    }
    if (mCache.size() >= mContext.MostCards || mCacheBytes >= kMostCacheBytes) {
        FlushCache();
    }
    Loaded& loaded = mCache[id];
    unsigned& marks = mMarks[id];
    const bool isFirst = (marks & kCollected) == 0;
    marks |= kCollected;
    if (isFirst && !mHasCopy) {
        loaded.State.Id = id;
        loaded.State.Value(CardField::kCategory) = kNoCategory;
    } else {
        mState.LoadCopy(id, loaded.State);
    }
    if (isFirst) {
        loaded.IsSaved = !CollectCard(loaded.State);
    }
    mCacheBytes += sizeof loaded;
    for (const std::string& value : loaded.State.Values) {
        mCacheBytes += value.size();
    }
    return loaded;
}

SyncedCard& CardMerge::Load(const CardUuid& id) {
    Loaded& loaded = Find(id);
    loaded.IsSaved = false;
    return loaded.State;
}

// Saves what has changed, in the order of the copy.
void CardMerge::FlushCache() {
    std::vector<const SyncedCard*> states;
    for (const auto& [id, loaded] : mCache) {
        const FieldStamps& stamps = loaded.State.Stamps;
        const bool wasEver = std::any_of(stamps.begin(), stamps.end(),
                                         [](const Stamp& stamp) { return !stamp.IsNone(); });
        if (!loaded.IsSaved && (wasEver || loaded.State.IsUnited || loaded.State.Seen)) {
            states.push_back(&loaded.State);
        }
    }
    std::sort(states.begin(), states.end(),
              [](const SyncedCard* one, const SyncedCard* other) { return one->Id < other->Id; });
    for (const SyncedCard* const state : states) {
        mState.SaveCopy(*state);
    }
    mCache.clear();
    mCacheBytes = 0;
}

bool CardMerge::CollectCard(SyncedCard& state) {
    SyncedCard live;
    const bool isThere = mHasLive && mState.LoadLive(state.Id, live);
    const bool wasThere = state.IsKnown && state.Exists();
    const bool goesBack = mContext.Answer == ExchangeAnswer::kTakeNewer && !mContext.IsJoining;
    if (isThere && !wasThere) {
        if (state.IsKnown && (state.IsUnited || goesBack)) {
            // It became one with another card, or the earlier store still has it.
            SetMark(state.Id, kTouched);
        } else {
            CollectNew(state, live);
        }
    } else if (!isThere && wasThere) {
        if (goesBack && !HasNote(state.Id, EditedField::kDeletion)) {
            SetMark(state.Id, kTouched);
            return true;
        }
        ++mLostHere;
        state.Seen = state.Touched;
        mOut.BeginCard(state.Id, Stamp());
        mOut.AddDeletion(state.Touched);
    } else if (isThere) {
        CollectFields(state, live);
    }
    return isThere || wasThere;
}

void CardMerge::CollectNew(SyncedCard& state, const SyncedCard& live) {
    const SyncedCard before = state;
    state.Values = live.Values;
    state.Forward = live.Forward;
    state.Reverse = live.Reverse;
    state.CategoryId = live.CategoryId;
    state.IsKnown = true;
    for (size_t i = 0; i < kCardFieldCount; ++i) {
        state.Stamps[i] = StampFor(state.Id, static_cast<CardField>(i), before.Stamps[i]);
    }
    TouchOwn(state);
    mOut.AddCard(state);
    if (before.IsKnown) {
        // It was deleted and is back as it was then. Its reviews since count.
        SetMark(state.Id, kFolded);
        return;
    }
    for (const ReviewDirection direction : kEachDirection) {
        const CardSchedule& schedule = state.Schedule(direction);
        const auto last = mLastEvents.find({state.Id, direction});
        const bool isExplained = last != mLastEvents.end()
                                     ? IsSameSchedule(last->second.After, schedule) &&
                                           mDoubtful.count({state.Id, direction}) == 0
                                     : IsUntouched(schedule);
        if (!isExplained) {
            mUnexplained.push_back({{state.Id, direction}, schedule});
        }
    }
}

void CardMerge::CollectFields(SyncedCard& state, const SyncedCard& live) {
    const bool goesBack = mContext.Answer == ExchangeAnswer::kTakeNewer && !mContext.IsJoining;
    const auto collect = [&](CardField field, const std::string& before) {
        const std::string& now = live.Value(field);
        if (now == before) {
            return;
        }
        if (goesBack && !HasNote(state.Id, NotedField(field))) {
            SetMark(state.Id, kTouched);
            return;
        }
        Stamp& stamp = state.Stamps[IndexOf(field)];
        const Stamp replaced = stamp;
        stamp = StampFor(state.Id, field, replaced);
        state.Value(field) = now;
        TouchOwn(state);
        mOut.AddField(field, stamp, replaced, now);
    };
    for (size_t i = 0; i < kCardFieldCount; ++i) {
        const auto field = static_cast<CardField>(i);
        if (field == CardField::kCategory) {
            const std::string name = CategoryIn(mNamesHere, state);
            collect(field, name);
        } else {
            const std::string before = state.Value(field);
            collect(field, before);
        }
    }
    state.CategoryId = live.CategoryId;
    for (const ReviewDirection direction : kEachDirection) {
        CollectSchedule(state, live, direction);
    }
}

void CardMerge::CollectSchedule(SyncedCard& state, const SyncedCard& live,
                                ReviewDirection direction) {
    CardSchedule& before = state.Schedule(direction);
    const CardSchedule& now = direction == kReviewForward ? live.Forward : live.Reverse;
    // The number for early review is never a change by itself.
    before.ERC = now.ERC;
    if (IsSameSchedule(before, now)) {
        return;
    }
    if (mContext.Answer == ExchangeAnswer::kTakeNewer && !mContext.IsJoining &&
        !HasNote(state.Id, NotedField(direction))) {
        SetMark(state.Id, kTouched);
        SetMark(state.Id, kFolded);
        return;
    }
    const auto last = mLastEvents.find({state.Id, direction});
    const bool isExplained = last != mLastEvents.end() && IsSameSchedule(last->second.After, now);
    const int64_t age = mContext.Now / 1000 - SecondsOf(now.LastReview);
    const bool isScored =
        now.Introduced && SecondsOf(now.LastReview) != SecondsOf(before.LastReview);
    if (!isExplained && isScored && age >= 0 && age < kYoungReview) {
        mLeavesSomething = true;
        return;
    }
    if (now.Introduced < before.Introduced ||
        (now.Introduced && before.Introduced &&
         SecondsOf(now.LastReview) < SecondsOf(before.LastReview))) {
        ++mLostHere;
    }
    before = now;
    TouchOwn(state);
    if (!isExplained) {
        mUnexplained.push_back({{state.Id, direction}, now});
    }
}

bool CardMerge::HasMark(const CardUuid& id, Mark mark) const {
    const auto marks = mMarks.find(id);
    return marks != mMarks.end() && (marks->second & mark) != 0;
}

// Reads the events of the cards with a mark from the log, unless they were read.
void CardMerge::GatherEvents(Mark mark) {
    const auto isWanted = [mark](unsigned marks) {
        return (marks & mark) != 0 && (marks & kGathered) == 0;
    };
    if (std::none_of(mMarks.begin(), mMarks.end(),
                     [&](const auto& card) { return isWanted(card.second); })) {
        return;
    }
    VisitEvents(
        mContext.LogPath, 0,
        [&](const ScheduleEvent& event) {
            const CardUuid card = UnionOf(event.CardId);
            const auto marks = mMarks.find(card);
            if (marks != mMarks.end() && isWanted(marks->second)) {
                KeepEvent(card, FormatEvent(event));
            }
        },
        mContext.IsCancelled);
    for (auto& [card, marks] : mMarks) {
        marks |= (marks & mark) != 0 ? kGathered : 0U;
    }
}

void CardMerge::KeepEvent(const CardUuid& card, const std::string& text) {
    Query query(mState.Sql(), "INSERT INTO temp.Events VALUES (?,?)");
    query.BindBlob(BytesOf(card));
    query.BindBlob(text);
    query.Step();
}

std::vector<ScheduleEvent> CardMerge::EventsOf(const CardUuid& id, ReviewDirection direction) {
    std::vector<ScheduleEvent> events;
    Query query(mState.Sql(), "SELECT Text FROM temp.Events WHERE CardId=?");
    query.BindBlob(BytesOf(id));
    while (query.Step()) {
        ScheduleEvent event;
        if (ParseStoredEvent(query.Blob(0), event) && event.Direction == direction) {
            events.push_back(std::move(event));
        }
    }
    return events;
}

// Gives the events of cards that have become one with another to the other.
void CardMerge::MoveUnitedEvents() {
    if (mUnited.empty()) {
        return;
    }
    mState.Sql().Execute(kIndexEvents);
    for (const CardUuid& gone : mUnited) {
        const CardUuid stays = UnionOf(gone);
        Query query(mState.Sql(), "UPDATE temp.Events SET CardId=? WHERE CardId=?");
        query.BindBlob(BytesOf(stays));
        query.BindBlob(BytesOf(gone));
        query.Step();
    }
}

// Gives an event of this computer to the log and to the others.
void CardMerge::AddSet(ScheduleEvent event) {
    const std::string text = FormatEvent(event);
    mState.AddPending(text);
    mOut.AddEvent(event);
    if (HasMark(event.CardId, kGathered)) {
        KeepEvent(UnionOf(event.CardId), text);
    }
}

void CardMerge::ExplainSchedules() {
    for (const auto& [place, last] : mLastEvents) {
        // The store may not have taken the score, an exchange may have come in between, or a clock
        // may have dated an earlier event later.
        if (!mReadsWholeLog) {
            SetMark(place.first, kFolded);
            SyncedCard& state = Load(place.first);
            if (state.IsKnown && state.Exists()) {
                TouchOwn(state);
            }
        }
    }
    for (const Break& found : mBreaks) {
        SetMark(found.Event.CardId, kUnexplained);
    }
    for (const auto& [place, schedule] : mUnexplained) {
        SetMark(place.first, kUnexplained);
    }
    if (mBreaks.empty() && mUnexplained.empty()) {
        return;
    }
    GatherEvents(kUnexplained);
    mState.Sql().Execute(kIndexEvents);
    for (const auto& [event, isFirst] : mBreaks) {
        const std::vector<ScheduleEvent> events = EventsOf(event.CardId, event.Direction);
        const CardSchedule& from = event.From;
        const EventKey key = KeyOf(event);
        const bool isFork =
            isFirst && std::any_of(events.begin(), events.end(), [&](const ScheduleEvent& other) {
                return !(KeyOf(other) == key) &&
                       (IsSameSchedule(other.After, from) ||
                        (!other.IsSet && IsSameSchedule(other.From, from)));
            });
        if (isFork) {
            // It was given before the card had what the last exchange brought.
            SetMark(event.CardId, kFolded);
            continue;
        }
        // Another program had set the schedule in between.
        ScheduleEvent set = event;
        set.IsSet = true;
        set.After = from;
        set.HasExtension = false;
        AddSet(std::move(set));
    }
    for (const auto& [place, schedule] : mUnexplained) {
        const std::vector<ScheduleEvent> events = EventsOf(place.first, place.second);
        const auto ahead = [this](const ScheduleEvent& event) { return IsAhead(event); };
        if (events.empty() ? IsUntouched(schedule)
                           : IsSameSchedule(FoldEvents(events, ahead).Schedule, schedule)) {
            continue;
        }
        int64_t time = schedule.Introduced ? SecondsOf(schedule.LastReview) : -1;
        const auto note = mNotes.find({place.first, static_cast<size_t>(NotedField(place.second))});
        int64_t found = mContext.Now;
        if (note != mNotes.end()) {
            found = note->second;
        }
        // A clock that is far ahead of all news would make this stand for years.
        if ((time < 0 || !events.empty()) && found / 1000 <= mContext.LatestNews + kMostAhead) {
            time = std::max(time, found / 1000);
        }
        // It stands for what came last here, whatever the clock was.
        for (const ScheduleEvent& event : events) {
            time = std::max(time, event.Time + 1);
        }
        AddSet(MakeSetEvent(std::max<int64_t>(time, 0), place.first, place.second, schedule));
    }
    // What comes from elsewhere is put in without it, and read in order.
    mState.Sql().Execute("DROP INDEX temp.EventsOfCards");
}

// Returns the names with all events that have come so far.
CategoryNames& CardMerge::Names() {
    if (mHasNewNames) {
        mHasNewNames = false;
        mNames.Set(mState.ReadCategoryEvents());
    }
    return mNames;
}

std::string CardMerge::CategoryNow(const SyncedCard& state) {
    return CategoryIn(Names(), state);
}

std::string CardMerge::CategoryIn(const CategoryNames& names, const SyncedCard& state) {
    const std::string& value = state.Value(CardField::kCategory);
    if (value.empty() || value[0] != kNamedCategory) {
        return kNoCategory;
    }
    return kNamedCategory +
           names.NameNow(value.substr(1), state.Stamps[IndexOf(CardField::kCategory)]);
}

bool CardMerge::IsAhead(const ScheduleEvent& event) const {
    return mAhead.count({event.Session, event.Number}) > 0;
}

void CardMerge::Touch(const CardUuid& id) {
    SetMark(id, kTouched);
    mChangesStore = true;
}

void CardMerge::Settle() {
    SettleCategories();
    // One after the other in the order of the tables. What is settled touches nothing else.
    std::vector<std::pair<CardUuid, unsigned>> cards;
    for (const auto& [id, marks] : mMarks) {
        if ((marks & (kTouched | kFolded)) != 0) {
            cards.emplace_back(id, marks);
        }
    }
    std::sort(cards.begin(), cards.end());
    GatherEvents(kFolded);
    MoveUnitedEvents();
    const std::vector<std::string> indexes =
        mHasLive || mNewCount == 0 ? std::vector<std::string>() : mState.DropCardIndexes();
    Query events(mState.Sql(), "SELECT CardId, Text FROM temp.Events ORDER BY CardId");
    bool isAtEvent = events.Step();
    for (const auto& [id, marks] : cards) {
        std::array<std::vector<ScheduleEvent>, std::size(kEachDirection)> found;
        for (; isAtEvent && events.BlobView(0) <= BytesOf(id); isAtEvent = events.Step()) {
            ScheduleEvent event;
            if (events.BlobView(0) == BytesOf(id) && ParseStoredEvent(events.BlobView(1), event)) {
                found[event.Direction == kReviewForward ? 0 : 1].push_back(std::move(event));
            }
        }
        bool differs = false;
        if ((marks & kFolded) != 0 && mContext.Rules.FoldsReviews) {
            differs = SettleSchedule(id, kReviewForward, found[0]);
            differs = SettleSchedule(id, kReviewReverse, found[1]) || differs;
            differs = differs && Look(id).IsKnown && Look(id).Exists();
        }
        if (differs || (marks & kTouched) != 0) {
            mChangesStore = true;
            SettleCard(id);
        }
    }
    FlushCache();
    for (const std::string& index : indexes) {
        mState.Sql().Execute(index.c_str());
    }
    DropEmptyCategories();
    mState.MirrorCategories();
}

// Sees to the cards that went into a category by one of these names.
void CardMerge::TouchCardsOf(const std::set<std::string>& names) {
    if (names.empty()) {
        return;
    }
    FlushCache();
    Query query(mState.Sql(), "SELECT CardId, Category FROM beside.Copy WHERE Gone=0");
    while (query.Step()) {
        const std::string category = query.Text(1);
        CardUuid card;
        if (!category.empty() && category[0] == kNamedCategory &&
            names.count(category.substr(1)) > 0 && ParseUuidUtf8(query.Text(0), card) == 0) {
            SetMark(card, kTouched);
        }
    }
}

void CardMerge::SettleCategories() {
    std::set<std::string> names;
    for (; mSettledEvents < mNewCategoryEvents.size(); ++mSettledEvents) {
        const CategoryEvent& event = mNewCategoryEvents[mSettledEvents];
        const std::string& last =
            event.What == CategoryEvent::kRenamed ? event.NewName : event.Name;
        for (const std::string& name : Names().NamesThatBecame(last)) {
            names.insert(name);
        }
        if (event.What != CategoryEvent::kRenamed) {
            continue;
        }
        const int32_t id = mState.FindCategory(event.Name);
        const bool isFree = mState.FindCategory(event.NewName) == -1;
        // Where the old name was given anew, or the new one has been renamed since, the cards go
        // one by one.
        if (id != -1 && isFree && !Names().IsGiven(event.Name) &&
            Names().NameNow(event.Name, Stamp()) == event.NewName) {
            mState.RenameCategory(id, event.NewName);
            mChangesStore = true;
        }
    }
    TouchCardsOf(names);
    if (mNewCategoryEvents.empty() && !mContext.IsJoining && !mRestoresCategories) {
        return;
    }
    for (const std::string& name : Names().GivenNames()) {
        if (mState.FindCategory(name) == -1) {
            mState.FindOrAddCategory(name);
            mChangesStore = true;
        }
    }
}

void CardMerge::SettleCard(const CardUuid& id) {
    const SyncedCard& state = Look(id);
    if (!state.Exists()) {
        mState.DeleteLive(id);
        return;
    }
    if (!state.IsKnown) {
        return;
    }
    const std::string category = CategoryNow(state);
    int32_t categoryId = -1;
    if (category[0] == kNamedCategory) {
        const std::string name = category.substr(1);
        categoryId = mState.FindOrAddCategory(name);
        if (!Names().IsGiven(name)) {
            // A card from elsewhere brings back a category that was deleted.
            const CategoryEvent event = {CategoryEvent::kAdded,
                                         name,
                                         "",
                                         {mContext.Time.Next(mContext.Now), mContext.Machine}};
            mState.AddCategoryEvent(event);
            mOut.AddCategory(event);
            mHasNewNames = true;
        }
    }
    if (categoryId != state.CategoryId) {
        Load(id).CategoryId = categoryId;
    }
    mState.WriteLive(state, HasMark(id, kNew));
}

// Gives a card the schedule that follows from its reviews. Returns true when it is another one.
bool CardMerge::SettleSchedule(const CardUuid& id, ReviewDirection direction,
                               const std::vector<ScheduleEvent>& events) {
    if (events.empty()) {
        return false;
    }
    const FoldResult folded =
        FoldEvents(events, [this](const ScheduleEvent& event) { return IsAhead(event); });
    const SyncedCard& state = Look(id);
    const CardSchedule& schedule = direction == kReviewForward ? state.Forward : state.Reverse;
    if (IsSameSchedule(schedule, folded.Schedule)) {
        return false;
    }
    // Where the log was deleted no event tells of the schedule here, and the later one stands.
    const bool isKnown = std::any_of(events.begin(), events.end(), [&](const auto& event) {
        return IsSameSchedule(event.After, schedule) ||
               (!event.IsSet && IsSameSchedule(event.From, schedule));
    });
    const bool isLater = schedule.Introduced &&
                         SecondsOf(schedule.LastReview) > SecondsOf(folded.Schedule.LastReview);
    const bool hasSet =
        std::any_of(events.begin(), events.end(), [](const auto& event) { return event.IsSet; });
    if (!isKnown && isLater && !folded.HasForked && !hasSet) {
        return false;
    }
    Load(id).Schedule(direction) = folded.Schedule;
    return true;
}

void CardMerge::DropEmptyCategories() {
    if (mNewCategoryEvents.empty()) {
        return;
    }
    const std::map<int32_t, std::string> categories = mState.Categories();
    for (const auto& [id, name] : categories) {
        // A store has one category at least.
        if (!Names().IsGiven(name) && mState.Categories().size() > 1 && !mState.HasCards(id)) {
            mState.DeleteCategory(id);
            mChangesStore = true;
        }
    }
}
