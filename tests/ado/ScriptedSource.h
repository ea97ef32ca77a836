// A provider that does what a script says: lists given tables, hands out given rows, fails where told and counts what
// it is asked. While a script lives, its provider opens every kind of file.
#pragma once

#include "CSourceDataInfo.h"
#include "platform/ado/Ado.h"
#include "providers/ProviderRegistry.h"
#include "support/TempFolder.h"
#include "support/Values.h"
#include "tqcAccess/CodePage.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

namespace NSTQ::Tests {

/// A value that owns its text.
class Cell {
public:
    Cell(const Platform::VARIANT& value) { *m_value->Get() = value; }
    Cell(double number) : Cell(Double(number)) {}
    Cell(const std::u16string& text) : Cell(Text(text)) {}
    Cell(const char16_t* text) : Cell(Text(text)) {}
    const Platform::VARIANT& Value() const { return m_value->Value(); }

private:
    std::shared_ptr<Platform::CVariant> m_value = std::make_shared<Platform::CVariant>();
};

struct Table {
    std::vector<std::u16string> columns;
    std::vector<std::vector<Cell>> rows;
};

class CScript {
public:
    CScript();
    CScript(const CScript&) = delete;
    CScript& operator=(const CScript&) = delete;
    ~CScript() {
        for (const auto& [kind, open] : m_former)
            Providers::SetProvider(kind, open);
    }

    void SetTables(const std::vector<std::u16string>& names) {
        schema.clear();
        for (const std::u16string& name : names)
            schema.push_back({name, u"TABLE"});
    }
    /// The nth call of `op`, a member function of a provider or "Open", from now on fails with `hr`.
    void FailAt(std::string_view op, Platform::HRESULT hr, int nth = 1) {
        m_failing = op;
        m_failure = hr;
        m_failAt = calls[op] + nth;
    }
    void Do(std::string_view op) {
        if (++calls[op] == m_failAt && op == m_failing)
            throw Platform::_com_error(m_failure, "scripted");
    }
    /// The path of a new file that begins like what its extension says.
    std::string File(const std::string& name) const {
        const bool isDatabase = name.ends_with("db");
        return folder.WriteFile(name, isDatabase ? std::string("\0\1\0\0Standard Jet DB", 19) : "PK\x03\x04");
    }

    CTempFolder folder;
    std::vector<Platform::STableSchema> schema{{u"Sheet1$", u"TABLE"}};
    Table table{{u"ID", u"Name"}, {}}; ///< what is in each of them
    std::int64_t recordCount = -2;     ///< -2: the number of rows
    std::map<std::string_view, int> calls;
    int liveObjects = 0;
    Platform::SSourceOptions options; ///< of the source opened last
    Providers::ESourceFormat format{};
    std::u16string tableName; ///< the one opened last

private:
    template <Providers::ESourceFormat format>
    static std::unique_ptr<Platform::IDataSource> Open(Providers::CSourceInput input,
                                                       const Platform::SSourceOptions& options);

    static inline CScript* s_current;
    std::map<Providers::ESourceFormat, Providers::FOpenProvider> m_former;
    std::string_view m_failing;
    Platform::HRESULT m_failure = 0;
    int m_failAt = 0;
};

class CScriptedRows final : public Platform::IRowSource {
public:
    CScriptedRows(CScript& script, const Table& table) : m_script(script), m_table(table) { ++script.liveObjects; }
    ~CScriptedRows() override { --m_script.liveObjects; }
    const std::vector<std::u16string>& GetColumnNames() const override {
        m_script.Do("GetColumnNames");
        return m_table.columns;
    }
    std::int64_t GetRowCount() const override {
        m_script.Do("GetRowCount");
        return m_script.recordCount == -2 ? static_cast<std::int64_t>(m_table.rows.size()) : m_script.recordCount;
    }
    bool MoveNext() override {
        m_script.Do("MoveNext");
        return m_next++ < m_table.rows.size();
    }
    const Platform::VARIANT& GetValue(std::size_t column) override {
        m_script.Do("GetValue");
        return m_table.rows.at(m_next - 1).at(column).Value();
    }

private:
    CScript& m_script;
    const Table m_table;
    std::size_t m_next = 0;
};

class CScriptedSource final : public Platform::IDataSource {
public:
    explicit CScriptedSource(CScript& script) : m_script(script) { ++script.liveObjects; }
    ~CScriptedSource() override { --m_script.liveObjects; }
    std::vector<Platform::STableSchema> ListTables() override {
        m_script.Do("ListTables");
        return m_script.schema;
    }
    std::unique_ptr<Platform::IRowSource> OpenTable(std::u16string_view name) override {
        m_script.Do("OpenTable");
        m_script.tableName = name;
        if (name == u"missing")
            throw Platform::_com_error(Platform::DB_E_NOTABLE);
        return std::make_unique<CScriptedRows>(m_script, m_script.table);
    }

private:
    CScript& m_script;
};

template <Providers::ESourceFormat format>
std::unique_ptr<Platform::IDataSource> CScript::Open(Providers::CSourceInput,
                                                     const Platform::SSourceOptions& options) {
    s_current->options = options;
    s_current->format = format;
    s_current->Do("Open");
    return std::make_unique<CScriptedSource>(*s_current);
}

inline CScript::CScript() {
    using enum Providers::ESourceFormat;
    s_current = this;
    m_former = {{Xlsx, Providers::SetProvider(Xlsx, &Open<Xlsx>)},
                {Xls, Providers::SetProvider(Xls, &Open<Xls>)},
                {Access, Providers::SetProvider(Access, &Open<Access>)}};
}

/// Tests with a script, which leave nothing open.
class CScriptedTest : public testing::Test {
protected:
    ~CScriptedTest() override {
        EXPECT_EQ(script.liveObjects, 0);
        EXPECT_EQ(Platform::GetComInitCount(), 0U);
        Platform::SetAnsiCodePage(932);
    }
    NSTQCore::CSourceDataInfo::ESourceDataOpen Prepare(NSTQCore::CSourceDataInfo& info, const std::string& name,
                                                       bool is2007 = false) const {
        EXPECT_TRUE(info.SetCommonInfo(script.File(name).c_str(), NSTQCore::SCDeclareConstant::SFT_UNKNOWN));
        return info.PrepareReadSourceData(is2007);
    }
    CScript script;
};

} // namespace NSTQ::Tests
