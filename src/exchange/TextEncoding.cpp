#include "exchange/TextEncoding.h"

#include <wx/stream.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "exchange/TextDecoder.h"

namespace {

// Reads past the bytes of a mark, or leaves the stream where it is.
bool ReadMark(wxInputStream& stream, std::initializer_list<uint8_t> mark) {
    const wxFileOffset start = stream.TellI();
    for (const uint8_t expected : mark) {
        uint8_t byte = 0;
        stream.Read(&byte, 1);
        if (stream.LastRead() != 1 || byte != expected) {
            stream.SeekI(start);
            return false;
        }
    }
    return true;
}

}  // namespace

wxFontEncoding DetectTextEncoding(wxInputStream& stream) {
    if (ReadMark(stream, {0xEF, 0xBB, 0xBF})) {
        return wxFONTENCODING_UTF8;
    }
    if (ReadMark(stream, {0xFF, 0xFE})) {
        return wxFONTENCODING_UTF16LE;
    }
    if (ReadMark(stream, {0xFE, 0xFF})) {
        return wxFONTENCODING_UTF16BE;
    }
    return wxFONTENCODING_SYSTEM;
}

wxFontEncoding GuessTextEncoding(wxInputStream& stream, wxFileOffset limit) {
    const wxFileOffset start = stream.TellI();
    std::vector<uint8_t> bytes(size_t{1} << 16);
    size_t held = 0;
    bool last = false;
    bool valid = true;
    wxFileOffset left = limit;
    while (!last && valid && (limit == wxInvalidOffset || left > 0)) {
        stream.Read(bytes.data() + held, bytes.size() - held);
        last = stream.LastRead() == 0;
        held += stream.LastRead();
        left -= static_cast<wxFileOffset>(stream.LastRead());
        const size_t seen = CheckUtf8(bytes.data(), held, last, valid);
        std::copy(bytes.data() + seen, bytes.data() + held, bytes.data());
        held -= seen;
    }
    stream.SeekI(start);
    return valid ? wxFONTENCODING_UTF8 : wxFONTENCODING_CP1252;
}
