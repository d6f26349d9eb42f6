#include "formats/decks/AnkiPlan.h"

#include <algorithm>
#include <utility>

std::set<size_t> FieldSet(const std::vector<ShownField>& shown) {
    std::set<size_t> fields;
    for (const ShownField& field : shown) {
        fields.insert(field.Field);
    }
    return fields;
}

namespace {

bool Meet(const std::set<size_t>& one, const std::set<size_t>& other) {
    return std::any_of(one.begin(), one.end(),
                       [&other](size_t field) { return other.count(field) != 0; });
}

// Returns each field once, without hints and, in a question, without those to type into.
std::vector<ShownField> Visible(const std::vector<ShownField>& shown, bool isQuestion) {
    std::vector<ShownField> visible;
    std::set<size_t> seen;
    for (const ShownField& field : shown) {
        if (!field.IsHint && !(isQuestion && field.IsTyped) && seen.insert(field.Field).second) {
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
        for (const size_t field : mShown) {
            mPlan.Switches.erase(field);
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
                mPlan.WithReadings.insert(field.Field);
            }
            mPlan.Hints += field.IsHint ? 1 : 0;
        }
    }

    void NoteSwitches(const std::vector<ShownField>& shown) {
        for (const ShownField& field : shown) {
            mShown.insert(field.Field);
            for (const ShownField::Condition& condition : field.Conditions) {
                mPlan.Switches.insert(condition.Field);
            }
        }
    }

    std::vector<ShownField> BackOf(size_t forward) const {
        const std::set<size_t> asked = FieldSet(mQuestions[forward]);
        std::vector<ShownField> back;
        for (const ShownField& field : mAnswers[forward]) {
            if (asked.count(field.Field) == 0) {
                back.push_back(field);
            }
        }
        if (back.empty() && mType.Fields.size() > 1) {
            ShownField second;
            second.Field = asked.count(1) == 0 ? 1 : 0;
            back.push_back(second);
        }
        return back;
    }

    bool IsMirror(const TemplatePair& pair, size_t candidate) const {
        const std::set<size_t> front = FieldSet(pair.Front);
        const std::set<size_t> asked = FieldSet(mQuestions[candidate]);
        return !Meet(front, asked) && Meet(asked, FieldSet(pair.Back)) &&
               Meet(FieldSet(mAnswers[candidate]), front);
    }

    void MakePair(size_t forward, std::set<size_t>& taken) {
        TemplatePair pair;
        pair.Forward = forward;
        pair.Front = mQuestions[forward];
        pair.Back = BackOf(forward);
        const std::set<size_t> front = FieldSet(pair.Front);
        for (size_t i = forward + 1; i < mQuestions.size(); ++i) {
            if (taken.count(i) != 0) {
                continue;
            }
            if (FieldSet(mQuestions[i]) == front) {
                pair.Same.push_back(i);
                taken.insert(i);
            } else if (pair.Reverse == kNoField && IsMirror(pair, i)) {
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
        const std::set<size_t> front = FieldSet(pair.Front);
        const std::set<size_t> back = FieldSet(pair.Back);
        const std::set<size_t> other = FieldSet(mAnswers[pair.Reverse]);
        for (const size_t field : FieldSet(mAnswers[pair.Forward])) {
            if (other.count(field) != 0 && front.count(field) == 0 && back.count(field) == 0) {
                pair.Second.push_back(field);
            }
        }
    }

    const AnkiNoteType& mType;
    std::vector<std::vector<ShownField>> mQuestions;
    std::vector<std::vector<ShownField>> mAnswers;
    std::set<size_t> mShown;
    TypePlan mPlan;
};

}  // namespace

TypePlan MakeTypePlan(const AnkiNoteType& type) {
    return Planner(type).Make();
}
