#pragma once

#include <memory>
#include <string>
#include <string_view>

// The library's own name.
struct _GChecksum;  // NOLINT(bugprone-reserved-identifier)

// The SHA-256 of a file's bytes, by which equal pictures and sounds are known on all computers. The
// toolkit's base library computes it, which no other room of the core includes.
class ContentHash {
  public:
    ContentHash();
    void Add(std::string_view bytes);
    // Returns 64 hexadecimal digits in lower case. Nothing can be added after it.
    std::string Get() const;

  private:
    struct Release {
        void operator()(_GChecksum* checksum) const;
    };
    std::unique_ptr<_GChecksum, Release> mpChecksum;
};

// Returns whether a text is what Get returns for some bytes.
bool IsContentHash(std::string_view text);
