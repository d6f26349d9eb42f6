#include "formats/decks/DeckMedia.h"

#include <wx/log.h>
#include <wx/wfstream.h>
#include <wx/zipstrm.h>

#include <nlohmann/json.hpp>

#include <optional>

#include "base/Unicode.h"

namespace {

// Reads the fields of a message one after another: numbers, and parts with a length.
class MessageReader {
  public:
    explicit MessageReader(std::string_view bytes) : mBytes(bytes) {}

    // Returns false at the end, and for what is no message. A part is empty for a number.
    bool Read(uint64_t& field, uint64_t& number, std::string_view& part) {
        uint64_t head = 0;
        part = std::string_view();
        if (!ReadNumber(head)) {
            return false;
        }
        field = head >> 3;
        switch (head & 7) {
            case 0:
                return ReadNumber(number);
            case 1:
                return Take(8, part);
            case 2:
                return ReadNumber(number) && Take(number, part);
            case 5:
                return Take(4, part);
            default:
                return false;
        }
    }

  private:
    bool ReadNumber(uint64_t& number) {
        number = 0;
        for (unsigned shift = 0; shift < 64 && !mBytes.empty(); shift += 7) {
            const auto byte = static_cast<unsigned char>(mBytes.front());
            mBytes.remove_prefix(1);
            number |= uint64_t{byte & 0x7FU} << shift;
            if (byte < 0x80) {
                return true;
            }
        }
        return false;
    }
    bool Take(uint64_t length, std::string_view& part) {
        if (length > mBytes.size()) {
            return false;
        }
        part = mBytes.substr(0, static_cast<size_t>(length));
        mBytes.remove_prefix(static_cast<size_t>(length));
        return true;
    }

    std::string_view mBytes;
};

}  // namespace

std::map<wxString, PackageMedia::Member> ReadMediaNames(const std::string& json,
                                                        const std::map<wxString, int64_t>& sizes) {
    std::map<wxString, PackageMedia::Member> members;
    const auto names = nlohmann::json::parse(json, nullptr, false);
    if (!names.is_object()) {
        return members;
    }
    for (const auto& [member, name] : names.items()) {
        const auto size = sizes.find(FromUtf8(member));
        if (name.is_string() && size != sizes.end()) {
            members[FromUtf8(name.get<std::string>())] = {size->first, size->second};
        }
    }
    return members;
}

std::map<wxString, PackageMedia::Member> ReadMediaEntries(
    const std::string& entries, const std::map<wxString, int64_t>& sizes) {
    std::map<wxString, PackageMedia::Member> members;
    MessageReader list(entries);
    uint64_t field = 0;
    uint64_t number = 0;
    std::string_view entry;
    for (size_t i = 0; list.Read(field, number, entry);) {
        if (field != 1) {
            continue;
        }
        MessageReader reader(entry);
        wxString name;
        uint64_t size = 0;
        std::string_view part;
        while (reader.Read(field, number, part)) {
            name = field == 1 ? FromUtf8(std::string(part)) : name;
            size = field == 2 ? number : size;
        }
        const wxString member = wxString(std::to_string(i++));
        constexpr uint64_t kMostTold = uint64_t{1} << 40;
        if (!name.empty() && sizes.count(member) != 0) {
            members[name] = {member, static_cast<int64_t>(std::min(size, kMostTold))};
        }
    }
    return members;
}

int64_t PackageMedia::Find(const wxString& source) {
    const auto member = mMembers.find(source);
    return member == mMembers.end() ? -1 : member->second.Size;
}

void PackageMedia::ReadAll(const std::set<wxString>& wanted, Sink& sink) {
    const wxLogNull silence;
    std::map<wxString, std::vector<wxString>> byMember;
    for (const wxString& source : wanted) {
        const auto member = mMembers.find(source);
        if (member != mMembers.end()) {
            byMember[member->second.Name].push_back(source);
        }
    }
    wxFileInputStream file(mPath);
    wxZipInputStream zip(file);
    std::vector<char> block(size_t{1} << 16);
    while (file.IsOk() && sink.GoesOn()) {
        const std::unique_ptr<wxZipEntry> entry(zip.GetNextEntry());
        if (entry == nullptr) {
            break;
        }
        const auto sources = byMember.find(entry->GetInternalName());
        // A member has one name as a rule; further ones are left out.
        if (sources == byMember.end() || !sink.Begin(sources->second.front())) {
            continue;
        }
        // It takes more time to make than a small file takes to write.
        std::optional<Decompressor> decompressor;
        if (mIsCompressed) {
            decompressor.emplace();
        }
        const auto take = [&sink](const char* bytes, size_t count) {
            return sink.Write(bytes, count);
        };
        bool isFine = true;
        while (isFine) {
            zip.Read(block.data(), block.size());
            const size_t count = zip.LastRead();
            if (count == 0) {
                break;
            }
            isFine = decompressor ? decompressor->Write(block.data(), count, take) == nullptr
                                  : take(block.data(), count);
        }
        const bool isWhole = zip.GetLastError() == wxSTREAM_EOF || zip.Eof();
        if (isFine && isWhole && (!decompressor || decompressor->IsComplete())) {
            sink.End();
        } else {
            sink.Drop();
        }
    }
}
