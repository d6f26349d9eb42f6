#include "sync/Outgoing.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

std::string LetterOf(CardField field) {
    return std::string(1, kFieldLetters[IndexOf(field)]);
}

}  // namespace

bool ParseStoredEvent(std::string_view lines, ScheduleEvent& event) {
    const size_t end = std::min(lines.find('\n'), lines.size());
    std::string_view extension = lines.substr(std::min(end + 1, lines.size()));
    extension = extension.substr(0, extension.find('\n'));
    return ParseEvent(lines.substr(0, end), extension, event);
}

void Outgoing::NameMachines(int64_t known) {
    for (; known < mNumbers.GetCount(); ++known) {
        uint64_t machine = 0;
        mNumbers.MachineOf(known, machine);
        mWriter.Add({"m", std::to_string(known), HexText(machine)});
    }
}

std::string Outgoing::TextOf(const Stamp& stamp) {
    const int64_t known = mNumbers.GetCount();
    const std::string text = FormatStamp(stamp, mNumbers);
    NameMachines(known);
    return text;
}

void Outgoing::BeginCard(const CardUuid& card, const Stamp& touched) {
    if (mCard == card) {
        return;
    }
    mCard = card;
    mTouched = touched;
    mIsNamed = false;
    if (touched.IsNone()) {
        ++mChanges;
    } else if (mTold.insert(card).second) {
        // That it was changed is told although no field may follow, but not twice: a day of study
        // consists of such changes.
        ++mChanges;
        NameCard();
    }
}

void Outgoing::NameCard() {
    if (!mIsNamed) {
        mIsNamed = true;
        const std::string stamp = TextOf(mTouched);
        mWriter.Add({"c", IdText(mCard), stamp});
    }
}

void Outgoing::AddCard(const SyncedCard& card) {
    NameCard();
    const int64_t known = mNumbers.GetCount();
    const std::string stamps = FormatStamps(card.Stamps, mNumbers);
    const std::string touched = FormatTimes(card.Touched, mNumbers);
    NameMachines(known);
    ExchangeRecord record = {"n", stamps, touched};
    record.insert(record.end(), card.Values.begin(), card.Values.end());
    record.push_back(FormatSchedule(card.Forward));
    record.push_back(FormatSchedule(card.Reverse));
    mWriter.Add(record);
}

void Outgoing::AddField(CardField field, const Stamp& at, const Stamp& replaced,
                        const std::string& value) {
    NameCard();
    const std::string stamp = TextOf(at);
    const std::string base = TextOf(replaced);
    mWriter.Add({"f", LetterOf(field), stamp, base, value});
}

void Outgoing::AddDeletion(const MachineTimes& seen) {
    NameCard();
    const int64_t known = mNumbers.GetCount();
    const std::string times = FormatTimes(seen, mNumbers);
    NameMachines(known);
    mWriter.Add({"d", times});
}

void Outgoing::AddEvent(const ScheduleEvent& event) {
    std::string line = FormatEvent(event);
    line.erase(line.find_last_not_of('\n') + 1);
    const size_t end = line.find('\n');
    mChanges += event.IsSet ? 0 : 1;
    mWriter.Add({"r", line.substr(0, end),
                 end == std::string::npos ? std::string() : line.substr(end + 1)});
}

void Outgoing::AddCategory(const CategoryEvent& event) {
    const std::string stamp = TextOf(event.At);
    mWriter.Add({"k", std::string(1, event.What), stamp, event.Name, event.NewName});
}

void Outgoing::AddUnion(const CardUuid& gone, const CardUuid& stays) {
    mWriter.Add({"u", IdText(gone), IdText(stays)});
}

void Outgoing::AddAnswer(bool joins, const Stamp& at) {
    const std::string stamp = TextOf(at);
    mWriter.Add({"j", joins ? "yes" : "no", stamp});
}

void Outgoing::AddAhead(const ScheduleEvent& event) {
    mWriter.Add({"a", HexText(event.Session), std::to_string(event.Number), IdText(event.CardId)});
}

void Outgoing::AddLostText(const LostText& text) {
    const std::string lost = TextOf(text.Lost);
    const std::string stands = TextOf(text.Stands);
    mWriter.Add({"x", IdText(text.Card), LetterOf(text.Field), lost, stands,
                 text.IsLookedAt ? "1" : "0", text.Value});
}

void Outgoing::AddLookedAt(const CardUuid& card, CardField field, const Stamp& lost) {
    const std::string stamp = TextOf(lost);
    mWriter.Add({"v", IdText(card), LetterOf(field), stamp});
}
