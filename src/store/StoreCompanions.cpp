#include "store/StoreCompanions.h"

#include <system_error>

std::filesystem::path Beside(std::filesystem::path store, const char* suffix) {
    return store += suffix;
}

void RemoveCompanions(const std::filesystem::path& store) {
    for (const char* const suffix : kCompanions) {
        std::error_code ignored;
        std::filesystem::remove(Beside(store, suffix), ignored);
    }
}
