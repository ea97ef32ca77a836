// A provider that follows a script: it lists given tables, returns given rows, fails where the script says so, and
// counts its calls. While a script exists, its provider opens every kind of file.
#pragma once

#include "CSourceDataInfo.h"
#include "platform/ado/Ado.h"
#include "providers/ProviderRegistry.h"
#include "support/TempFolder.h"
#include "support/Values.h"
#include "tqcAccess/CodePage.h"

#include <gtest/gtest.h>

#include <map>

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
    std::vector<SFieldType> types = std::vector<SFieldType>(columns.size());
};

struct CScript {
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
    /// The path of a new file that begins as its extension says.
    std::string File(const std::string& name) const {
        const bool isDatabase = name.ends_with("db");
        return folder.WriteFile(name, isDatabase ? std::string("\0\1\0\0Standard Jet DB", 19) : "PK\x03\x04");
    }

    CTempFolder folder;
    std::vector<Platform::STableSchema> schema{{u"Sheet1$", u"TABLE"}};
    Table table{{u"ID", u"Name"}, {}};   ///< the content of each table
    std::vector<const char*> plainTexts; ///< of each row: the first columns; null for a value to convert
    std::int64_t recordCount = -2;       ///< -2: the number of rows
    std::map<std::string_view, int> calls;
    int liveObjects = 0;
    Platform::SSourceOptions options; ///< of the source opened last
    Providers::ESourceFormat format{};
    std::u16string tableName; ///< the one opened last

private:
    std::string_view m_failing;
    Platform::HRESULT m_failure = 0;
    int m_failAt = 0;
};

struct CScriptedRows final : Platform::IRowSource {
    explicit CScriptedRows(CScript& owner) : script(owner), table(owner.table) { ++script.liveObjects; }
    ~CScriptedRows() override { --script.liveObjects; }
    const std::vector<std::u16string>& GetColumnNames() const override {
        script.Do("GetColumnNames");
        return table.columns;
    }
    const std::vector<SFieldType>& GetColumnTypes() const override { return table.types; }
    std::int64_t GetRowCount() const override {
        script.Do("GetRowCount");
        return script.recordCount == -2 ? static_cast<std::int64_t>(table.rows.size()) : script.recordCount;
    }
    bool MoveNext() override {
        script.Do("MoveNext");
        return next++ < table.rows.size();
    }
    const Platform::VARIANT& GetValue(std::size_t column) override {
        script.Do("GetValue");
        return table.rows.at(next - 1).at(column).Value();
    }
    void GetPlainTexts(std::span<std::string_view> texts, bool keepsLineEnds) override {
        IRowSource::GetPlainTexts(texts, keepsLineEnds);
        for (std::size_t i = 0; i < script.plainTexts.size(); ++i)
            if (const char* const text = script.plainTexts[i];
                text != nullptr && (keepsLineEnds || std::string_view(text).find('\n') == std::string_view::npos))
                texts[i] = text;
    }

    CScript& script;
    const Table table;
    std::size_t next = 0;
};

struct CScriptedSource final : Platform::IDataSource {
    explicit CScriptedSource(CScript& owner) : script(owner) { ++script.liveObjects; }
    ~CScriptedSource() override { --script.liveObjects; }
    std::vector<Platform::STableSchema> ListTables() override {
        script.Do("ListTables");
        return script.schema;
    }
    std::unique_ptr<Platform::IRowSource> OpenTable(std::u16string_view name) override {
        script.Do("OpenTable");
        script.tableName = name;
        if (name == u"missing")
            throw Platform::_com_error(Platform::DB_E_NOTABLE);
        return std::make_unique<CScriptedRows>(script);
    }

    CScript& script;
};

/// Tests with a script, at whose end nothing may be open.
class CScriptedTest : public testing::Test {
protected:
    using EFormat = Providers::ESourceFormat;

    CScriptedTest() {
        s_script = &script;
        m_former = {{EFormat::Xlsx, Providers::SetProvider(EFormat::Xlsx, &Open<EFormat::Xlsx>)},
                    {EFormat::Xls, Providers::SetProvider(EFormat::Xls, &Open<EFormat::Xls>)},
                    {EFormat::Access, Providers::SetProvider(EFormat::Access, &Open<EFormat::Access>)}};
    }
    ~CScriptedTest() override {
        for (const auto& [format, open] : m_former)
            Providers::SetProvider(format, open);
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

private:
    template <EFormat format>
    static std::unique_ptr<Platform::IDataSource> Open(Providers::CSourceInput,
                                                       const Platform::SSourceOptions& options) {
        s_script->options = options;
        s_script->format = format;
        s_script->Do("Open");
        return std::make_unique<CScriptedSource>(*s_script);
    }

    static inline CScript* s_script;
    std::map<EFormat, Providers::FOpenProvider> m_former;
};

} // namespace NSTQ::Tests
