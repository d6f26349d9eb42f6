#include "formats/decks/DeckSurvey.h"

#include <wx/filename.h>
#include <wx/intl.h>

#include <algorithm>
#include <new>
#include <utility>

#include "formats/MediaSource.h"

namespace {

// Returns the number in the type that chooses plural forms.
unsigned PluralNumber(int64_t count) {
    return static_cast<unsigned>(std::min<int64_t>(count, 2000000000));
}

wxString Counted(const wxString& format, int64_t count) {
    return wxString::Format(format, static_cast<long long>(count));
}

wxString SizeText(int64_t bytes) {
    return wxFileName::GetHumanReadableSize(static_cast<unsigned long long>(bytes), wxString(), 0);
}

// Explains a loss and its number to the user; empty for none.
wxString DescribeLoss(DeckLoss loss, int64_t count) {
    if (count <= 0) {
        return wxString();
    }
    const unsigned number = PluralNumber(count);
    const auto format = [&]() -> wxString {
        switch (loss) {
            case DeckLoss::kPictures:
                return wxPLURAL("%lld picture is left out.", "%lld pictures are left out.", number);
            case DeckLoss::kSounds:
                return wxPLURAL("%lld sound is left out.", "%lld sounds are left out.", number);
            case DeckLoss::kFormulas:
                return wxPLURAL("%lld formula becomes its source text.",
                                "%lld formulas become their source texts.", number);
            case DeckLoss::kEmptySides:
                return wxPLURAL("%lld card is left out, since a side is empty.",
                                "%lld cards are left out, since a side is empty.", number);
            case DeckLoss::kOcclusions:
                return wxPLURAL("%lld card that hides parts of a picture is left out.",
                                "%lld cards that hide parts of a picture are left out.", number);
            case DeckLoss::kTemplatesDropped:
                return wxPLURAL("%lld card is left out, since another asks the same.",
                                "%lld cards are left out, since others ask the same.", number);
            case DeckLoss::kTemplatesSplit:
                return wxPLURAL("%lld further question of a note becomes a card of its own.",
                                "%lld further questions of notes become cards of their own.",
                                number);
            case DeckLoss::kClozesSplit:
                return wxPLURAL("%lld text with several gaps becomes several cards.",
                                "%lld texts with several gaps become several cards.", number);
            case DeckLoss::kHints:
                return wxPLURAL("%lld hint is shown at once or goes into the notes.",
                                "%lld hints are shown at once or go into the notes.", number);
            case DeckLoss::kSuspended:
                return wxPLURAL("%lld suspended direction is excluded from study.",
                                "%lld suspended directions are excluded from study.", number);
            case DeckLoss::kBuried:
                return wxPLURAL("%lld buried card is not put off.",
                                "%lld buried cards are not put off.", number);
            case DeckLoss::kFiltered:
                return wxPLURAL("%lld card goes from a filtered deck into its own.",
                                "%lld cards go from filtered decks into their own.", number);
            case DeckLoss::kSistersApart:
                return wxPLURAL("%lld card has its directions in two decks; the first one counts.",
                                "%lld cards have their directions in two decks; the first one "
                                "counts.",
                                number);
            case DeckLoss::kReviews:
                return wxPLURAL("%lld review of the history is left out.",
                                "%lld reviews of the history are left out.", number);
            case DeckLoss::kClamped:
                return wxPLURAL("%lld interval is shortened.", "%lld intervals are shortened.",
                                number);
            case DeckLoss::kNotesSkipped:
                return wxPLURAL("%lld note has no cards and is left out.",
                                "%lld notes have no cards and are left out.", number);
            case DeckLoss::kCount:
                break;
        }
        return wxString();
    };
    return Counted(format(), count);
}

void SurveyMedia(const DeckFile& file, DeckSurvey& survey) {
    const MediaSource* const media = file.GetMedia().get();
    if (media == nullptr) {
        return;
    }
    survey.Files = media->CountFiles();
    survey.FileBytes = media->CountBytes();
    if (survey.Failure.empty()) {
        survey.Failure = media->FindPassedBound();
        survey.IsTooLarge = !survey.Failure.empty();
    }
}

void ReadDeck(const std::shared_ptr<DeckFile>& file, DeckOptions options, Database& database,
              SurveyProgress& progress, DeckSurvey& survey) {
    const std::unique_ptr<DeckReader> reader =
        MakeDeckReader(file, std::move(options), database, survey.Failure);
    if (reader != nullptr) {
        survey.Types = reader->GetDeck().GetNoteTypes();
        const int32_t start = progress.Position;
        bool hasCard = reader->ReadRecord();
        for (uint32_t i = 0; hasCard && i < reader->GetAttributeCount(); ++i) {
            survey.FirstRecord.push_back(reader->GetAttribute(i));
        }
        for (; hasCard && !progress.IsCancelled; hasCard = reader->SkipRecord()) {
            ++survey.Cards;
            progress.Position = start + static_cast<int32_t>(static_cast<float>(1000 - start) *
                                                             reader->GetProgress());
        }
        survey.Notes = reader->GetDeck().CountNotes();
        survey.Losses = reader->GetDeck().GetLosses();
        survey.Failure = reader->GetFailure();
        survey.IsTooLarge = reader->GetDeck().IsTooLarge();
        SurveyMedia(*file, survey);
    }
}

}  // namespace

DeckSurvey SurveyDeck(const std::shared_ptr<DeckFile>& file, DeckOptions options,
                      Database& database, SurveyProgress& progress) {
    DeckSurvey survey;
    options.IsCancelled = &progress.IsCancelled;
    try {
        ReadDeck(file, std::move(options), database, progress, survey);
    } catch (const std::bad_alloc&) {
        survey.Failure = _("There is not enough memory for the deck.");
    }
    if (progress.IsCancelled) {
        survey.Failure = _("Cancelled");
        survey.IsTooLarge = false;
    }
    return survey;
}

std::vector<wxString> DescribeSurvey(const DeckSurvey& survey) {
    std::vector<wxString> lines;
    lines.push_back(
        Counted(wxPLURAL("%lld note", "%lld notes", PluralNumber(survey.Notes)), survey.Notes));
    lines.push_back(
        Counted(wxPLURAL("%lld card", "%lld cards", PluralNumber(survey.Cards)), survey.Cards));
    if (survey.Files > 0) {
        lines.push_back(wxString::Format(
            wxPLURAL("%lld picture or sound comes along (%s).",
                     "%lld pictures and sounds come along (%s).", PluralNumber(survey.Files)),
            static_cast<long long>(survey.Files), SizeText(survey.FileBytes)));
    }
    for (size_t i = 0; i < survey.Losses.size(); ++i) {
        const wxString loss = DescribeLoss(static_cast<DeckLoss>(i), survey.Losses[i]);
        if (!loss.empty()) {
            lines.push_back(loss);
        }
    }
    return lines;
}
