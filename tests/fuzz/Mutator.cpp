#include "fuzz/Mutator.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace {

// What readers have rules about, with one byte that is in none of them between.
constexpr char kTokens[] =
    ":|\uFF1A|\n|\r|\r\n|\n\n|\"|\"\"|,|\t|;|\\|\\n|#|\x04|\xFF|\xC3|\xED\xA0\x80|\xEF\xBB\xBF|"
    "\xFF\xFE|\xFE\xFF|\xD8\x3D|\u3000|id|Front|f|Front2|Category|Notes|true|-1|4294967295|1e999|"
    "\n\u3010|\u3011|%s%n|00|LastReview|";

std::vector<std::string> SplitTokens() {
    // A text in C cannot hold the zero.
    std::vector<std::string> tokens{std::string(1, '\0')};
    std::istringstream text(kTokens);
    for (std::string token; std::getline(text, token, '|');) {
        tokens.push_back(token);
    }
    return tokens;
}

}  // namespace

Mutator::Mutator(std::vector<std::string> corpus, uint32_t seed)
    : mTokens(SplitTokens()), mCorpus(std::move(corpus)), mChance(seed) {}

// The library's distributions differ from one platform to the next.
size_t Mutator::Pick(size_t limit) {
    return limit == 0 ? 0 : mChance() % limit;
}

std::string Mutator::Change(size_t file) {
    std::string bytes = mCorpus[file];
    // Mostly few, or hardly a file would get past its first fault.
    for (size_t changes = 1 + Pick(1 + Pick(8)); changes > 0; --changes) {
        ChangeOnce(bytes);
    }
    return bytes;
}

void Mutator::ChangeOnce(std::string& bytes) {
    const size_t at = Pick(bytes.size() + 1);
    const size_t length = Pick(std::min<size_t>(bytes.size() - at, 40) + 1);
    const std::string& token = mTokens[Pick(mTokens.size())];
    const std::string& other = mCorpus[Pick(mCorpus.size())];
    switch (Pick(7)) {
        case 0:
            bytes.insert(at, token);
            break;
        case 1:
            bytes.replace(at, length, token);
            break;
        case 2:
            bytes.erase(at, length);
            break;
        case 3:
            bytes.insert(Pick(bytes.size() + 1), bytes.substr(at, length));
            break;
        case 4:
            bytes.insert(at, other, Pick(other.size()), Pick(200));
            break;
        case 5:
            bytes.resize(at);
            break;
        default:
            bytes.replace(at, 1, 1, static_cast<char>(Pick(256)));
            break;
    }
}
