#pragma once

#include <random>
#include <string>
#include <vector>

// Changes the bytes of files by chance: the same seed gives the same changes everywhere.
class Mutator {
  public:
    Mutator(std::vector<std::string> corpus, uint32_t seed);

    // The file of that index with some of its bytes changed.
    std::string Change(size_t file);
    // A number from 0 to below the limit.
    size_t Pick(size_t limit);

  private:
    void ChangeOnce(std::string& bytes);

    std::vector<std::string> mTokens;
    std::vector<std::string> mCorpus;
    std::mt19937 mChance;
};
