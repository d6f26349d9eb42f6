#include "media/MediaLines.h"

#include <algorithm>
#include <string>

#include "base/Text.h"
#include "base/Unicode.h"

namespace {

struct KindRow {
    MediaKind Kind;
    std::wstring_view Begin;
    wchar_t Mark;
};

// The marks are a picture in a frame and a note, which the fonts of every desktop have.
constexpr KindRow kKinds[] = {{MediaKind::kPicture, L"[picture:", L'\u25A8'},
                              {MediaKind::kSound, L"[sound:", L'\u266A'}};

const KindRow& RowOf(MediaKind kind) {
    return kKinds[kind == MediaKind::kPicture ? 0 : 1];
}

bool ReadLine(std::wstring_view line, MediaLine& found) {
    line = TrimView(line);
    for (const KindRow& row : kKinds) {
        if (line.substr(0, row.Begin.size()) != row.Begin || line.back() != L']') {
            continue;
        }
        line.remove_prefix(row.Begin.size());
        line.remove_suffix(1);
        found.Kind = row.Kind;
        found.Name = wxString(std::wstring(TrimView(line)));
        return IsSafeMediaName(found.Name);
    }
    return false;
}

// Characters that some system does not have in a name, or that our line could not hold.
bool IsForbidden(wchar_t character) {
    const uint32_t code = wxUniChar(character).GetValue();
    const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    // Marks of direction and width that are not seen, separators of lines, and what is no
    // character.
    const bool isHidden = (code >= 0x200B && code <= 0x200F) ||
                          (code >= 0x2028 && code <= 0x202E) ||
                          (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF ||
                          (code & 0xFFFEU) == 0xFFFE || !IsScalarValue(code);
    return isControl || isHidden ||
           std::wstring_view(L"/\\:*?\"<>|[]").find(character) != std::wstring_view::npos;
}

// Names that stand for a device on some systems, whatever their extension.
bool IsDevice(const wxString& name) {
    const wxString stem = LowerWide(name.BeforeFirst('.'));
    for (const char* const device : {"con", "prn", "aux", "nul"}) {
        if (stem == device) {
            return true;
        }
    }
    return stem.length() == 4 && (stem.StartsWith("com") || stem.StartsWith("lpt")) &&
           stem[3] >= '0' && stem[3] <= '9';
}

bool HasExtension(const wxString& name, std::initializer_list<const char*> extensions) {
    const wxString extension = LowerWide(name.AfterLast('.'));
    return name.Contains(".") &&
           std::any_of(extensions.begin(), extensions.end(),
                       [&extension](const char* known) { return extension == known; });
}

wxString MakeNamedMark(const MediaLine& line) {
    return wxString(RowOf(line.Kind).Mark) + " " + line.Name;
}

// Cuts a text to at most that many bytes of UTF-8, between two characters.
wxString CutToBytes(wxString text, size_t most) {
    while (ToUtf8(text).size() > most) {
        text.RemoveLast();
    }
    return text;
}

}  // namespace

bool MayHaveMediaLine(std::wstring_view text) {
    for (size_t at = text.find(L'['); at != std::wstring_view::npos; at = text.find(L'[', at + 1)) {
        for (const KindRow& row : kKinds) {
            if (text.compare(at, row.Begin.size(), row.Begin) == 0) {
                return true;
            }
        }
    }
    return false;
}

bool MayHaveMediaLine(std::u16string_view text) {
    return text.find(u"[picture:") != std::u16string_view::npos ||
           text.find(u"[sound:") != std::u16string_view::npos;
}

std::vector<MediaLine> FindMediaLines(const wxString& text) {
    std::vector<MediaLine> lines;
    const std::wstring_view whole(text.wc_str(), text.length());
    if (!MayHaveMediaLine(whole)) {
        return lines;
    }
    for (size_t at = 0; at < whole.size();) {
        const size_t end = std::min(whole.find_first_of(L"\r\n", at), whole.size());
        MediaLine line;
        if (end > at && ReadLine(whole.substr(at, end - at), line)) {
            line.Begin = at;
            line.End = end;
            lines.push_back(line);
        }
        at = end + 1;
    }
    return lines;
}

wxString MakeMediaLine(MediaKind kind, const wxString& name) {
    return wxString(std::wstring(RowOf(kind).Begin)) + L" " + name + L"]";
}

wxString ReplaceMediaLines(const wxString& text,
                           const std::function<wxString(const MediaLine&)>& replace) {
    const std::vector<MediaLine> lines = FindMediaLines(text);
    if (lines.empty()) {
        return text;
    }
    wxString result;
    size_t at = 0;
    for (const MediaLine& line : lines) {
        const wxString other = replace(line);
        result += text.Mid(at, line.Begin - at) + other;
        at = line.End;
        if (other.empty()) {
            // The break after the line, or else the one before it, goes too.
            const bool isLast = at == text.length();
            at += !isLast && text[at] == '\r' ? 1U : 0U;
            at += at < text.length() && text[at] == '\n' ? 1U : 0U;
            if (isLast && result.EndsWith("\n")) {
                result.RemoveLast();
                if (result.EndsWith("\r")) {
                    result.RemoveLast();
                }
            }
        }
    }
    return result + text.Mid(at);
}

wxString WithoutMediaLines(const wxString& text) {
    return ReplaceMediaLines(text, [](const MediaLine&) { return wxString(); });
}

wxString WithMediaMarks(const wxString& text) {
    return ReplaceMediaLines(text,
                             [](const MediaLine& line) { return wxString(RowOf(line.Kind).Mark); });
}

wxString WithNamedMediaMarks(const wxString& text) {
    return ReplaceMediaLines(text, MakeNamedMark);
}

wxString WithSharedMediaMarks(const wxString& text, const wxString& other) {
    const std::vector<MediaLine> others = FindMediaLines(other);
    return ReplaceMediaLines(text, [&](const MediaLine& line) {
        const bool isShared =
            std::any_of(others.begin(), others.end(), [&line](const MediaLine& each) {
                return each.Kind == line.Kind && each.Name == line.Name;
            });
        return isShared ? MakeNamedMark(line) : text.Mid(line.Begin, line.End - line.Begin);
    });
}

bool IsSafeMediaName(const wxString& name) {
    if (name.empty() || ToUtf8(name).size() > kLongestMediaName || IsDevice(name) ||
        name[0] == '.' || name.Last() == '.' || TrimWide(name).length() != name.length()) {
        return false;
    }
    const std::wstring_view view(name.wc_str(), name.length());
    return name.Contains(".") && std::none_of(view.begin(), view.end(), IsForbidden);
}

wxString MakeSafeMediaName(const wxString& name) {
    wxString safe;
    // What stands before a slash is a path.
    const wxString last = name.AfterLast('/').AfterLast('\\');
    for (const wxUniChar character : last) {
        safe +=
            IsForbidden(static_cast<wchar_t>(character.GetValue())) ? wxUniChar('_') : character;
    }
    safe = TrimWide(safe);
    while (safe.StartsWith(".")) {
        safe = TrimWide(safe.Mid(1));
    }
    while (safe.EndsWith(".")) {
        safe = TrimWide(safe.Left(safe.length() - 1));
    }
    constexpr size_t kLongestExtension = 16;
    wxString extension =
        safe.Contains(".") ? "." + TrimWide(safe.AfterLast('.')) : wxString(".bin");
    wxString stem = safe.Contains(".") ? safe.BeforeLast('.') : safe;
    if (ToUtf8(extension).size() > kLongestExtension) {
        stem += extension;
        extension = ".bin";
    }
    stem = TrimWide(CutToBytes(stem, kLongestMediaName - kLongestExtension));
    if (stem.empty() || IsDevice(stem)) {
        stem = "file" + stem;
    }
    return stem + extension;
}

wxString NumberedMediaName(const wxString& name, int number) {
    if (number <= 1) {
        return name;
    }
    const wxString end = wxString::Format("-%i.", number) + name.AfterLast('.');
    const size_t room = kLongestMediaName - ToUtf8(end).size();
    return TrimWide(CutToBytes(name.BeforeLast('.'), room)) + end;
}

bool HasPictureName(const wxString& name) {
    return HasExtension(name, {"png", "jpg", "jpeg", "gif", "webp", "svg"});
}

bool HasSoundName(const wxString& name) {
    return HasExtension(name, {"ogg", "oga", "opus", "mp3", "wav", "flac"});
}
