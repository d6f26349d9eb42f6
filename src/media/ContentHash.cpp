#include "media/ContentHash.h"

#include <glib.h>

void ContentHash::Release::operator()(_GChecksum* checksum) const {
    g_checksum_free(checksum);
}

ContentHash::ContentHash() : mpChecksum(g_checksum_new(G_CHECKSUM_SHA256)) {}

void ContentHash::Add(std::string_view bytes) {
    g_checksum_update(mpChecksum.get(),
                      static_cast<const guchar*>(static_cast<const void*>(bytes.data())),
                      static_cast<gssize>(bytes.size()));
}

std::string ContentHash::Get() const {
    return g_checksum_get_string(mpChecksum.get());
}

bool IsContentHash(std::string_view text) {
    return text.size() == 64 &&
           text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}
