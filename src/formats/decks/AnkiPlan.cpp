#include "formats/decks/AnkiPlan.h"

#include <set>
#include <utility>

FieldBits FieldSet(const std::vector<ShownField>& shown) {
    FieldBits fields;
    for (const ShownField& field : shown) {
        fields.set(field.Field);
    }
    return fields;
}

namespace {

bool Meet(const FieldBits& one, const FieldBits& other) {
    return (one & other).any();
}

// Returns each field once, without hints and, in a question, without those to type into.
std::vector<ShownField> Visible(const std::vector<ShownField>& shown, bool isQuestion) {
    std::vector<ShownField> visible;
    FieldBits seen;
    for (const ShownField& field : shown) {
        if (!field.IsHint && !(isQuestion && field.IsTyped) && !seen[field.Field]) {
            seen.set(field.Field);
            visible.push_back(field);
        }
    }
    return visible;
}

// Finds out how the templates of a type belong together. The forward direction is a template that
// asks with its own fields; its mirror swaps question and answer.
class Planner {
  public:
    explicit Planner(const AnkiNoteType& type) : mType(type) {}

    TypePlan Make() {
        for (const AnkiTemplateText& source : mType.Templates) {
            const auto question = ParseTemplate(source.Question, mType.Fields);
            const auto answer = ParseTemplate(source.Answer, mType.Fields);
            NoteFilters(question);
            NoteFilters(answer);
            NoteSwitches(question);
            NoteSwitches(answer);
            mQuestions.push_back(Visible(question, true));
            mAnswers.push_back(Visible(answer, false));
            if (mQuestions.back().empty() && !mType.Fields.empty()) {
                mQuestions.back().push_back(ShownField());
            }
        }
        mPlan.Switches &= ~mShown;
        for (const auto& question : mQuestions) {
            mAsked.push_back(FieldSet(question));
        }
        for (const auto& answer : mAnswers) {
            mAnswered.push_back(FieldSet(answer));
        }
        std::set<size_t> taken;
        for (size_t i = 0; i < mQuestions.size(); ++i) {
            if (taken.insert(i).second) {
                MakePair(i, taken);
            }
        }
        return std::move(mPlan);
    }

  private:
    void NoteFilters(const std::vector<ShownField>& shown) {
        using Filter = ShownField::Filter;
        for (const ShownField& field : shown) {
            if (field.How == Filter::kCloze) {
                mPlan.ClozeField = field.Field;
            } else if (field.How != Filter::kNone) {
                mPlan.WithReadings.set(field.Field);
            }
            mPlan.Hints += field.IsHint ? 1 : 0;
        }
    }

    void NoteSwitches(const std::vector<ShownField>& shown) {
        for (const ShownField& field : shown) {
            mShown.set(field.Field);
            if (field.Within != nullptr) {
                mPlan.Switches |= field.Within->Filled | field.Within->Empty;
            }
        }
    }

    std::vector<ShownField> BackOf(size_t forward) const {
        const FieldBits& asked = mAsked[forward];
        std::vector<ShownField> back;
        for (const ShownField& field : mAnswers[forward]) {
            if (!asked[field.Field]) {
                back.push_back(field);
            }
        }
        if (back.empty() && mType.Fields.size() > 1) {
            ShownField second;
            second.Field = asked[1] ? 0 : 1;
            back.push_back(second);
        }
        return back;
    }

    bool IsMirror(const FieldBits& front, const FieldBits& back, size_t candidate) const {
        return !Meet(front, mAsked[candidate]) && Meet(mAsked[candidate], back) &&
               Meet(mAnswered[candidate], front);
    }

    void MakePair(size_t forward, std::set<size_t>& taken) {
        TemplatePair pair;
        pair.Forward = forward;
        pair.Front = mQuestions[forward];
        pair.Back = BackOf(forward);
        const FieldBits& front = mAsked[forward];
        const FieldBits back = FieldSet(pair.Back);
        for (size_t i = forward + 1; i < mQuestions.size(); ++i) {
            if (taken.count(i) != 0) {
                continue;
            }
            if (mAsked[i] == front) {
                pair.Same.push_back(i);
                taken.insert(i);
            } else if (pair.Reverse == kNoField && IsMirror(front, back, i)) {
                pair.Reverse = i;
                taken.insert(i);
            }
        }
        if (pair.Reverse != kNoField) {
            pair.Back = mQuestions[pair.Reverse];
            FindSecond(pair);
        }
        mPlan.Pairs.push_back(std::move(pair));
    }

    void FindSecond(TemplatePair& pair) const {
        const FieldBits second = mAnswered[pair.Forward] & mAnswered[pair.Reverse] &
                                 ~FieldSet(pair.Front) & ~FieldSet(pair.Back);
        for (size_t field = 0; field < mType.Fields.size(); ++field) {
            if (second[field]) {
                pair.Second.push_back(field);
            }
        }
    }

    const AnkiNoteType& mType;
    std::vector<std::vector<ShownField>> mQuestions;
    std::vector<std::vector<ShownField>> mAnswers;
    // The fields of the questions and answers.
    std::vector<FieldBits> mAsked;
    std::vector<FieldBits> mAnswered;
    FieldBits mShown;
    TypePlan mPlan;
};

}  // namespace

TypePlan MakeTypePlan(const AnkiNoteType& type) {
    return Planner(type).Make();
}
