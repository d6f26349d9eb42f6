#include "fuzz/Mutator.h"

#include <algorithm>
#include <iterator>
#include <utility>

using namespace std::string_literals;

namespace {

// What readers have rules about.
const std::string kTokens[] = {":",
                               "\uFF1A",
                               "\n",
                               "\r",
                               "\r\n",
                               "\n\n",
                               "\"",
                               "\"\"",
                               ",",
                               "\t",
                               ";",
                               "\\",
                               "\\n",
                               "#",
                               "\0"s,
                               "\x04",
                               "\xFF",
                               "\xC3",
                               "\xED\xA0\x80",
                               "\xEF\xBB\xBF",
                               "\xFF\xFE",
                               "\xFE\xFF",
                               "\xD8\x3D",
                               "\u3000",
                               "id",
                               "Front",
                               "f",
                               "Front2",
                               "Category",
                               "Notes",
                               "true",
                               "-1",
                               "4294967295",
                               "1e999",
                               "\n\u3010",
                               "\u3011",
                               "%s%n",
                               "00",
                               "LastReview"};

}  // namespace

Mutator::Mutator(std::vector<std::string> corpus, uint32_t seed)
    : mCorpus(std::move(corpus)), mChance(seed) {}

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
    switch (Pick(7)) {
        case 0:
            bytes.insert(at, kTokens[Pick(std::size(kTokens))]);
            break;
        case 1:
            bytes.replace(at, length, kTokens[Pick(std::size(kTokens))]);
            break;
        case 2:
            bytes.erase(at, length);
            break;
        case 3:
            bytes.insert(Pick(bytes.size() + 1), bytes.substr(at, length));
            break;
        case 4: {
            const std::string& other = mCorpus[Pick(mCorpus.size())];
            bytes.insert(at, other, Pick(other.size()), Pick(200));
            break;
        }
        case 5:
            bytes.resize(at);
            break;
        default:
            if (at < bytes.size()) {
                bytes[at] = static_cast<char>(Pick(256));
            }
            break;
    }
}
