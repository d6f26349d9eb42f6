#include "formats/LegacyStoreReader.h"

#include <algorithm>
#include <cwchar>
#include <utility>

namespace {

constexpr wchar_t kCountCards[] = L"SELECT COUNT(*) FROM Cards;";
constexpr wchar_t kSelectCards[] =
    L"SELECT CardId,Question,Answer,Active,LastReview,ReviewInterval,Difficulty,LastScore "
    L"FROM Cards;";
// The earliest stores have no difficulty.
constexpr wchar_t kSelectEarlyCards[] =
    L"SELECT CardId,Question,Answer,Active,LastReview,ReviewInterval,LastScore FROM Cards;";

constexpr int32_t kUnspecifiedFailure = static_cast<int32_t>(0x80004005U);

// The engine had 512 bytes of UTF-16 for a value, terminator included.
constexpr size_t kLongestValue = 255;

// Cuts a text to that length, never between the halves of a surrogate pair.
wxString CutValue(const std::wstring& value) {
    size_t units = 0;
    size_t length = 0;
    while (length < value.size()) {
        const auto character = std::char_traits<wchar_t>::to_int_type(value[length]);
        const bool isFirstHalf = character >= 0xD800 && character < 0xDC00;
        const size_t taken = character > 0xFFFF || isFirstHalf ? 2 : 1;
        if (units + taken > kLongestValue) {
            break;
        }
        // Where wide characters have 16 bits, the second half of a pair is a character too.
        units += isFirstHalf ? 1 : taken;
        ++length;
    }
    return {value.data(), length};
}

}  // namespace

LegacyStoreReader::LegacyStoreReader(std::unique_ptr<LegacyRowSource> source)
    : mSource(std::move(source)) {}

int32_t LegacyStoreReader::Initialize() {
    return mSource->Initialize();
}

int32_t LegacyStoreReader::Open(const wxString& path) {
    int32_t result = mSource->Open(path.ToStdWstring());
    if (result >= 0) {
        result = Run(kCountCards);
    }
    if (result < 0) {
        return result;
    }
    if (!ReadRecord() || mAttributes.Count() == 0) {
        return kUnspecifiedFailure;
    }
    const long count = std::wcstol(mAttributes[0].Value.wc_str(), nullptr, 10);
    mProgressDivisor = static_cast<float>(std::max(0L, count)) + 1.0f;

    result = Run(kSelectCards);
    return result == LegacyRowSource::kErrorsInCommand ? Run(kSelectEarlyCards) : result;
}

int32_t LegacyStoreReader::Run(const wchar_t* statement) {
    mRowNumber = 1;
    const int32_t result = mSource->Run(statement);
    mIsRunning = result >= 0;
    return result;
}

uint32_t LegacyStoreReader::GetAttributeCount() const {
    return static_cast<uint32_t>(mAttributes.Count());
}

bool LegacyStoreReader::ReadRecord() {
    mAttributes.Clear();
    mIsRunning = mIsRunning && mSource->ReadRow(mValues);
    if (!mIsRunning) {
        return false;
    }
    const std::vector<std::wstring>& names = mSource->GetColumnNames();
    for (size_t i = 0; i < names.size(); ++i) {
        CardAttribute& attribute = mAttributes.Append();
        attribute.Name = names[i];
        attribute.Value = i < mValues.size() ? CutValue(mValues[i]) : wxString();
        attribute.Line = mRowNumber;
    }
    ++mRowNumber;
    return true;
}

float LegacyStoreReader::GetProgress() const {
    return std::min(1.0f, static_cast<float>(mRowNumber) / mProgressDivisor);
}

#ifndef _WIN32

namespace {

constexpr int32_t kNoSuchClass = static_cast<int32_t>(0x80040154U);

class NoEngine : public LegacyRowSource {
  public:
    int32_t Initialize() override { return kNoSuchClass; }
    int32_t Open(const std::wstring&) override { return kNoSuchClass; }
    int32_t Run(const std::wstring&) override { return kNoSuchClass; }
    const std::vector<std::wstring>& GetColumnNames() const override { return mNames; }
    bool ReadRow(std::vector<std::wstring>&) override { return false; }

  private:
    std::vector<std::wstring> mNames;
};

}  // namespace

std::unique_ptr<LegacyRowSource> MakeLegacyRowSource() {
    return std::make_unique<NoEngine>();
}

#endif
