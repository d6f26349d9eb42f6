#pragma once

#include <map>
#include <utility>
#include <vector>

#include "store/CardUuid.h"

// Cards that became one. Of all cards that unions lead to, on whatever computers those were made,
// the one with the smallest identity stays.
class CardUnions {
  public:
    CardUnions() = default;
    explicit CardUnions(const std::vector<std::pair<CardUuid, CardUuid>>& pairs) {
        for (const auto& [one, other] : pairs) {
            CardUuid gone;
            CardUuid stays;
            Add(one, other, gone, stays);
        }
    }

    // Returns the card that stays of those with which this one became one; a card of no union is
    // itself.
    CardUuid Find(const CardUuid& card) const {
        CardUuid stays = card;
        for (auto next = mInto.find(stays); next != mInto.end(); next = mInto.find(stays)) {
            stays = next->second;
        }
        return stays;
    }

    // Joins two. Returns false when they are one already; else gone and stays are what each has
    // become so far.
    bool Add(const CardUuid& one, const CardUuid& other, CardUuid& gone, CardUuid& stays) {
        gone = Find(one);
        stays = Find(other);
        if (gone == stays) {
            return false;
        }
        if (gone < stays) {
            std::swap(gone, stays);
        }
        mInto[gone] = stays;
        return true;
    }

    bool IsEmpty() const { return mInto.empty(); }
    // Returns all cards that are gone, with those that stay.
    std::map<CardUuid, CardUuid> GetGone() const {
        std::map<CardUuid, CardUuid> gone;
        for (const auto& [card, into] : mInto) {
            gone.emplace(card, Find(into));
        }
        return gone;
    }

  private:
    // Each of a smaller identity than its own, so there is no ring.
    std::map<CardUuid, CardUuid> mInto;
};
