#include "platform/automation/Com.h"
#include "support/Values.h"
#include "tqcAccess/UserLocale.h"

#include <gtest/gtest.h>

#include <bit>
#include <chrono>
#include <cmath>
#include <limits>
#include <random>
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

class INumber : public IUnknown {
public:
    virtual int Number() = 0;
};
class IOther : public IUnknown {};

class CNumber : public CComObject<INumber> {
public:
    explicit CNumber(int number) : m_number(number) { ++s_alive; }
    ~CNumber() override { --s_alive; }
    int Number() override { return m_number; }
    static inline int s_alive = 0;

private:
    int m_number;
};

std::u16string_view View(const CVariant& value) {
    return value.Value().vt == VT_BSTR ? BstrView(value.Value().bstrVal) : u"(no text)";
}

TEST(Variant, ConversionAllocatesNothingOnceTheTargetIsLargeEnough) {
    CVariant target, text, noText;
    *noText.Get() = Value(VT_BSTR);
    EXPECT_EQ(VariantChangeType(noText.Get(), noText.Get(), 0, VT_BSTR), S_OK);
    EXPECT_NE(noText.Value().bstrVal, nullptr);
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
    CVariant number, text, longText;
    *number.Get() = Double(2.5);
    *text.Get() = Text(u"kept");
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
    EXPECT_TRUE(number.Value().vt == VT_R8 && number.Value().dblVal == 2.5 && View(text) == u"kept");
}

TEST(Variant, OwnsTheReferencesAndTextsThatItCopies) {
    CVariant first, second, text;
    *first.Get() = Value(VT_DISPATCH, &VARIANT::pdispVal, new CNumber(1));
    first.Get()->pdispVal->AddRef();
    VariantCopy(second.Get(), &first.Value());
    VariantCopy(second.Get(), &first.Value());
    VariantCopy(second.Get(), second.Get());
    VariantClear(first.Get());
    EXPECT_EQ(first.Value().vt, VT_EMPTY);
    EXPECT_EQ(CNumber::s_alive, 1);
    const VARIANT noObject = Value(VT_DISPATCH), noText = Value(VT_BSTR), number = Double(1);
    VariantCopy(first.Get(), &noObject);
    EXPECT_EQ(VariantChangeType(second.Get(), &number, 0, VT_BSTR), S_OK);
    EXPECT_EQ(CNumber::s_alive, 0);
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
    for (const DWORD tooLong : {UINT32_MAX, 0x40000000U})
        EXPECT_FALSE(SysReAllocStringLen(&text, nullptr, tooLong) || BstrView(text) != u"up to");
    SysFreeString(text);
    EXPECT_TRUE(SysAllocString(nullptr) == nullptr && SysStringLen(nullptr) == 0);
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
    EXPECT_EQ(CoInitialize(&CNumber::s_alive), E_INVALIDARG);
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    std::thread([] { EXPECT_TRUE(GetComInitCount() == 0 && CoInitialize(nullptr) == S_OK); }).join();
    EXPECT_EQ(GetComInitCount(), 2u);
    for (int i = 0; i < 3; ++i)
        CoUninitialize();
    EXPECT_TRUE(GetComInitCount() == 0 && CoInitialize(nullptr) == S_OK);
    CoUninitialize();
}

TEST(Com, TheNewestRegistrationOfAProgIdMakesTheObject) {
    CLSID clsid{};
    CComPtr<INumber> object;
    CComPtr<IOther> other;
    {
        const CClassRegistration older(u"Test.Number", Maker(1));
        EXPECT_EQ(NumberOf(u"Test.Number"), CO_E_NOTINITIALIZED);
        const CComApartment apartment;
        EXPECT_EQ(NumberOf(u"Test.Number"), 1);
        const CClassRegistration newer(u"TEST.Number", Maker(3));
        EXPECT_EQ(NumberOf(u"test.numbeR"), 3);
        EXPECT_EQ(CLSIDFromProgID(u"Test.Number", &clsid), S_OK);
        EXPECT_EQ(CoCreateInstance(clsid, other), E_NOINTERFACE);
        EXPECT_EQ(CoCreateInstance(clsid, nullptr), E_POINTER);
    }
    const CComApartment apartment;
    EXPECT_EQ(CoCreateInstance(clsid, object), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(NumberOf(u"Test.Number"), CO_E_CLASSSTRING);
    EXPECT_EQ(NumberOf(nullptr), E_INVALIDARG);
    EXPECT_EQ(Raised([&] { object->Number(); }), E_POINTER);
    const std::pair<HRESULT, FCreateObject> failing[] = {
        {E_FAIL, [] { return CComPtr<IUnknown>(); }},
        {DB_E_NOTABLE, []() -> CComPtr<IUnknown> { throw _com_error(DB_E_NOTABLE, "no table"); }},
        {E_OUTOFMEMORY, []() -> CComPtr<IUnknown> { throw std::bad_alloc(); }},
    };
    for (const auto& [expected, create] : failing) {
        const CClassRegistration registration(u"Test.Number", create);
        EXPECT_EQ(NumberOf(u"Test.Number"), expected);
    }
    EXPECT_EQ(CNumber::s_alive, 0);
}

struct SCase {
    VARIANT value;
    const char* text;
};

const SCase cases[] = {
    {Value(VT_EMPTY), ""},
    {Value(VT_I1, &VARIANT::cVal, -128), "-128"},
    {Value(VT_UI1, &VARIANT::bVal, 255), "255"},
    {Value(VT_I2, &VARIANT::iVal, -32768), "-32768"},
    {Value(VT_UI2, &VARIANT::uiVal, 65535), "65535"},
    {Value(VT_I4, &VARIANT::lVal, INT32_MIN), "-2147483648"},
    {Value(VT_INT, &VARIANT::lVal, -1), "-1"},
    {Value(VT_UI4, &VARIANT::ulVal, UINT32_MAX), "4294967295"},
    {Value(VT_UINT, &VARIANT::ulVal, UINT32_MAX), "4294967295"},
    {Value(VT_I8, &VARIANT::llVal, INT64_MIN), "-9223372036854775808"},
    {Value(VT_UI8, &VARIANT::ullVal, UINT64_MAX), "18446744073709551615"},
    {Value(VT_BOOL, &VARIANT::boolVal, 1), "-1"},
    {Value(VT_BOOL, &VARIANT::boolVal, VARIANT_FALSE), "0"},

    {Double(-0.0), "0"},
    {Double(999999999999999.9), "1E+15"},
    {Double(std::numeric_limits<double>::infinity()), "1.#INF"},
    {Double(-std::numeric_limits<double>::infinity()), "-1.#INF"},
    {Double(std::numeric_limits<double>::quiet_NaN()), "1.#QNAN"},
    {Double(-std::numeric_limits<double>::quiet_NaN()), "-1.#IND"},
    {Value(VT_R4, &VARIANT::fltVal, 16777216), "1.677722E+07"},
    {Value(VT_R4, &VARIANT::fltVal, -0.0), "0"},
    {Double(1000000000000005), "1.00000000000001E+15"},
    {Value(VT_R4, &VARIANT::fltVal, 28452.125), "28452.13"},

    {Value(VT_CY, &VARIANT::cyVal, 125000), "12.5"},
    {Value(VT_CY, &VARIANT::cyVal, -1), "-0.0001"},
    {Value(VT_CY, &VARIANT::cyVal, INT64_MIN), "-922337203685477.5808"},
    {Decimal(0, 1, 4, 0x80), "-0.0001"},
    {Decimal(0, 0, 28, 0x80), "0"},
    {Decimal(0, 1000, 0), "1000"},
    {Decimal(UINT32_MAX, UINT64_MAX, 0, 0x80), "-79228162514264337593543950335"},
    {Decimal(UINT32_MAX, UINT64_MAX, 28), "7.9228162514264337593543950335"},
    {Decimal(0, 1, 28), "0.0000000000000000000000000001"},
    {Decimal(0, 1, 29), "#80070057"},

    {Date(0), "0:00:00"},
    {Date(-0.25), "6:00:00"},
    {Date(1.00390625), "1899/12/31 0:05:38"}, // half a second
    {Date(45000.75), "2023/03/15 18:00:00"},
    {Date(0.9999999), "0:00:00"},
    {Date(1.9999999), "1900/01/01 0:00:00"},
    {Date(-1.999999), "0:00:00"},
    {Date(-2.999999), "1899/12/29 0:00:00"},
    {Date(-657435), "#80070057"},
    {Date(2958465.5), "9999/12/31 12:00:00"},
    {Date(2958465.999999), "#80070057"},
    {Date(std::numeric_limits<double>::quiet_NaN()), "#80070057"},

    {Value(VT_NULL), "#80020005"},
    {Value(VT_ERROR, &VARIANT::scode, E_FAIL), "#80020005"},
    {Value(VT_ARRAY | VT_I4), "#80020005"},
    {Value(999), "#80020005"},
};

TEST(ValueText, DependsOnTheType) {
    for (const SCase& entry : cases)
        EXPECT_EQ(TextOf(entry.value), entry.text) << "type " << entry.value.vt;
}

/// The general form of the C library, which differs only for ties: it rounds them to even.
std::string General(double number, int digits) {
    char text[80];
    std::snprintf(text, sizeof(text), "%.60e", std::fabs(number));
    const std::string_view rest = std::string_view(text).substr(1 + static_cast<std::size_t>(digits));
    if (rest.starts_with('5') && rest.find_first_not_of('0', 1) == rest.find('e'))
        number = std::nextafter(number, std::copysign(1e300, number));
    std::snprintf(text, sizeof(text), "%.*G", digits, number == 0 ? 0 : number);
    return text;
}

TEST(ValueText, OfFloatsIsTheCorrectlyRoundedGeneralForm) {
    std::mt19937_64 random(42);
    constexpr std::size_t valuesAtOnce = 9;
    for (std::size_t left = CountOfValues(720'000); left >= valuesAtOnce; left -= valuesAtOnce) {
        const auto bits = random();
        if (const auto number = std::bit_cast<float>(static_cast<DWORD>(bits)); std::isfinite(number)) {
            ASSERT_EQ(TextOf(Value(VT_R4, &VARIANT::fltVal, number)), General(number, 7));
        }
        const auto any = std::bit_cast<double>(bits);
        // Short decimals, ties, and the numbers next to both.
        const auto whole = static_cast<double>(bits >> (bits % 64));
        const double decimal = whole / std::pow(10, static_cast<int>(bits % 23));
        const double tie = std::ldexp(whole, -static_cast<int>(bits % 23));
        for (const double number : {std::isfinite(any) ? any : 0, decimal, -decimal, std::nextafter(decimal, 0),
                                    std::nextafter(decimal, 1e300), tie, -tie, std::nextafter(tie, 0)})
            ASSERT_EQ(TextOf(Double(number)), General(number, 15)) << std::bit_cast<std::uint64_t>(number);
    }
}

std::string CalendarText(int day, unsigned second) {
    using namespace std::chrono;
    const year_month_day date(sys_days(December / 30 / 1899) + days(day));
    char text[40];
    std::snprintf(text, sizeof(text), "%04d/%02u/%02u %u:%02u:%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), second / 3600,
                  second / 60 % 60, second % 60);
    return text;
}

TEST(ValueText, OfDatesFollowsTheCalendarAndRoundsToTheSecond) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> withinSecond(-0.49, 0.49);
    for (int day = -657434; day < 2958465; day += 1 + static_cast<int>(random() % 19)) {
        if (day == 0 || day == -1) // rounding may give day 0, which is shown without a date
            continue;
        const std::string midnight = CalendarText(day, 0);
        ASSERT_EQ(TextOf(Date(day)), midnight.substr(0, midnight.find(' ')));
        const auto second = 1 + static_cast<unsigned>(random() % 86400);
        const double offset = second == 86400 ? -0.4 : withinSecond(random);
        const double fraction = (second + offset) / 86400;
        const std::string expected = second == 86400 ? CalendarText(day + 1, 0) : CalendarText(day, second);
        ASSERT_EQ(TextOf(Date(day < 0 ? day - fraction : day + fraction)), expected) << day << ' ' << second;
    }
}

/// Resets what a test sets.
class UserLocale : public testing::Test {
protected:
    void TearDown() override { SetUserLocale({}); }
};

TEST_F(UserLocale, ShapesDatesAndNumbers) {
    ASSERT_TRUE(SetUserLocale({"d.M.yy", "tt hh:mm", ','}));
    EXPECT_EQ(TextOf(Date(36529.5)), "4.1.00 PM 12:00");
    ASSERT_TRUE(SetUserLocale({"dd-MM-yyyy", "h 'h' H.m.s", ','}));
    EXPECT_EQ(TextOf(Date(36529 + 3723.0 / 86400)), "04-01-2000 1 '1' 1.2.3");
    EXPECT_EQ(TextOf(Double(-1.5e-7)), "-1,5E-07");
    EXPECT_EQ(TextOf(Value(VT_CY, &VARIANT::cyVal, 5)), "0,0005");
    ASSERT_TRUE(SetUserLocale({"M-d-M-d-M-d-M-d-M-d-M-d-M-d-M-d", "H:m:s:H:m:s:H:m:s:H:m:s:H:m:s:H", '.'}));
    EXPECT_EQ(TextOf(Date(36890 + 80542.0 / 86400)).size(), 47u + 1 + 47);
}

TEST_F(UserLocale, ShowsAllDigitsOnRequest) {
    ASSERT_TRUE(SetUserLocale({.numberDigits = ENumberDigits::Full}));
    const SCase full[] = {{Double(0.1 + 0.2), "0.30000000000000004"},
                          {Double(-1e16), "-10000000000000000"},
                          {Double(1e17), "1E+17"},
                          {Double(5e-324), "5E-324"},
                          {Value(VT_R4, &VARIANT::fltVal, 16777216), "16777216"},
                          {Value(VT_R4, &VARIANT::fltVal, 0.1f), "0.1"}};
    for (const SCase& entry : full)
        EXPECT_EQ(TextOf(entry.value), entry.text);
    std::mt19937_64 random(3);
    for (int i = 0; i < 50'000; ++i) {
        const auto bits = random();
        const auto number = std::bit_cast<double>(bits & ~(std::uint64_t{1} << 54)); // finite
        const auto single = static_cast<float>(bits >> 32) * 1e-5f;
        ASSERT_EQ(std::strtod(TextOf(Double(number)).c_str(), nullptr), number) << bits;
        ASSERT_EQ(std::strtof(TextOf(Value(VT_R4, &VARIANT::fltVal, single)).c_str(), nullptr), single) << bits;
    }
}

TEST_F(UserLocale, IsRefusedWithAnInvalidPart) {
    const SUserLocale refused[] = {
        {"y/M", "H", '.'},      {"yyyyy", "H", '.'}, {"", "H", '.'},
        {"yyyy\x81", "H", '.'}, {"M", "t", '.'},     {"M", "HHH", '.'},
        {"M", "H\n", '.'},      {"M", "", '.'},      {"yyyy/MM/dd yyyy/MM/dd yyyy/MM/dd", "H", '.'}};
    for (const SUserLocale& locale : refused)
        EXPECT_FALSE(SetUserLocale(locale)) << locale.dateFormat << ' ' << locale.timeFormat;
    for (const char sign : {'0', 'E', '-', '\0', ' '})
        EXPECT_FALSE(SetUserLocale({"M", "H", sign})) << sign;
    EXPECT_EQ(TextOf(Date(45000.75)), "2023/03/15 18:00:00");
    EXPECT_EQ(GetUserLocale().decimalSign, '.');
}

} // namespace
