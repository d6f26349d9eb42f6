#include <windows.h>

#include <oledb.h>
#include <oledberr.h>

#include <algorithm>
#include <cstdint>
#include <cwchar>
#include <memory>
#include <string>
#include <vector>

#include "formats/LegacyRowSource.h"

namespace {

constexpr CLSID kProviderClass = {
    0x32CE2952, 0x2585, 0x49A6, {0xAE, 0xFF, 0x17, 0x32, 0x07, 0x6C, 0x29, 0x45}};
constexpr GUID kInitialisationProperties = {
    0xC8B522BC, 0x5CF3, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
constexpr GUID kSqlDialect = {
    0xC8B522D7, 0x5CF3, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};

constexpr size_t kBytesOfValue = 512;
constexpr size_t kCharactersOfValue = kBytesOfValue / sizeof(wchar_t);

// An interface that is released at the end of its block.
template <class Interface>
class Held {
  public:
    Held() = default;
    ~Held() {
        if (mpInterface != nullptr) {
            mpInterface->Release();
        }
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

    Interface* operator->() const { return mpInterface; }
    Interface* Get() const { return mpInterface; }
    // Where a call puts the interface. Only while there is none.
    Interface** Place() { return &mpInterface; }
    template <class Base>
    Base** PlaceAs() {
        return reinterpret_cast<Base**>(&mpInterface);
    }

  private:
    Interface* mpInterface = nullptr;
};

template <class Interface>
void Release(Interface*& pointer) {
    if (pointer != nullptr) {
        pointer->Release();
        pointer = nullptr;
    }
}

// The rows of a store of version 1.0 through the OLE DB provider of its engine, SQL Server CE 2.0.
// Windows only. The provider turns every value into text.
class SqlCeRowSource : public LegacyRowSource {
  public:
    SqlCeRowSource() = default;
    ~SqlCeRowSource() override;
    SqlCeRowSource(const SqlCeRowSource&) = delete;
    SqlCeRowSource& operator=(const SqlCeRowSource&) = delete;

    int32_t Initialize() override;
    int32_t Open(const std::wstring& path) override;
    int32_t Run(const std::wstring& statement) override;
    const std::vector<std::wstring>& GetColumnNames() const override { return mColumnNames; }
    bool ReadRow(std::vector<std::wstring>& values) override;

  private:
    int32_t SetDataSource(const std::wstring& path);
    int32_t CreateSession();
    int32_t Execute(const std::wstring& statement);
    int32_t BindColumns();
    void CloseStatement();
    void CloseSession();

    // What is open, in the order of opening; each is released in the opposite order.
    IDBInitialize* mpProvider = nullptr;
    IDBCreateCommand* mpCommands = nullptr;
    IRowset* mpRows = nullptr;
    IAccessor* mpAccessor = nullptr;
    // Zero for none.
    uintptr_t mAccessorHandle = 0;
    std::vector<std::wstring> mColumnNames;
    // One row, with the same room for each column.
    std::vector<wchar_t> mRow;
    // True when this object has initialised COM.
    bool mOwnsCom = false;
};

}  // namespace

SqlCeRowSource::~SqlCeRowSource() {
    CloseSession();
    Release(mpProvider);
    if (mOwnsCom) {
        CoUninitialize();
    }
}

int32_t SqlCeRowSource::Initialize() {
    if (!mOwnsCom) {
        // Refused when the thread already has COM in another mode, which serves as well.
        mOwnsCom = SUCCEEDED(CoInitializeEx(nullptr, 0));
    }
    CloseSession();
    Release(mpProvider);
    return CoCreateInstance(kProviderClass, nullptr, CLSCTX_INPROC_SERVER, IID_IDBInitialize,
                            reinterpret_cast<void**>(&mpProvider));
}

int32_t SqlCeRowSource::Open(const std::wstring& path) {
    if (mpProvider == nullptr) {
        return E_UNEXPECTED;
    }
    CloseSession();
    HRESULT result = SetDataSource(path);
    if (SUCCEEDED(result)) {
        result = mpProvider->Initialize();
    }
    if (SUCCEEDED(result)) {
        result = CreateSession();
    }
    return result;
}

int32_t SqlCeRowSource::SetDataSource(const std::wstring& path) {
    Held<IDBProperties> properties;
    const HRESULT result =
        mpProvider->QueryInterface(IID_IDBProperties, reinterpret_cast<void**>(properties.Place()));
    if (FAILED(result)) {
        return result;
    }
    DBPROP property = {};
    property.dwPropertyID = DBPROP_INIT_DATASOURCE;
    property.dwOptions = DBPROPOPTIONS_REQUIRED;
    VariantInit(&property.vValue);
    property.vValue.vt = VT_BSTR;
    property.vValue.bstrVal = SysAllocString(path.c_str());
    if (property.vValue.bstrVal == nullptr) {
        return E_OUTOFMEMORY;
    }
    DBPROPSET set = {};
    set.guidPropertySet = kInitialisationProperties;
    set.cProperties = 1;
    set.rgProperties = &property;
    const HRESULT setResult = properties->SetProperties(1, &set);
    // Frees the text too.
    VariantClear(&property.vValue);
    return setResult;
}

int32_t SqlCeRowSource::CreateSession() {
    Held<IDBCreateSession> sessions;
    HRESULT result = mpProvider->QueryInterface(IID_IDBCreateSession,
                                                reinterpret_cast<void**>(sessions.Place()));
    if (FAILED(result)) {
        return result;
    }
    Held<IUnknown> session;
    result = sessions->CreateSession(nullptr, IID_IUnknown, session.Place());
    if (FAILED(result)) {
        return result;
    }
    return session->QueryInterface(IID_IDBCreateCommand, reinterpret_cast<void**>(&mpCommands));
}

int32_t SqlCeRowSource::Run(const std::wstring& statement) {
    CloseStatement();
    if (mpCommands == nullptr) {
        return E_UNEXPECTED;
    }
    HRESULT result = Execute(statement);
    if (SUCCEEDED(result)) {
        result = BindColumns();
    }
    if (FAILED(result)) {
        CloseStatement();
    }
    return result;
}

int32_t SqlCeRowSource::Execute(const std::wstring& statement) {
    Held<ICommandText> command;
    HRESULT result =
        mpCommands->CreateCommand(nullptr, IID_ICommandText, command.PlaceAs<IUnknown>());
    if (SUCCEEDED(result)) {
        result = command->SetCommandText(kSqlDialect, statement.c_str());
    }
    if (SUCCEEDED(result)) {
        result = command->Execute(nullptr, IID_IRowset, nullptr, nullptr,
                                  reinterpret_cast<IUnknown**>(&mpRows));
    }
    // All of our statements give rows.
    return SUCCEEDED(result) && mpRows == nullptr ? E_FAIL : result;
}

int32_t SqlCeRowSource::BindColumns() {
    Held<IColumnsInfo> information;
    HRESULT result =
        mpRows->QueryInterface(IID_IColumnsInfo, reinterpret_cast<void**>(information.Place()));
    if (FAILED(result)) {
        return result;
    }
    DBORDINAL count = 0;
    DBCOLUMNINFO* columns = nullptr;
    OLECHAR* names = nullptr;
    result = information->GetColumnInfo(&count, &columns, &names);
    if (FAILED(result)) {
        return result;
    }
    std::vector<DBBINDING> bindings(count);
    for (size_t i = 0; i < bindings.size(); ++i) {
        DBBINDING& binding = bindings[i];
        binding.iOrdinal = i + 1;
        binding.obValue = kBytesOfValue * i;
        binding.dwPart = DBPART_VALUE;
        binding.cbMaxLen = kBytesOfValue;
        binding.wType = DBTYPE_WSTR;
        binding.bPrecision = columns[i].bPrecision;
        binding.bScale = columns[i].bScale;
        mColumnNames.emplace_back(columns[i].pwszName == nullptr ? L"" : columns[i].pwszName);
    }
    CoTaskMemFree(columns);
    CoTaskMemFree(names);
    mRow.assign(count * kCharactersOfValue, L'\0');

    result = mpRows->QueryInterface(IID_IAccessor, reinterpret_cast<void**>(&mpAccessor));
    if (FAILED(result)) {
        return result;
    }
    HACCESSOR accessor = 0;
    result = mpAccessor->CreateAccessor(DBACCESSOR_ROWDATA, count, bindings.data(), 0, &accessor,
                                        nullptr);
    if (SUCCEEDED(result)) {
        mAccessorHandle = accessor;
    }
    return result;
}

bool SqlCeRowSource::ReadRow(std::vector<std::wstring>& values) {
    if (mpRows == nullptr) {
        return false;
    }
    HROW row = 0;
    HROW* rows = &row;
    DBCOUNTITEM count = 0;
    if (FAILED(mpRows->GetNextRows(DB_NULL_HCHAPTER, 0, 1, &count, &rows)) || count == 0) {
        CloseStatement();
        return false;
    }
    std::fill(mRow.begin(), mRow.end(), L'\0');
    // A row that cannot be read arrives empty, and the import says what is missing.
    mpRows->GetData(row, mAccessorHandle, mRow.data());
    values.resize(mColumnNames.size());
    for (size_t i = 0; i < values.size(); ++i) {
        const wchar_t* const value = mRow.data() + i * kCharactersOfValue;
        values[i].assign(value, wcsnlen(value, kCharactersOfValue));
    }
    mpRows->ReleaseRows(1, &row, nullptr, nullptr, nullptr);
    return true;
}

void SqlCeRowSource::CloseStatement() {
    if (mAccessorHandle != 0) {
        mpAccessor->ReleaseAccessor(mAccessorHandle, nullptr);
        mAccessorHandle = 0;
    }
    Release(mpAccessor);
    Release(mpRows);
    mColumnNames.clear();
    mRow.clear();
}

void SqlCeRowSource::CloseSession() {
    CloseStatement();
    Release(mpCommands);
}

std::unique_ptr<LegacyRowSource> MakeLegacyRowSource() {
    return std::make_unique<SqlCeRowSource>();
}
