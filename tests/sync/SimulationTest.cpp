#include "sync/Simulation.h"

#include <gtest/gtest.h>

#include <cstdlib>

// The suite runs a few courses; more on demand, with VELOMIND_FIRST_SEED and VELOMIND_SEEDS.

namespace {

int NumberFrom(const char* variable, int otherwise) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise : std::atoi(text);
}

std::string RunSeed(uint32_t seed, bool ExchangeRules::*without = nullptr) {
    Simulation::Options options;
    options.Seed = seed;
    if (without != nullptr) {
        options.Rules.*without = false;
    } else if (seed % 4 == 0) {
        options.LeastMachines = 2;
    }
    Simulation simulation(options);
    return simulation.Run();
}

// Something is lost in this course without the rule. ExchangeTest has the others.
struct NeededRule {
    const char* Name;
    bool ExchangeRules::*Rule;
    uint32_t Seed;
};
constexpr NeededRule kNeeded[] = {
    {"WaitsForOthers", &ExchangeRules::WaitsForOthers, 1},
    {"KeepsCopy", &ExchangeRules::KeepsCopy, 1},
    {"BringsBack", &ExchangeRules::BringsBack, 1},
    {"FoldsReviews", &ExchangeRules::FoldsReviews, 1},
    {"NoticesGoneBack", &ExchangeRules::NoticesGoneBack, 3},
    {"ListsLostTexts", &ExchangeRules::ListsLostTexts, 22},
    {"JoinsEqualCards", &ExchangeRules::JoinsEqualCards, 132},
};

}  // namespace

TEST(ExchangeSimulation, EndsWithTheSameCardsAndAllReviewsEverywhere) {
    const int first = NumberFrom("VELOMIND_FIRST_SEED", 1);
    for (int seed = first; seed < first + NumberFrom("VELOMIND_SEEDS", 12); ++seed) {
        ASSERT_EQ(RunSeed(static_cast<uint32_t>(seed)), "") << "seed " << seed;
    }
}

TEST(ExchangeSimulation, NeedsEachOfItsRules) {
    for (const NeededRule& needed : kNeeded) {
        EXPECT_NE(RunSeed(needed.Seed, needed.Rule), "") << needed.Name;
    }
}
