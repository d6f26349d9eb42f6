#include "shell/ExchangeSettings.h"

#include <wx/filename.h>
#include <wx/utils.h>

#include <cstdint>

#include "base/Unicode.h"
#include "shell/Settings.h"

namespace {

constexpr char kSettingName[] = "ExchangeName";
// Ends with a number that the path of the store makes.
constexpr char kSettingFolder[] = "ExchangeFolder";

wxString FolderKey(const wxString& storePath) {
    // FNV-1a, as keys of settings must not have every character that a path can have.
    uint64_t number = 0xcbf29ce484222325;
    for (const char byte : ToUtf8(storePath)) {
        number = (number ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    }
    return wxString::Format("%s%016llx", kSettingFolder, static_cast<unsigned long long>(number));
}

}  // namespace

ExchangeSetUp ReadExchangeSetUp(const wxString& storePath) {
    ExchangeSetUp setUp{ReadStringSetting(FolderKey(storePath)), ReadStringSetting(kSettingName)};
    if (setUp.Name.empty()) {
        setUp.Name = wxGetHostName();
    }
    if (setUp.Name.empty()) {
        setUp.Name = "Velomind";
    }
    return setUp;
}

void WriteExchangeSetUp(const wxString& storePath, const ExchangeSetUp& setUp) {
    if (setUp.Folder.empty()) {
        RemoveSetting(FolderKey(storePath));
    } else {
        WriteStringSetting(FolderKey(storePath), setUp.Folder);
    }
    // A computer that gets another name later shows that one.
    if (setUp.Name.empty() || setUp.Name == wxGetHostName()) {
        RemoveSetting(kSettingName);
    } else {
        WriteStringSetting(kSettingName, setUp.Name);
    }
}

void FollowMovedStore(const wxString& formerPath, const wxString& storePath) {
    if (formerPath == storePath || wxFileName::FileExists(formerPath)) {
        return;
    }
    const ExchangeSetUp former = ReadExchangeSetUp(formerPath);
    if (!former.Folder.empty()) {
        WriteExchangeSetUp(storePath, former);
        WriteExchangeSetUp(formerPath, {wxString(), former.Name});
    }
}
