// The adapter of the system's ADO: over objects that stand in for it, and over those of the system.
#include "CADOOperater.h"
#include "CSourceDataInfo.h"
#include "platform/windows/ado/CSystemRecordset.h"
#include "support/Raised.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace NSTQ::Tests {
namespace {

using namespace Platform;
using NSTQCore::CSourceDataInfo;

using TSystemValue = ::VARIANT;
using FSetValue = std::function<void(TSystemValue&)>;

struct SScript {
    std::vector<FSetValue> rows; ///< the values of the only column
    std::size_t row = 0;
    std::wstring failing; ///< the member that fails
    ::EXCEPINFO failure{};
    std::wstring connectionString;
    LONG cursorLocation = 0;
    int names = 0; ///< how many names were asked
    int objects = 0;
};
SScript script;

/// Every object of the system at once: connection, record set, fields and field.
class CScripted final : public ::IDispatch {
public:
    CScripted() { ++script.objects; }
    virtual ~CScripted() { --script.objects; }
    HRESULT STDMETHODCALLTYPE QueryInterface(const ::IID&, void**) override { return E_NOINTERFACE; }
    ::ULONG STDMETHODCALLTYPE AddRef() override { return ++m_count; }
    ::ULONG STDMETHODCALLTYPE Release() override {
        const ::ULONG count = --m_count;
        if (count == 0)
            delete this;
        return count;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(::UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(::UINT, ::LCID, ::ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(const ::IID&, ::LPOLESTR* names, ::UINT, ::LCID, DISPID* id) override {
        ++script.names;
        const auto* const found = std::find(std::begin(members), std::end(members), std::wstring_view(names[0]));
        *id = static_cast<DISPID>(found - std::begin(members));
        return found == std::end(members) ? DISP_E_UNKNOWNNAME : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, const ::IID&, ::LCID, WORD, ::DISPPARAMS* parameters,
                                     ::VARIANT* result, ::EXCEPINFO* exception, ::UINT*) override {
        const std::wstring_view name = members[id];
        if (name == script.failing) {
            *exception = script.failure;
            return DISP_E_EXCEPTION;
        }
        const auto argument = [&](::UINT at) -> ::VARIANT& { return parameters->rgvarg[parameters->cArgs - 1 - at]; };
        if (name == L"Open" && parameters->cArgs == 4)
            script.connectionString = argument(0).bstrVal;
        else if (name == L"CursorLocation")
            script.cursorLocation = argument(0).lVal;
        else if (name == L"MoveNext")
            ++script.row;
        else if (name == L"Value")
            script.rows[script.row](*result);
        else if (result != nullptr)
            Answer(name, *result);
        return S_OK;
    }

private:
    static constexpr std::wstring_view members[] = {
        L"Open", L"Close", L"CursorLocation", L"EOF",  L"MoveNext",  L"RecordCount",  L"Fields",     L"Count",
        L"Item", L"Name",  L"Value",          L"Type", L"Precision", L"NumericScale", L"DefinedSize"};

    void Answer(std::wstring_view name, ::VARIANT& result) {
        if (name == L"Fields" || name == L"Item") {
            result.vt = VT_DISPATCH;
            result.pdispVal = this;
            AddRef();
        } else if (name == L"EOF") {
            result.vt = VT_BOOL;
            result.boolVal = script.row < script.rows.size() ? 0 : -1;
        } else if (name == L"Name") {
            result.vt = VT_BSTR;
            result.bstrVal = ::SysAllocString(L"name");
        } else {
            constexpr std::pair<std::wstring_view, LONG> numbers[] = {
                {L"Count", 1}, {L"Type", 131}, {L"Precision", 18}, {L"NumericScale", 4}, {L"DefinedSize", 19}};
            const auto* const found = std::find_if(std::begin(numbers), std::end(numbers),
                                                   [&](const auto& number) { return number.first == name; });
            // Counts have 64 bits in programs of 64 bits.
            result.vt = VT_I8;
            result.llVal = found == std::end(numbers) ? static_cast<LONGLONG>(script.rows.size()) : found->second;
        }
    }

    ::ULONG m_count = 1;
};

CDispatch MakeScripted(const wchar_t*) {
    return CDispatch(new CScripted);
}

/// Puts the adapter, over `make`, in place of this library's own classes.
struct SClasses {
    explicit SClasses(FMakeSystemObject make)
        : connection(u"ADODB.Connection", [=] { return CComPtr<IUnknown>(MakeComObject<CSystemConnection>(make)); }),
          recordset(u"ADODB.Recordset", [=] { return CComPtr<IUnknown>(MakeComObject<CSystemRecordset>(make)); }) {}
    CClassRegistration connection, recordset;
};

class SystemAdo : public testing::Test {
protected:
    SystemAdo() {
        script = {};
        EXPECT_TRUE(info.SetCommonInfo(TQC_TEST_DATABASE, NSTQCore::SCDeclareConstant::SFT_UNKNOWN));
        EXPECT_EQ(info.PrepareReadSourceData(true), CSourceDataInfo::SDO_DATABASE);
        info.SetSelectSchemaIndx(0);
    }
    ~SystemAdo() override { EXPECT_EQ(script.objects, 0); }
    CSourceDataInfo info;
};

void SetBytes(::VARIANT& value, const std::string& bytes) {
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = ::SafeArrayCreateVector(VT_UI1, 0, static_cast<::ULONG>(bytes.size()));
    std::memcpy(value.parray->pvData, bytes.data(), bytes.size());
}

/// A setter of a value in one member.
template <class T, class TMember>
FSetValue Plain(VARTYPE type, TMember TSystemValue::*member, T plain) {
    return [=](::VARIANT& value) {
        value.vt = type;
        value.*member = static_cast<TMember>(plain);
    };
}

TEST_F(SystemAdo, ReadsValuesAndTypes) {
    const struct {
        FSetValue set;
        std::string text;
    } cases[] = {
        {[](::VARIANT& value) { value.vt = VT_NULL; }, ""},
        {[](::VARIANT& value) { value.vt = VT_EMPTY; }, ""},
        {Plain(VT_BSTR, &::VARIANT::bstrVal, nullptr), ""},
        {[](::VARIANT& value) {
             value.vt = VT_BSTR;
             value.bstrVal = ::SysAllocString(L"a\x3042z");
         },
         "a\x82\xA0z"},
        {Plain(VT_I2, &::VARIANT::iVal, -2), "-2"},
        {Plain(VT_I8, &::VARIANT::llVal, 5'000'000'000), "5000000000"},
        {Plain(VT_R8, &::VARIANT::dblVal, 0.25), "0.25"},
        {Plain(VT_BOOL, &::VARIANT::boolVal, -1), "-1"},
        {Plain(VT_DATE, &::VARIANT::date, 45000.75), "2023/03/15 18:00:00"},
        {[](::VARIANT& value) {
             value.vt = VT_CY;
             value.cyVal.int64 = 12345;
         },
         "1.2345"},
        {[](::VARIANT& value) {
             value.decVal = {};
             value.decVal.sign = 0x80;
             value.decVal.scale = 2;
             value.decVal.Hi32 = 1;
             value.vt = VT_DECIMAL;
         },
         "-184467440737095516.16"},
        {[](::VARIANT& value) { SetBytes(value, "\x01\xAB"); }, "0x01AB"},
    };
    for (const auto& row : cases)
        script.rows.push_back(row.set);
    const SClasses classes(&MakeScripted);
    NSTQCore::CADOOperater reader(1, 99, 99);
    ASSERT_TRUE(reader.FileOpen(&info)) << reader.GetErrorDescription();
    EXPECT_EQ(script.cursorLocation, adUseClient);
    EXPECT_EQ(reader.GetMaxRowNum(), std::size(cases));
    const SFieldType* types = nullptr;
    const char** texts = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    ASSERT_TRUE(reader.GetFieldsType(types, count));
    EXPECT_EQ(types[0], (SFieldType{EDataType::adNumeric, 18, 4, 0}));
    int names = 0;
    for (const auto& row : cases) {
        ASSERT_TRUE(reader.GetLineData(texts, lengths, count));
        EXPECT_EQ(std::string(texts[0], lengths[0]), row.text);
        if (&row == &cases[0])
            names = script.names;
    }
    EXPECT_EQ(script.names, names); // asked once
    EXPECT_FALSE(reader.HasNextLineData());
    EXPECT_TRUE(reader.FileClose());
}

TEST_F(SystemAdo, GivesExactBytesAndKeepsWhatCannotBeReadFromBeingShown) {
    script.rows = {[](::VARIANT& value) { SetBytes(value, std::string(70000, '\x7F')); },
                   Plain(VT_UNKNOWN, &::VARIANT::punkVal, nullptr)};
    const auto recordset = MakeComObject<CSystemRecordset>();
    recordset->Take(MakeScripted(nullptr));
    VARIANT index;
    index.vt = VT_I4;
    index.lVal = 0;
    Field& field = *recordset->GetFields()->GetItem(index);
    const SExactValue exact = field.GetExactValue();
    EXPECT_EQ(exact.value.vt, VT_ARRAY | VT_UI1);
    EXPECT_EQ(exact.bytes.size(), 70000U);
    EXPECT_EQ(SysStringLen(field.GetValue().bstrVal), 2U + 2 * 65535);
    recordset->MoveNext();
    EXPECT_EQ(Raised([&] { field.GetValue(); }), DISP_E_TYPEMISMATCH);
    recordset->MoveNext();
    EXPECT_EQ(Raised([&] { field.GetValue(); }), adErrNoCurrentRecord);
}

TEST_F(SystemAdo, ReportsWhatTheSystemSays) {
    const auto describe = [](::EXCEPINFO* exception) -> HRESULT {
        exception->bstrDescription = ::SysAllocString(L"Not a valid password.\r\n");
        return S_OK;
    };
    const struct {
        const wchar_t* member;
        HRESULT code;
        WORD number;
        HRESULT expected;
    } cases[] = {{L"Open", DB_SEC_E_AUTH_FAILED, 0, DB_SEC_E_AUTH_FAILED},
                 {L"Fields", 0, 3021, adErrNoCurrentRecord},
                 {L"Open", adErrProviderNotFound, 0, adErrProviderNotFound}};
    for (const auto& row : cases) {
        script.failing = row.member;
        script.failure = {};
        script.failure.scode = row.code;
        script.failure.wCode = row.number;
        script.failure.pfnDeferredFillIn = +describe;
        const SClasses classes(&MakeScripted);
        NSTQCore::CADOOperater reader(1, 99, 99);
        EXPECT_FALSE(reader.FileOpen(&info));
        EXPECT_EQ(reader.GetErrorRet(), row.expected);
        EXPECT_TRUE(std::string(reader.GetErrorDescription()).ends_with("Not a valid password."));
    }
}

TEST_F(SystemAdo, LosesThePositionWhenMovingFails) {
    script.rows = {Plain(VT_I4, &::VARIANT::lVal, 1), Plain(VT_I4, &::VARIANT::lVal, 2)};
    const auto recordset = MakeComObject<CSystemRecordset>();
    recordset->Take(MakeScripted(nullptr));
    script.failing = L"MoveNext";
    script.failure.scode = E_FAIL;
    EXPECT_EQ(Raised([&] { recordset->MoveNext(); }), E_FAIL);
    script.failing.clear();
    EXPECT_EQ(Raised([&] { recordset->MoveNext(); }), E_FAIL);
    EXPECT_EQ(Raised([&] { recordset->GetEOF(); }), E_FAIL);
    recordset->Close();
    EXPECT_EQ(Raised([&] { recordset->Close(); }), adErrObjectClosed);
}

TEST_F(SystemAdo, QuotesTheValuesOfBuiltStrings) {
    const auto connection = MakeComObject<CSystemConnection>(&MakeScripted);
    CBstr text(u"Provider=Microsoft.ACE.OLEDB.12.0;Data Source=C:\\a;b.accdb;Extended Properties=\"\""
               u";Jet OLEDB:Database Password=p\";Data Source=x;");
    connection->Open(text.Get(), nullptr, nullptr, adConnectUnspecified);
    EXPECT_EQ(script.connectionString, L"Provider=\"Microsoft.ACE.OLEDB.12.0\";Data Source=\"C:\\a;b.accdb\";"
                                       L"Jet OLEDB:Database Password=\"p\"\";Data Source=x\";");
}

TEST_F(SystemAdo, TellsClearlyWhenTheSystemHasNoProvider) {
    const SClasses classes(&CDispatch::Create);
    NSTQCore::CADOOperater reader(9, 99, 99);
    if (reader.FileOpen(&info))
        GTEST_SKIP() << "this system has a provider";
    const HRESULT codes[] = {adErrProviderNotFound, REGDB_E_CLASSNOTREG, CO_E_CLASSSTRING, TYPE_E_LIBNOTREGISTERED};
    EXPECT_NE(std::find(std::begin(codes), std::end(codes), reader.GetErrorRet()), std::end(codes))
        << std::hex << reader.GetErrorRet();
    EXPECT_NE(std::string(reader.GetErrorDescription()).find("this system"), std::string::npos);
    const auto connection =
        MakeComObject<CSystemConnection>([](const wchar_t*) { return CDispatch::Create(L"No.Such"); });
    EXPECT_EQ(Raised([&] { connection->Open(nullptr, nullptr, nullptr, adConnectUnspecified); }), CO_E_CLASSSTRING);
}

} // namespace
} // namespace NSTQ::Tests
