#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "exchange/LegacyRowSource.h"

struct IAccessor;
struct IDBCreateCommand;
struct IDBInitialize;
struct IRowset;

// The rows of a store of version 1.0 through the OLE DB provider of its engine, SQL Server CE 2.0.
// For Windows only. Every value arrives as text, which the provider makes of it.
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
    // This object has initialised COM.
    bool mOwnsCom = false;
};
