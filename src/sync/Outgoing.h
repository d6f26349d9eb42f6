#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "reviews/ScheduleEvents.h"
#include "sync/ExchangeFile.h"
#include "sync/SyncState.h"
#include "sync/SyncedCard.h"

// Reads an event from the lines that FormatEvent made.
bool ParseStoredEvent(std::string_view lines, ScheduleEvent& event);

// The records of a file of this computer, in the words that docs/EXCHANGE.md explains. Each record
// of a card belongs to the last one named before it, and each stamp to a machine named before it.
class Outgoing {
  public:
    Outgoing(const ExchangeHeader& header, ExchangeSink sink) : mWriter(header, std::move(sink)) {}

    // Names the card of the next records, which this machine has changed at a time.
    void BeginCard(const CardUuid& card, const Stamp& touched);
    // All its fields; its present schedules serve whoever has no reviews of it.
    void AddCard(const SyncedCard& card);
    // A change of one field, and the stamp of what it replaced.
    void AddField(CardField field, const Stamp& at, const Stamp& replaced,
                  const std::string& value);
    // A deletion with all that it had seen.
    void AddDeletion(const MachineTimes& seen);
    void AddEvent(const ScheduleEvent& event);
    void AddCategory(const CategoryEvent& event);
    void AddUnion(const CardUuid& gone, const CardUuid& stays);
    // The answer to whether equal cards of different computers become one.
    void AddAnswer(bool joins, const Stamp& at);
    void AddAhead(const ScheduleEvent& event);
    void AddLostText(const LostText& text);
    void AddLookedAt(const CardUuid& card, CardField field, const Stamp& lost);

    // Cards and reviews that were told of.
    int GetChanges() const { return mChanges; }
    int64_t GetRecords() const { return mWriter.GetCount(); }
    int64_t GetBytes() const { return mWriter.GetBytes(); }
    int Finish() { return mWriter.Finish(); }

  private:
    // Writes the name of the card that was begun, unless it stands there.
    void NameCard();
    std::string TextOf(const Stamp& stamp);
    void NameMachines(int64_t known);

    ExchangeWriter mWriter;
    MachineNumbers mNumbers;
    CardUuid mCard;
    Stamp mTouched;
    bool mIsNamed = false;
    // The changed cards that were named.
    std::set<CardUuid> mTold;
    int mChanges = 0;
};
