#include "platform/automation/Com.h"
#include "support/Values.h"

#include <gtest/gtest.h>

#include <thread>

using namespace NSTQ;
using namespace NSTQ::Platform;
using namespace NSTQ::Tests;
using namespace std::literals;

namespace {

// The linker redirects the library's calls of malloc to these wrappers.
constinit std::size_t mallocCalls = 0;
constinit bool isMallocFailing = false;

/// The HRESULT that `call` throws or returns while malloc fails.
template <class TCall>
HRESULT WithoutMemory(TCall call) {
    isMallocFailing = true;
    HRESULT result = S_OK;
    try {
        result = call();
    } catch (const _com_error& error) {
        result = error.Error();
    }
    isMallocFailing = false;
    return result;
}

} // namespace

extern "C" {
void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) {
    ++mallocCalls;
    return isMallocFailing ? nullptr : __real_malloc(size);
}
}

namespace {

class CObject : public CComObject<IUnknown> {
public:
    explicit CObject(int& alive) : m_alive(alive) { ++m_alive; }
    ~CObject() override { --m_alive; }

private:
    int& m_alive;
};

std::u16string_view View(const CVariant& value) {
    return value.Value().vt == VT_BSTR ? BstrView(value.Value().bstrVal) : u"(no text)";
}

TEST(Variant, IsConvertedInPlace) {
    CVariant value;
    *value.Get() = Double(2.5);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(VariantChangeType(value.Get(), value.Get(), 0, VT_BSTR), S_OK);
        EXPECT_EQ(View(value), u"2.5");
    }
    VariantClear(value.Get());
    *value.Get() = Value(VT_BSTR);
    EXPECT_EQ(VariantChangeType(value.Get(), value.Get(), 0, VT_BSTR), S_OK);
    EXPECT_NE(value.Value().bstrVal, nullptr);
}

TEST(Variant, ConversionAllocatesNothingOnceTheTargetIsLargeEnough) {
    CVariant target;
    CVariant text;
    *text.Get() = Text(u"a text with \0 in it, longer than a first block of memory"s);
    ASSERT_EQ(VariantChangeType(target.Get(), &text.Value(), 0, VT_BSTR), S_OK);
    EXPECT_EQ(View(target), BstrView(text.Value().bstrVal));
    const std::size_t before = mallocCalls;
    for (const VARIANT& value : {Double(1.0 / 3), Double(7), Date(45000.75), Decimal(9, 9, 28), Value(VT_EMPTY),
                                 Value(VT_BOOL), text.Value()})
        EXPECT_EQ(VariantChangeType(target.Get(), &value, 0, VT_BSTR), S_OK);
    EXPECT_EQ(VariantCopy(target.Get(), &text.Value()), S_OK);
    EXPECT_EQ(mallocCalls, before);
}

TEST(Variant, FailureLeavesTheTargetAsItWas) {
    CVariant number;
    *number.Get() = Double(2.5);
    CVariant text;
    *text.Get() = Text(u"kept");
    CVariant longText;
    *longText.Get() = Text(std::u16string(1000, u'x'));
    const VARIANT error = Value(VT_ERROR);
    for (CVariant* target : {&number, &text}) {
        EXPECT_EQ(VariantChangeType(target->Get(), &error, 0, VT_BSTR), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(VariantChangeType(target->Get(), &longText.Value(), 1, VT_BSTR), E_INVALIDARG);
        EXPECT_EQ(VariantChangeType(target->Get(), &longText.Value(), 0, VT_I4), E_INVALIDARG);
        const auto& source = longText.Value();
        EXPECT_EQ(WithoutMemory([&] { return VariantChangeType(target->Get(), &source, 0, VT_BSTR); }),
                  E_OUTOFMEMORY);
        EXPECT_EQ(WithoutMemory([&] { return VariantCopy(target->Get(), &source); }), E_OUTOFMEMORY);
    }
    EXPECT_EQ(WithoutMemory([&] { return VariantChangeType(number.Get(), number.Get(), 0, VT_BSTR); }),
              E_OUTOFMEMORY);
    EXPECT_EQ(number.Value().vt, VT_R8);
    EXPECT_EQ(number.Value().dblVal, 2.5);
    EXPECT_EQ(View(text), u"kept");
}

TEST(Variant, OwnsTheReferencesAndTextsThatItCopies) {
    int alive = 0;
    CVariant first, second, text;
    first.Get()->vt = VT_DISPATCH;
    first.Get()->pdispVal = new CObject(alive);
    first.Get()->pdispVal->AddRef();
    VariantCopy(second.Get(), &first.Value());
    VariantCopy(second.Get(), &first.Value());
    VariantCopy(second.Get(), second.Get());
    VariantClear(first.Get());
    EXPECT_EQ(first.Value().vt, VT_EMPTY);
    EXPECT_EQ(alive, 1);
    const VARIANT noObject = Value(VT_DISPATCH), noText = Value(VT_BSTR), number = Double(1);
    VariantCopy(first.Get(), &noObject);
    EXPECT_EQ(VariantChangeType(second.Get(), &number, 0, VT_BSTR), S_OK);
    EXPECT_EQ(alive, 0);
    *text.Get() = Text(u"x");
    VariantCopy(second.Get(), &text.Value());
    EXPECT_NE(second.Value().bstrVal, text.Value().bstrVal);
    EXPECT_EQ(VariantCopy(second.Get(), &noText), S_OK);
    EXPECT_EQ(second.Value().bstrVal, nullptr);
}

TEST(Bstr, HasItsLengthAndANul) {
    BSTR text = SysAllocStringLen(u"a\0b", 3);
    EXPECT_EQ(BstrView(text), u"a\0b"s);
    EXPECT_EQ(text[3], u'\0');
    // A first block holds 27 units and the NUL, the next 59 units.
    constexpr std::pair<DWORD, std::size_t> blocksTaken[] = {{27, 0}, {28, 1}, {59, 0}, {60, 1}, {1000, 1}, {0, 0}};
    for (const auto& [length, blocks] : blocksTaken) {
        const std::u16string source(length, u'x');
        const std::size_t before = mallocCalls;
        ASSERT_TRUE(SysReAllocStringLen(&text, source.data(), length));
        EXPECT_EQ(mallocCalls - before, blocks) << length;
        EXPECT_EQ(BstrView(text), source);
        EXPECT_EQ(text[length], u'\0');
    }
    SysFreeString(text);
    text = SysAllocString(u"up to\0 here");
    EXPECT_EQ(BstrView(text), u"up to");
    EXPECT_FALSE(SysReAllocStringLen(&text, nullptr, UINT32_MAX));
    EXPECT_FALSE(SysReAllocStringLen(&text, nullptr, 0x40000000));
    EXPECT_EQ(BstrView(text), u"up to");
    SysFreeString(text);
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    SysFreeString(nullptr);
}

TEST(Bstr, IsConvertedFromAnsiUnlessMemoryRunsOut) {
    constexpr std::u16string_view wide = u"日本 語\0$"sv;
    EXPECT_EQ(BstrFromAnsi(AnsiFromWide(wide)).View(), wide);
    EXPECT_EQ(AnsiFromWide(u"é☃語") + AnsiFromWide({}), "e?\x8C\xEA");
    EXPECT_NE(BstrFromAnsi("").Get(), nullptr);
    CBstr text(u"kept");
    const std::u16string longText(1000, u'x');
    EXPECT_EQ(WithoutMemory([&] { return text.Assign(longText), S_OK; }), E_OUTOFMEMORY);
    EXPECT_EQ(WithoutMemory([] { return BstrFromAnsi("x"), S_OK; }), E_OUTOFMEMORY);
    EXPECT_EQ(text.View(), u"kept");
}

class INumber : public IUnknown {
public:
    virtual int Number() = 0;
};
class IOther : public IUnknown {};

class CNumber : public CComObject<INumber> {
public:
    explicit CNumber(int number) : m_iNumber(number) { ++s_iAlive; }
    ~CNumber() override { --s_iAlive; }
    int Number() override { return m_iNumber; }
    static inline int s_iAlive = 0;

private:
    int m_iNumber;
};

FCreateObject Maker(int number) {
    return [number] { return CComPtr<IUnknown>(MakeComObject<CNumber>(number)); };
}

/// The number of a new object of this ProgID, or the HRESULT of the call that failed.
int NumberOf(const WCHAR* progId) {
    CLSID clsid{};
    CComPtr<INumber> object;
    HRESULT result = CLSIDFromProgID(progId, &clsid);
    if (!Failed(result))
        result = CoCreateInstance(clsid, object);
    EXPECT_EQ(Failed(result), !object);
    return object ? object->Number() : result;
}

TEST(Com, CountsInitialisationsOfEachThread) {
    EXPECT_EQ(CoInitialize(&CNumber::s_iAlive), E_INVALIDARG);
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    std::thread([] {
        EXPECT_EQ(GetComInitCount(), 0u);
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
    }).join();
    EXPECT_EQ(GetComInitCount(), 2u);
    for (int i = 0; i < 3; ++i)
        CoUninitialize();
    EXPECT_EQ(GetComInitCount(), 0u);
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    CoUninitialize();
}

TEST(Com, TheNewestRegistrationOfAProgIdIsUsed) {
    const CComApartment apartment;
    EXPECT_EQ(NumberOf(u"Test.Number"), CO_E_CLASSSTRING);
    CLSID revoked{};
    {
        const CClassRegistration older(u"Test.Number", Maker(1));
        EXPECT_EQ(NumberOf(u"Test.Number"), 1);
        const CClassRegistration newer(u"TEST.Number", Maker(3));
        EXPECT_EQ(NumberOf(u"test.numbeR"), 3);
        EXPECT_EQ(CLSIDFromProgID(u"Test.Number", &revoked), S_OK);
    }
    CComPtr<INumber> object;
    EXPECT_EQ(CoCreateInstance(revoked, object), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(NumberOf(u"Test.Number"), CO_E_CLASSSTRING);
    EXPECT_EQ(CNumber::s_iAlive, 0);
}

TEST(Com, FailedCreationLeavesTheReferenceNull) {
    const std::pair<HRESULT, FCreateObject> cases[] = {
        {E_FAIL, [] { return CComPtr<IUnknown>(); }},
        {DB_E_NOTABLE, []() -> CComPtr<IUnknown> { throw _com_error(DB_E_NOTABLE, "no table"); }},
        {E_OUTOFMEMORY, []() -> CComPtr<IUnknown> { throw std::bad_alloc(); }},
    };
    for (const auto& [expected, create] : cases) {
        const CClassRegistration registration(u"Test.Number", create);
        EXPECT_EQ(NumberOf(u"Test.Number"), CO_E_NOTINITIALIZED);
        const CComApartment apartment;
        EXPECT_EQ(NumberOf(u"Test.Number"), expected);
    }
    EXPECT_EQ(Raised([] { CComPtr<INumber>()->Number(); }), E_POINTER);
    const CComApartment apartment;
    const CClassRegistration registration(u"Test.Number", Maker(1));
    CLSID clsid{};
    CComPtr<IOther> other;
    EXPECT_EQ(CLSIDFromProgID(u"Test.Number", &clsid), S_OK);
    EXPECT_EQ(CoCreateInstance(clsid, other), E_NOINTERFACE);
    EXPECT_EQ(CoCreateInstance(clsid, nullptr), E_POINTER);
    EXPECT_EQ(CLSIDFromProgID(nullptr, &clsid), E_INVALIDARG);
    EXPECT_EQ(CNumber::s_iAlive, 0);
}

} // namespace
