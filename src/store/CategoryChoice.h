#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

// What is listed and studied when a category is chosen: its cards and those of the categories below
// it. Made from the names by FindChoice (store/CategoryTree.h); the store and the settings keep the
// chosen id alone. An id by itself is a choice of that category without any below.
struct CategoryChoice {
    CategoryChoice(int32_t id = -1) : Id(id) {}

    bool IsMany() const { return !Below.empty(); }
    bool Has(int32_t id) const {
        return id == Id || std::find(Below.begin(), Below.end(), id) != Below.end();
    }
    // Calls a function for each category, the chosen one first, for as long as it returns true.
    template <typename Function>
    bool ForEach(const Function& visit) const {
        return visit(Id) && std::all_of(Below.begin(), Below.end(), visit);
    }

    int32_t Id;
    // In the order in which the drop-down of categories shows them.
    std::vector<int32_t> Below;
};
