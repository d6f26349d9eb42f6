#include "base/Time.h"

#include <gtest/gtest.h>
#include <wx/translation.h>

namespace {

// The language comes from our catalogue, so the locale need not be installed.
TEST(Time, DatesHaveTheNamesOfTheLanguageShown) {
    wxFileTranslationsLoader::AddCatalogLookupPathPrefix(VELOMIND_CATALOGUES);
    const wxDateTime monday(30, wxDateTime::Mar, 2026, 14, 5);
    const struct {
        const char* Language;
        const wchar_t* ThisYear;
        const wchar_t* OtherYear;
    } cases[] = {
        {"en", L"Mon 30 Mar 14:05", L"Mon 30 Mar 2026 14:05"},
        {"de", L"Mo 30. M\u00e4r 14:05", L"Mo 30. M\u00e4r 2026 14:05"},
        {"ja", L"3\u670830\u65e5 (\u6708) 14:05", L"2026\u5e743\u670830\u65e5 (\u6708) 14:05"}};
    for (const auto& one : cases) {
        auto* const translations = new wxTranslations;
        wxTranslations::Set(translations);
        translations->SetLanguage(one.Language);
        translations->AddCatalog("velomind");
        EXPECT_EQ(FormatDate(monday, _("%a %d %b %H:%M")), one.ThisYear);
        EXPECT_EQ(FormatDate(monday, _("%a %d %b %Y %H:%M")), one.OtherYear);
    }
    wxTranslations::Set(nullptr);
}

}  // namespace
