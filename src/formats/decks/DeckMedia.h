#pragma once

#include <wx/string.h>
#include <zstd.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "formats/MediaSource.h"

// Decompresses a stream piece by piece.
class Decompressor {
  public:
    Decompressor() : mpStream(ZSTD_createDStream()), mOut(ZSTD_DStreamOutSize()) {}
    ~Decompressor() { ZSTD_freeDStream(mpStream); }
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;

    // Gives what comes out to a function, which returns false to stop. Returns the error's name, or
    // null for none.
    template <class Function>
    const char* Write(const char* bytes, size_t count, Function take) {
        ZSTD_inBuffer in{bytes, count, 0};
        for (;;) {
            ZSTD_outBuffer out{mOut.data(), mOut.size(), 0};
            mLast = ZSTD_decompressStream(mpStream, &out, &in);
            if (ZSTD_isError(mLast) != 0) {
                return ZSTD_getErrorName(mLast);
            }
            // A full buffer may hide that there is more.
            if (!take(mOut.data(), out.pos) || (in.pos == in.size && out.pos < out.size)) {
                return nullptr;
            }
        }
    }
    bool IsComplete() const { return mLast == 0; }

  private:
    ZSTD_DStream* mpStream;
    std::vector<char> mOut;
    size_t mLast = 1;
};

// The pictures and sounds in a package. Its members are only read when they are wanted.
class PackageMedia : public MediaSource {
  public:
    struct Member {
        wxString Name;
        int64_t Size = 0;
    };

    // The members by the names that cards have for them. Compressed ones are so by themselves,
    // within the package.
    PackageMedia(const wxString& path, std::map<wxString, Member> members, bool isCompressed)
        : MediaSource(Missing::kDropped),
          mPath(path),
          mMembers(std::move(members)),
          mIsCompressed(isCompressed) {}

  protected:
    int64_t Find(const wxString& source) override;
    void ReadAll(const std::set<wxString>& wanted, Sink& sink) override;

  private:
    const wxString mPath;
    const std::map<wxString, Member> mMembers;
    const bool mIsCompressed;
};

// Read the list of the files in a package of Anki, in either form that it is written in. The sizes
// are those of the members, by their names. A list that makes no sense gives no files.
std::map<wxString, PackageMedia::Member> ReadMediaNames(const std::string& json,
                                                        const std::map<wxString, int64_t>& sizes);
std::map<wxString, PackageMedia::Member> ReadMediaEntries(const std::string& entries,
                                                          const std::map<wxString, int64_t>& sizes);
