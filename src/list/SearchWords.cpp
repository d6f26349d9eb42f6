#include "list/SearchWords.h"

#include <wx/intl.h>

#include <cmath>
#include <cstddef>

#include "scheduler/ReviewArithmetic.h"

namespace {

using Kind = SearchTerm::Kind;

// In the order of CardState.
constexpr const char* kStateNames[] = {wxTRANSLATE("Due Cards"),    wxTRANSLATE("New Cards"),
                                       wxTRANSLATE("Failed Cards"), wxTRANSLATE("Excluded Cards"),
                                       wxTRANSLATE("Same Fronts"),  wxTRANSLATE("Hardest Cards")};

// In the order of SearchTerm::Field.
constexpr const char* kFieldNames[] = {"",
                                       wxTRANSLATE("Front"),
                                       wxTRANSLATE("Back"),
                                       wxTRANSLATE("Notes"),
                                       wxTRANSLATE("Author"),
                                       wxTRANSLATE("Chapter"),
                                       wxTRANSLATE("Category")};

wxString Quoted(const wxString& text) {
    return wxString::Format(_("\"%s\""), text);
}

wxString SpanInWords(int64_t seconds) {
    const IntervalInUnits span = SplitInterval(static_cast<float>(std::abs(seconds)));
    return wxString::Format("%g %s", static_cast<double>(std::copysign(span.Value, seconds)),
                            IntervalUnitName(span.Unit));
}

wxString WithoutSign(const SearchTerm& term) {
    switch (term.What) {
        case Kind::kText:
            return term.In == SearchTerm::Field::kAny
                       ? Quoted(term.Text)
                       : wxGetTranslation(kFieldNames[static_cast<size_t>(term.In)]) + ": " +
                             Quoted(term.Text);
        case Kind::kState:
            return NameOfState(term.State) + (term.State == CardState::kHard
                                                  ? wxString::Format(" (%i)", term.Hardest)
                                                  : wxString());
        case Kind::kDue:
            return _("Next Review") + " " + term.Comparison + " " + SpanInWords(term.Seconds);
        case Kind::kInterval:
            return _("Interval") + " " + term.Comparison + " " + SpanInWords(term.Seconds);
    }
    return wxString();
}

}  // namespace

wxString NameOfState(CardState state) {
    return wxGetTranslation(kStateNames[static_cast<size_t>(state)]);
}

wxString SearchInWords(const SearchQuery& query) {
    if (query.IsExact()) {
        return query.IsEmpty() ? wxString() : Quoted(query.GetText());
    }
    wxString words;
    for (const SearchTerm& term : query.GetTerms()) {
        wxString word = WithoutSign(term);
        if (term.Direction.has_value()) {
            word += " (" +
                    (*term.Direction == kReviewReverse ? _("Back to Front") : _("Front to Back")) +
                    ")";
        }
        words += (words.empty() ? "" : ", ") +
                 (term.IsExcluded ? wxString::Format(_("not %s"), word) : word);
    }
    return words;
}
