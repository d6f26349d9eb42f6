#include "exchange/LegacyRowSource.h"

#ifdef _WIN32

#include "exchange/SqlCeRowSource.h"

std::unique_ptr<LegacyRowSource> MakeLegacyRowSource() {
    return std::make_unique<SqlCeRowSource>();
}

#else

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
