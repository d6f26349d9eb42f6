#include "sync/WholeCopy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "base/Files.h"
#include "sync/Outgoing.h"

int WriteWholeCopy(SyncState& state, const ExchangeHeader& header, const wxString& logPath,
                   const std::filesystem::path& target, const std::atomic<bool>& isCancelled) {
    const FileDescriptor file(
        ::open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (!file.IsOpen()) {
        return errno;
    }
    Outgoing out(header, SinkTo(file.Get()));
    for (const CategoryEvent& event : state.ReadCategoryEvents()) {
        out.AddCategory(event);
    }
    for (const auto& [card, with] : state.ReadUnions()) {
        out.AddUnion(card, with);
    }
    const std::string answer = state.GetFact("joins");
    Stamp at;
    if (ParseStamp(state.GetFact("joins-at"), state.Numbers(), at) && !answer.empty()) {
        out.AddAnswer(answer == "yes", at);
    }
    {
        Query cards(state.Sql(), "SELECT CardId FROM beside.Copy");
        while (cards.Step() && !isCancelled) {
            CardUuid id;
            SyncedCard card;
            if (ParseUuidUtf8(cards.Text(0), id) != 0) {
                continue;
            }
            state.LoadCopy(id, card);
            if (card.IsUnited) {
                continue;
            }
            out.BeginCard(id, Stamp());
            out.AddCard(card);
            if (card.Seen) {
                out.AddDeletion(*card.Seen);
            }
        }
    }
    VisitEvents(
        logPath, 0, [&out](const ScheduleEvent& event) { out.AddEvent(event); }, isCancelled);
    {
        Query pending(state.Sql(), "SELECT Text FROM beside.Pending");
        while (pending.Step()) {
            ScheduleEvent event;
            if (ParseStoredEvent(pending.Bytes(0), event)) {
                out.AddEvent(event);
            }
        }
    }
    {
        Query ahead(state.Sql(), "SELECT Session, Number, CardId FROM beside.Ahead");
        while (ahead.Step()) {
            ScheduleEvent event;
            ParseHexText(ahead.Text(0), event.Session);
            event.Number = ahead.Int(1);
            ParseUuidUtf8(ahead.Text(2), event.CardId);
            out.AddAhead(event);
        }
    }
    for (const LostText& text : state.ReadLostTexts(true)) {
        out.AddLostText(text);
    }
    const int result = out.Finish();
    if (result != 0 || isCancelled || state.Sql().HasFailed()) {
        return result != 0 ? result : ECANCELED;
    }
    return ::fsync(file.Get()) == 0 ? 0 : errno;
}
