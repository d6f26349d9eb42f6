#include "formats/TextEncoding.h"

#include <uchardet/uchardet.h>
#include <wx/intl.h>
#include <wx/stream.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "base/Text.h"
#include "base/Unicode.h"
#include "formats/TextSource.h"

const std::vector<TextEncoding>& GetTextEncodings() {
    static const std::vector<TextEncoding> encodings = {
        {wxFONTENCODING_UTF8, "UTF-8", wxTRANSLATE("All languages")},
        {wxFONTENCODING_UTF16LE, "UTF-16LE", wxTRANSLATE("All languages")},
        {wxFONTENCODING_UTF16BE, "UTF-16BE", wxTRANSLATE("All languages")},
        {wxFONTENCODING_CP1252, "Windows-1252", wxTRANSLATE("Western European")},
        {wxFONTENCODING_ISO8859_1, "ISO-8859-1", wxTRANSLATE("Western European")},
        {wxFONTENCODING_ISO8859_15, "ISO-8859-15", wxTRANSLATE("Western European")},
        {wxFONTENCODING_CP1250, "Windows-1250", wxTRANSLATE("Central European")},
        {wxFONTENCODING_ISO8859_2, "ISO-8859-2", wxTRANSLATE("Central European")},
        {wxFONTENCODING_CP1251, "Windows-1251", wxTRANSLATE("Cyrillic")},
        {wxFONTENCODING_ISO8859_5, "ISO-8859-5", wxTRANSLATE("Cyrillic")},
        {wxFONTENCODING_KOI8, "KOI8-R", wxTRANSLATE("Cyrillic")},
        {wxFONTENCODING_CP1253, "Windows-1253", wxTRANSLATE("Greek")},
        {wxFONTENCODING_ISO8859_7, "ISO-8859-7", wxTRANSLATE("Greek")},
        {wxFONTENCODING_CP1254, "Windows-1254", wxTRANSLATE("Turkish")},
        {wxFONTENCODING_ISO8859_9, "ISO-8859-9", wxTRANSLATE("Turkish")},
        {wxFONTENCODING_CP1255, "Windows-1255", wxTRANSLATE("Hebrew")},
        {wxFONTENCODING_ISO8859_8, "ISO-8859-8", wxTRANSLATE("Hebrew")},
        {wxFONTENCODING_CP1256, "Windows-1256", wxTRANSLATE("Arabic")},
        {wxFONTENCODING_ISO8859_6, "ISO-8859-6", wxTRANSLATE("Arabic")},
        {wxFONTENCODING_CP1257, "Windows-1257", wxTRANSLATE("Baltic")},
        {wxFONTENCODING_ISO8859_13, "ISO-8859-13", wxTRANSLATE("Baltic")},
        {wxFONTENCODING_CP874, "Windows-874", wxTRANSLATE("Thai")},
        {wxFONTENCODING_CP1258, "Windows-1258", wxTRANSLATE("Vietnamese")},
        {wxFONTENCODING_SHIFT_JIS, "Shift_JIS", wxTRANSLATE("Japanese")},
        {wxFONTENCODING_EUC_JP, "EUC-JP", wxTRANSLATE("Japanese")},
        {wxFONTENCODING_ISO2022_JP, "ISO-2022-JP", wxTRANSLATE("Japanese")},
        {wxFONTENCODING_CP936, "GB18030", wxTRANSLATE("Chinese, simplified")},
        {wxFONTENCODING_BIG5, "Big5", wxTRANSLATE("Chinese, traditional")},
        {wxFONTENCODING_EUC_KR, "EUC-KR", wxTRANSLATE("Korean")}};
    return encodings;
}

wxString DescribeEncoding(const TextEncoding& encoding) {
    return wxString::Format("%s (%s)", wxGetTranslation(encoding.Region), encoding.Charset);
}

const char* FindCharset(wxFontEncoding encoding) {
    // The code pages hold all that the standards have and what Windows has added.
    static const struct {
        wxFontEncoding Code;
        const char* Charset;
    } supersets[] = {{wxFONTENCODING_SHIFT_JIS, "CP932"},
                     {wxFONTENCODING_ISO2022_JP, "ISO-2022-JP-3"},
                     {wxFONTENCODING_BIG5, "CP950"},
                     {wxFONTENCODING_EUC_KR, "CP949"},
                     {wxFONTENCODING_CP874, "CP874"}};
    for (const auto& superset : supersets) {
        if (superset.Code == encoding) {
            return superset.Charset;
        }
    }
    for (const TextEncoding& known : GetTextEncodings()) {
        if (known.Code == encoding && known.Code != wxFONTENCODING_CP1252 &&
            known.Code != wxFONTENCODING_UTF8 && known.Code != wxFONTENCODING_UTF16LE &&
            known.Code != wxFONTENCODING_UTF16BE) {
            return known.Charset;
        }
    }
    return nullptr;
}

namespace {

// Enough bytes to recognise any encoding.
constexpr size_t kMostBytes = size_t{1} << 18;

// In UTF-16 every line break, tab and blank has one zero byte, always the same half of the two.
wxFontEncoding RecognizeUtf16(std::string_view bytes) {
    size_t zeros[2] = {};
    for (size_t i = 0; i < bytes.size(); ++i) {
        zeros[i % 2] += size_t{bytes[i] == '\0'};
    }
    const size_t most = std::max(zeros[0], zeros[1]);
    // Zeros that are not halves of characters are rare in a text.
    const bool isPlain = most * 100 >= bytes.size() && std::min(zeros[0], zeros[1]) * 20 <= most;
    if (most == 0 || !isPlain) {
        return wxFONTENCODING_SYSTEM;
    }
    return zeros[0] == most ? wxFONTENCODING_UTF16BE : wxFONTENCODING_UTF16LE;
}

// The text of Japanese mails says by escape sequences which characters come next.
bool IsIso2022Jp(std::string_view bytes) {
    return bytes.find("\x1B$B") != std::string_view::npos ||
           bytes.find("\x1B$@") != std::string_view::npos;
}

bool IsUtf8(std::string_view bytes, bool isCut) {
    bool valid = true;
    const std::vector<uint8_t> copy(bytes.begin(), bytes.end());
    CheckUtf8(copy.data(), copy.size(), !isCut, valid);
    return valid;
}

wxString AskDetector(std::string_view bytes) {
    const std::unique_ptr<uchardet, decltype(&uchardet_delete)> detector(uchardet_new(),
                                                                         &uchardet_delete);
    if (uchardet_handle_data(detector.get(), bytes.data(), bytes.size()) != 0) {
        return wxString();
    }
    uchardet_data_end(detector.get());
    return wxString::FromAscii(uchardet_get_charset(detector.get()));
}

// The detector's names that differ from those of the list, and those that a wider set replaces.
wxFontEncoding EncodingOfName(const wxString& charset) {
    const wxString name = LowerWide(charset);
    static const struct {
        const char* Name;
        wxFontEncoding Code;
    } names[] = {{"shift_jis", wxFONTENCODING_SHIFT_JIS}, {"cp932", wxFONTENCODING_SHIFT_JIS},
                 {"gb18030", wxFONTENCODING_CP936},       {"hz-gb-2312", wxFONTENCODING_CP936},
                 {"uhc", wxFONTENCODING_EUC_KR},          {"cp949", wxFONTENCODING_EUC_KR},
                 {"tis-620", wxFONTENCODING_CP874},       {"iso-8859-11", wxFONTENCODING_CP874},
                 {"mac-cyrillic", wxFONTENCODING_CP1251}};
    for (const auto& row : names) {
        if (name == row.Name) {
            return row.Code;
        }
    }
    for (const TextEncoding& known : GetTextEncodings()) {
        if (name == LowerWide(known.Charset)) {
            return known.Code;
        }
    }
    return wxFONTENCODING_SYSTEM;
}

bool IsWestern(wxFontEncoding code) {
    return code == wxFONTENCODING_CP1252 || code == wxFONTENCODING_ISO8859_1 ||
           code == wxFONTENCODING_ISO8859_15;
}

// Returns whether the bytes are whole characters of the encoding, and none for private use.
bool IsPlausible(std::string_view bytes, wxFontEncoding code) {
    const std::vector<uint8_t> copy(bytes.begin(), bytes.end());
    std::vector<wchar_t> text(bytes.size() + 1);
    wchar_t* end = text.data();
    TextDecoder(code).Decode(copy.data(), copy.size(), bytes.size() < kMostBytes, end);
    return std::none_of(text.data(), end, [](wchar_t character) {
        return character == static_cast<wchar_t>(kReplacement) ||
               (character >= 0xE000 && character <= 0xF8FF);
    });
}

// Short Chinese lists with many Latin letters are taken for Western ones. Their letters outside of
// ASCII always come in pairs; those of Western texts nearly always stand alone.
bool HasOnlyPairs(std::string_view bytes) {
    const auto isHalf = [](char byte) {
        const auto code = static_cast<unsigned char>(byte);
        return code > 0xA0 && code < 0xFF;
    };
    size_t pairs = 0;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (static_cast<unsigned char>(bytes[i]) < 0x80) {
            continue;
        }
        if (!isHalf(bytes[i]) || i + 1 == bytes.size() || !isHalf(bytes[i + 1])) {
            return false;
        }
        ++pairs;
        ++i;
    }
    return pairs > 1;
}

}  // namespace

wxFontEncoding RecognizeEncoding(std::string_view bytes) {
    const wxFontEncoding wide =
        IsIso2022Jp(bytes) ? wxFONTENCODING_ISO2022_JP : RecognizeUtf16(bytes);
    if (wide != wxFONTENCODING_SYSTEM || IsUtf8(bytes, bytes.size() >= kMostBytes)) {
        return wide;
    }
    const wxFontEncoding code = EncodingOfName(AskDetector(bytes));
    const bool isKnown = code != wxFONTENCODING_SYSTEM && !IsWestern(code);
    if (isKnown && IsPlausible(bytes, code)) {
        return code;
    }
    if (isKnown || HasOnlyPairs(bytes)) {
        for (const wxFontEncoding other :
             {wxFONTENCODING_CP936, wxFONTENCODING_BIG5, wxFONTENCODING_EUC_KR}) {
            if (IsPlausible(bytes, other)) {
                return other;
            }
        }
    }
    return isKnown ? code : wxFONTENCODING_SYSTEM;
}

wxFontEncoding RecognizeEncoding(wxInputStream& stream) {
    const wxFileOffset start = stream.TellI();
    std::string bytes(kMostBytes, '\0');
    stream.Read(bytes.data(), bytes.size());
    bytes.resize(stream.LastRead());
    stream.SeekI(start);
    return RecognizeEncoding(bytes);
}

bool IsEncodingCertain(wxFontEncoding encoding) {
    return encoding == wxFONTENCODING_UTF16LE || encoding == wxFONTENCODING_UTF16BE ||
           encoding == wxFONTENCODING_ISO2022_JP;
}

wxFontEncoding FindEncoding(const wxString& charset) {
    return EncodingOfName(charset);
}
